#include "generator/pack.h"

#include <algorithm>
#include <map>
#include <set>

#include "generator/check.h"
#include "generator/pack_registers.h"
#include "generator/pack_stores.h"

namespace xfm::pack {

namespace {

bool listed(const std::vector<int>& list, int item) { return std::ranges::find(list, item) != list.end(); }

// Operations that are done together or alone, with what each waits for.
class Units {
 public:
  Units(const Network& network, std::vector<std::vector<int>> runs) : network_(network), runs_(std::move(runs)) {
    while (!ordered()) dissolve_worst();
    find_heights();
  }

  int of(int operation) const { return unit_[operation]; }
  const std::vector<int>& members(int unit) const { return members_[unit]; }
  int count() const { return static_cast<int>(members_.size()); }
  // Units behind this one on the longest way to a store.
  int height(int unit) const { return heights_[unit]; }

  template <class F>
  void operands(int operation, F visit) const {
    const Operation& o = network_.operations[operation];
    for (int operand : {o.a, o.b})
      if (operand != kNone && !network_.operations[operand].in_memory()) visit(operand);
  }

 private:
  // Numbers the units; false if some wait for each other.
  bool ordered() {
    const int total = static_cast<int>(network_.operations.size());
    unit_.assign(total, kNone);
    members_.clear();
    for (const std::vector<int>& run : runs_) {
      for (int operation : run) unit_[operation] = count();
      members_.push_back(run);
    }
    for (int i = 0; i < total; ++i)
      if (unit_[i] == kNone && !network_.operations[i].in_memory()) unit_[i] = count(), members_.push_back({i});
    std::vector<int> ready;
    waiting_.assign(count(), 0);
    for (int i = 0; i < total; ++i) operands(i, [&](int) { ++waiting_[unit_[i]]; });
    for (int u = 0; u < count(); ++u)
      if (waiting_[u] == 0) ready.push_back(u);
    order_.clear();
    while (!ready.empty()) {
      const int u = ready.back();
      ready.pop_back();
      order_.push_back(u);
      for (int operation : members_[u])
        for (int user : network_.operations[operation].users) {
          const Operation& o = network_.operations[user];
          waiting_[unit_[user]] -= (o.a == operation) + (o.b == operation);
          if (waiting_[unit_[user]] == 0 && !listed(ready, unit_[user])) ready.push_back(unit_[user]);
        }
    }
    return static_cast<int>(order_.size()) == count();
  }

  // Of the runs in a circle, the one whose members are farthest apart.
  void dissolve_worst() {
    size_t worst = runs_.size();
    int spread = -1;
    for (size_t r = 0; r < runs_.size(); ++r) {
      if (waiting_[r] == 0) continue;
      const auto [low, high] = std::ranges::minmax(runs_[r], {}, [&](int o) { return network_.operations[o].height; });
      const int heights = network_.operations[high].height - network_.operations[low].height;
      if (heights > spread) spread = heights, worst = r;
    }
    check(worst < runs_.size(), "operations that wait for each other stand in runs");
    runs_.erase(runs_.begin() + static_cast<long>(worst));
  }

  void find_heights() {
    heights_.assign(count(), 0);
    for (auto u = order_.rbegin(); u != order_.rend(); ++u)
      for (int operation : members_[*u])
        operands(operation, [&](int o) { heights_[unit_[o]] = std::max(heights_[unit_[o]], heights_[*u] + 1); });
  }

  const Network& network_;
  std::vector<std::vector<int>> runs_;
  std::vector<int> unit_, waiting_, order_, heights_;
  std::vector<std::vector<int>> members_;
};

// One operation of the packed program: in each lane one of the scalar program.
struct Pack {
  Lanes lanes = kEmpty;
  std::array<bool, kMaxLanes> exchanged = {};  // a sum taken as b + a, a difference as -b + a
};

class Packer {
 public:
  Packer(const Network& network, const std::vector<Family>& families, const Rule& rule, const Target& target, Grid grid)
      : network_(network), lanes_(rule.lanes), grid_(grid), units_(network, runs(network, families, rule, grid.pairs)),
        moves_(target), registers_(network, program_, moves_, rule.lanes, {grid.loads}) {}

  Program run() {
    std::vector<int> waiting(units_.count());
    for (size_t i = 0; i < network_.operations.size(); ++i)
      units_.operands(static_cast<int>(i), [&](int) { ++waiting[units_.of(static_cast<int>(i))]; });
    std::vector<int> ready;
    for (int u = 0; u < units_.count(); ++u) {
      most_ = std::max(most_, units_.height(u));
      if (waiting[u] == 0) ready.push_back(u);
    }
    for (int round = 0; !ready.empty(); ++round) {
      const std::vector<Pack> packs = packs_of(ready, round);
      std::vector<Lanes> wants;
      for (const Pack& p : packs)
        for (const Lanes& want : operands(p)) wants.push_back(want);
      registers_.supply(wants);
      for (const Pack& p : packs) emit(p);
      for (const Pack& p : packs) finish(p, waiting, ready);
      asked_.clear();
    }
    store_outputs(network_, registers_, program_, lanes_, grid_.stores);
    return std::move(program_);
  }

