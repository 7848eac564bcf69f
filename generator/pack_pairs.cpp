#include "generator/pack_pairs.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace xfm::pack {

namespace {

constexpr int kDepth = 8;  // operations behind operations that are compared
constexpr int kAlike = 5;  // of these, how many must be alike where nothing before them tells of a pair

// The operations of a network in the direction in which pairs go on.
class Direction {
 public:
  Direction(const Network& network, bool backwards) {
    const size_t count = network.operations.size();
    std::vector<std::vector<int>> operands(count), users(count);
    distance_.resize(count);
    for (size_t i = 0; i < count; ++i) {
      const Operation& o = network.operations[i];
      for (int operand : {o.a, o.b})
        if (operand != kNone) operands[i].push_back(operand);
      users[i] = o.users;
      for (int operand : operands[i])
        if (backwards) distance_[i] = std::max(distance_[i], distance_[operand] + 1);
      if (!backwards) distance_[i] = o.height;
    }
    before_ = backwards ? std::move(users) : operands;
    behind_ = backwards ? std::move(operands) : std::move(users);
  }

  const std::vector<int>& before(int i) const { return before_[i]; }
  const std::vector<int>& behind(int i) const { return behind_[i]; }
  // Operations on the longest way to the end.
  int distance(int i) const { return distance_[i]; }

 private:
  std::vector<std::vector<int>> before_, behind_;
  std::vector<int> distance_;
};

// By depth the class of each operation: what it is, and the classes of those behind it. Signs and factors do not count.
class Sequels {
 public:
  Sequels(const Network& network, const Direction& direction) {
    const size_t count = network.operations.size();
    std::vector<int> last(count);
    for (int depth = 0; depth < kDepth; ++depth) {
      std::map<std::tuple<Kind, bool, std::vector<int>>, int> known;
      std::vector<int> classes(count);
      for (size_t i = 0; i < count; ++i) {
        std::vector<int> behind;
        for (int o : direction.behind(static_cast<int>(i))) behind.push_back(last[o]);
        std::ranges::sort(behind);
        const Operation& o = network.operations[i];
        classes[i] = known.try_emplace({o.kind, o.single, std::move(behind)}, static_cast<int>(known.size())).first->second;
      }
      last = classes;
      classes_.push_back(std::move(classes));
    }
  }

  // To which depth two operations go on alike.
  int alike(int x, int y) const {
    int depth = 0;
    while (depth < kDepth && classes_[depth][x] == classes_[depth][y]) ++depth;
    return depth;
  }
  // The class of operations that are alike as far as they must be.
  int kindred(int x) const { return classes_[kAlike - 1][x]; }

 private:
  std::vector<std::vector<int>> classes_;
};

class PairFinder {
 public:
  PairFinder(const Network& network, bool backwards)
      : network_(network), direction_(network, backwards), sequels_(network, direction_), partner_(network.operations.size(), kNone),
        lane_(network.operations.size()) {}

  // Those at neighbouring cells.
  void pair_cells(const std::map<std::pair<int, int>, int>& cells, int parity) {
    for (const auto& [place, low] : cells) {
      const auto high = cells.find({place.first, place.second + 1});
      if (place.second % 2 != parity || high == cells.end() || low == high->second) continue;
      if (partner_[low] == kNone && partner_[high->second] == kNone && same_kind(low, high->second)) pair(low, high->second);
    }
  }

  std::vector<std::vector<int>> run() {
    while (pair_all(offers(true)) || pair_first(offers(false)) || pair_first(kindred_offers())) {
    }
    std::vector<std::vector<int>> pairs;
    for (int i = 0; i < count(); ++i)
      if (partner_[i] != kNone && lane_[i] == 0 && !operation(i).in_memory()) pairs.push_back({i, partner_[i]});
    return pairs;
  }

 private:
  // Two operations that may be a pair; the least of several is the best.
  struct Offer {
    int unlike;
    bool other_sign;
    int near;  // of those for which only their sequels speak the farthest from the end go first
    int low, high;

    auto operator<=>(const Offer&) const = default;
  };

  int count() const { return static_cast<int>(network_.operations.size()); }
  const Operation& operation(int i) const { return network_.operations[i]; }
  bool open(int i) const { return partner_[i] == kNone && !operation(i).in_memory(); }
  bool same_kind(int x, int y) const {
    return operation(x).kind == operation(y).kind && operation(x).single == operation(y).single;
  }

  void pair(int low, int high) {
    partner_[low] = high, partner_[high] = low;
    lane_[low] = 0, lane_[high] = 1;
  }

  bool comes_from_lane(int i, int lane) const {
    const std::vector<int>& before = direction_.before(i);
    return !before.empty() && std::ranges::all_of(before, [&](int o) { return partner_[o] != kNone && lane_[o] == lane; });
  }
  Offer offer(int low, int high, int near = 0) const {
    return {-sequels_.alike(low, high), operation(low).minus != operation(high).minus, near, low, high};
  }

  // Operations that come from their lane only, and from pairs: all that are before them, or one at least.
  std::vector<Offer> offers(bool all) const {
    std::vector<Offer> found;
    for (int x = 0; x < count(); ++x) {
      if (!open(x) || !comes_from_lane(x, 0)) continue;
      std::map<int, size_t> met;
      for (int o : direction_.before(x))
        for (int y : direction_.behind(partner_[o])) ++met[y];
      for (const auto& [y, times] : met)
        if (times >= (all ? direction_.before(x).size() : 1) && y != x && open(y) && same_kind(x, y) && comes_from_lane(y, 1))
          found.push_back(offer(x, y));
    }
    std::ranges::sort(found);
    return found;
  }

  std::vector<Offer> kindred_offers() const {
    std::map<std::pair<int, int>, std::vector<int>> groups;
    for (int x = 0; x < count(); ++x)
      if (open(x)) groups[{sequels_.kindred(x), direction_.distance(x)}].push_back(x);
    std::vector<Offer> found;
    for (const auto& [kind, group] : groups)
      for (size_t i = 0; i < group.size(); ++i)
        for (size_t j = i + 1; j < group.size(); ++j) found.push_back(offer(group[i], group[j], -kind.second));
    std::ranges::sort(found);
    return found;
  }

  bool pair_all(const std::vector<Offer>& offers) {
    for (const Offer& o : offers)
      if (open(o.low) && open(o.high)) pair(o.low, o.high);
    return !offers.empty();
  }

  bool pair_first(const std::vector<Offer>& offers) {
    if (!offers.empty()) pair(offers[0].low, offers[0].high);
    return !offers.empty();
  }

  const Network& network_;
  const Direction direction_;
  const Sequels sequels_;
  std::vector<int> partner_, lane_;
};

}  // namespace

std::vector<std::vector<int>> find_pairs(const Network& network, PairsFrom from, int parity) {
  PairFinder finder(network, from == PairsFrom::Results);
  std::map<std::pair<int, int>, int> cells;
  if (from == PairsFrom::Source)
    for (size_t i = 0; i < network.operations.size(); ++i)
      if (const Operation& o = network.operations[i]; o.kind == Kind::Input) cells[{o.source, o.cell}] = static_cast<int>(i);
  if (from == PairsFrom::Results)
    for (const Output& o : network.outputs)
      if (!network.operations[o.operation].in_memory()) cells[{o.target, o.cell}] = o.operation;
  finder.pair_cells(cells, parity);
  return finder.run();
}

}  // namespace xfm::pack
