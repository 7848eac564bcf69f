// The rivals of the Walsh-Hadamard benchmark.
#pragma once

#include <memory>

namespace xfm::bench {

// A plain loop over 256-bit registers in the same order of levels: blocks of eight registers with all their levels, then
// passes of radix 8 in place. src and dst are aligned to 32 bytes.
void loop_hadamard(const float* src, float* dst, int order, float scale);
void loop_hadamard(const double* src, double* dst, int order, double scale);

// FFTW's real transform of size 2 in `order` dimensions, unscaled.
template <class T>
class FftwHadamard {
 public:
  FftwHadamard(T* src, T* dst, int order);
  ~FftwHadamard();
  void run() const;

 private:
  struct Plan;
  std::unique_ptr<Plan> plan_;
};

}  // namespace xfm::bench
