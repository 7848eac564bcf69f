// Faulty stand-ins for single kernels, loaded before the library: what the tests of the real transforms must see.
// The fault is named by XFM_FAULT; everything else passes through to the library.
#include <dlfcn.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

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

}  // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT XfmStatus xfmgDFTFwd_RToPack_31_64f(const Xfm64f* src, Xfm64f* dst, int flag) {
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status == xfmStatusOk && fault("constant")) dst[7] += 4e-15 * src[3];  // as of one constant a trifle off
  return status;
}

EXPORT XfmStatus xfmgDFTFwd_RToPerm_14_32f(const Xfm32f* src, Xfm32f* dst, int flag) {
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status == xfmStatusOk && fault("cells-exchanged")) {
    const Xfm32f nyquist = dst[1];
    dst[1] = dst[13];
    dst[13] = nyquist;
  }
  return status;
}

EXPORT XfmStatus xfmgDFTFwd_RToPack_5_32f(const Xfm32f* src, Xfm32f* dst, int flag) {
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status == xfmStatusOk && fault("rounded-twice")) {  // scaled in single precision behind the narrowing
    Xfm32f unscaled[5];
    library(__func__, src, unscaled, xfmScaleNone);
    if (flag == xfmScaleFwdByN)
      for (int j = 1; j < 5; ++j) dst[j] = 0.2f * unscaled[j];
  }
  return status;
}

EXPORT XfmStatus xfmgDFTFwd_RToCCS_12_64f(const Xfm64f* src, Xfm64f* dst, int flag) {
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status != xfmStatusOk) return status;
  if (fault("one-cell-too-many")) dst[14] = 0;
  if (fault("computed-zero")) dst[13] = 0 * src[0];
  if (fault("negative-zero") && dst[3] == 0) dst[3] = -dst[3];
  return status;
}

EXPORT XfmStatus xfmgDFTInv_CCSToR_10_32f(const Xfm32f* src, Xfm32f* dst, int flag) {
  const Xfm32f ignored = src != nullptr && fault("looks-at-zero-cell") ? src[11] : 0;
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status == xfmStatusOk && isnan(ignored)) dst[0] = ignored;
  return status;
}

EXPORT XfmStatus xfmgHartley_9_64f(const Xfm64f* src, Xfm64f* dst, int flag) {
  if (dst != nullptr && fault("writes-before-the-flag")) dst[0] = 0;
  if (fault("flag-before-null") && flag != 1 && flag != 2 && flag != 4 && flag != 8) return xfmStatusFlagError;
  if (fault("flags-are-bits") && flag == 10) flag = 8;
  if (src != nullptr && dst != nullptr && fault("stores-too-early")) {
    dst[4] = 0;
  }
  const XfmStatus status = library(__func__, src, dst, flag);
  if (status == xfmStatusOk && fault("direction-of-scale") && flag == xfmScaleInvByN)
    for (int i = 0; i < 9; ++i) dst[i] *= 9;
  return status;
}

EXPORT XfmStatus xfmgDFTInv_PermToR_16_64f(const Xfm64f* src, Xfm64f* dst, int flag) {
  if (src != nullptr && fault("aligned-loads")) {
    asm volatile("vmovapd (%0), %%ymm0\n\tvzeroupper" : : "r"(src) : "xmm0", "memory");
  }
  return library(__func__, src, dst, flag);
}
