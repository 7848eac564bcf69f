// Stages of the real transforms on an expression graph, all with the exponent exp(-2*pi*i*n*k/N).
//
// Real data have half spectra: bins 0..N/2, of which bin 0 and, for even N, bin N/2 are real. Every stage forms only
// the bins that are not conjugates of others. An imaginary part is carried with the sign it has.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "generator/graph.h"
#include "rdft/plan.h"

namespace xfm::rdft {

struct Complex {
  Ref re, im;

  Complex conj() const { return {re, -im}; }
  Complex operator-() const { return {-re, -im}; }
};

// Bins 0..length/2.
using HalfSpectrum = std::vector<Complex>;
// Some bins by index, each below length/2: what one part of a transform contributes.
using Bins = std::map<int, Complex>;

inline bool real_bin(int k, int length) { return k == 0 || 2 * k == length; }

// Which way a network is meant to run. The rotation by pi/4 multiplies first and then adds; in a network that will be
// transposed the steps are taken the other way round, so that the same holds after transposition.
enum class Run { Straight, Transposed };

class Stages {
 public:
  Stages(Graph& graph, Run run) : g_(graph), run_(run) {}

  HalfSpectrum real(const Plan& plan, std::span<const Ref> x);
  std::vector<Complex> complex(const Plan& plan, std::span<const Complex> z);
  // The odd bins below L/2 (and L/2 itself if odd) of the sequence d, d[n+L/2] = -d[n].
  Bins odd(const OddPlan& plan, std::span<const Ref> d);

 private:
  HalfSpectrum pairs(int p, std::span<const Ref> x);
  HalfSpectrum power_of_two(int n, Split split, std::span<const Ref> x);
  HalfSpectrum twiddled(const Twiddled& plan, int n, std::span<const Ref> x);
  HalfSpectrum good_thomas(const GoodThomas& plan, int n, std::span<const Ref> x);
  HalfSpectrum halves(const Halves& plan, int n, std::span<const Ref> x);
  HalfSpectrum rader(const Rader& plan, int p, std::span<const Ref> x);

  std::vector<Complex> complex_four(std::span<const Complex> z);
  std::vector<Complex> complex_sixteen(std::span<const Complex> z);
  std::vector<Complex> complex_twiddled(const Twiddled& plan, int n, std::span<const Complex> z);
  std::vector<Complex> complex_lanes(const Plan& plan, std::span<const Complex> z);

  Bins odd_of_power(int n, Split split, std::span<const Ref> d);
  Bins odd_good_thomas(const OddGoodThomas& plan, int n, std::span<const Ref> d);
  Bins odd_twiddled(const OddTwiddled& plan, int n, std::span<const Ref> d);

  // z * exp(-2*pi*i*num/den): quarter turns are free, an odd eighth takes two products, any other angle four.
  // `iteration` is that of the loop around it.
  Complex rotate(Complex z, long long num, long long den, int iteration);
  Complex rotate_eighth(Complex z, int cos_sign, int sin_sign);
  Complex add(Complex a, Complex b) {
    return parts([&] { return g_.add(a.re, b.re); }, [&] { return g_.add(a.im, b.im); });
  }
  Complex sub(Complex a, Complex b) { return add(a, -b); }

  // Real and imaginary part of one value, and a part of a flow under a name, for the labels of their sums.
  template <class Re, class Im>
  Complex parts(Re real_part, Im imaginary_part) {
    const Graph::Loop value(g_, "value " + std::to_string(g_.next_in_loop()));
    const auto part = [&](int index, auto make) {
      const Graph::Loop loop(g_, "part", index);
      return make();
    };
    const Ref re = part(0, real_part);
    return {re, part(1, imaginary_part)};
  }
  template <class F>
  auto within(const char* name, F make) {
    const Graph::Loop loop(g_, name);
    return make();
  }

  Graph& g_;
  Run run_;
};

}  // namespace xfm::rdft
