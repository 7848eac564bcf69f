#include "generator/pack_registers.h"

#include <algorithm>
#include <set>

#include "generator/check.h"

namespace xfm::pack {

namespace {

constexpr double kManySources = 1.15;  // for every source beyond the first
constexpr double kBlend = 0.5;

bool needed(int operation) { return operation != kNone; }

bool fits(const Lanes& want, const Lanes& lanes) {
  for (int l = 0; l < kMaxLanes; ++l)
    if (needed(want[l]) && want[l] != lanes[l]) return false;
  return true;
}

int first_needed(const Lanes& want) {
  return *std::ranges::find_if(want, needed);
}

void add_once(std::vector<int>& list, int item) {
  if (std::ranges::find(list, item) == list.end()) list.push_back(item);
}

}  // namespace

Registers::Registers(const Network& network, Program& program, Moves& moves, int lanes, LoadGrid grid)
    : network_(network), program_(program), moves_(moves), lanes_(lanes), loads_(network, program, moves, lanes, grid),
      holders_(network.operations.size()) {
  for (size_t i = 0; i < network.operations.size(); ++i) {
    if (network.operations[i].kind != Kind::Zero) continue;
    const Type t = type(network.operations[i].single);
    Lanes zeros = kEmpty;
    std::fill_n(zeros.begin(), width(t), static_cast<int>(i));
    hold(program_.emit({.op = Op::Zero, .type = t}), t, zeros);
  }
}

Type Registers::type(bool single) const { return register_type(single, lanes_); }

int Registers::hold(int value, Type type, const Lanes& lanes) {
  const int id = static_cast<int>(held_.size());
  held_.push_back({value, type, lanes});
  for (int operation : lanes)
    if (needed(operation)) add_once(holders_[operation], id);
  return id;
}

bool Registers::single(const Lanes& want) const { return network_.operations[first_needed(want)].single; }

int Registers::find(const Lanes& want) const {
  for (int id : holders_[first_needed(want)])
    if (fits(want, held_[id].lanes)) return id;
  return -1;
}

int Registers::value(const Lanes& want) const {
  const int id = find(want);
  check(id >= 0, "a vector that is used has been supplied");
  return held_[id].value;
}

// The want in the numbers of two registers, each lane from its own place where it stands there.
Want Registers::lanes_from(const Lanes& want, int a, int b) const {
  const int w = width(held_[a].type);
  Want out = kEmpty;
  for (int l = 0; l < w; ++l) {
    if (!needed(want[l])) continue;
    for (int offset : {l, l + w})
      if (out[l] == kNone && held_[offset < w ? a : b].lanes[l] == want[l]) out[l] = offset;
    for (int from = 0; from < 2 * w && out[l] == kNone; ++from)
      if (held_[from < w ? a : b].lanes[from % w] == want[l]) out[l] = a == b ? from % w : from;
    check(out[l] != kNone, "a wanted lane stands in one of two registers");
  }
  return out;
}

double Registers::move_price(const Lanes& want, int a, int b) {
  return moves_.way(held_[a].type, lanes_from(want, a, b)).price;
}

int Registers::move(const Lanes& want, int a, int b) {
  const Type type = held_[a].type;
  const Way& way = moves_.way(type, lanes_from(want, a, b));
  if (way.steps.empty()) return a;
  Lanes lanes = kEmpty;
  for (int l = 0, w = width(type); l < w; ++l) {
    const int from = way.steps.back().lanes[l];
    if (from != kNone) lanes[l] = held_[from < w ? a : b].lanes[from % w];
  }
  return hold(emit(program_, type, way, held_[a].value, held_[b].value), type, lanes);
}

std::pair<Lanes, Lanes> Registers::by_place(const Lanes& want) const {
  Lanes memory = kEmpty, registers = kEmpty;
  for (int l = 0; l < kMaxLanes; ++l)
    if (needed(want[l])) (network_.operations[want[l]].kind == Kind::Input ? memory : registers)[l] = want[l];
  return {memory, registers};
}

double Registers::price(const Lanes& want) {
  if (want == kEmpty || find(want) >= 0) return 0;
  const auto [memory, registers] = by_place(want);
  if (memory == kEmpty) return register_price(registers);
  const double loads = loads_.price(memory);
  return registers == kEmpty ? loads : loads + kBlend + register_price(registers);
}

// From the registers in which the operations were done.
double Registers::register_price(const Lanes& want) {
  std::vector<int> homes;
  for (int operation : want)
    if (needed(operation)) add_once(homes, holders_[operation].front());
  if (homes.size() > 2) return kManySources * static_cast<double>(homes.size() - 1);
  return move_price(want, homes.front(), homes.back());
}

// Registers that together have what is wanted, as few as can be and those that move cheapest.
std::vector<int> Registers::cover(const Lanes& want) {
  std::vector<int> candidates;
  for (int operation : want)
    if (needed(operation))
      for (int id : holders_[operation]) add_once(candidates, id);
  std::ranges::sort(candidates);
  const auto has = [&](int id, int operation) { return std::ranges::find(held_[id].lanes, operation) != held_[id].lanes.end(); };
  const auto covered = [&](int a, int b) {
    return std::ranges::all_of(want, [&](int o) { return !needed(o) || has(a, o) || has(b, o); });
  };
  std::vector<int> best;
  double least = 0;
  const auto consider = [&](int a, int b) {
    if (!covered(a, b)) return;
    const double price = move_price(want, a, b);
    if (best.empty() || price < least) least = price, best = a == b ? std::vector{a} : std::vector{a, b};
  };
  for (int a : candidates) consider(a, a);
  if (!best.empty()) return best;
  for (size_t i = 0; i < candidates.size(); ++i)
    for (size_t j = i + 1; j < candidates.size(); ++j) consider(candidates[i], candidates[j]);
  if (!best.empty()) return best;
  Lanes left = want;
  while (left != kEmpty) {
    const auto gain = [&](int id) { return std::ranges::count_if(left, [&](int o) { return needed(o) && has(id, o); }); };
    const int most = *std::ranges::max_element(candidates, {}, gain);
    best.push_back(most);
    for (int& o : left)
      if (needed(o) && has(most, o)) o = kNone;
  }
  return best;
}

void Registers::supply(const std::vector<Lanes>& wants) {
  std::vector<Open> open;
  for (const Lanes& want : wants) {
    if (want == kEmpty || find(want) >= 0) continue;
    const auto [memory, registers] = by_place(want);
    Open o{want, {}};
    if (registers != kEmpty) o.sources = cover(registers);
    if (memory != kEmpty) o.sources.push_back(load(memory));
    if (o.sources.size() <= 2) {
      move(want, o.sources.front(), o.sources.back());
    } else {
      open.push_back(std::move(o));
    }
  }
  combine(std::move(open));
}

int Registers::load(const Lanes& want) {
  if (const int id = find(want); id >= 0) return id;
  const Loaded loaded = loads_.make(want);
  return hold(loaded.value, type(single(want)), loaded.lanes);
}

// Vectors of three sources and more: two sources at a time become one that has the wanted lanes of both, for as many
// vectors as it can serve. So the vectors of a transposition come about.
void Registers::combine(std::vector<Open> open) {
  while (std::ranges::any_of(open, [](const Open& o) { return o.sources.size() > 2; })) {
    const Joint joint = best_joint(open);
    const int made = move(joint.lanes, joint.a, joint.b);
    for (int i : joint.served) {
      std::erase_if(open[i].sources, [&](int s) { return s == joint.a || s == joint.b; });
      open[i].sources.push_back(made);
    }
  }
  for (const Open& o : open)
    if (find(o.want) < 0) move(o.want, o.sources.front(), o.sources.back());
}

Registers::Joint Registers::best_joint(const std::vector<Open>& open) {
  std::map<std::pair<int, int>, std::vector<int>> offers;
  for (size_t k = 0; k < open.size(); ++k) {
    const std::vector<int>& s = open[k].sources;
    if (s.size() < 3) continue;
    for (size_t i = 0; i < s.size(); ++i)
      for (size_t j = i + 1; j < s.size(); ++j) offers[std::minmax(s[i], s[j])].push_back(static_cast<int>(k));
  }
  Joint best;
  for (const auto& [pair, list] : offers)
    for (size_t first = 0; first < list.size(); ++first) {
      Joint joint{pair.first, pair.second, {}, kEmpty, 0};
      std::vector<int> elements;
      extend(joint, elements, open, list, first, best);
    }
  return best;
}

// Takes the vectors of the list from `next` on, one and then others that leave room, and keeps the best joint.
void Registers::extend(Joint joint, std::vector<int> elements, const std::vector<Open>& open, const std::vector<int>& list,
                       size_t next, Joint& best) {
  const Lanes& want = open[list[next]].want;
  for (int operation : want) {
    if (!needed(operation)) continue;
    for (int source : {joint.a, joint.b})
      if (std::ranges::find(held_[source].lanes, operation) != held_[source].lanes.end()) add_once(elements, operation);
  }
  const int w = width(held_[joint.a].type);
  if (static_cast<int>(elements.size()) > w) return;
  joint.served.push_back(list[next]);
  place(joint, elements, open, w);
  const auto rank = [](const Joint& j) { return std::pair(-static_cast<int>(j.served.size()), j.price); };
  if (best.served.empty() || rank(joint) < rank(best)) best = joint;
  if (joint.served.size() == 4) return;
  for (size_t later = next + 1; later < list.size(); ++later) extend(joint, elements, open, list, later, best);
}

// Chooses the lanes of a joint: of all orders (of up to four elements) the cheapest, and the one that keeps most elements
// where they are wanted.
void Registers::place(Joint& joint, std::vector<int> elements, const std::vector<Open>& open, int w) {
  constexpr double kInPlace = 0.1, kInParity = 0.05;
  elements.resize(w, kNone);
  std::ranges::sort(elements);
  joint.price = 1e9;
  do {
    Lanes lanes = kEmpty;
    std::ranges::copy(elements, lanes.begin());
    double price = move_price(lanes, joint.a, joint.b);
    for (int k : joint.served)
      for (int l = 0; l < w; ++l)
        for (int m = 0; m < w; ++m)
          if (needed(lanes[l]) && open[k].want[m] == lanes[l]) price -= (l == m ? kInPlace : 0) + ((l - m) % 2 ? 0 : kInParity);
    if (price < joint.price) joint.price = price, joint.lanes = lanes;
  } while (w <= 4 && std::ranges::next_permutation(elements).found);
}

}  // namespace xfm::pack
