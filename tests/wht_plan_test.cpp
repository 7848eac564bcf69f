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
    const char *from, *to, *message, *target = "base";
  };
  const Case cases[] = {
      {"base\t32f\t5\t5\t4\ttranspose\t40", "base\t32f\t5\t5\t4\ttranspose\t41", ":15: additions: the passes have 40"},
      {"40\t8\t35\t", "40\t9\t35\t", ":15: multiplications: the passes have 8"},
      {"40\t8\t35\t", "40\t8\t31\t", ":15: shuffles: the passes have 32"},
      {"32f\t12\t6 3 3", "32f\t12\t6 3 4", ":22: the passes do not add up to the order"},
      {"32f\t12\t6 3 3", "32f\t12\t6 6", ":22: staging: "},
      {"32f\t12\t6 3 3", "32f\t12\t6 -3 9", ":22: passes: \"-3\""},
      {"256\t1024\t0", "256\t1000\t0", ":18: main: "},
      {"32f\t4\t4\t4", "32f\t3\t3\t4", ":14: the orders of a type follow each other"},
      {"32f\t3\t3\t1\t-", "32f\t3\t3\t4\ttranspose", ":13: a block is less than a group"},
      {"32f\t3\t3\t1\t-", "32f\t3\t3\t3\t-", ":13: lanes: no register has 3"},
      {"32f\t3\t3\t1\t-", "32f\t3\t3\t1\tpermute", ":13: inside: \"permute\""},
      {"v4\t32f\t5\t5\t16\tpermute\t10", "v4\t32f\t5\t5\t16\tpermute\t9", ":67: additions: the passes have 10", "v4"},
      {"v4\t32f\t5\t5\t16\tpermute", "v4\t32f\t5\t5\t16\ttranspose", ":67: a block is less than a group", "v4"},
      {"v4\t32f\t13\t8 5", "v4\t32f\t12\t8 5", ":75: the orders of a type follow each other", "v4"},
      {"v4\t32f\t13\t8 5", "v4\t32f\t13\t9 4", ":75: passes: \"9\" is not an order from 1 to 8", "v4"},
      {"v4\t32f\t12\t7 5", "v4\t32f\t12\t6 6", ":74: staging: no whole registers", "v4"},
      {"3072\t256\t1024\t16384\t2048", "3072\t256\t1024\t16384\t4096", ":74: staging: base has 2048", "v4"},
  };
  for (const Case& c : cases) {
    Changed plans(c.from, c.to);
    EXPECT_NE(plans.generate(std::string("pgenwht32fw7 ") + c.target, "unit.cpp"), 0) << c.to;
    EXPECT_NE(plans.said.find(std::string("wht_plans.tsv") + c.message), std::string::npos) << c.to << " gave " << plans.said;
    EXPECT_FALSE(std::filesystem::exists(plans / "unit.cpp"));
  }
}

TEST(Plans, TheSamePlansGiveTheSameBytes) {
  Changed plans("", "");
  for (const char* what : {"pgenwht32fw7 base", "pgenwht64fw7 v3", "pgenwht32fw7 v4", "counts v4"}) {
    ASSERT_EQ(plans.generate(what, "first"), 0) << plans.said;
    ASSERT_EQ(plans.generate(what, "second"), 0);
    EXPECT_EQ(read_text(plans / "first"), read_text(plans / "second")) << what;
    EXPECT_FALSE(read_text(plans / "first").empty());
  }
  EXPECT_NE(plans.generate("pgenwht16fw7 base", "third"), 0);
  EXPECT_NE(plans.generate("pgenwht32fw7 v5", "third"), 0);
}

}  // namespace
