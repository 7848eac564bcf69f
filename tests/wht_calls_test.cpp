// The frame of the Walsh-Hadamard functions: work buffer, allocations, order of the statuses, size queries.
#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <sstream>
#include <csignal>

#include "tests/wht_model.h"

namespace {

using namespace xfm::test;

template <class T>
class Calls : public testing::Test {};
using Types = testing::Types<float, double>;
TYPED_TEST_SUITE(Calls, Types);

template <class T>
using Dispatcher = XfmStatus(const T*, T*, int, int, void*);
template <class T>
Dispatcher<T>* dispatcher() { return reinterpret_cast<Dispatcher<T>*>(library_symbol(std::string("xfmgWHT_") + type_name<T>())); }
template <class T>
XfmStatus buffer_size(int order, int* size) {
  return reinterpret_cast<XfmStatus (*)(int, int*)>(library_symbol(std::string("xfmgWHTGetBufferSize_") + type_name<T>()))(order, size);
}

// Aligned data for the kernel, misaligned data for its twin.
template <class T>
struct Data {
  alignas(32) T src[(1 << kOrders) + 1] = {}, dst[(1 << kOrders) + 1] = {};
};

// The sizes that the manual lists for an element type, from order 8 on.
std::vector<int> listed_sizes(const std::string& type) {
  std::ifstream manual(XFM_WHT_MANUAL);
  for (std::string line; std::getline(manual, line);) {
    if (!line.starts_with("| `" + type + "` |")) continue;
    std::istringstream cells(line.substr(8));
    std::vector<int> sizes;
    for (std::string bar; cells >> bar && bar == "|";)
      if (int size; cells >> size) sizes.push_back(size);
    return sizes;
  }
  return {};
}

TYPED_TEST(Calls, SizesByOrder) {
  using T = TypeParam;
  const std::vector<int> listed = listed_sizes(type_name<T>());
  ASSERT_EQ(listed.size(), size_t{kOrders - kFirstBuffered + 1});
  for (int order = 1; order <= kOrders; ++order) {
    int size = -7;
    EXPECT_EQ(buffer_size<T>(order, &size), xfmStatusOk);
    EXPECT_EQ(size, order < kFirstBuffered ? 0 : listed[order - kFirstBuffered]) << order;
  }
  for (const int order : {0, 14, -1, INT_MIN, INT_MAX}) {
    int size = -7;
    EXPECT_EQ(buffer_size<T>(order, &size), xfmStatusSizeError) << order;
    EXPECT_EQ(size, -7) << order;
    EXPECT_EQ(buffer_size<T>(order, nullptr), xfmStatusSizeError) << order;
  }
}

// Two runs over buffers of different contents leave the same contents: every byte was written.
TYPED_TEST(Calls, EveryByteOfTheBufferIsWritten) {
  using T = TypeParam;
  static Data<T> data;
  for (int order = kFirstBuffered; order <= kOrders; ++order)
    for (const int offset : {0, 1}) {
      const size_t bytes = buffer_bytes<T>(order);
      const std::vector<T> input = rough_values<T>(order, order);
      std::copy(input.begin(), input.end(), data.src + offset);
      alignas(16) static unsigned char first[73728], second[73728];
      std::memset(first, 0x00, sizeof first);
      std::memset(second, 0xff, sizeof second);
      allocator_log.reset();
      ASSERT_EQ(kernel<T>(order)(data.src + offset, data.dst, xfmScaleNone, first), xfmStatusOk);
      ASSERT_EQ(kernel<T>(order)(data.src + offset, data.dst, xfmScaleNone, second), xfmStatusOk);
      EXPECT_EQ(std::memcmp(first, second, bytes), 0) << order;
      for (size_t i = bytes; i < sizeof first; ++i) ASSERT_TRUE(first[i] == 0 && second[i] == 0xff) << order << " byte " << i;
      EXPECT_TRUE(allocator_log.sizes.empty() && allocator_log.freed.empty()) << order;
    }
}

TYPED_TEST(Calls, ANullBufferIsOneBlockOfTheExactSizeReleasedOnce) {
  using T = TypeParam;
  static Data<T> data;
  for (int order = 1; order <= kOrders; ++order)
    for (const int offset : {0, 1}) {
      allocator_log.reset();
      ASSERT_EQ(kernel<T>(order)(data.src + offset, data.dst + offset, xfmScaleNone, nullptr), xfmStatusOk);
      if (order < kFirstBuffered) {
        EXPECT_TRUE(allocator_log.sizes.empty() && allocator_log.freed.empty()) << order;
      } else {
        EXPECT_EQ(allocator_log.sizes, std::vector<int>{buffer_bytes<T>(order)}) << order;
        EXPECT_EQ(allocator_log.freed, allocator_log.blocks) << order;
      }
    }
}

// As the header says: the block is not tested, and without memory the process ends by a write to it.
TYPED_TEST(Calls, ANullBufferWithoutMemoryEndsTheProcess) {
  using T = TypeParam;
  static Data<T> data;
  const auto call = [](int order, int offset) {
    allocator_log.no_memory = true;
    (void)kernel<T>(order)(data.src + offset, data.dst + offset, xfmScaleNone, nullptr);
  };
  for (int order = kFirstBuffered; order <= kOrders; ++order)
    for (const int offset : {0, 1}) EXPECT_EXIT(call(order, offset), testing::KilledBySignal(SIGSEGV), "") << order;
  EXPECT_FALSE(allocator_log.no_memory) << "only the ended process had none";
}

TYPED_TEST(Calls, FailuresInOrderWithNothingWrittenOrAllocated) {
  using T = TypeParam;
  static Data<T> data;
  std::memset(static_cast<void*>(data.dst), 0x5a, sizeof data.dst);
  const std::vector<unsigned char> untouched(sizeof data.dst, 0x5a);
  allocator_log.reset();
  for (int order = 1; order <= kOrders; ++order)
    for (const int offset : {0, 1}) {
      T *src = data.src + offset, *dst = data.dst + offset;
      for (const int flag : {0, 3, 5, 6, 7, 9, 10, 12, 16, -1, INT_MIN}) {
        EXPECT_EQ(kernel<T>(order)(src, dst, flag, nullptr), xfmStatusFlagError) << order << " flag " << flag;
        EXPECT_EQ(kernel<T>(order)(nullptr, dst, flag, nullptr), xfmStatusNullPointer) << order << " flag " << flag;
        EXPECT_EQ(kernel<T>(order)(src, nullptr, flag, nullptr), xfmStatusNullPointer) << order << " flag " << flag;
      }
      EXPECT_EQ(kernel<T>(order)(nullptr, nullptr, xfmScaleNone, nullptr), xfmStatusNullPointer) << order;
      EXPECT_EQ(kernel<T>(order)(src, nullptr, xfmScaleNone, nullptr), xfmStatusNullPointer) << order;
      EXPECT_EQ(kernel<T>(order)(nullptr, dst, xfmScaleNone, nullptr), xfmStatusNullPointer) << order;
      EXPECT_EQ(dispatcher<T>()(src, dst, order, 3, nullptr), xfmStatusFlagError) << order;
    }
  for (const int order : {0, 14, -1, INT_MIN, INT_MAX}) {
    EXPECT_EQ(dispatcher<T>()(nullptr, nullptr, order, 3, nullptr), xfmStatusSizeError) << order;
    EXPECT_EQ(dispatcher<T>()(data.src, data.dst, order, xfmScaleNone, nullptr), xfmStatusSizeError) << order;
  }
  EXPECT_EQ(std::memcmp(data.dst, untouched.data(), untouched.size()), 0);
  EXPECT_TRUE(allocator_log.sizes.empty() && allocator_log.freed.empty());
}

TYPED_TEST(Calls, TheDispatcherPassesTheBufferOn) {
  using T = TypeParam;
  static Data<T> data;
  alignas(16) static unsigned char buffer[73728];
  for (int order = 1; order <= kOrders; ++order) {
    const std::vector<T> input = rough_values<T>(order, order), expected = level_model(input, T(1));
    std::copy(input.begin(), input.end(), data.src);
    allocator_log.reset();
    // Below order 8 any value will do.
    void* given = order < kFirstBuffered ? reinterpret_cast<void*>(uintptr_t{1}) : buffer;
    ASSERT_EQ(dispatcher<T>()(data.src, data.dst, order, xfmScaleNone, given), xfmStatusOk);
    EXPECT_EQ(std::memcmp(data.dst, expected.data(), sizeof(T) << order), 0) << order;
    EXPECT_TRUE(allocator_log.sizes.empty()) << order;
  }
}

}  // namespace
