// Random calls of the dispatchers and of the size queries: statuses as the header states them, nothing touched beyond
// the arrays, which end at unreadable pages.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/arrays.h"
#include "tests/fuzz/input.h"
#include "xfm.hpp"

namespace {

using Guarded = test_arrays::Guarded<unsigned char>;

struct Dispatcher {
  XfmStatus (*run)(const void*, void*, int, int, void*);
  int element;
};
#define ROW(name, element) {reinterpret_cast<XfmStatus (*)(const void*, void*, int, int, void*)>(name), element}
const Dispatcher kDispatchers[] = {
    ROW(xfmgDFTFwd_CToC_32fc, 8), ROW(xfmgDFTFwd_CToC_64fc, 16), ROW(xfmgDFTInv_CToC_32fc, 8), ROW(xfmgDFTInv_CToC_64fc, 16),
    ROW(xfmgDFTFwd_RToCCS_32f, 4), ROW(xfmgDFTFwd_RToCCS_64f, 8), ROW(xfmgDFTFwd_RToPack_32f, 4), ROW(xfmgDFTFwd_RToPack_64f, 8),
    ROW(xfmgDFTFwd_RToPerm_32f, 4), ROW(xfmgDFTFwd_RToPerm_64f, 8), ROW(xfmgDFTInv_CCSToR_32f, 4), ROW(xfmgDFTInv_CCSToR_64f, 8),
    ROW(xfmgDFTInv_PackToR_32f, 4), ROW(xfmgDFTInv_PackToR_64f, 8), ROW(xfmgDFTInv_PermToR_32f, 4), ROW(xfmgDFTInv_PermToR_64f, 8),
    ROW(xfmgHartley_32f, 4), ROW(xfmgHartley_64f, 8)};

void transform(fuzz::Input& in) {
  const auto index = in.below(18);
  const Dispatcher& d = kDispatchers[index];
  const int length = in.flag() ? xfm::shortest_dft + static_cast<int>(in.below(xfm::longest_dft - xfm::shortest_dft + 1)) : in.any();
  const int flag = in.flag() ? 1 << in.below(4) : in.any();
  const bool in_range = length >= xfm::shortest_dft && length <= xfm::longest_dft, good_flag = flag == 1 || flag == 2 || flag == 4 || flag == 8;
  const int cells = in_range ? length : xfm::shortest_dft, bytes = (cells + 2) * d.element;
  const auto at = in.flag() ? Guarded::At::End : Guarded::At::Begin;
  Guarded src(bytes, at), dst(bytes, at);
  for (int i = 0; i < bytes; ++i) src.data()[i] = in.byte();
  const auto before = src.values(), untouched = dst.values();
  const bool null_src = in.below(8) == 0, null_dst = in.below(8) == 0;
  const XfmStatus status = d.run(null_src ? nullptr : src.data(), null_dst ? nullptr : dst.data(), length, flag, nullptr);
  const XfmStatus due = !in_range ? -6 : null_src || null_dst ? -8 : !good_flag ? -16 : 0;
  fuzz::require(status == due);
  fuzz::require(src.values() == before && src.clean_around() && dst.clean_around());
  if (due != 0) fuzz::require(dst.values() == untouched);
}

void buffer_size(fuzz::Input& in) {
  const int order = in.flag() ? static_cast<int>(in.below(16)) : in.any();
  int single = -7, twice = -7;
  const XfmStatus a = xfmgWHTGetBufferSize_32f(order, &single), b = xfmgWHTGetBufferSize_64f(order, &twice);
  const bool good = order >= 1 && order <= 13;
  fuzz::require(a == (good ? 0 : -6) && b == a);
  fuzz::require(good ? single >= 0 && twice >= single : single == -7 && twice == -7);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  while (!in.empty()) in.below(16) == 0 ? buffer_size(in) : transform(in);
  return 0;
}
