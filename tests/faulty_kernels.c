/* Stands before the library to see whether a test of it notices: a wrong result, a missing check, a wrong status. */
#define _GNU_SOURCE
#include <dlfcn.h>

#include "xfm.h"

XfmStatus xfmgHartley_8_32f(const Xfm32f* src, Xfm32f* dst, int flag) {
  if (!src || !dst) return xfmStatusNullPointer;
  if (flag != 1 && flag != 2 && flag != 4 && flag != 8) return xfmStatusFlagError;
  for (int n = 0; n < 8; ++n) dst[n] = src[n];
  return xfmStatusOk;
}

XfmStatus xfmgDFTFwd_CToC_5_64fc(const Xfm64fc* src, Xfm64fc* dst, int flag) {
  return dst && flag ? xfmgDFTFwd_CToC_64fc(src ? src : dst, dst, 5, flag) : xfmStatusNullPointer;
}

XfmStatus xfmgDCT4Free_64f(XfmDCT4State_64f* state) {
  XfmStatus (*const library)(XfmDCT4State_64f*) = (XfmStatus(*)(XfmDCT4State_64f*))dlsym(RTLD_NEXT, "xfmgDCT4Free_64f");
  return library(state) == xfmStatusOk ? xfmStatusFlagError : xfmStatusNullPointer;
}
