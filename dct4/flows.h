// The inner transforms of the DCT-IV.
//
//   odd real transform    Z(g) = sum over t = -L/2+1 .. L/2 of D[t] exp(i pi t (2g+1)/L), g = 0 .. L/2-1
//   odd real synthesis    Y(u) = Re sum over b = 0 .. L/2-1 of T[b] exp(i pi u (2b+1)/L), u = -L/2 .. L/2-1
//
// D is anti-periodic, D[t+L] = -D[t]. Each is the other's transpose; both split L = d'*m2 by a plan's factors d' until
// L = 2.
#pragma once

#include <functional>
#include <vector>

#include "dct4/kernel_plans.h"
#include "dct4/network.h"

namespace xfm::dct4 {

using Sequence = std::function<Value(int t)>;

std::vector<Complex> forward(Network& net, const Splits& splits, const Sequence& d, bool fold_parts = false);
// The result at index u + L/2.
std::vector<Value> synthesis(Network& net, const Splits& splits, const std::vector<Complex>& t);

// The combining step, one h: F(f) = sum over r of S[r] exp(i pi r (2h+1)/m) exp(2 pi i r f/d'), by one complex DFT of d'
// points or by DFTs of e and then of 4, d' = 4e. `rotation` gives an entry of a table's section as its cosine and sine:
// the first section has the d'-1 or e-1 rotations before the first DFTs, the second the 3e between the two.
using Rotation = std::function<Complex(int section, int entry)>;
std::vector<Complex> combine(Network& net, const Splits& splits, const std::vector<Complex>& s, const Rotation& rotation);

}  // namespace xfm::dct4
