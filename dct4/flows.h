// The inner transforms of the DCT-IV.
//
//   odd real transform    Z(g) = sum over t = -L/2+1 .. L/2 of D[t] exp(i pi t (2g+1)/L), g = 0 .. L/2-1
//   odd real synthesis    Y(u) = Re sum over b = 0 .. L/2-1 of T[b] exp(i pi u (2b+1)/L), u = -L/2 .. L/2-1
//
// D is anti-periodic, D[t+L] = -D[t]. Each is the other's transpose; both split L = d'*m2.
#pragma once

#include <functional>
#include <vector>

#include "dct4/network.h"

namespace xfm {

using Sequence = std::function<Value(int t)>;

std::vector<Complex> forward(Network& net, int length, const Sequence& d);
// The result at index u + L/2. A synthesis of 16 within one of 64 splits by four like the forward transform, any other
// by two.
std::vector<Value> synthesis(Network& net, int length, const std::vector<Complex>& t);

// Complex DFTs with positive exponent.
std::vector<Complex> dft4(Network& net, const std::vector<Complex>& t);
std::vector<Complex> dft8(Network& net, const std::vector<Complex>& t);

// The combining step for radix d', one h: F(f) = sum over r of S[r] exp(i pi r (2h+1)/m) exp(2 pi i r f/d'). `rotation`
// gives entry e of a table's section as its cosine and sine. Radix 8 has one section; 16 and 32 = 4e have an inner one
// with e-1 entries and an outer one with 3e.
using Rotation = std::function<Complex(int section, int entry)>;
std::vector<Complex> combine(Network& net, int radix, const std::vector<Complex>& s, const Rotation& rotation);

}  // namespace xfm
