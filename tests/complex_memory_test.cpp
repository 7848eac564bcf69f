// What the complex kernels touch: exactly their arrays, wherever they lie, in place or not, and nothing at all on bad
// arguments; and that none of it changes a bit of the result.
#include <csetjmp>
#include <csignal>
#include <limits>

#include "tests/complex_support.h"

namespace complex_test {
namespace {

sigjmp_buf before_fault;
volatile uintptr_t fault_address;

void on_fault(int, siginfo_t* info, void*) {
  fault_address = reinterpret_cast<uintptr_t>(info->si_addr);
  siglongjmp(before_fault, 1);
}

// Calls a kernel; a touched page that must not be touched, or an aligned access to a misaligned address, is a failure that
// names the call instead of the end of the program.
template <class T>
testing::AssertionResult returns(XfmStatus expected, const Call<T>& call, const T* src, T* dst) {
  struct sigaction action = {}, old_segv, old_bus;
  action.sa_sigaction = on_fault;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  sigaction(SIGSEGV, &action, &old_segv);
  sigaction(SIGBUS, &action, &old_bus);
  volatile XfmStatus status = xfmStatusOk;
  volatile bool fault = true;
  if (sigsetjmp(before_fault, 1) == 0) {
    status = call.kernel.run(src, dst, call.flag);
    fault = false;
  }
  sigaction(SIGSEGV, &old_segv, nullptr);
  sigaction(SIGBUS, &old_bus, nullptr);
  if (fault)
    return testing::AssertionFailure() << call << ": fault at address " << fault_address << ", src "
                                       << reinterpret_cast<uintptr_t>(src) << ", dst " << reinterpret_cast<uintptr_t>(dst);
  if (status != expected) return testing::AssertionFailure() << call << ": status " << status << ", expected " << expected;
  return testing::AssertionSuccess();
}

constexpr int kWidest = 32;  // bytes, of an alignment that a kernel may test

template <class T>
constexpr int kOffsets = kWidest / sizeof(T);

// Components at each offset from an address divisible by the widest alignment; the rest keeps a pattern.
template <class T>
class Shifted {
 public:
  Shifted(const std::vector<T>& values, int offset) : offset_(offset), count_(values.size()), room_(count_ + 3 * kOffsets<T>, kFill) {
    while (reinterpret_cast<uintptr_t>(&room_[start_]) % kWidest != 0) ++start_;
    std::copy(values.begin(), values.end(), data());
  }
  Shifted(const Shifted&) = delete;
  T* data() { return &room_[start_ + offset_]; }
  std::vector<T> values() { return {data(), data() + count_}; }
  bool clean_around() {
    return std::all_of(room_.data(), data(), is_fill) && std::all_of(data() + count_, room_.data() + room_.size(), is_fill);
  }

 private:
  static constexpr T kFill = T(-7.125);
  static bool is_fill(T v) { return v == kFill; }
  int offset_, start_ = 0;
  size_t count_;
  std::vector<T> room_;
};

template <class T>
std::string place(int src, int dst) {
  return "src at byte " + std::to_string(src * sizeof(T)) + " and dst at byte " + std::to_string(dst * sizeof(T)) + " of " +
         std::to_string(kWidest);
}

class ComplexMemory : public ByDispatcher {};
INSTANTIATE_TEST_SUITE_P(All, ComplexMemory, testing::ValuesIn(kDispatchers), dispatcher_name);

TEST_P(ComplexMemory, BitsDoNotDependOnAlignment) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    const std::vector<T> values = random_values<T>(k.components(), k.n), blank(k.components(), T(3));
    std::vector<T> expected;
    for (int src_offset = 0; src_offset < kOffsets<T>; ++src_offset)
      for (int dst_offset = 0; dst_offset < kOffsets<T>; ++dst_offset) {
        const Call<T> call{k, kFlags[src_offset % 2], "random, seed " + std::to_string(k.n), place<T>(src_offset, dst_offset)};
        Shifted<T> src(values, src_offset), dst(blank, dst_offset);
        ASSERT_TRUE(returns(xfmStatusOk, call, src.data(), dst.data()));
        // Scaled anew where the flag scales: the literal is the last operation.
        if (src_offset == 0 && dst_offset == 0) expected = dst.values();
        std::vector<T> scaled = expected;
        for (T& v : scaled) v *= k.scale(call.flag);
        ASSERT_TRUE(equal_bits(dst.values(), scaled)) << call;
        ASSERT_TRUE(dst.clean_around() && src.clean_around()) << call;
        ASSERT_TRUE(equal_bits(src.values(), values)) << call << ": src is written to";
      }
  });
}

