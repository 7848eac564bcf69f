#include "generator/schedule.h"

#include <algorithm>

#include "generator/check.h"
#include "generator/core_model.h"
#include "generator/latency_window.h"

namespace xfm {

namespace {

enum class Cut {
  Alternating,  // a layer from the top and a layer from the bottom in turn
  Balanced,     // the next layer from the side that has fewer values
  None,         // the order in which the operations were made
};

class Scheduler {
 public:
  Scheduler(const Program& p, Cut cut) : p_(p), cut_(cut), users_(p.insts().size()), mark_(p.insts().size(), -1) {
    stored_.resize(p.insts().size());
    for (const Store& s : p.stores()) stored_[s.value] = 1;
    find_needed();
  }

  std::vector<int> order() {
    std::vector<int> all;
    for (size_t i = 0; i < needed_.size(); ++i)
      if (needed_[i] && !is_leaf(p_.insts()[i].op)) all.push_back(static_cast<int>(i));
    if (cut_ == Cut::None) {
      order_ = std::move(all);
    } else {
      bisect(std::move(all));
    }
    return sunk();
  }

 private:
  template <class F>
  void operands(int i, F visit) const {
    each_operand(p_.insts(), i, visit);
  }

  void find_needed() {
    needed_.resize(p_.insts().size());
    std::vector<int> stack;
    const auto need = [&](int i) {
      if (!needed_[i]) needed_[i] = 1, stack.push_back(i);
    };
    for (const Store& s : p_.stores()) need(s.value);
    while (!stack.empty()) {
      const int i = stack.back();
      stack.pop_back();
      operands(i, need);
    }
    for (size_t i = 0; i < needed_.size(); ++i)
      if (needed_[i]) operands(static_cast<int>(i), [&](int o) { users_[o].push_back(static_cast<int>(i)); });
  }

  // Splits a topologically ordered set and orders its parts one behind the other.
  void bisect(std::vector<int> set) {
    if (set.size() <= 1) {
      order_.insert(order_.end(), set.begin(), set.end());
      return;
    }
    std::vector<std::vector<int>> parts = components(set);
    if (parts.size() == 1) parts = layers(set);
    for (std::vector<int>& part : parts) bisect(std::move(part));
  }

  std::vector<std::vector<int>> components(const std::vector<int>& set) {
    const int tag = next_tag_++;
    for (int i : set) mark_[i] = tag;
    std::vector<std::vector<int>> parts;
    std::vector<int> stack;
    for (int start : set) {
      if (mark_[start] != tag) continue;
      parts.emplace_back();
      const auto visit = [&](int i) {
        if (mark_[i] == tag) mark_[i] = -1, stack.push_back(i);
      };
      visit(start);
      while (!stack.empty()) {
        const int i = stack.back();
        stack.pop_back();
        parts.back().push_back(i);
        operands(i, visit);
        for (int u : users_[i]) visit(u);
      }
      std::sort(parts.back().begin(), parts.back().end());
    }
    return parts;
  }

  // Takes layers from the top and from the bottom until they meet.
  std::vector<std::vector<int>> layers(const std::vector<int>& set) {
    const int inside = next_tag_++;
    for (int i : set) mark_[i] = inside;
    std::vector<int> waiting_in(set.size()), waiting_out(set.size()), index_of = local_index(set);
    for (size_t k = 0; k < set.size(); ++k) {
      operands(set[k], [&](int o) { waiting_in[k] += mark_[o] == inside; });
      for (int u : users_[set[k]]) waiting_out[k] += mark_[u] == inside;
    }
    std::vector<int> top, bottom;
    for (size_t k = 0; k < set.size(); ++k) {
      if (waiting_in[k] == 0) top.push_back(set[k]);
      if (waiting_out[k] == 0) bottom.push_back(set[k]);
    }
    std::vector<char> colour(set.size());
    size_t red = 0, blue = 0, taken = 0;
    bool from_top = false;
    while (taken < set.size()) {
      from_top = cut_ == Cut::Alternating ? !from_top : red <= blue;
      if ((from_top ? top : bottom).empty()) from_top = !from_top;
      std::vector<int>& layer = from_top ? top : bottom;
      std::vector<int> next;
      for (int i : layer) {
        char& c = colour[index_of[i - set.front()]];
        if (c) continue;
        c = from_top ? 1 : 2;
        ++taken;
        ++(from_top ? red : blue);
        const auto release = [&](int n, std::vector<int>& waiting) {
          if (mark_[n] == inside && --waiting[index_of[n - set.front()]] == 0) next.push_back(n);
        };
        if (from_top) {
          for (int u : users_[i]) release(u, waiting_in);
        } else {
          operands(i, [&](int o) { release(o, waiting_out); });
        }
      }
      layer = std::move(next);
    }
    std::vector<std::vector<int>> halves(2);
    for (size_t k = 0; k < set.size(); ++k) halves[colour[k] == 2].push_back(set[k]);
    check(!halves[0].empty() && !halves[1].empty(), "a connected set of operations splits");
    return halves;
  }

  std::vector<int> local_index(const std::vector<int>& set) const {
    std::vector<int> index(set.back() - set.front() + 1, -1);
    for (size_t k = 0; k < set.size(); ++k) index[set[k] - set.front()] = static_cast<int>(k);
    return index;
  }

  std::vector<int> sunk() {
    std::vector<int> out;
    std::vector<char> done(p_.insts().size());
    const auto emit = [&](auto&& self, int i) -> void {
      if (done[i]) return;
      done[i] = 1;
      operands(i, [&](int o) { self(self, o); });
      out.push_back(i);
    };
    for (int i : order_)
      if (stored_[i] || users_[i].size() != 1) emit(emit, i);
    return out;
  }

  const Program& p_;
  const Cut cut_;
  std::vector<std::vector<int>> users_;
  std::vector<int> mark_;
  std::vector<char> stored_, needed_;
  std::vector<int> order_;
  int next_tag_ = 0;
};

}  // namespace

std::vector<int> schedule(const Program& program, int registers) {
  std::vector<int> best;
  double least = 0;
  const auto consider = [&](std::vector<int> order) {
    const double cycles = cycles_per_call(program, order, registers);
    if (best.empty() || cycles < least) least = cycles, best = std::move(order);
  };
  for (Cut cut : {Cut::Alternating, Cut::Balanced, Cut::None}) {
    const std::vector<int> order = Scheduler(program, cut).order();
    consider(order);
    for (int operations : core::kWindows)
      for (int spare : core::kSpares) consider(fill_latencies(program, order, {operations, registers - spare}));
  }
  return best;
}

}  // namespace xfm