 private:
  const Operation& operation(int i) const { return network_.operations[i]; }
  const Operation& first_of(const Pack& p) const {
    return operation(*std::ranges::find_if(p.lanes, [](int o) { return o != kNone; }));
  }

  std::vector<Lanes> operands(const Pack& p) const {
    std::vector<Lanes> out(first_of(p).kind == Kind::Sum ? 2 : 1, kEmpty);
    for (int l = 0; l < lanes_; ++l) {
      if (p.lanes[l] == kNone) continue;
      const Operation& o = operation(p.lanes[l]);
      out[0][l] = p.exchanged[l] ? o.b : o.a;
      if (out.size() > 1) out[1][l] = p.exchanged[l] ? o.a : o.b;
    }
    return out;
  }

  // Moves that the operands of a pack take, beside those of the packs before it, and a change of signs.
  double price(const Pack& p) {
    double sum = exchanges_some(p) ? kFlip : 0;
    for (const Lanes& want : operands(p)) sum += asked_.contains(want) ? 0 : registers_.price(want);
    return sum;
  }

  // Whether it has differences both as they stand and exchanged.
  bool exchanges_some(const Pack& p) const {
    bool exchanged = false, straight = false;
    for (int l = 0; l < lanes_; ++l)
      if (p.lanes[l] != kNone && operation(p.lanes[l]).minus) (p.exchanged[l] ? exchanged : straight) = true;
    return exchanged && straight;
  }

  void ask(const Pack& p) {
    for (const Lanes& want : operands(p)) asked_.insert(want);
  }

  // The ready units as packs; those that may wait and would not fill a register stay in the list.
  std::vector<Pack> packs_of(std::vector<int>& ready, int round) {
    std::ranges::sort(ready);
    std::vector<Pack> packs;
    std::map<std::pair<Kind, bool>, std::vector<int>> left;
    for (int u : ready) {
      const std::vector<int>& members = units_.members(u);
      if (members.size() > 1) {
        packs.push_back(placed(members));
        ask(packs.back());
      } else {
        left[{operation(members[0]).kind, operation(members[0]).single}].push_back(members[0]);
      }
    }
    ready.clear();
    for (auto& [kind, list] : left)
      while (!list.empty()) {
        const std::vector<int> before = list;
        const Pack p = fill(list);
        if (count(p) < lanes_ && may_wait(p, round)) {
          for (int o : before) ready.push_back(units_.of(o));
          break;
        }
        packs.push_back(p);
        ask(p);
      }
    if (packs.empty() && !ready.empty()) {  // everything may wait: nothing would come of that
      most_ = 0;
      return packs_of(ready, round);
    }
    return packs;
  }

  int count(const Pack& p) const {
    return static_cast<int>(std::ranges::count_if(p.lanes, [](int o) { return o != kNone; }));
  }

  bool may_wait(const Pack& p, int round) const {
    return std::ranges::all_of(p.lanes, [&](int o) { return o == kNone || units_.height(units_.of(o)) + round < most_; });
  }

  // A run in its order, sums and differences exchanged where that saves moves.
  Pack placed(const std::vector<int>& members) {
    Pack p;
    for (size_t l = 0; l < members.size(); ++l) {
      p.lanes[l] = members[l];
      const Operation& o = operation(members[l]);
      if (o.kind != Kind::Sum) continue;
      const double straight = price(p);
      p.exchanged[l] = true;
      if (price(p) > straight - 1e-9) p.exchanged[l] = false;
    }
    return p;
  }

  // The first operation of the list, where its operand stands, then always the one that adds least, as long as it adds
  // less than by itself.
  Pack fill(std::vector<int>& list) {
    Pack p;
    const Operation& first = operation(list[0]);
    const int at = home_lane_[first.a] >= 0 ? home_lane_[first.a] : 0;
    p.lanes[at] = list[0];
    list.erase(list.begin());
    double now = price(p);
    for (int filled = 1; filled < lanes_; ++filled) {
      Pack best;
      double least = 1e9;
      size_t taken = 0;
      for (size_t i = 0; i < list.size(); ++i)
        for (int l = 0; l < lanes_; ++l) {
          if (p.lanes[l] != kNone) continue;
          for (int exchanged = 0; exchanged <= (first.kind == Kind::Sum ? 1 : 0); ++exchanged) {
            Pack with = p;
            with.lanes[l] = list[i];
            with.exchanged[l] = exchanged;
            const double cost = price(with);
            if (cost < least - 1e-9) least = cost, best = with, taken = i;
          }
        }
      if (least > now + kOperation) break;
      p = best, now = least;
      list.erase(list.begin() + static_cast<long>(taken));
    }
    return p;
  }

