#include "generator/machine.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm {

int width(Type type) {
  switch (type) {
    case Type::F32:
    case Type::F64: return 1;
    case Type::F64x2: return 2;
    case Type::F32x4:
    case Type::F64x4: return 4;
    case Type::F32x8: return 8;
  }
  return 0;
}

bool single_precision(Type type) { return type == Type::F32 || type == Type::F32x4 || type == Type::F32x8; }

std::string type_name(Type type) {
  switch (type) {
    case Type::F32: return "float";
    case Type::F64: return "double";
    case Type::F32x4: return "__m128";
    case Type::F64x2: return "__m128d";
    case Type::F32x8: return "__m256";
    case Type::F64x4: return "__m256d";
  }
  return {};
}

int Program::emit(const Inst& inst) {
  const auto [place, fresh] = known_.try_emplace(inst, static_cast<int>(insts_.size()));
  ++step_;
  if (fresh) {
    insts_.push_back(inst);
    labels_.push_back(label_);
    if (!label_.empty()) labels_.back().push_back({"/" + std::to_string(step_)});
  }
  return place->second;
}

int Program::constant(Type type, std::vector<Real> lanes) {
  check(static_cast<int>(lanes.size()) == width(type), "a constant fills its register");
  std::pair<int, std::vector<__int128>> key{static_cast<int>(type), {}};
  for (Real x : lanes) key.second.push_back(static_cast<__int128>(x * Real(1ull << 50) * Real(1ull << 50)));
  const auto of_type = std::count_if(pool_.begin(), pool_.end(), [&](const PoolEntry& e) { return e.type == type; });
  const auto [place, fresh] = pooled_.try_emplace(std::move(key), static_cast<int>(of_type));
  if (fresh) pool_.push_back({type, std::move(lanes)});
  return emit({.op = Op::Constant, .type = type, .imm = place->second});
}

double PortUse::cycles() const {
  const double all = adds + muls + shuffles + crossings + loads + stores + others;
  return std::max({adds / 2.0, muls / 2.0, (adds + muls) / 3.0, crossings + shuffles / 2.0, loads / 3.0, stores / 2.0,
                   all / 6.0});
}

PortUse port_use(const Program& program) {
  PortUse use;
  for (const Inst& i : program.insts()) {
    switch (i.op) {
      case Op::Load:
      case Op::LoadPair:
      case Op::LoadDup:
      case Op::Broadcast: ++use.loads; break;
      case Op::LoadHigh: ++use.loads, ++use.shuffles; break;
      case Op::Add:
      case Op::Sub:
      case Op::AddSub: ++use.adds; break;
      case Op::Mul: ++use.muls; break;
      case Op::Shuffle:
      case Op::Permute:
      case Op::PairShuffle: ++use.shuffles; break;
      case Op::UnpackLow:
      case Op::UnpackHigh:
      case Op::Halves:
      case Op::Join:
      case Op::HighHalf:
      case Op::Widen:
      case Op::Narrow: ++use.crossings; break;
      case Op::Blend: ++use.others; break;
      case Op::LowHalf:
      case Op::Constant:
      case Op::Scale:
      case Op::Zero: break;
    }
  }
  use.stores = static_cast<int>(program.stores().size());
  return use;
}

}  // namespace xfm
