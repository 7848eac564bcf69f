// Rader's method on real data: with a primitive root g the bins of prime length p are a cyclic convolution of length
// L = p-1 of a[j] = x[g^j] with exp(-2*pi*i*g^-j/p).
//
// The kernel's real part, a sum of cosines, has even bins only and the imaginary part odd ones, because g^(L/2) = -1.
// So the spectrum of a is multiplied bin by bin by real-lane constants, and the way back needs no L-point transform: its
// even bins give R_k and its odd bins I_k, each through the transpose of the forward network of those bins.

#include "flows/numbers.h"
#include "generator/passes.h"
#include "rdft/stages.h"

namespace xfm::rdft {

namespace {

struct Constant {
  Real re, im;
};

// The bin q of length L of cos(2*pi*g^-n/p) for even and -sin(2*pi*g^-n/p) for odd q, divided by L.
Constant kernel_bin(int p, int root_inverse, int q) {
  const int length = p - 1;
  Constant sum{0, 0};
  for (int n = 0; n < length; ++n) {
    const int e = power_mod(root_inverse, n, p);
    const Real value = q % 2 ? -sin_turn(e, p) : cos_turn(e, p);
    sum.re += value * cos_turn(static_cast<long long>(q) * n, length);
    sum.im -= value * sin_turn(static_cast<long long>(q) * n, length);
  }
  return {sum.re / length, sum.im / length};
}

// A network of its own for the second transform: its inputs stand for the outputs of the convolution.
struct Way {
  Graph graph;
  std::vector<Ref> inputs;

  explicit Way(int size) {
    for (int i = 0; i < size; ++i) inputs.push_back(graph.input(i));
  }
};

// Repeats a network in another graph on given values.
std::vector<Ref> placed(const Graph& network, std::span<const Ref> outputs, Graph& target, std::span<const Ref> feed) {
  std::vector<Ref> made(network.size());
  for (int i : live_nodes(network, outputs)) {
    const Node& node = network[i];
    if (node.kind == Node::Kind::Input) {
      made[i] = feed[node.cells[0]];
      continue;
    }
    std::vector<Term> terms = node.terms;
    for (Term& t : terms) t.ref = made[t.ref.node].turned(t.ref.turn);
    const Graph::Loop loop(target, node.label);
    made[i] = target.lin(terms);
  }
  std::vector<Ref> result;
  for (Ref r : outputs) result.push_back(made[r.node].turned(r.turn));
  return result;
}

// The transpose takes its signs from the network alone, not from the values it is fed with: it is made apart first.
std::vector<Ref> way_back(const Way& way, const Bins& bins, const HalfSpectrum& product, Graph& target) {
  std::vector<int> nodes;
  for (Ref r : way.inputs) nodes.push_back(r.node);
  std::vector<Ref> outputs, feed, placeholders;
  for (const auto& [q, z] : bins) {
    outputs.push_back(z.re), feed.push_back(product[q].re);
    if (z.im) outputs.push_back(z.im), feed.push_back(product[q].im);
  }
  Graph transposed;
  for (size_t i = 0; i < feed.size(); ++i) placeholders.push_back(transposed.input(static_cast<int>(i)));
  const std::vector<Ref> samples = transpose(way.graph, nodes, outputs, transposed, placeholders);
  return placed(transposed, samples, target, feed);
}

}  // namespace

HalfSpectrum Stages::rader(const Rader& plan, int p, std::span<const Ref> x) {
  const int length = p - 1, half = length / 2;
  const int root = plan.root ? plan.root : primitive_root(p);
  const int root_inverse = power_mod(root, p - 2, p), start_inverse = power_mod(plan.start, p - 2, p);
  std::vector<Ref> sequence;
  for (int j = 0; j < length; ++j) sequence.push_back(x[plan.start * power_mod(root, j, p) % p]);
  const HalfSpectrum a = within("first", [&] { return real(*plan.first, sequence); });

  HalfSpectrum product{{g_.lin({{1, x[0]}, {Real(-1) / length, a[0].re}}), {}}};
  for (int q = 1; q <= half; ++q) {
    const Graph::Loop loop(g_, "product", q);
    Constant c = kernel_bin(p, root_inverse, q);
    if (q == half) {
      product.push_back({g_.scale(c.re, a[q].re), {}});
      continue;
    }
    c = {2 * c.re, 2 * c.im};  // the bin stands for its conjugate too
    product.push_back(parts([&] { return g_.lin({{c.re, a[q].re}, {-c.im, a[q].im}}); },
                            [&] { return g_.lin({{c.re, a[q].im}, {c.im, a[q].re}}); }));
  }

  const Run back = run_ == Run::Straight ? Run::Transposed : Run::Straight;
  Way even(half), odd_way(half);
  const HalfSpectrum even_half = Stages(even.graph, back).real(*plan.even, even.inputs);
  Bins even_bins;
  for (size_t k = 0; k < even_half.size(); ++k) even_bins[2 * static_cast<int>(k)] = even_half[k];
  const Bins odd_bins = Stages(odd_way.graph, back).odd(*plan.odd, odd_way.inputs);
  const std::vector<Ref> re = within("even", [&] { return way_back(even, even_bins, product, g_); });
  const std::vector<Ref> im = within("odd", [&] { return way_back(odd_way, odd_bins, product, g_); });

  HalfSpectrum out(half + 1);
  out[0] = {g_.add(x[0], a[0].re), {}};
  for (int m = 0; m < half; ++m) {
    const int k = start_inverse * power_mod(root_inverse, m, p) % p;
    const Complex z{re[m], im[m]};
    out[k <= half ? k : p - k] = k <= half ? z : z.conj();
  }
  return out;
}

}  // namespace xfm::rdft
