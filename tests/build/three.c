/* Calls three kernels and no more. */
#include <stdio.h>
#include <xfm.h>

int main(void) {
  Xfm32fc x[15] = {{1, 0}}, y[15];
  Xfm64f r[16] = {1}, s[18];
  Xfm32f h[17] = {1};
  if (xfmgDFTFwd_CToC_15_32fc(x, y, xfmScaleNone) || xfmgDFTFwd_RToCCS_16_64f(r, s, xfmScaleNone) ||
      xfmgHartley_17_32f(h, h, xfmScaleNone))
    return 1;
  printf("%g %g %g\n", y[14].re, s[16], h[16]);
  return 0;
}
