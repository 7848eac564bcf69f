#include "generator/core.h"

#include <algorithm>

namespace xfm {

Cost cost(Op op) {
  using enum Work;
  constexpr int kLoad = core::kLoadLatency;
  switch (op) {
    case Op::Load:
    case Op::LoadPart:
    case Op::LoadPair:
    case Op::LoadDup:
    case Op::Broadcast: return {Load, kLoad};
    case Op::LoadHigh:
    case Op::LoadLane: return {Shuffle, 1};  // beside that of its load
    case Op::Add:
    case Op::Sub:
    case Op::AddSub: return {Add, 3};
    case Op::Mul: return {Multiply, 3};
    case Op::SignedAdd: return {Multiply, 4};
    case Op::Widen:
    case Op::Narrow: return {Add, 3};
    case Op::Shuffle:
    case Op::UnpackLow:
    case Op::UnpackHigh:
    case Op::Permute:
    case Op::Insert:
    case Op::PairShuffle: return {Shuffle, 1};
    case Op::Join:
    case Op::HighHalf: return {Shuffle, 3};
    case Op::Halves:
    case Op::Pick: return {Cross, 3};
    case Op::Blend:
    case Op::Flip: return {Logic, 1};
    case Op::LowHalf: return {None, 1};
    case Op::Constant:
    case Op::Scale:
    case Op::Zero: return {None, 1};
  }
  return {None, 1};
}

unsigned ports(Op op) {
  switch (cost(op).work) {
    case Work::None:
    case Work::Load: return 0;
    case Work::Add: return core::kAddPorts;
    case Work::Multiply: return core::kMultiplyPorts;
    case Work::Shuffle: return core::kShufflePorts;
    case Work::Cross: return core::kCrossPorts;
    case Work::Logic: return core::kAnyPort;
  }
  return 0;
}

double PortUse::cycles() const {
  const int sums = adds + converts;
  const double all = sums + muls + shuffles + crossings + loads + stores + others;
  return std::max({sums / 2.0, muls / 2.0, (sums + muls) / 3.0, crossings + shuffles / 2.0, loads / 3.0, stores / 2.0,
                   all / 6.0});
}

PortUse port_use(const Program& program) {
  PortUse use;
  for (const Inst& i : program.insts()) {
    use.loads += is_load(i.op);
    switch (cost(i.op).work) {
      case Work::Add: ++(i.op == Op::Widen || i.op == Op::Narrow ? use.converts : use.adds); break;
      case Work::Multiply: ++use.muls; break;
      case Work::Shuffle: ++use.shuffles; break;
      case Work::Cross: ++use.crossings; break;
      case Work::Logic: ++use.others; break;
      case Work::Load:
      case Work::None: break;
    }
  }
  use.stores = static_cast<int>(program.stores().size());
  return use;
}

}  // namespace xfm
