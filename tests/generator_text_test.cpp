// Order and text of bodies: what is used is there before its use, nothing is stored before the last load, and every
// element of the destination is stored once.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <algorithm>
#include <set>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/core_model.h"
#include "generator/latency_window.h"
#include "generator/schedule.h"
#include "generator/text.h"

namespace {

using namespace xfm;
using namespace xfm::dft;

const ComplexTables& tables() {
  static const ComplexTables read = ComplexTables::read(XFM_PLANS);
  return read;
}

struct Size {
  int precision, length, sign;
};
// All working forms, gates' widths and methods of a plan.
constexpr Size kSizes[] = {{32, 2, -1}, {32, 3, +1}, {32, 5, -1},  {32, 8, +1},  {32, 9, -1},  {32, 15, -1}, {32, 16, +1}, {32, 20, -1}, {32, 31, +1}, {32, 47, -1}, {32, 64, -1},
                           {64, 2, -1}, {64, 3, +1}, {64, 12, -1}, {64, 13, +1}, {64, 20, +1}, {64, 25, -1}, {64, 52, -1}, {64, 61, -1}};

std::string name_of(const Size& s) { return "N = " + std::to_string(s.length) + ", " + std::to_string(s.precision) + " bits"; }

TEST(GeneratorSchedule, OperandsComeFirstAndNothingIsDoneTwice) {
  for (const Size& size : kSizes) {
    const Program program = complex_body(tables().row(size.precision, size.length), size.sign).program;
    std::set<int> done;
    for (int v : schedule(program)) {
      const Inst& inst = program.insts()[v];
      EXPECT_FALSE(is_leaf(inst.op)) << name_of(size) << ", value " << v;
      for (int operand : {inst.a, inst.b})
        ASSERT_TRUE(operand < 0 || is_leaf(program.insts()[operand].op) || done.contains(operand)) << name_of(size) << ": value " << v << " before its operand " << operand;
      ASSERT_TRUE(done.insert(v).second) << name_of(size) << ": value " << v << " twice";
    }
    for (const Store& store : program.stores())
      ASSERT_TRUE(done.contains(store.value)) << name_of(size) << ": stored value " << store.value << " is missing";
  }
}

// Four chains of a hundred dependent additions.
Program chains_of_additions(std::vector<int>& one_by_one) {
  Program p;
  for (int chain = 0; chain < 4; ++chain) {
    int sum = p.emit({.op = Op::Load, .type = Type::F64, .cell = 2 * chain});
    const int step = p.emit({.op = Op::Load, .type = Type::F64, .cell = 2 * chain + 1});
    one_by_one.insert(one_by_one.end(), {sum, step});
    for (int k = 0; k < 100; ++k) one_by_one.push_back(sum = p.emit({.op = Op::Add, .type = Type::F64, .a = sum, .b = step}));
    p.store(StoreKind::Full, sum, chain);
  }
  return p;
}

TEST(GeneratorSchedule, ChainsSideBySideAreFasterThanOneBehindTheOther) {
  std::vector<int> one_by_one;
  const Program p = chains_of_additions(one_by_one);
  const std::vector<int> side_by_side = fill_latencies(p, one_by_one, {64, 14});
  EXPECT_TRUE(std::is_permutation(side_by_side.begin(), side_by_side.end(), one_by_one.begin(), one_by_one.end()));
  EXPECT_LT(cycles_per_call(p, side_by_side), 0.8 * cycles_per_call(p, one_by_one));
  EXPECT_GE(cycles_per_call(p, side_by_side), 200) << "two additions a cycle at the most";
}

TEST(GeneratorSchedule, WhatReachesNoStoreIsLeftOut) {
  Program p;
  const int a = p.emit({.op = Op::Load, .type = Type::F32, .cell = 0}), b = p.emit({.op = Op::Load, .type = Type::F32, .cell = 1});
  const int used = p.emit({.op = Op::Add, .type = Type::F32, .a = a, .b = a});
  p.emit({.op = Op::Mul, .type = Type::F32, .a = used, .b = b});
  EXPECT_EQ(p.emit({.op = Op::Add, .type = Type::F32, .a = a, .b = a}), used) << "equal operations are one value";
  p.store(StoreKind::Full, used, 0);
  EXPECT_EQ(schedule(p), (std::vector<int>{a, used}));
}

TEST(GeneratorText, EveryElementIsLoadedBeforeTheFirstStoreAndStoredOnce) {
  const std::regex load(R"((load\w*|broadcast_s[sd])\((v\d+, )?(reinterpret_cast<const (double|__m64)\*>\()?x\b|x\[)");
  const std::regex store(R"(^(?:y\[(\d+)\] = |(\w+)::store\(y(?: \+ (\d+))?, |_mm_store([lh])_pi\(reinterpret_cast<__m64\*>\(y(?: \+ (\d+))?\), )(\w+))");
  const std::regex definition(R"(^const (\S+) (v\d+|s) = (.*);$)"), use(R"(\b(v\d+|s)\b)");
  for (const Size& size : kSizes) {
    const ComplexBody body = complex_body(tables().row(size.precision, size.length), size.sign);
    BodyNames names;
    names.pool = "pool";
    std::map<std::string, std::string> types;
    std::map<int, int> stored;
    bool storing = false;
    for (const std::string& line : body_text(scheduled(body.program), names)) {
      std::smatch m;
      std::string used = line;
      if (std::regex_search(line, m, store)) {
        storing = true;
        const bool half = m[4].matched;
        const std::string& at = m[1].matched ? m[1] : half ? m[5] : m[3];
        const std::map<std::string, int> widths{{"float", 1}, {"double", 1}, {"__m128", 4}, {"__m128d", 2}, {"__m256", 8}, {"__m256d", 4}};
        const int count = half ? 2 : widths.at(types.at(m[6]));
        for (int i = 0; i < count; ++i) ++stored[(at.empty() ? 0 : std::stoi(at)) + i];
      } else if (std::regex_match(line, m, definition)) {
        EXPECT_FALSE(storing && std::regex_search(line, load)) << name_of(size) << ": loads after a store: " << line;
        used = m[3];
      } else {
        ADD_FAILURE() << name_of(size) << ": neither a definition nor a store: " << line;
      }
      for (std::sregex_iterator u(used.begin(), used.end(), use), end; u != end; ++u)
        ASSERT_TRUE(types.contains((*u)[1])) << name_of(size) << ": used before it is there: " << line;
      ASSERT_TRUE(!std::regex_match(line, m, definition) || types.emplace(m[2], m[1]).second) << name_of(size) << ": " << line;
    }
    ASSERT_EQ(stored.size(), 2u * size.length) << name_of(size);
    for (const auto& [cell, times] : stored) EXPECT_TRUE(times == 1 && cell < 2 * size.length) << name_of(size) << ", component " << cell;
  }
}

// y = (x0 + x1) * s in two places, with a load that has nothing to do with the first store.
Program two_sums(Type type) {
  Program p;
  const int w = width(type), s = p.emit({.op = Op::Scale, .type = type});
  for (int i = 0; i < 2; ++i) {
    const int a = p.emit({.op = Op::Load, .type = type, .cell = 2 * w * i}), b = p.emit({.op = Op::Load, .type = type, .cell = 2 * w * i + 1});
    const int sum = p.emit({.op = Op::Add, .type = type, .a = a, .b = b});
    p.store(StoreKind::Full, p.emit({.op = Op::Mul, .type = type, .a = sum, .b = s}), i * w);
  }
  return p;
}

TEST(GeneratorText, OneOperationIsOneStatement) {
  const auto check = [](const Program& program, bool loads_first, const std::vector<std::string>& expected) {
    BodyNames names;
    names.loads_first = loads_first;
    EXPECT_EQ(body_text(scheduled(program), names), expected);
  };
  check(two_sums(Type::F64), true,
        {"const double s = *scale;", "const double v1 = x[0];", "const double v2 = x[1];", "const double v3 = v1 + v2;",
         "const double v4 = v3 * s;", "const double v5 = x[2];", "const double v6 = x[3];", "y[0] = v4;",
         "const double v7 = v5 + v6;", "const double v8 = v7 * s;", "y[1] = v8;"});
  check(two_sums(Type::F64), false,
        {"const double s = *scale;", "const double v1 = x[0];", "const double v2 = x[1];", "const double v3 = v1 + v2;",
         "const double v4 = v3 * s;", "y[0] = v4;", "const double v5 = x[2];", "const double v6 = x[3];",
         "const double v7 = v5 + v6;", "const double v8 = v7 * s;", "y[1] = v8;"});
  // Only an address that is a multiple of the register's width is moved with the kernel's access.
  check(two_sums(Type::F32x8), true,
        {"const __m256 s = _mm256_broadcast_ss(scale);", "const __m256 v1 = Access::load8(x);",
         "const __m256 v2 = Unaligned::load8(x + 1);", "const __m256 v3 = v1 + v2;",
         "const __m256 v4 = v3 * s;", "const __m256 v5 = Access::load8(x + 16);",
         "const __m256 v6 = Unaligned::load8(x + 17);", "Access::store(y, v4);", "const __m256 v7 = v5 + v6;",
         "const __m256 v8 = v7 * s;", "Access::store(y + 8, v8);"});
}

TEST(GeneratorText, PoolsHoldEachConstantOnce) {
  Program p;
  const int third = p.constant(Type::F64x2, {Real(1) / 3, Real(1) / 3});
  EXPECT_EQ(p.constant(Type::F64x2, {1 / Real(3), 1 / Real(3)}), third);
  EXPECT_NE(p.constant(Type::F64x2, {Real(1) / 3, -Real(1) / 3}), third);
  EXPECT_NE(p.constant(Type::F64, {Real(1) / 3}), third);
  EXPECT_EQ(pool_text(p, "some", false, {1, Real(0.5)}, 2),
            "struct Pool_some {\n  alignas(16) double scale[2][2];\n  double d1[1];\n  alignas(16) double d2[2][2];\n};\n"
            "XFM_POOL const Pool_some owngPool_some = {\n    {\n        {0x1p+0, 0x1p+0},  // 1\n        {0x1p-1, 0x1p-1},  // 0.5\n    },\n"
            "    {\n        0x1.5555555555555p-2,  // 0.333333333\n    },\n"
            "    {\n        {0x1.5555555555555p-2, 0x1.5555555555555p-2},  // 0.333333333\n"
            "        {0x1.5555555555555p-2, -0x1.5555555555555p-2},  // 0.333333333\n    },\n};\n");
  EXPECT_THROW(p.constant(Type::F64x2, {1}), InternalError);
}

TEST(GeneratorText, AFileIsWrittenWholeOrNotAtAll) {
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / ("xfm_text_" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  const std::string path = folder / "unit.cpp";
  write_file(path, "first");
  write_file(path, "second\n");
  std::ifstream in(path);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "second\n");
  EXPECT_THROW(write_file(folder / "missing" / "unit.cpp", "text"), InputError);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
  std::filesystem::remove_all(folder);
}

}  // namespace
