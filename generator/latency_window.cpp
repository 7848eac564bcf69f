#include "generator/latency_window.h"

#include <algorithm>

#include "generator/core_model.h"

namespace xfm {

namespace {

class LatencyWindow {
 public:
  LatencyWindow(const Program& program, const std::vector<int>& order, Window window)
      : insts_(program.insts()), window_(window), pending_(order), users_(insts_.size()), done_(insts_.size(), -1),
        path_(insts_.size()), from_(insts_.size(), -1) {
    for (const Inst& i : insts_) ports_.push_back(ports(i.op));
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

  bool ready(int i) {
    if ((ports_[i] & ~busy_) == 0 && ports_[i] != 0) return false;
    if (from_[i] < 0) from_[i] = operands_done(i);
    return from_[i] >= 0 && from_[i] <= cycle_;
  }

  // The cycle in which the last operand is there; -1 while one has not started.
  int operands_done(int i) const {
    int last = 0;
    operands(i, [&](int o) { last = last < 0 || done_[o] < 0 ? -1 : std::max(last, done_[o]); });
    return last;
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
    const unsigned free = ports_[i] & ~busy_;
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
  std::vector<int> from_;  // cycle from which its operands are there, once that is known
  std::vector<unsigned> ports_;
  unsigned busy_ = 0;
  int started_ = 0, cycle_ = 0, live_ = 0;
};

}  // namespace

std::vector<int> fill_latencies(const Program& program, const std::vector<int>& order, Window window) {
  return LatencyWindow(program, order, window).run();
}

}  // namespace xfm
