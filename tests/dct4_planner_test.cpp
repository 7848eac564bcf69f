// The planner: arena and lists, radices, block sizes, statuses. The program brings an allocator of its own, which counts
// and can run dry.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>

#include "dct4_api.h"
#include "dct4_radix.h"
#include "generator/table.h"

using namespace xfm::dct4;

namespace {
int g_blocks = 0, g_null_frees = 0, g_calls = 0;
void* g_freed = nullptr;
bool g_dry = false;
}  // namespace

extern "C" {
void* xfmMalloc(int size) {
  ++g_calls;
  if (g_dry) return nullptr;
  ++g_blocks;
  return std::malloc(static_cast<size_t>(size));
}
void xfmFree(void* block) {
  ++g_calls;
  g_freed = block;
  block == nullptr ? ++g_null_frees : --g_blocks;
  std::free(block);
}
}

namespace {

// The sum that the plans add up to, in a form of its own: T + A(En) + 1152 + P(n/d), with each level as a signed 32-bit
// number; -1 for a length without a plan.
struct SizeFormula {
  int64_t lanes, element;

  static int64_t as_int(int64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(x)); }
  int64_t area(int64_t n) const { return (element * n + 31) / 32 * 32; }
  static bool direct(int64_t m) { return m >= 2 && m <= 64 && (m & (m - 1)) == 0; }

  int64_t part(int64_t m, int64_t n) const {
    if (direct(m)) return 160;
    const int64_t d = radix_of(m / 2);
    if (d == 0) return -1;
    const int64_t below = part(m / d, n);
    if (below < 0) return -1;
    const int64_t q = as_int((2 * d - 2) * (m / (2 * d)) * 32 + area(n) + 576 + below);
    return q < 0 ? -1 : as_int(224 + q);
  }
  int64_t whole(int64_t n) const {
    if (direct(n) && n <= (lanes == 8 ? 64 : 32)) return 256;
    const int64_t d = n < 0 ? 0 : radix_of(n / 2);
    if (d == 0 || n / (2 * d) % lanes != 0 || d % lanes != 0) return -1;
    const int64_t table = 2 * d * (n / (2 * d) / lanes) * 32, below = part(n / d, n);
    if (as_int(table) < 0 || below < 0) return -1;
    const int64_t all = as_int(table + area(n) + 1152 + below);
    return all < 0 ? -1 : all;
  }
};

}  // namespace

TEST(Dct4Arena, RoundsAndBumps) {
  EXPECT_EQ(xfmgAlignSize32Bytes(0), 0u);
  EXPECT_EQ(xfmgAlignSize32Bytes(1), 32u);
  EXPECT_EQ(xfmgAlignSize32Bytes(32), 32u);
  EXPECT_EQ(xfmgAlignSize32Bytes((uint64_t{1} << 33) + 1), (uint64_t{1} << 33) + 32);
  Arena arena = {4096};
  EXPECT_EQ(xfmgArenaMalloc(&arena, 0), xfmgArenaMalloc(&arena, 0));
  EXPECT_EQ(xfmgArenaMalloc(&arena, 24), reinterpret_cast<void*>(4096));
  EXPECT_EQ(arena.head, 4096u + 32);
  xfmgArenaFree(&arena, nullptr, 33);
  EXPECT_EQ(arena.head, 4096u - 32);
}

