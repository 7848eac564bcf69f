#include "rdft/flow.h"

#include <algorithm>

#include "flows/half_spectrum.h"
#include "generator/check.h"
#include "generator/passes.h"

namespace xfm::rdft {

namespace {

struct Network {
  Graph graph;
  std::vector<Ref> inputs, outputs;

  explicit Network(int cells) {
    for (int i = 0; i < cells; ++i) inputs.push_back(graph.input(i));
  }
};

Half spectrum(Network& net, const Plan& plan, Convention convention) {
  return HalfSpectra(net.graph, convention).real(plan, net.inputs);
}

// The half spectrum of N real inputs, in spectrum order.
Network analysis(const Plan& plan, Convention convention) {
  Network net(plan.length);
  const Half bins = spectrum(net, plan, convention);
  for (int k = 0; k < static_cast<int>(bins.size()); ++k) {
    net.outputs.push_back(bins[k].re);
    if (!real_bin(k, plan.length)) net.outputs.push_back(bins[k].im);
  }
  return net;
}

// The transposed network, fed with values of `target` in spectrum order.
std::vector<Ref> synthesis(const Plan& plan, Graph& target, std::span<const Ref> feed) {
  const Network net = analysis(plan, Convention::Transposed);
  std::vector<int> inputs;
  for (Ref r : net.inputs) inputs.push_back(r.node);
  return transpose(net.graph, inputs, net.outputs, target, feed);
}

Network hartley_forward(const Plan& plan) {
  const int n = plan.length;
  Network net(n);
  const Half bins = spectrum(net, plan, Convention::Real);
  net.outputs.resize(n);
  for (int k = 0; k <= n / 2; ++k) {
    const auto [re, im] = bins[k];
    net.outputs[k] = real_bin(k, n) ? re : net.graph.sub(re, im);
    if (!real_bin(k, n)) net.outputs[n - k] = net.graph.add(re, im);
  }
  return net;
}

Network hartley_transposed(const Plan& plan) {
  const int n = plan.length;
  Network net(n);
  std::vector<Ref> feed;
  for (int k = 0; k <= n / 2; ++k) {
    if (real_bin(k, n)) {
      feed.push_back(net.inputs[k]);
    } else {
      feed.push_back(net.graph.add(net.inputs[k], net.inputs[n - k]));
      feed.push_back(net.graph.sub(net.inputs[n - k], net.inputs[k]));
    }
  }
  net.outputs = synthesis(plan, net.graph, feed);
  return net;
}

Network network(const FlowPlan& made) {
  const Plan& plan = made.plan;
  if (made.family == Family::Forward) return analysis(plan, Convention::Real);
  if (made.family == Family::Hartley)
    return made.transposed ? hartley_transposed(plan) : hartley_forward(plan);
  Network net(plan.length);
  net.outputs = synthesis(plan, net.graph, net.inputs);
  return net;
}

// By node the nodes that use it, once for each term.
using Users = std::vector<std::vector<int>>;
Users users_in(const Flow& flow) {
  Users users(flow.graph.size());
  for (int i : live_nodes(flow.graph, flow.outputs))
    for (const Term& t : flow.graph[i].terms) users[t.ref.node].push_back(i);
  return users;
}

// Finds the sums of held values that may stand in double precision: chains of additions used as operand of a constant
// product only, all of whose terms are widened elsewhere anyway.
class WideSumFinder {
 public:
  WideSumFinder(const Flow& flow, const FlowPlan& made, const Users& users)
      : flow_(flow), made_(made), users_(users), widened_(flow.graph.size()), output_(flow.graph.size()) {
    for (Ref r : flow.outputs) output_[r.node] = 1;
    for (int i : live_nodes(flow.graph, flow.outputs)) {
      live_.push_back(i);
      if (!flow.is_wide(i)) continue;
      for (const Term& t : flow.graph[i].terms) widened_[t.ref.node] = 1;
    }
  }

  // Chains as lists of nodes; those with a single product first.
  std::vector<std::vector<int>> chains() const {
    std::vector<std::vector<int>> single, shared;
    for (int i : live_) {
      if (!is_chain(i) || output_[i] || !only_products(i)) continue;
      std::vector<int> chain{i};
      if (!collect(chain)) continue;
      (users_[i].size() == 1 ? single : shared).push_back(std::move(chain));
    }
    if (made_.wide.shared) single.insert(single.end(), shared.begin(), shared.end());
    return single;
  }

