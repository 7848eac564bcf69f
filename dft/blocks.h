// The forms that a prime block of a complex plan can take, and plans over complex data with such blocks.
//
// Which form a prime takes inside a plan is data: the table of plans names it where it is not the default, direct up to 11
// and as half spectra by Rader's method above.
#pragma once

#include <algorithm>
#include <map>
#include <vector>

#include "flows/half_spectrum.h"

namespace xfm {

enum class BlockForm { Direct, RealLane, RaderComplex };

struct Recipes {
  std::map<int, Plan> by_prime;     // Rader plans on half spectra
  std::map<int, Plan> rader_inner;  // plans of length p-1 of Rader complex blocks
};

// The forms of one kernel's prime blocks; a block of the first stages may differ from the others.
struct BlockForms {
  struct Pair {
    BlockForm first_stage, other;
  };
  std::map<int, Pair> special;

  BlockForm of(int prime, bool first_stage) const {
    const auto found = special.find(prime);
    if (found != special.end()) return first_stage ? found->second.first_stage : found->second.other;
    return prime <= 11 ? BlockForm::Direct : BlockForm::RealLane;
  }
  bool differ() const {
    return std::any_of(special.begin(), special.end(), [](const auto& entry) { return entry.second.first_stage != entry.second.other; });
  }
  bool any(BlockForm form) const {
    return std::any_of(special.begin(), special.end(), [&](const auto& entry) {
      return entry.second.first_stage == form || entry.second.other == form;
    });
  }
};

// A block or a whole plan as two half spectra, of the real and of the imaginary parts of the data.
std::vector<Ref> half_spectrum_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign, const PrimePlans& primes = {});
// Those of a kernel with the given forms. No block of it may be in Rader complex form.
PrimePlans prime_plans(const Recipes& recipes, const BlockForms& forms, bool first_stage);

// A plan over the data's own values (or vectors of them), with the kernel's forms of prime blocks.
std::vector<Ref> complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                               std::span<const Ref> x, int sign, bool first_stage);

}  // namespace xfm
