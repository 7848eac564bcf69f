// Rader's algorithm in real-lane form: the two components of the data run side by side as two real sequences.
//
// The sequence r[q] = x[g^q] of length L = p-1 goes through a real-input transform; its half spectrum is multiplied by the
// constant spectrum, whose bins are taken times -i where they are odd, so that both halves stay real combinations of the
// input; a real-output transform gives the even-bin part E and the odd-bin part O of the outputs, and
// y[g^-q] = E[q] + i*O[q], y[g^-(q+L/2)] = E[q] - i*O[q] is the only place where the two components meet. The
// second transform is a real-input one run transposed, without its first stage.
//
// A whole plan can run the same way: half spectra of the two components from stage to stage, and the rotations by i of all
// its blocks put off to one sum and difference for every pair of bins k, N-k.
#pragma once

#include <vector>

#include "flows/blocks.h"

namespace xfm {

class RealFlow {
 public:
  // For the block of a prime.
  RealFlow(Graph& g, const Recipes& recipes, bool complex_middle_row)
      : g_(g), recipes_(recipes), complex_middle_row_(complex_middle_row) {}
  // For a plan with blocks in the given forms, that of a first stage where a row is real.
  RealFlow(Graph& g, const Recipes& recipes, const BlockForms& forms, bool first_stage)
      : g_(g), recipes_(recipes), forms_(forms), first_stage_(first_stage) {}

  using Half = std::vector<Formal::Value>;  // bins 0..L/2
  Half half_spectrum(const Plan& plan, const std::vector<Ref>& x);
  // y0, E[0..L/2-1], O[0..L/2-1] of a real sequence of prime length.
  std::vector<Ref> prime_parts(const LaneRecipe& recipe, int prime, const std::vector<Ref>& x, int sign);

 private:
  std::vector<Formal::Value> complex_bins(const Plan& plan, const std::vector<Formal::Value>& z);
  Half block(int length, const std::vector<Ref>& x);
  Half rader_half(const LaneRecipe& recipe, int prime, const std::vector<Ref>& x);
  Half halves(const Plan& plan, const std::vector<Ref>& x);
  Half linked(const Plan& plan, const std::vector<Ref>& x);
  void middle_row(const Plan& second, const std::vector<Ref>& row, int k1, int a, class HalfBins& bins);
  std::vector<Ref> transposed_part(const Plan& plan, const Half& spectrum, bool odd);

  Graph& g_;
  const Recipes& recipes_;
  BlockForms forms_;
  bool first_stage_ = true, complex_middle_row_ = false;
};

template <class A>
std::vector<typename A::Value> real_lane_block(const A& alg, const Recipes& recipes, const LaneRecipe& recipe, int p,
                                               const std::vector<typename A::Value>& x, int sign) {
  using Value = typename A::Value;
  const std::vector<Value> parts = alg.lanewise(x, [&](const std::vector<Ref>& lane) {
    return RealFlow(alg.g, recipes, recipe.complex_middle_row).prime_parts(recipe, p, lane, sign);
  });
  std::vector<Value> y(p);
  y[0] = parts[0];
  const int half = (p - 1) / 2, inverse_root = power_mod(primitive_root(p), p - 2, p);
  for (int q = 0; q < half; ++q) {
    const int k = power_mod(inverse_root, q, p);
    const Value e = parts[1 + q], o = alg.turned(parts[1 + half + q], 1);
    y[k] = alg.add(e, o);
    y[p - k] = alg.sub(e, o);
  }
  return y;
}

// A plan in real-lane form. No block of it may be in Rader complex form.
std::vector<Ref> real_lane_plan(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                                const std::vector<Ref>& x, int sign, bool first_stage);

}  // namespace xfm
