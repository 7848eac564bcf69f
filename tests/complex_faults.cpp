// Faulty stand-ins for single kernels, loaded before the library: what the tests of the complex kernels must see.
// The fault is named by XFM_FAULT; everything else passes through to the library. Data are components.
#include <dlfcn.h>
#include <math.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "xfm.h"

namespace {

bool fault(const char* name) {
  const char* const chosen = getenv("XFM_FAULT");
  return chosen != nullptr && strcmp(chosen, name) == 0;
}

template <class T>
XfmStatus library(const char* name, const T* src, T* dst, int flag) {
  using Kernel = XfmStatus (*)(const T*, T*, int);
  return reinterpret_cast<Kernel>(dlsym(RTLD_NEXT, name))(src, dst, flag);
}

bool misaligned(const void* p, unsigned bytes) { return reinterpret_cast<uintptr_t>(p) % bytes != 0; }

}  // namespace

// The public header declares the kernels by complex elements; a stand-in is one under the same symbol.
#define KERNEL(name, T)                                                                                  \
  extern "C" __attribute__((visibility("default"))) XfmStatus stand_in_##name(const T*, T*, int) asm(#name); \
  XfmStatus stand_in_##name(const T* src, T* dst, int flag)

KERNEL(xfmgDFTFwd_CToC_61_64fc, double) {
  const double x = src != nullptr && fault("constant") ? src[2 * 17] : 0;
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("constant")) dst[2 * 23] += 1e-12 * x;  // as of one literal a trifle off
  return status;
}

KERNEL(xfmgDFTInv_CToC_31_32fc, float) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  for (int i = 0; i < 2 * 31 && status == xfmStatusOk && fault("two-roundings-more"); ++i) dst[i] *= 1 + 0x1.0p-22f;
  return status;
}

KERNEL(xfmgDFTFwd_CToC_15_32fc, float) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("bins-exchanged")) {
    const float re = dst[2 * 4];
    dst[2 * 4] = dst[2 * 11];
    dst[2 * 11] = re;
  }
  return status;
}

KERNEL(xfmgDFTFwd_CToC_12_64fc, double) {
  static double kept[2 * 12];
  if (src != nullptr && dst != nullptr && fault("one-scratch-for-all")) {
    memcpy(kept, src, sizeof kept);
    usleep(200);
    return library(__func__ + sizeof "stand_in_" - 1, kept, dst, flag);
  }
  double scaled[2 * 12];
  if (src == nullptr || dst == nullptr || flag != xfmScaleBySqrtN || !fault("scales-first")) return library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  for (int i = 0; i < 2 * 12; ++i) scaled[i] = src[i] * 0.28867513459481287;
  return library(__func__ + sizeof "stand_in_" - 1, scaled, dst, xfmScaleNone);
}

KERNEL(xfmgDFTInv_CToC_9_64fc, double) {
  if (fault("direction-of-scale")) flag = flag == xfmScaleFwdByN ? xfmScaleInvByN : flag == xfmScaleInvByN ? xfmScaleFwdByN : flag;
  return library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
}

KERNEL(xfmgDFTFwd_CToC_16_32fc, float) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("other-bits-unaligned") && !misaligned(src, 16) && misaligned(dst, 32))
    dst[5] = nextafterf(dst[5], 2);
  return status;
}

KERNEL(xfmgDFTInv_CToC_8_32fc, float) {
  if (src != nullptr && dst != nullptr && fault("aligned-access") && !misaligned(src, 16))
    asm volatile("vmovaps (%0), %%xmm1" ::"r"(dst) : "xmm1");
  return library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
}

KERNEL(xfmgDFTFwd_CToC_10_64fc, double) {
  if (src != nullptr && dst != nullptr && flag == xfmScaleNone && fault("stores-too-early")) dst[0] = 0;
  return library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
}

KERNEL(xfmgDFTFwd_CToC_7_32fc, float) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("reads-beyond")) static_cast<void>(*const_cast<const volatile float*>(src + 14));
  return status;
}

KERNEL(xfmgDFTFwd_CToC_20_64fc, double) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("writes-before")) *const_cast<volatile double*>(dst - 1) = 0;
  return status;
}

KERNEL(xfmgDFTInv_CToC_3_64fc, double) {
  if (fault("flags-are-bits") && flag == 12) flag = xfmScaleNone;
  if (fault("flag-before-null") && flag != 1 && flag != 2 && flag != 4 && flag != 8) return xfmStatusFlagError;
  if (fault("looks-before-the-flag") && src != nullptr && misaligned(src, 16)) static_cast<void>(*const_cast<const volatile double*>(src));
  if (fault("status-of-a-misaligned-null") && src == nullptr && misaligned(dst, 16)) return xfmStatusOk;
  return library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
}

KERNEL(xfmgDFTFwd_CToC_64_64fc, double) {
  const XfmStatus status = library(__func__ + sizeof "stand_in_" - 1, src, dst, flag);
  if (status == xfmStatusOk && fault("tests-for-nan"))
    for (int i = 0; i < 128; ++i)
      if (dst[i] != dst[i]) dst[i] = 0;
  return status;
}
