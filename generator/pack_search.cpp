#include "generator/pack_search.h"

#include <algorithm>
#include <set>

#include "generator/schedule.h"

namespace xfm::pack {

namespace {

constexpr size_t kRefined = 2;       // rules of a width that are given a second loop
constexpr size_t kModelled = 4;      // forms of a width that are run in the model, of all those that are packed
constexpr double kHandicap = 0.95;   // of a packed form: what the model does not see of it

// All rules of one width that have been packed, each arrangement once.
class Trials {
 public:
  Trials(const Network& network, const std::vector<Family>& families, const Target& target, Grid grid)
      : network_(network), families_(families), target_(target), grid_(grid) {
    for (const Family& f : families) loops_.insert(f.loops.begin(), f.loops.end());
  }

  // First every loop by itself, then with the best of them every other as the second.
  std::vector<Rule> best(int lanes) {
    if (lanes == 2)
      for (const PairsFrom from : kPairsFrom) attempt({.lanes = 2, .pairs = from});
    try_with(lanes, {});
    for (const std::string& loop : loops_) try_with(lanes, {loop});
    for (const Rule& first : ranked(kRefined))
      for (const std::string& loop : loops_)
        if (first.loops.empty() || first.loops[0] != loop) {
          Rule rule = first;
          rule.loops.push_back(loop);
          attempt(rule);
        }
    return ranked(kModelled);
  }

  Program packed(const Rule& rule) const { return pack(network_, families_, rule, target_, grid_); }

 private:
  void try_with(int lanes, const std::vector<std::string>& loops) {
    for (const bool outermost : {false, true})
      for (const bool across : {false, true}) attempt({lanes, loops, outermost, across});
  }

  void attempt(const Rule& rule) {
    std::vector<std::vector<int>> arrangement = runs(network_, families_, rule, grid_.pairs);
    if (seen_.insert(std::move(arrangement)).second) tried_.emplace_back(port_use(packed(rule)).estimate(), rule);
  }

  std::vector<Rule> ranked(size_t count) {
    std::ranges::stable_sort(tried_, {}, [](const auto& t) { return t.first; });
    std::vector<Rule> out;
    for (size_t i = 0; i < std::min(count, tried_.size()); ++i) out.push_back(tried_[i].second);
    return out;
  }

  const Network& network_;
  const std::vector<Family>& families_;
  const Target& target_;
  const Grid grid_;
  std::set<std::string> loops_;
  std::set<std::vector<std::vector<int>>> seen_;
  std::vector<std::pair<double, Rule>> tried_;
};

}  // namespace

std::vector<Form> search(const Program& scalar, const Target& target, Grid grid) {
  const Network network = read_network(scalar);
  const std::vector<Family> families = find_families(network);
  const auto cycles = [&](const Program& p) { return cycles_per_call(p, schedule(p, target.registers), target.registers); };
  std::vector<Form> forms = {{{1, {}, false, false}, cycles(scalar) * kHandicap}};
  for (int lanes = 2; lanes <= kMaxLanes && target.has_register(vector_type(false, lanes)); lanes *= 2) {
    Trials trials(network, families, target, grid);
    for (const Rule& rule : trials.best(lanes)) forms.push_back({rule, cycles(trials.packed(rule))});
  }
  std::ranges::stable_sort(forms, {}, &Form::cycles);
  return forms;
}

}  // namespace xfm::pack
