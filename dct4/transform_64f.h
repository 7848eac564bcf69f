// The transform in double precision: tests, dispatch and straight-line lengths in one function.
#pragma once

extern "C" XfmStatus xfmgDCT4_64f(const Xfm64f* src, Xfm64f* dst, XfmDCT4State_64f* state) {
  if (state == nullptr || src == nullptr || dst == nullptr) return xfmStatusNullPointer;
  const auto* self = reinterpret_cast<const xfm::dct4::Env1*>(state);
  switch (self->rule) {
    case 1: straight2(src, dst); break;
    case 2: straight4(src, dst); break;
    case 3: straight8(src, dst); break;
    case 4: straight16(src, dst); break;
    case 5: straight32(src, dst); break;
    case xfm::dct4::kRootGeneral<Precision>: return xfm::dct4::transform_general(self, dst, src);
    default: return xfm::dct4::kNoSuchRule;
  }
  return xfmStatusOk;
}
