// The transform in single precision: three tests in front of the root's compute.
#pragma once

extern "C" {

XFM_INTERNAL XfmStatus owngDCT4_32fg9_env1_compute(const xfm::dct4::Env1* self, float* dst, const float* src) {
  switch (self->rule) {
    case 1: straight2(src, dst); break;
    case 2: straight4(src, dst); break;
    case 3: straight8(src, dst); break;
    case 4: straight16(src, dst); break;
    case 5: straight32(src, dst); break;
    case 6: straight64(src, dst); break;
    case xfm::dct4::kRootGeneral<Precision>: return xfm::dct4::transform_general(self, dst, src);
    default: return xfm::dct4::kNoSuchRule;
  }
  return xfmStatusOk;
}

XfmStatus xfmgDCT4_32f(const Xfm32f* src, Xfm32f* dst, XfmDCT4State_32f* state) {
  if (state == nullptr || src == nullptr || dst == nullptr) return xfmStatusNullPointer;
  return owngDCT4_32fg9_env1_compute(reinterpret_cast<const xfm::dct4::Env1*>(state), dst, src);
}
}
