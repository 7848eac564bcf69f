#include "bench/cpp_calls.h"

extern "C" {

void kernel_c(const Xfm32fc* x, Xfm32fc* y) { (void)xfmgDFTFwd_CToC_60_32fc(x, y, xfmScaleNone); }
void kernel_cpp(const std::complex<float>* x, std::complex<float>* y) { (void)xfm::dft<60>(x, y, xfm::Scale::None, xfm::as_status); }

XfmStatus dispatcher_c(const double* x, double* y, int n) { return xfmgDFTInv_PermToR_64f(x, y, n, xfmScaleInvByN); }
XfmStatus dispatcher_cpp(const double* x, double* y, int n) {
  return xfm::inverse_real_dft<xfm::Perm>(x, y, n, xfm::Scale::InverseByN, xfm::as_status);
}

XfmStatus extent_c(const float* x, float* y) { return xfmgHartley_31_32f(x, y, xfmScaleBySqrtN); }
XfmStatus extent_cpp(const std::array<float, 31>& x, std::array<float, 31>& y) {
  return xfm::hartley(x, y, xfm::Scale::BySqrtN, xfm::as_status);
}

XfmStatus state_c(XfmDCT4State_32f* const* state, const float* x, float* y) { return xfmgDCT4_32f(x, y, *state); }
XfmStatus state_cpp(const xfm::Dct4<float>& state, const float* x, float* y) { return state(x, y, xfm::as_status); }

void batch_c(const Xfm32fc* x, Xfm32fc* y, size_t count) {
  for (size_t i = 0; i < count; ++i, x += 8, y += 8) (void)xfmgDFTFwd_CToC_8_32fc(x, y, xfmScaleNone);
}
void batch_cpp(const std::complex<float>* x, std::complex<float>* y, std::size_t count) {
  xfm::for_each({count, 8, 8}, x, y, [](auto* src, auto* dst) { (void)xfm::dft<8>(src, dst, xfm::Scale::None, xfm::as_status); });
}

}  // extern "C"