TEST(Dct4Arena, ListsKeepTheirOrderAndCharge) {
  alignas(32) unsigned char room[512];
  Arena arena = {reinterpret_cast<uintptr_t>(room)};
  EnvList* list = EnvList___init__(static_cast<EnvList*>(xfmgArenaMalloc(&arena, 24)), &arena);
  const uintptr_t one = arena.head;
  int items[3];
  EXPECT_EQ(EnvList_get(list, 0), nullptr);
  EnvList_freeChildren(nullptr);
  EnvList_freeChildren(list);
  EXPECT_EQ(EnvList_add(list, &items[0]), &items[0]);
  EXPECT_EQ(arena.head, one);
  EXPECT_EQ(EnvList_add(list, &items[1]), &items[1]);
  EXPECT_EQ(arena.head, one + 32);
  EnvList_add(list, &items[2]);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(EnvList_get(list, i), &items[i]);
  EXPECT_EQ(EnvList_get(list, -1), nullptr);
  EXPECT_EQ(EnvList_get(list, 4), nullptr);
  EnvList___del__(list);
  EXPECT_EQ(arena.head, one);
  EXPECT_EQ(EnvList_add_mem(2), 64u);
  EXPECT_EQ(EnvList_add_mem(0), 0u);
  EXPECT_EQ(EnvList_add_mem(-1), static_cast<uint64_t>(-32));
}

TEST(Dct4Planner, RadixGrowsWithTheLength) {
  const std::map<int, int> known = {{4, 2},   {6, 2},   {12, 2},   {16, 4},  {24, 4},    {32, 8},         {96, 8}, {128, 16},
                                    {144, 16}, {512, 32}, {528, 16}, {1000, 8}, {1004, 4}, {1 << 25, 32}, {514, 2}};
  for (auto [x, expected] : known) {
    int32_t radix = 0;
    EXPECT_EQ(divisorsIntNonTriv(&radix, x), xfmStatusOk) << x;
    EXPECT_EQ(radix, expected) << x;
  }
  for (int x : {0, 1, 2, 3, 5, 511, -2, -512, INT_MAX, INT_MIN}) {
    int32_t radix = 77;
    EXPECT_EQ(divisorsIntNonTriv(&radix, x), xfmStatusSizeError) << x;
    EXPECT_EQ(radix, 77) << x;
  }
}

template <class T>
class Dct4Plan : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Plan, Precisions);

TYPED_TEST(Dct4Plan, SizesOfTheTable) {
  const xfm::Table table = xfm::Table::read(XFM_DCT4_SIZES, {"length", "single", "double"});
  for (const xfm::TableRow& row : table.rows()) {
    const char* const column = sizeof(TypeParam) == 4 ? "single" : "double";
    int bytes = -77;
    const XfmStatus status = Api<TypeParam>::size(row.integer("length"), &bytes);
    if (row[column] == "-") {
      EXPECT_EQ(status, xfmStatusSizeError);
      EXPECT_EQ(bytes, -77);
    } else {
      EXPECT_EQ(status, xfmStatusOk);
      EXPECT_EQ(bytes, row.integer(column)) << row.integer("length");
    }
  }
}

TYPED_TEST(Dct4Plan, SizesOfTheFormula) {
  const SizeFormula formula = {Api<TypeParam>::kLanes, sizeof(TypeParam)};
  std::vector<int> lengths = {INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1, 3 << 28, 3 << 29, 0x60000001};
  for (int n = -70; n < 20000; ++n) lengths.push_back(n);
  for (int e = 14; e <= 30; ++e)
    for (int near = -2; near <= 2; ++near) lengths.push_back((1 << e) + near);
  for (int n : lengths) {
    int bytes = -77;
    const XfmStatus status = Api<TypeParam>::size(n, &bytes);
    const int64_t expected = formula.whole(n);
    ASSERT_EQ(status, expected < 0 ? xfmStatusSizeError : xfmStatusOk) << n;
    ASSERT_EQ(bytes, expected < 0 ? -77 : expected) << n;
  }
}

TYPED_TEST(Dct4Plan, SizesThatWrap) {
  int bytes = 0;
  EXPECT_EQ(Api<TypeParam>::size(1 << 30, &bytes), xfmStatusOk);
  EXPECT_EQ(bytes, 1073745312);
  const bool single = sizeof(TypeParam) == 4;
  EXPECT_EQ(Api<TypeParam>::size(1 << 29, &bytes), single ? xfmStatusSizeError : xfmStatusOk);
  EXPECT_EQ(bytes, single ? 1073745312 : 536874400);
}

