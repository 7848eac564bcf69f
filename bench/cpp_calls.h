// Pairs of functions, one by the C functions and one by the C++ binding: the benchmark times them, and a test compares their
// machine code.
#pragma once

#include <array>
#include <complex>
#include <cstddef>

#include "xfm.hpp"

extern "C" {

void kernel_c(const Xfm32fc* x, Xfm32fc* y);
void kernel_cpp(const std::complex<float>* x, std::complex<float>* y);

XfmStatus dispatcher_c(const double* x, double* y, int n);
XfmStatus dispatcher_cpp(const double* x, double* y, int n);

XfmStatus extent_c(const float* x, float* y);
XfmStatus extent_cpp(const std::array<float, 31>& x, std::array<float, 31>& y);

XfmStatus state_c(XfmDCT4State_32f* const* state, const float* x, float* y);
XfmStatus state_cpp(const xfm::Dct4<float>& state, const float* x, float* y);

void batch_c(const Xfm32fc* x, Xfm32fc* y, std::size_t count);
void batch_cpp(const std::complex<float>* x, std::complex<float>* y, std::size_t count);

}  // extern "C"
