// Bad rows in the table of the DCT-IV's kernels: the generator names the line, says why and leaves no unit behind.
#include <gtest/gtest.h>

#include "tests/plans_folder.h"

TEST(Dct4Kernels, BadRowsAreRefusedWithTheirLine) {
  struct Case {
    const char *from, *to, *message;
  };
  const Case cases[] = {
      {"224\t528", "224\t527", ":23: forward64 has 224 multiplications and 528 additions"},
      {"224\t484", "223\t484", ":30: combine32 has 224 multiplications and 484 additions"},
      {"4 4 2\t-\tparts", "4 4 2\t-\t-", ":23: forward64 has 224 multiplications"},
      {"4 4 2\t-\tparts", "4 4 2\t-\tall", ":23: fold: \"all\""},
      {"2 4 2\t-", "2 4 4\t-", ":22: splits: the product is not 16"},
      {"2 4 2\t-", "2 2 2 2\t-", ":22: forward32 has "},
      {"2 4 2\t-", "16\t-", ":22: splits: \"16\" is no split"},
      {"-\t4 4 2\t-\t-", "-\t2 2 2 2 2\t-\t-", ":27: splits: the table of twiddles is not in this order"},
      {"4\t2\t2 2\t-", "4\t2\t2\t-", ":17: group_splits: the product is not 4"},
      {"4\t2\t2 2\t-", "3\t2\t2 2\t-", ":17: columns: "},
      {"rotation\t2", "turn\t2", ":14: kernel: \"turn\""},
      {"rotation\t2", "rotation\t3", ":14: length: "},
      {"straight\t16", "straight\t8", ":17: "},
      {"combine\t8\t32f 64f", "combine\t8\t32f 16f", ":28: types: \"16f\""},
  };
  for (const Case& c : cases) {
    xfm::test::PlansFolder plans({"dct4_kernels.tsv"});
    plans.replace("dct4_kernels.tsv", c.from, c.to);
    const std::string table = (plans / "dct4_kernels.tsv").string();
    EXPECT_EQ(plans.run(std::string(XFM_GEN_DCT4) + " 64f " + table + " " + (plans / "unit.cpp").string()), 1) << c.to;
    EXPECT_NE(plans.said.find("dct4_kernels.tsv" + std::string(c.message)), std::string::npos) << c.to << " gave " << plans.said;
    EXPECT_FALSE(std::filesystem::exists(plans / "unit.cpp"));
  }
}
