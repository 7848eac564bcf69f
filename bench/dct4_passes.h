// The twiddle passes before and after the transform of half the length (dct4_rival.h). They need AVX2 and FMA.
#pragma once

namespace xfm::bench {

void twist_in(const float* x, const float* w, float* z, int half);
void twist_in(const double* x, const double* w, double* z, int half);
void twist_out(const float* z, const float* w, float* y, int half);
void twist_out(const double* z, const double* w, double* y, int half);

}  // namespace xfm::bench
