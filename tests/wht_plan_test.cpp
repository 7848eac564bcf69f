// The plans of the Walsh-Hadamard kernels: what the generator refuses, and that it repeats itself.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// A copy of the plans in which the first `from` has become `to`.
class Changed {
 public:
  Changed(const std::string& from, const std::string& to) {
    std::string name = (fs::temp_directory_path() / "xfm_wht_XXXXXX").string();
    path_ = mkdtemp(name.data());
    fs::copy(fs::path(XFM_PLANS) / "functions.tsv", path_);
    std::string text = read(fs::path(XFM_PLANS) / "wht_plans.tsv");
    const size_t at = text.find(from);
    if (at != std::string::npos) text.replace(at, from.size(), to), found_ = true;
    std::ofstream(path_ / "wht_plans.tsv") << text;
  }
  ~Changed() { fs::remove_all(path_); }
  bool found() const { return found_; }
  fs::path operator/(const char* name) const { return path_ / name; }

  int generate(const std::string& what, const char* output) const {
    const std::string command = std::string(XFM_GEN_WHT) + " " + what + " " + path_.string() + " " +
                                (path_ / output).string() + " 2>" + (path_ / "errors").string();
    return std::system(command.c_str());
  }

 private:
  fs::path path_;
  bool found_ = false;
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
    const Changed plans(c.from, c.to);
    ASSERT_TRUE(plans.found()) << c.from;
    EXPECT_NE(plans.generate("pgenwht32fw7", "unit.cpp"), 0) << c.to;
    EXPECT_NE(read(plans / "errors").find(c.message), std::string::npos) << c.to << " gave " << read(plans / "errors");
    EXPECT_FALSE(fs::exists(plans / "unit.cpp"));
  }
}

TEST(Plans, TheSamePlansGiveTheSameBytes) {
  const Changed plans("", "");
  for (const char* what : {"pgenwht32fw7", "pgenwht64fw7", "counts"}) {
    ASSERT_EQ(plans.generate(what, "first"), 0) << read(plans / "errors");
    ASSERT_EQ(plans.generate(what, "second"), 0);
    EXPECT_EQ(read(plans / "first"), read(plans / "second")) << what;
    EXPECT_FALSE(read(plans / "first").empty());
  }
  EXPECT_NE(plans.generate("pgenwht16fw7", "third"), 0);
}

}  // namespace
