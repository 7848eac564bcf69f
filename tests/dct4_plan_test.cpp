// Bad rows in the table of the DCT-IV's kernels: the generator names the line, says why and leaves no unit behind.
#include <gtest/gtest.h>

#include "tests/plans_folder.h"

TEST(Dct4Kernels, BadRowsAreRefusedWithTheirLine) {
  struct Case {
    const char *from, *to, *message;
  };
  const Case cases[] = {
      {"224\t528", "224\t527", ":25: forward64 has 224 multiplications and 528 additions"},
      {"224\t484", "223\t484", ":32: combine32 has 224 multiplications and 484 additions"},
      {"4 4 2\t-\tparts", "4 4 2\t-\t-", ":25: forward64 has 224 multiplications"},
      {"4 4 2\t-\tparts", "4 4 2\t-\tall", ":25: fold: \"all\""},
      {"2 4 2\t-", "2 4 4\t-", ":24: splits: the product is not 16"},
      {"2 4 2\t-", "2 2 2 2\t-", ":24: forward32 has "},
      {"2 4 2\t-", "16\t-", ":24: splits: \"16\" is no split"},
      {"-\t4 4 2\t-\t-", "-\t2 2 2 2 2\t-\t-", ":29: splits: the table of twiddles is not in this order"},
      {"4\t2\t2 2\t-", "4\t2\t2\t-", ":19: group_splits: the product is not 4"},
      {"4\t2\t2 2\t-", "3\t2\t2 2\t-", ":19: columns: "},
      {"rotation\t2", "turn\t2", ":16: kernel: \"turn\""},
      {"rotation\t2", "rotation\t3", ":16: length: "},
      {"straight\t16", "straight\t8", ":19: "},
      {"-\tfinished", "-\tsorted", ":23: stores: \"sorted\""},
      {"2 4 2\t-\t-\t-", "2 4 2\t-\t-\tfinish", ":24: stores: \"finish\""},
      {"combine\t8\t32f 64f", "combine\t8\t32f 16f", ":30: types: \"16f\""},
  };
  for (const Case& c : cases) {
    xfm::test::PlansFolder plans({"dct4_kernels.tsv"});
    plans.replace("dct4_kernels.tsv", c.from, c.to);
    const std::string table = (plans / "dct4_kernels.tsv").string();
    EXPECT_EQ(plans.run(std::string(XFM_GEN_DCT4) + " 64f " + table + " base " + (plans / "unit.cpp").string()), 1) << c.to;
    EXPECT_NE(plans.said.find("dct4_kernels.tsv" + std::string(c.message)), std::string::npos) << c.to << " gave " << plans.said;
    EXPECT_FALSE(std::filesystem::exists(plans / "unit.cpp"));
  }
}
