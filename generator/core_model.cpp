#include "generator/core_model.h"

#include <algorithm>
#include <array>

namespace xfm {

namespace {

using namespace core;

constexpr int kNever = 1 << 28;

struct MicroOp {
  unsigned ports = 0;
  int latency = 1;
  bool loads = false;
  std::vector<int> sources = {};  // operations before it in the same body
};

// The micro-operations of a body: registers are taken from the value that is needed last.
class BodyStream {
 public:
  BodyStream(const Program& program, const std::vector<int>& order, size_t registers)
      : insts_(program.insts()), order_(order), most_(registers), uses_(insts_.size()), made_by_(insts_.size(), -1), in_register_(insts_.size()),
        on_stack_(insts_.size()), stores_(order.size()) {
    find_uses(program);
  }

  std::vector<MicroOp> run() {
    body_.resize(kPrologue);
    for (int at = 0; at < static_cast<int>(order_.size()); ++at) {
      drop_dead(at);
      step(order_[at], at);
      for (int value : stores_[at]) body_.push_back({kStorePort, 1, false, {made_by_[value]}});
    }
    return std::move(body_);
  }

 private:
  // Positions at which each value is needed, the first one last; results wait for the last load before they are stored.
  void find_uses(const Program& program) {
    std::vector<int> place(insts_.size(), -1);
    int last_load = 0;
    for (int at = 0; at < static_cast<int>(order_.size()); ++at) {
      place[order_[at]] = at;
      if (is_load(insts_[order_[at]].op)) last_load = at;
    }
    for (const Store& s : program.stores()) {
      if (place[s.value] < 0) continue;
      const int at = std::max(place[s.value], last_load);
      uses_[s.value].push_back(at);
      stores_[at].push_back(s.value);
    }
    for (int at = 0; at < static_cast<int>(order_.size()); ++at)
      each_operand(insts_, order_[at], [&](int operand) { uses_[operand].push_back(at); });
    for (std::vector<int>& uses : uses_) std::sort(uses.rbegin(), uses.rend());
  }

  int next_use(int value, int at) {
    std::vector<int>& uses = uses_[value];
    while (!uses.empty() && uses.back() < at) uses.pop_back();
    return uses.empty() ? kNever : uses.back();
  }

  void drop_dead(int at) {
    std::erase_if(registers_, [&](int r) {
      if (next_use(r, at) != kNever) return false;
      in_register_[r] = 0;
      return true;
    });
  }

  void hold(int value, int at) {
    if (next_use(value, at) == kNever) return;
    if (registers_.size() == most_) {
      const auto last = std::max_element(registers_.begin(), registers_.end(),
                                         [&](int a, int b) { return next_use(a, at) < next_use(b, at); });
      if (next_use(*last, at) != kNever && !on_stack_[*last] && !folds(insts_[*last])) {
        body_.push_back({kStorePort, 1, false, {made_by_[*last]}});
        made_by_[*last] = static_cast<int>(body_.size()) - 1;
        on_stack_[*last] = 1;
      }
      in_register_[*last] = 0;
      *last = value;
    } else {
      registers_.push_back(value);
    }
    in_register_[value] = 1;
  }

  void step(int value, int at) {
    const Inst& inst = insts_[value];
    if (folds(inst) && uses_[value].size() == 1) return;
    MicroOp op{ports(inst.op), cost(inst.op).latency, is_load(inst.op)};
    for (int operand : {inst.a, inst.b, inst.c})
      if (operand >= 0) use(op, operand, at);
    if (converts_by_halves(inst)) op.latency += spread(op);
    hold(value, at + 1);
    body_.push_back(op);
    made_by_[value] = static_cast<int>(body_.size()) - 1;
  }

  // Four values and more change their precision in two operations, one of which moves lanes.
  bool converts_by_halves(const Inst& inst) const {
    if (inst.op != Op::Widen && inst.op != Op::Narrow) return false;
    return !is_leaf(insts_[inst.a].op) && std::max(bits(inst.type), bits(insts_[inst.a].type)) > 128;
  }

  // Puts the move before the operation; the latency of the two is longer by so much.
  int spread(MicroOp& op) {
    body_.push_back({kShufflePorts, 1, op.loads, op.sources});
    op.loads = false;
    op.sources = {static_cast<int>(body_.size()) - 1};
    return 1;
  }

