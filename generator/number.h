// Constants of the transforms, worked out in 113-bit arithmetic (more than twice double's 53 bits) and rounded once.
#pragma once

#include <string>

namespace xfm {

using Real = __float128;

// cos and sin of 2*pi*num/den. The angle is reduced to an octant in integers first, so that equal values of equal
// angles are equal bits and quarter turns are exact.
Real cos_turn(long long num, long long den);
Real sin_turn(long long num, long long den);
Real square_root(Real x);

inline Real magnitude(Real x) { return x < 0 ? -x : x; }
inline bool is_zero(Real x) { return magnitude(x) < Real(1e-25); }
inline bool is_unit(Real x) { return is_zero(magnitude(x) - 1); }

// A literal of C++ in hexadecimal, rounded once to the precision of the target.
std::string float_literal(Real x);
std::string double_literal(Real x);

}  // namespace xfm
