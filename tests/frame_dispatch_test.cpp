// The generated dispatchers over recording kernels: every size reaches the kernel of its own number with the arguments
// in their places, every other size is refused without a look at anything else.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/frame_recorder.h"
#include "xfm.h"

namespace {

XfmStatus call(const RecordedDispatcher& dispatcher, const void* src, void* dst, int size, int flag, void* buffer) {
  recorded_call = {};
  if (dispatcher.takes_buffer)
    return reinterpret_cast<XfmStatus (*)(const void*, void*, int, int, void*)>(dispatcher.function)(src, dst, size,
                                                                                                   flag, buffer);
  return reinterpret_cast<XfmStatus (*)(const void*, void*, int, int)>(dispatcher.function)(src, dst, size, flag);
}

// xfmgWHT_32f, 5 -> xfmgWHT_5_32f
std::string kernel_name(const std::string& dispatcher, int size) {
  const size_t type = dispatcher.rfind('_');
  return dispatcher.substr(0, type) + "_" + std::to_string(size) + dispatcher.substr(type);
}

TEST(Dispatchers, AllTwentyAreHere) {
  int transforms = 0, hadamard = 0;
  for (int i = 0; i < recorded_dispatcher_count; ++i) {
    const RecordedDispatcher& dispatcher = recorded_dispatchers[i];
    const bool is_hadamard = std::string(dispatcher.name).starts_with("xfmgWHT_");
    EXPECT_EQ(dispatcher.first, is_hadamard ? 1 : 2) << dispatcher.name;
    EXPECT_EQ(dispatcher.last, is_hadamard ? 13 : 64) << dispatcher.name;
    EXPECT_EQ(dispatcher.takes_buffer, is_hadamard) << dispatcher.name;
    ++(is_hadamard ? hadamard : transforms);
  }
  EXPECT_EQ(transforms, 18);
  EXPECT_EQ(hadamard, 2);
}

TEST(Dispatchers, EverySizeReachesItsKernelWithTheArgumentsUnchanged) {
  char src = 0, dst = 0, buffer = 0;
  const int flags[] = {xfmScaleNone, 0, -1, INT_MIN, 0x12345678};
  for (int i = 0; i < recorded_dispatcher_count; ++i) {
    const RecordedDispatcher& dispatcher = recorded_dispatchers[i];
    for (int size = dispatcher.first; size <= dispatcher.last; ++size) {
      for (const int flag : flags) {
        ASSERT_EQ(call(dispatcher, &src, &dst, size, flag, &buffer), kRecordedStatus) << dispatcher.name << ' ' << size;
        ASSERT_NE(recorded_call.kernel, nullptr) << dispatcher.name << ' ' << size;
        EXPECT_EQ(recorded_call.kernel, kernel_name(dispatcher.name, size));
        EXPECT_EQ(recorded_call.src, &src);
        EXPECT_EQ(recorded_call.dst, &dst);
        EXPECT_EQ(recorded_call.flag, flag);
        const bool kernel_takes_buffer = dispatcher.takes_buffer && size >= 8;
        EXPECT_EQ(recorded_call.buffer, kernel_takes_buffer ? &buffer : nullptr);
      }
    }
  }
}

TEST(Dispatchers, ASizeOutOfRangeReachesNoKernel) {
  for (int i = 0; i < recorded_dispatcher_count; ++i) {
    const RecordedDispatcher& dispatcher = recorded_dispatchers[i];
    for (const int size : {dispatcher.first - 1, dispatcher.last + 1, dispatcher.first - 2, dispatcher.last + 2, -1, -2,
                           -64, 256 + dispatcher.first, 65536 + dispatcher.first, INT_MAX, INT_MAX - 1, INT_MIN,
                           INT_MIN + 1, INT_MIN + dispatcher.first}) {
      EXPECT_EQ(call(dispatcher, nullptr, nullptr, size, 0, nullptr), xfmStatusSizeError)
          << dispatcher.name << ' ' << size;
      EXPECT_EQ(recorded_call.kernel, nullptr) << dispatcher.name << ' ' << size;
    }
  }
}

TEST(Dispatchers, AGoodSizePassesBadArgumentsOn) {
  for (int i = 0; i < recorded_dispatcher_count; ++i) {
    const RecordedDispatcher& dispatcher = recorded_dispatchers[i];
    EXPECT_EQ(call(dispatcher, nullptr, nullptr, dispatcher.first, 77, nullptr), kRecordedStatus) << dispatcher.name;
    EXPECT_EQ(recorded_call.flag, 77);
  }
}

}  // namespace
