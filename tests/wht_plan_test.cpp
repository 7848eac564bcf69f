// The plans of the Walsh-Hadamard kernels: what the generator refuses, and that it repeats itself.
#include <gtest/gtest.h>

#include "tests/plans_folder.h"

namespace {

using xfm::test::read_text;

// The tables with the first `from` changed to `to`.
struct Changed : xfm::test::PlansFolder {
  Changed(const std::string& from, const std::string& to) : PlansFolder({"functions.tsv", "wht_plans.tsv"}) {
    replace("wht_plans.tsv", from, to);
  }
  int generate(const std::string& what, const std::string& output) {
    return run(std::string(XFM_GEN_WHT) + " " + what + " " + path().string() + " " + (*this / output).string());
  }
};

TEST(Plans, BadRowsAreRefusedWithTheirLineAndLeaveNoUnit) {
  struct Case {
    const char *from, *to, *message;
  };
  const Case cases[] = {
      {"32f\t5\t5\tvector\t40", "32f\t5\t5\tvector\t41", "wht_plans.tsv:12: additions: the passes have 40"},
      {"40\t8\t35\t", "40\t9\t35\t", "wht_plans.tsv:12: multiplications: the passes have 8"},
      {"40\t8\t35\t", "40\t8\t31\t", "wht_plans.tsv:12: shuffles: the passes have 32"},
      {"32f\t12\t6 3 3", "32f\t12\t6 3 4", ":19: the passes do not add up to the order"},
      {"32f\t12\t6 3 3", "32f\t12\t6 6", ":19: staging: "},
      {"32f\t12\t6 3 3", "32f\t12\t6 -3 9", ":19: passes: \"-3\""},
      {"256\t1024\t0", "256\t1000\t0", ":15: main: "},
      {"32f\t4\t4\tvector", "32f\t3\t3\tvector", ":11: the orders of a type follow each other"},
      {"32f\t3\t3\tscalar", "32f\t3\t3\tvector", ":10: a block is less than a square group"},
      {"32f\t3\t3\tscalar", "32f\t3\t3\twide", ":10: form: \"wide\""},
  };
  for (const Case& c : cases) {
    Changed plans(c.from, c.to);
    EXPECT_NE(plans.generate("pgenwht32fw7", "unit.cpp"), 0) << c.to;
    EXPECT_NE(plans.said.find(c.message), std::string::npos) << c.to << " gave " << plans.said;
    EXPECT_FALSE(std::filesystem::exists(plans / "unit.cpp"));
  }
}

TEST(Plans, TheSamePlansGiveTheSameBytes) {
  Changed plans("", "");
  for (const char* what : {"pgenwht32fw7", "pgenwht64fw7", "counts"}) {
    ASSERT_EQ(plans.generate(what, "first"), 0) << plans.said;
    ASSERT_EQ(plans.generate(what, "second"), 0);
    EXPECT_EQ(read_text(plans / "first"), read_text(plans / "second")) << what;
    EXPECT_FALSE(read_text(plans / "first").empty());
  }
  EXPECT_NE(plans.generate("pgenwht16fw7", "third"), 0);
}

}  // namespace
