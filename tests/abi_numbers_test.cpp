// The binary interface in numbers: what a program compiled years ago has in its code. Everything stands here as a
// literal, and nothing is compared by its name alone.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <type_traits>

#include "xfm.h"

namespace {

struct Number {
  const char* name;
  long long found, due;
};

#define OFFSET(record, member, due) {#record "." #member, offsetof(record, member), due}
#define LAYOUT(record, size, alignment) {"size of " #record, sizeof(record), size}, {"alignment of " #record, alignof(record), alignment}

constexpr Number kNumbers[] = {
    {"xfmStatusOk", xfmStatusOk, 0},
    {"xfmStatusSizeError", xfmStatusSizeError, -6},
    {"xfmStatusNullPointer", xfmStatusNullPointer, -8},
    {"xfmStatusFlagError", xfmStatusFlagError, -16},
    {"xfmScaleFwdByN", xfmScaleFwdByN, 1},
    {"xfmScaleInvByN", xfmScaleInvByN, 2},
    {"xfmScaleBySqrtN", xfmScaleBySqrtN, 4},
    {"xfmScaleNone", xfmScaleNone, 8},
    LAYOUT(XfmStatus, 4, 4),
    LAYOUT(Xfm32f, 4, 4),
    LAYOUT(Xfm64f, 8, 8),
    LAYOUT(Xfm32fc, 8, 4),
    OFFSET(Xfm32fc, re, 0),
    OFFSET(Xfm32fc, im, 4),
    LAYOUT(Xfm64fc, 16, 8),
    OFFSET(Xfm64fc, re, 0),
    OFFSET(Xfm64fc, im, 8),
    LAYOUT(XfmLibraryVersion, 48, 8),
    OFFSET(XfmLibraryVersion, major, 0),
    OFFSET(XfmLibraryVersion, minor, 4),
    OFFSET(XfmLibraryVersion, majorBuild, 8),
    OFFSET(XfmLibraryVersion, build, 12),
    OFFSET(XfmLibraryVersion, targetCpu, 16),
    OFFSET(XfmLibraryVersion, name, 24),
    OFFSET(XfmLibraryVersion, version, 32),
    OFFSET(XfmLibraryVersion, buildDate, 40),
};
static_assert(std::is_signed_v<XfmStatus> && std::is_same_v<Xfm32f, float> && std::is_same_v<Xfm64f, double>);

TEST(AbiNumbers, OfTheHeader) {
  for (const Number& number : kNumbers) EXPECT_EQ(number.found, number.due) << number.name;
}

TEST(AbiNumbers, OfTheVersionRecord) {
  const XfmLibraryVersion* version = xfmgenGetLibVersion();
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(version, xfmgenGetLibVersion());
  EXPECT_EQ(version->major, 6);
  EXPECT_EQ(version->minor, 1);
  EXPECT_EQ(version->majorBuild, 137);
  EXPECT_EQ(version->build, 336);
  EXPECT_EQ(std::memcmp(version->targetCpu, "e9\0\0", 4), 0);
  EXPECT_STREQ(version->name, "libxfmgene9.so.6.1");
  EXPECT_STREQ(version->version, "6.1 build 137.56");
  EXPECT_STREQ(version->buildDate, "Mar 17 2010");
}

// As the compiled library returns them, not as the header spells them.
TEST(AbiNumbers, OfReturnedStatusesAndFlags) {
  const float src[2] = {3, 1};
  float dst[4] = {};
  const auto call = [&](const float* from, int length, int flag) { return xfmgHartley_32f(from, dst, length, flag); };
  EXPECT_EQ(call(src, 1, 8), -6);
  EXPECT_EQ(call(nullptr, 2, 8), -8);
  for (const int flag : {-1, 0, 3, 5, 6, 7, 9, 16}) EXPECT_EQ(call(src, 2, flag), -16) << flag;
  const auto forward = [&](int flag) { return xfmgDFTFwd_RToPack_32f(src, dst, 2, flag) == 0 ? dst[0] : -1.0F; };
  const auto inverse = [&](int flag) { return xfmgDFTInv_PackToR_32f(src, dst, 2, flag) == 0 ? dst[0] : -1.0F; };
  constexpr float kBySqrt = 4 * 0.70710677F;
  EXPECT_EQ(forward(1), 2);
  EXPECT_EQ(inverse(1), 4);
  EXPECT_EQ(forward(2), 4);
  EXPECT_EQ(inverse(2), 2);
  EXPECT_EQ(forward(4), kBySqrt);
  EXPECT_EQ(inverse(4), kBySqrt);
  EXPECT_EQ(forward(8), 4);
  EXPECT_EQ(inverse(8), 4);
}

// The names in the baseline, which tests/abi/compare.sh holds against the built library.
TEST(AbiNumbers, OfExports) {
  std::ifstream in(XFM_ABI_BASELINE);
  std::set<std::string> names;
  for (std::string line; std::getline(in, line);)
    if (const auto at = line.find("<elf-symbol name='"); at != std::string::npos)
      names.insert(line.substr(at + 18, line.find('\'', at + 18) - at - 18));
  EXPECT_EQ(names.size(), 1193U);
}

}  // namespace