TEST_P(ComplexMemory, InPlaceGivesTheSameBits) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    const std::vector<T> values = random_values<T>(k.components(), k.n + 100);
    for (int flag : kFlags) {
      const std::vector<T> expected = run(Call<T>{k, flag}, values);
      for (int offset = 0; offset < kOffsets<T>; ++offset) {
        const Call<T> call{k, flag, "random, seed " + std::to_string(k.n + 100), "in place, " + place<T>(offset, offset)};
        Shifted<T> shared(values, offset);
        ASSERT_TRUE(returns(xfmStatusOk, call, shared.data(), shared.data()));
        ASSERT_TRUE(equal_bits(shared.values(), expected)) << call;
        ASSERT_TRUE(shared.clean_around()) << call;
      }
    }
  });
}

// Each array in turn ends or begins at a page that cannot be read; src cannot be written. Arrays at a page's end are
// aligned or not as their length has it, and an offset of one component takes the other body.
TEST_P(ComplexMemory, ArraysOfExactLength) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    using Array = Guarded<T>;
    const std::vector<T> values = random_values<T>(k.components(), k.n);
    const std::vector<T> expected = run(Call<T>{k}, values);
    for (const auto src_at : {Array::At::Begin, Array::At::End})
      for (const auto dst_at : {Array::At::Begin, Array::At::End})
        for (int shift : {0, 1}) {
          const auto where = [](auto at) { return std::string(at == Array::At::Begin ? "behind" : "before") + " an unreadable page"; };
          const Call<T> call{k, xfmScaleNone, "random, seed " + std::to_string(k.n),
                             "src " + where(src_at) + ", dst " + where(dst_at) + " at a distance of " + std::to_string(shift)};
          Array src(k.components(), src_at), dst(k.components(), dst_at, shift);
          src.fill(values);
          src.protect();
          ASSERT_TRUE(returns(xfmStatusOk, call, static_cast<const T*>(src.data()), dst.data()));
          ASSERT_TRUE(equal_bits(dst.values(), expected)) << call;
          ASSERT_TRUE(dst.clean_around()) << call;
        }
    for (const auto at : {Array::At::Begin, Array::At::End}) {
      const Call<T> call{k, xfmScaleNone, "random, seed " + std::to_string(k.n), "in place beside an unreadable page"};
      Array shared(k.components(), at);
      shared.fill(values);
      ASSERT_TRUE(returns(xfmStatusOk, call, shared.data(), shared.data()));
      ASSERT_TRUE(equal_bits(shared.values(), expected)) << call;
    }
  });
}

// Null pointers come before the flag, and before either is settled neither array is touched: here touching is a fault.
TEST_P(ComplexMemory, BadArgumentsTouchNothing) {
  constexpr int kBadFlags[] = {0,  3,  5,  6,  7,   9,   10,      11,           12,           13, 14,
                               15, 16, 17, 24, 32,  -1,  -8,      0x108,        1 << 30,      8 + (1 << 30),
                               8 + (1 << 16), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  for_each_kernel([&](const auto& k, auto one) {
    using T = decltype(one);
    Guarded<T> pages(0, Guarded<T>::At::End);
    T* const forbidden = pages.data();  // the page from here on cannot be touched
    for (int src = 0; src < kOffsets<T>; ++src)
      for (int dst = 0; dst < kOffsets<T>; ++dst)
        for (int flag : kBadFlags)
          ASSERT_TRUE(returns(xfmStatusFlagError, Call<T>{k, flag, "", place<T>(src, dst)}, static_cast<const T*>(forbidden + src),
                              forbidden + dst));
    for (const auto& flags : {std::vector<int>(std::begin(kFlags), std::end(kFlags)), std::vector<int>{0, 3, -1}})
      for (int flag : flags) {
        for (int offset = 0; offset < kOffsets<T>; ++offset) {
          const Call<T> call{k, flag, "", "beside null, at byte " + std::to_string(offset * sizeof(T))};
          ASSERT_TRUE(returns(xfmStatusNullPointer, call, static_cast<const T*>(forbidden + offset), static_cast<T*>(nullptr)));
          ASSERT_TRUE(returns(xfmStatusNullPointer, call, static_cast<const T*>(nullptr), forbidden + offset));
        }
        const Call<T> call{k, flag, "", "both null"};
        ASSERT_TRUE(returns(xfmStatusNullPointer, call, static_cast<const T*>(nullptr), static_cast<T*>(nullptr)));
      }
  });
}

// Callers that pass a wider integer leave bits above the flag's own 32.
TEST_P(ComplexMemory, OnlyTheLowHalfOfTheFlagRegisterCounts) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    const auto wide = reinterpret_cast<XfmStatus (*)(const T*, T*, long long)>(reinterpret_cast<void*>(k.run));
    const std::vector<T> src = random_values<T>(k.components(), k.n);
    for (int flag : kFlags) {
      std::vector<T> dst(k.components());
      ASSERT_EQ(wide(src.data(), dst.data(), 0x5eed00000000LL | flag), xfmStatusOk) << k.name << " flag " << flag;
      ASSERT_TRUE(equal_bits(dst, run(Call<T>{k, flag}, src))) << k.name << " flag " << flag;
    }
  });
}

}  // namespace
}  // namespace complex_test
