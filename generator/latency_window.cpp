#include "generator/latency_window.h"

#include <algorithm>

#include "generator/core_model.h"

namespace xfm {

namespace {

class LatencyWindow {
 public:
  LatencyWindow(const Program& program, const std::vector<int>& order, Window window)
      : insts_(program.insts()), window_(window), pending_(order), users_(insts_.size()), done_(insts_.size(), -1),
        path_(insts_.size()) {
    for (int i : order) operands(i, [&](int o) { ++users_[o]; });
    for (auto i = order.rbegin(); i != order.rend(); ++i)
      operands(*i, [&](int o) { path_[o] = std::max(path_[o], path_[*i] + cost(insts_[*i].op).latency); });
  }

  std::vector<int> run() {
    while (!pending_.empty()) {
      const auto next = started_ < core::kPerCycle ? best() : pending_.end();
      if (next == pending_.end()) {
        ++cycle_;
        busy_ = 0;
        started_ = 0;
      } else {
        start(*next);
        pending_.erase(next);
      }
    }
    return std::move(order_);
  }

 private:
  template <class F>
  void operands(int i, F visit) const {
    each_operand(insts_, i, visit);
  }

  bool ready(int i) const {
    bool all = (ports(insts_[i].op) & ~busy_) != 0 || ports(insts_[i].op) == 0;
    operands(i, [&](int o) { all = all && done_[o] >= 0 && done_[o] <= cycle_; });
    return all;
  }

  // Registers that an operation takes less those that it gives back.
  int growth(int i) const {
    if (folds(insts_[i])) return 0;
    int sum = 1;
    operands(i, [&](int o) { sum -= users_[o] == 1 && !folds(insts_[o]); });
    return sum;
  }

  // Of those that can start now, the one with the longest way to the end.
  std::vector<int>::iterator best() {
    auto found = pending_.end();
    const auto end = pending_.begin() + std::min<size_t>(window_.operations, pending_.size());
    for (auto i = pending_.begin(); i != end; ++i) {
      if (!ready(*i) || (found != pending_.end() && path_[*i] <= path_[*found])) continue;
      const int more = i == pending_.begin() ? 0 : growth(*i);
      if (more <= 0 || live_ + more <= window_.live) found = i;
    }
    return found;
  }

  void start(int i) {
    const unsigned free = ports(insts_[i].op) & ~busy_;
    busy_ |= free & -free;
    ++started_;
    done_[i] = cycle_ + cost(insts_[i].op).latency;
    live_ += growth(i) - (users_[i] == 0);
    operands(i, [&](int o) { --users_[o]; });
    order_.push_back(i);
  }

  const std::vector<Inst>& insts_;
  const Window window_;
  std::vector<int> pending_, users_, done_, path_, order_;
  unsigned busy_ = 0;
  int started_ = 0, cycle_ = 0, live_ = 0;
};

}  // namespace

std::vector<int> fill_latencies(const Program& program, const std::vector<int>& order, Window window) {
  return LatencyWindow(program, order, window).run();
}

}  // namespace xfm