  // An operand comes from a register, or from memory where that is its last use, or is loaded into a register.
  void use(MicroOp& op, int operand, int at) {
    const Inst& inst = insts_[operand];
    if (is_leaf(inst.op)) {
      op.loads = op.loads || inst.op == Op::Constant;
      return;
    }
    if (!in_register_[operand]) {
      if (next_use(operand, at + 1) == kNever) {
        op.loads = true;
      } else {
        MicroOp reload{0, kLoadLatency, true};
        if (!folds(inst)) reload.sources.push_back(made_by_[operand]);
        body_.push_back(reload);
        made_by_[operand] = static_cast<int>(body_.size()) - 1;
        hold(operand, at);
      }
    }
    if (made_by_[operand] >= 0) op.sources.push_back(made_by_[operand]);
  }

  const std::vector<Inst>& insts_;
  const std::vector<int>& order_;
  const size_t most_;
  std::vector<std::vector<int>> uses_;
  std::vector<int> made_by_;  // the operation whose end a user waits for: of the value, of its store, of its reload
  std::vector<char> in_register_, on_stack_;
  std::vector<std::vector<int>> stores_;
  std::vector<int> registers_;
  std::vector<MicroOp> body_;
};

// Copies of a body one behind the other.
class Pipeline {
 public:
  explicit Pipeline(const std::vector<MicroOp>& body)
      : body_(body), size_(static_cast<int>(body.size())), done_(size_ * kCopies, kNever) {}

  double cycles_per_call() {
    while (next_ < static_cast<int>(done_.size()) || !queue_.empty()) {
      start_ready();
      hand_out();
      ++cycle_;
    }
    return (finish_[kCopies - 1] - finish_[0]) / double(kCopies - 1);
  }

 private:
  static constexpr int kCopies = 5;

  struct Waiting {
    int op, copy, from;  // the cycle before which it cannot start, as far as that is known
  };

  int sources_done(int op, int copy) const {
    int at = 0;
    for (int s : body_[op].sources) at = std::max(at, done_[copy * size_ + s]);
    return at;
  }

  void finish(int op, int copy, int at) {
    done_[copy * size_ + op] = at;
    finish_[copy] = std::max(finish_[copy], at);
  }

  void start_ready() {
    unsigned busy = 0;
    std::erase_if(queue_, [&](Waiting& w) {
      const MicroOp& op = body_[w.op];
      const unsigned free = op.ports & ~busy;
      if (!free || w.from > cycle_) return false;
      const int done = sources_done(w.op, w.copy);
      if (done > cycle_) {
        if (done < kNever) w.from = done;
        return false;
      }
      // Ports that shuffle are left for shuffles where another will do.
      const unsigned port = free & ~kShufflePorts ? free & ~kShufflePorts : free;
      busy |= port & -port;
      finish(w.op, w.copy, cycle_ + op.latency);
      return true;
    });
  }

  void hand_out() {
    int loads = 0;
    for (int k = 0; k < kPerCycle && next_ < static_cast<int>(done_.size()); ++k) {
      const int at = next_ % size_, copy = next_ / size_;
      const MicroOp& op = body_[at];
      while (oldest_ < next_ && done_[oldest_] <= cycle_) ++oldest_;
      if (next_ - oldest_ >= kInFlight || (op.loads && loads == kLoadsPerCycle)) return;
      if (op.ports == 0) {
        const int from = std::max(cycle_, sources_done(at, copy));
        if (from >= kNever) return;  // a value that is not even on its way to the stack
        finish(at, copy, from + op.latency);
      } else {
        if (queue_.size() == kQueue) return;
        queue_.push_back({at, copy, cycle_ + (op.loads ? kLoadLatency : 1)});
      }
      loads += op.loads;
      ++next_;
    }
  }

  const std::vector<MicroOp>& body_;
  const int size_;
  std::vector<int> done_;
  std::vector<Waiting> queue_;
  std::array<int, kCopies> finish_{};
  int next_ = 0, oldest_ = 0, cycle_ = 0;
};

}  // namespace

double cycles_per_call(const Program& program, const std::vector<int>& order, int registers) {
  const std::vector<MicroOp> body = BodyStream(program, order, registers - 1).run();  // one holds the scale
  return Pipeline(body).cycles_per_call();
}

}  // namespace xfm
