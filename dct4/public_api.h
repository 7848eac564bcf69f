// The public functions of the DCT-IV by element type, for the programs that test or measure both precisions alike.
#pragma once

#include "xfm.h"

namespace xfm::dct4 {

template <class Real>
struct Api;

template <>
struct Api<float> {
  using State = XfmDCT4State_32f;
  static constexpr const char* kName = "32f";
  static constexpr int kLanes = 8, kLastDirect = 64, kLargest = 1 << 26;
  static constexpr auto size = xfmgDCT4GetSize_32f;
  static constexpr auto init = xfmgDCT4Init_32f;
  static constexpr auto init_alloc = xfmgDCT4InitAlloc_32f;
  static constexpr auto release = xfmgDCT4Free_32f;
  static constexpr auto transform = xfmgDCT4_32f;
};

template <>
struct Api<double> {
  using State = XfmDCT4State_64f;
  static constexpr const char* kName = "64f";
  static constexpr int kLanes = 4, kLastDirect = 32, kLargest = 1 << 25;
  static constexpr auto size = xfmgDCT4GetSize_64f;
  static constexpr auto init = xfmgDCT4Init_64f;
  static constexpr auto init_alloc = xfmgDCT4InitAlloc_64f;
  static constexpr auto release = xfmgDCT4Free_64f;
  static constexpr auto transform = xfmgDCT4_64f;
};

}  // namespace xfm::dct4
