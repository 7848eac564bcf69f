// A vector times a factor of its own in every lane, such that each lane has the products and sums that its value alone would
// have: what meets no product alone meets none here.
#pragma once

#include <optional>
#include <vector>

#include "flows/blocks.h"

namespace xfm::dft {

// What a value is multiplied by: a root of unity, exp(2*pi*i*num/den), or a constant.
class Factor {
 public:
  static Factor root(long long num, long long den);
  static Factor constant(const ComplexNumber& c);

  Ref times(const Physical& alg, Ref a) const;
  friend bool operator==(const Factor& a, const Factor& b);

 private:
  friend std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<Factor>>& factors);
  enum class Kind { Turn, Eighths, General };
  Kind kind = Kind::Turn;
  int turns = 0;        // quarters, or odd eighths
  ComplexNumber c = {1, 0};
};

// By lane a vector that holds the product there; nothing where there is no factor.
std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<Factor>>& factors);

}  // namespace xfm::dft
