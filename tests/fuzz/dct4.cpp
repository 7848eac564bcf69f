// Lives of DCT-IV states: size, Init or InitAlloc, some transforms, Free, in random order with random lengths.
#include <cstring>
#include <memory>
#include <vector>

#include "tests/arrays.h"
#include "tests/fuzz/input.h"
#include "xfm.h"

namespace {

constexpr int kLargest = 1 << 12;

template <class T, class State>
struct Functions {
  XfmStatus (*size)(int, int*), (*init)(State**, int, void*), (*init_alloc)(State**, int), (*run)(const T*, T*, State*), (*free)(State*);
};
constexpr Functions<float, XfmDCT4State_32f> kSingle = {xfmgDCT4GetSize_32f, xfmgDCT4Init_32f, xfmgDCT4InitAlloc_32f, xfmgDCT4_32f, xfmgDCT4Free_32f};
constexpr Functions<double, XfmDCT4State_64f> kDouble = {xfmgDCT4GetSize_64f, xfmgDCT4Init_64f, xfmgDCT4InitAlloc_64f, xfmgDCT4_64f, xfmgDCT4Free_64f};

template <class T, class State>
void transforms(fuzz::Input& in, const Functions<T, State>& f, State* state, int length) {
  const auto src = test_arrays::random_values<T>(length, in.byte());
  std::vector<T> first(length + 2, T(-7)), second = first;
  fuzz::require(f.run(nullptr, first.data(), state) == -8 && f.run(src.data(), nullptr, state) == -8 && first[0] == T(-7));
  fuzz::require(f.run(src.data(), first.data() + 1, state) == 0);
  std::copy(src.begin(), src.end(), second.begin() + 1);
  fuzz::require(f.run(second.data() + 1, second.data() + 1, state) == 0);  // in place, the state used again
  fuzz::require(std::memcmp(first.data(), second.data(), first.size() * sizeof(T)) == 0);
  fuzz::require(first.front() == T(-7) && first.back() == T(-7));
}

template <class T, class State>
void life(fuzz::Input& in, const Functions<T, State>& f) {
  const int length = in.flag() ? 1 << in.below(13) : in.any() % kLargest;
  const bool power = length >= 2 && (length & (length - 1)) == 0;
  int bytes = -7;
  const XfmStatus sized = f.size(length, &bytes);
  fuzz::require(power ? sized == 0 && bytes > 0 : sized != 0 || bytes > 0);
  if (sized != 0) fuzz::require(bytes == -7);
  if (!power) return;  // what other lengths do is not provided for
  State* state = nullptr;
  if (in.flag()) {
    const int shift = static_cast<int>(in.below(64));
    test_arrays::Guarded<unsigned char> guard(16, test_arrays::Guarded<unsigned char>::At::End);
    std::vector<unsigned char> block(static_cast<std::size_t>(bytes) + 64 + 64, 0x5a);
    fuzz::require(f.init(&state, length, block.data() + shift) == 0 && state != nullptr);
    transforms(in, f, state, length);
    for (int i = 0; i < shift; ++i) fuzz::require(block[i] == 0x5a);
    for (std::size_t i = static_cast<std::size_t>(shift + bytes); i < block.size(); ++i) fuzz::require(block[i] == 0x5a);
  } else {
    fuzz::require(f.init_alloc(&state, length) == 0 && state != nullptr);
    transforms(in, f, state, length);
    fuzz::require(f.free(state) == 0);
  }
  fuzz::require(f.free(nullptr) == -8 && f.init(nullptr, length, nullptr) == -8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  for (int i = 0; i < 4 && !in.empty(); ++i) in.flag() ? life(in, kSingle) : life(in, kDouble);
  return 0;
}