TYPED_TEST(Dct4Plan, RefusesBadLengthsEverywhere) {
  using State = typename Api<TypeParam>::State;
  std::vector<unsigned char> block(1 << 18);
  State* const untouched = reinterpret_cast<State*>(&block);
  for (int n : {0, 1, -1, 3, 5, 6, 7, 12, 96, 100, 192, 768, 1000, 1536, INT_MAX, INT_MIN, -128}) {
    int bytes = -77;
    State* state = untouched;
    EXPECT_EQ(Api<TypeParam>::size(n, &bytes), xfmStatusSizeError) << n;
    EXPECT_EQ(bytes, -77) << n;
    EXPECT_EQ(Api<TypeParam>::init(&state, n, block.data() + 5), xfmStatusSizeError) << n;
    EXPECT_EQ(Api<TypeParam>::init_alloc(&state, n), xfmStatusSizeError) << n;
    EXPECT_EQ(state, untouched) << n;
    EXPECT_EQ(Api<TypeParam>::init(&state, 64, block.data() + 5), xfmStatusOk) << n;
  }
  EXPECT_EQ(g_blocks, 0);
}

TYPED_TEST(Dct4Plan, PointersComeBeforeTheLength) {
  typename Api<TypeParam>::State* state = nullptr;
  unsigned char block[4096];
  EXPECT_EQ(Api<TypeParam>::init(nullptr, 3, block), xfmStatusNullPointer);
  EXPECT_EQ(Api<TypeParam>::init(&state, 3, nullptr), xfmStatusNullPointer);
  EXPECT_EQ(Api<TypeParam>::init_alloc(nullptr, 3), xfmStatusNullPointer);
  EXPECT_EQ(Api<TypeParam>::release(nullptr), xfmStatusNullPointer);
  ASSERT_EQ(Api<TypeParam>::init(&state, 4, block), xfmStatusOk);
  TypeParam x[4] = {}, *const null = nullptr;
  for (int nulls = 1; nulls < 8; ++nulls)
    EXPECT_EQ(Api<TypeParam>::transform(nulls & 1 ? null : x, nulls & 2 ? null : x, nulls & 4 ? nullptr : state),
              xfmStatusNullPointer);
}

TYPED_TEST(Dct4Plan, AllocatesOneBlockAndGivesItBack) {
  for (int n : {2, 64, 1024, 8192}) {
    typename Api<TypeParam>::State* state = nullptr;
    ASSERT_EQ(Api<TypeParam>::init_alloc(&state, n), xfmStatusOk);
    EXPECT_EQ(g_blocks, 1);
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    std::vector<TypeParam> y(n);
    const int calls = g_calls;
    EXPECT_EQ(Api<TypeParam>::transform(x.data(), y.data(), state), xfmStatusOk);
    EXPECT_EQ(g_calls, calls) << "a transform neither allocates nor frees";
    EXPECT_EQ(Api<TypeParam>::release(state), xfmStatusOk);
    EXPECT_EQ(g_blocks, 0);
  }
  g_dry = true;
  g_null_frees = 0;
  typename Api<TypeParam>::State* state = nullptr;
  EXPECT_EQ(Api<TypeParam>::init_alloc(&state, 1024), xfmStatusNullPointer);
  g_dry = false;
  EXPECT_EQ(g_null_frees, 1);
  EXPECT_EQ(state, nullptr);
}

// Free hands over the block of any state, also one that the caller brought, wherever the state stands in it.
TYPED_TEST(Dct4Plan, FreesTheCallersBlock) {
  for (const int n : {16, 4096}) {
    int bytes = 0;
    ASSERT_EQ(Api<TypeParam>::size(n, &bytes), xfmStatusOk);
    void* const block = xfmMalloc(bytes);
    typename Api<TypeParam>::State* state = nullptr;
    ASSERT_EQ(Api<TypeParam>::init(&state, n, block), xfmStatusOk);
    EXPECT_EQ(Api<TypeParam>::release(state), xfmStatusOk);
    EXPECT_EQ(g_freed, block) << n;
    EXPECT_EQ(g_blocks, 0);
  }
}
