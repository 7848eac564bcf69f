#include <stdio.h>
#include <xfm.h>

int main(void) {
  const Xfm32f samples[8] = {0, 1, 0, -1, 0, 1, 0, -1}; /* two turns of a sine */
  Xfm32fc bins[5];
  if (!__builtin_cpu_supports("avx")) return fputs("this processor has no AVX\n", stderr), 1;
  if (xfmgDFTFwd_RToCCS_32f(samples, &bins[0].re, 8, xfmScaleNone) != xfmStatusOk) return 1;
  for (int k = 0; k < 5; ++k) printf("bin %d: %g %+gi\n", k, bins[k].re, bins[k].im);
  return 0;
}
