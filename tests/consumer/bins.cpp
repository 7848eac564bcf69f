// The spectrum of ten_lines.c, through the C++ header.
#include <array>
#include <complex>
#include <cstdio>

#include <xfm.hpp>

int main() {
  const std::array<float, 8> samples = {0, 1, 0, -1, 0, 1, 0, -1};
  std::array<std::complex<float>, 5> bins;
  xfm::real_dft(samples, bins);
  for (int k = 0; k < 5; ++k) std::printf("bin %d: %g %+gi\n", k, bins[k].real(), bins[k].imag());
}