 private:
  bool is_chain(int i) const { return !flow_.graph[i].terms.empty() && !flow_.is_wide(i); }

  bool only_products(int i) const {
    for (int user : users_[i])
      for (const Term& t : flow_.graph[user].terms)
        if (t.ref.node == i && t.coef.unit()) return false;
    return !users_[i].empty();
  }

  // Extends the chain through sums that only it uses; false if a leaf is not widened elsewhere or not admitted.
  bool collect(std::vector<int>& chain) const {
    for (size_t at = 0; at < chain.size(); ++at)
      for (const Term& t : flow_.graph[chain[at]].terms) {
        const int leaf = t.ref.node;
        if (!widened_[leaf] && is_chain(leaf) && users_[leaf].size() == 1 && !output_[leaf]) {
          chain.push_back(leaf);
        } else if (!widened_[leaf] || barred(leaf)) {
          return false;
        }
      }
    return true;
  }

  // Loaded values, and the first sums of a transposed Hartley flow, which take the place of its loads.
  bool barred(int node) const {
    if (made_.wide.loads) return false;
    const auto loaded = [&](int i) { return flow_.graph[i].kind == Node::Kind::Input; };
    if (loaded(node)) return true;
    if (made_.family != Family::Hartley || !made_.transposed) return false;
    const std::vector<Term>& terms = flow_.graph[node].terms;
    if (terms.size() != 2 || !loaded(terms[0].ref.node) || !loaded(terms[1].ref.node)) return false;
    return flow_.graph[terms[0].ref.node].cells[0] + flow_.graph[terms[1].ref.node].cells[0] == made_.length;
  }

  const Flow& flow_;
  const FlowPlan& made_;
  const Users& users_;
  std::vector<char> widened_, output_;
  std::vector<int> live_;
};

void choose_wide_sums(Flow& flow, const FlowPlan& made, const Users& users) {
  std::vector<int> wanted = made.wide.additions;
  if (wanted.empty()) return;
  for (const std::vector<int>& chain : WideSumFinder(flow, made, users).chains()) {
    int additions = 0;
    for (int i : chain) additions += static_cast<int>(flow.graph[i].terms.size()) - 1;
    const auto want = std::find(wanted.begin(), wanted.end(), additions);
    if (want == wanted.end()) continue;
    wanted.erase(want);
    for (int i : chain) flow.wide[i] = 1;
  }
  if (!wanted.empty()) throw InputError("no sum of " + std::to_string(wanted[0]) + " additions can stand in double");
}

// The bins but those that are real stand for their conjugates too.
void mark_doublings(Flow& flow, const Users& users) {
  const int length = static_cast<int>(flow.outputs.size());
  for (int i : live_nodes(flow.graph, flow.outputs)) {
    if (flow.graph[i].kind != Node::Kind::Input) continue;
    const int cell = flow.graph[i].cells[0];
    flow.doubled[cell] = cell > 0 && !(length % 2 == 0 && cell == length - 1);
    if (!flow.doubled[cell] || users[i].size() != 1) continue;
    for (const Term& t : flow.graph[users[i][0]].terms)
      if (t.ref.node == i) flow.folded[cell] = !t.coef.unit();
  }
}

}  // namespace

Flow make_flow(const FlowPlan& made) {
  Network net = network(made);
  Flow flow;
  flow.graph = merge_constants(net.graph, net.outputs);
  flow.outputs = net.outputs;
  for (std::vector<char>* by_node : {&flow.wide, &flow.open}) by_node->resize(flow.graph.size());
  for (std::vector<char>* by_cell : {&flow.doubled, &flow.folded}) by_cell->resize(made.length);
  const Users users = users_in(flow);
  for (Ref r : flow.outputs) flow.open[r.node] = flow.graph[r.node].has_products() && users[r.node].empty();
  if (made.family == Family::Inverse) mark_doublings(flow, users);
  choose_wide_sums(flow, made, users);
  return flow;
}

}  // namespace xfm::rdft