  void emit(const Pack& p) {
    const Operation& o = first_of(p);
    const Type type = registers_.type(o.single);
    const std::vector<Lanes> wants = operands(p);
    const int a = registers_.value(wants[0]);
    int value = a;
    switch (o.kind) {
      case Kind::Sum: value = sum(p, type, a, registers_.value(wants[1])); break;
      case Kind::Product: {
        std::vector<Real> factors(width(type), Real(1));
        for (int l = 0; l < lanes_; ++l)
          if (p.lanes[l] != kNone) factors[l] = operation(p.lanes[l]).factor;
        value = program_.emit({.op = Op::Mul, .type = type, .a = program_.constant(type, factors), .b = a});
        break;
      }
      case Kind::Scale: value = program_.emit({.op = Op::Mul, .type = type, .a = scale(o.single), .b = a}); break;
      case Kind::Widen: value = program_.emit({.op = Op::Widen, .type = type, .a = a}); break;
      case Kind::Narrow: value = program_.emit({.op = Op::Narrow, .type = type, .a = a}); break;
      case Kind::Negate:
        value = program_.emit({.op = Op::Sub, .type = type, .a = program_.emit({.op = Op::Zero, .type = type}), .b = a});
        break;
      case Kind::Input:
      case Kind::Zero: check(false, "what stands in memory is not done");
    }
    registers_.hold(value, type, p.lanes);
    for (int l = 0; l < lanes_; ++l)
      if (p.lanes[l] != kNone) home_lane_[p.lanes[l]] = l;
  }

  // Of its two operands. Where differences of both orders meet, a changes its sign in the exchanged ones.
  int sum(const Pack& p, Type type, int a, int b) {
    std::vector<bool> minus_a(width(type)), minus_b(width(type));
    for (int l = 0; l < lanes_; ++l)
      if (p.lanes[l] != kNone && operation(p.lanes[l]).minus) (p.exchanged[l] ? minus_a : minus_b)[l] = true;
    if (exchanges_some(p)) {
      a = program_.flip(type, a, minus_a);
    } else if (std::ranges::count(minus_a, true)) {
      std::swap(a, b), std::swap(minus_a, minus_b);
    }
    return signed_sum(p, type, a, b, minus_b);
  }

  // Lane by lane a - b where it says so, else a + b.
  int signed_sum(const Pack& p, Type type, int a, int b, const std::vector<bool>& minus) {
    std::vector<int> signs(width(type), 1);
    bool all = true, none = true, alternating = bits(type) < 512;
    for (int l = 0; l < lanes_; ++l) {
      if (p.lanes[l] == kNone) continue;
      signs[l] = minus[l] ? -1 : 1;
      all = all && minus[l], none = none && !minus[l];
      alternating = alternating && minus[l] == (l % 2 == 0);
    }
    if (!all && !none && !alternating) return program_.signed_add(type, a, b, signs);
    return program_.emit({.op = none ? Op::Add : all ? Op::Sub : Op::AddSub, .type = type, .a = a, .b = b});
  }

  int scale(bool single) {
    if (single || !network_.wide_scale) return program_.emit({.op = Op::Scale, .type = registers_.type(single)});
    const int narrow = program_.emit({.op = Op::Scale, .type = registers_.type(true)});
    return program_.emit({.op = Op::Widen, .type = registers_.type(false), .a = narrow});
  }

  void finish(const Pack& p, std::vector<int>& waiting, std::vector<int>& ready) {
    for (int o : p.lanes) {
      if (o == kNone) continue;
      for (int user : operation(o).users) {
        const int unit = units_.of(user);
        waiting[unit] -= (operation(user).a == o) + (operation(user).b == o);
        if (waiting[unit] == 0 && !listed(ready, unit)) ready.push_back(unit);
      }
    }
  }

  static constexpr double kFlip = 0.5;     // a change of signs
  static constexpr double kOperation = 1;  // beside a move, what an operation by itself costs

  const Network& network_;
  const int lanes_;
  const Grid grid_;
  Units units_;
  Program program_;
  Moves moves_;
  Registers registers_;
  std::vector<int> home_lane_ = std::vector<int>(network_.operations.size(), kNone);
  std::set<Lanes> asked_;
  int most_ = 0;
};

}  // namespace

Program pack(const Network& network, const std::vector<Family>& families, const Rule& rule, const Target& target, Grid grid) {
  return Packer(network, families, rule, target, grid).run();
}

}  // namespace xfm::pack
