#include "generator/pack_families.h"

#include <algorithm>
#include <map>

namespace xfm::pack {

namespace {

std::string pattern_of(const Operation& o) {
  std::string pattern = std::to_string(static_cast<int>(o.kind)) + (o.single ? "f" : "d");
  for (const LoopStep& step : o.label) pattern += " " + step.loop;
  return pattern;
}

// The place among the family's loops of the one that its lanes run over.
size_t fastest_loop(const Family& family, const Rule& rule) {
  const size_t count = family.loops.size();
  const auto nth = [&](size_t i) { return rule.outermost ? i : count - 1 - i; };
  for (const std::string& name : rule.loops)
    for (size_t i = 0; i < count; ++i)
      if (family.loops[nth(i)] == name) return nth(i);
  return nth(0);
}

std::vector<std::vector<int>> family_runs(const Family& family, const Rule& rule) {
  const size_t fastest = fastest_loop(family, rule);
  const auto other_loops = [&](const Family::Member& m) {
    std::vector<int> others = m.iterations;
    others.erase(others.begin() + static_cast<long>(fastest));
    return others;
  };
  std::vector<Family::Member> sorted = family.members;
  std::ranges::stable_sort(sorted, {}, [&](const Family::Member& m) { return std::pair(other_loops(m), m.iterations[fastest]); });

  std::vector<std::vector<int>> out;
  std::vector<int> run;
  const size_t lanes = static_cast<size_t>(rule.lanes);
  const auto finish = [&] {
    if (run.size() * 2 > lanes) out.push_back(run);
    run.clear();
  };
  for (size_t i = 0; i < sorted.size(); ++i) {
    if (i > 0 && !rule.across && other_loops(sorted[i]) != other_loops(sorted[i - 1])) finish();
    run.push_back(sorted[i].operation);
    if (run.size() == lanes) finish();
  }
  finish();
  return out;
}

}  // namespace

std::vector<Family> find_families(const Network& network) {
  std::map<std::string, size_t> known;
  std::vector<std::vector<int>> members;
  for (size_t i = 0; i < network.operations.size(); ++i) {
    const Operation& o = network.operations[i];
    if (o.in_memory() || o.label.empty()) continue;
    const auto [place, fresh] = known.emplace(pattern_of(o), members.size());
    if (fresh) members.emplace_back();
    members[place->second].push_back(static_cast<int>(i));
  }
  std::vector<Family> families;
  for (const std::vector<int>& list : members) {
    if (list.size() < 2) continue;
    const auto label = [&](int operation) -> const Label& { return network.operations[operation].label; };
    Family family;
    for (int operation : list) family.members.push_back({operation, {}});
    for (size_t step = 0; step < label(list[0]).size(); ++step) {
      const auto iteration = [&](int operation) { return label(operation)[step].iteration; };
      if (std::ranges::all_of(list, [&](int o) { return iteration(o) == iteration(list[0]); })) continue;
      family.loops.push_back(label(list[0])[step].loop);
      for (Family::Member& m : family.members) m.iterations.push_back(iteration(m.operation));
    }
    if (!family.loops.empty()) families.push_back(std::move(family));
  }
  return families;
}

std::vector<std::vector<int>> runs(const Network& network, const std::vector<Family>& families, const Rule& rule, int parity) {
  if (rule.pairs) return find_pairs(network, *rule.pairs, parity);
  std::vector<std::vector<int>> all;
  for (const Family& f : families)
    for (std::vector<int>& run : family_runs(f, rule)) all.push_back(std::move(run));
  return all;
}

}  // namespace xfm::pack
