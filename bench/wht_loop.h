// A rival of the Walsh-Hadamard transform: a plain loop over 256-bit registers in the same order of levels, blocks of eight
// registers with all their levels, then passes of radix 8 in place. src and dst are aligned to 32 bytes.
#pragma once

namespace xfm::bench {

void loop_hadamard(const float* src, float* dst, int order, float scale);
void loop_hadamard(const double* src, double* dst, int order, double scale);

}  // namespace xfm::bench
