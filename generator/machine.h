// The machine form of a body: operations on values of one register type each, in single assignment, and the stores that
// end it. One operation becomes one intrinsic; the order of the list carries no meaning until it is scheduled.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "generator/label.h"
#include "generator/number.h"

namespace xfm {

enum class Type { F32, F64, F32x4, F64x2, F32x8, F64x4 };

int width(Type type);            // elements in a register
bool single_precision(Type type);
std::string type_name(Type type);  // of C++

enum class Op {
  Load,       // width(type) elements from `source` at `cell`
  LoadPair,   // two elements at `cell` into the low half, zero above (F32x4)
  LoadHigh,   // a, with its upper half replaced by the two elements at `cell` (F32x4)
  LoadDup,    // the complex value at `cell` in both halves (F32x4)
  Constant,   // entry `imm` of the pool's rows of this type
  Scale,      // the scale in every lane
  Zero,
  Add, Sub, Mul,
  AddSub,     // lanes a - b, a + b alternating
  Shuffle,    // imm picks from a for the low and from b for the high part of each 128-bit lane
  UnpackLow, UnpackHigh,
  Permute,    // imm picks within each 128-bit lane of a
  Halves,     // 128-bit halves picked from a and b (256-bit types); imm as the instruction's
  PairShuffle,  // F32x8 as four pairs: imm bit l picks, within each 128-bit half, the pair of a (even l) or b (odd l)
  Blend,      // imm bit l picks lane l of b instead of a
  Join,       // 256-bit value from two 128-bit ones
  LowHalf, HighHalf,  // 128-bit half of a 256-bit value
  Broadcast,  // one element at `cell` in every lane
  Widen, Narrow,      // F32 to F64 and back
};

struct Inst {
  Op op;
  Type type;
  int a = -1, b = -1;
  int imm = 0;
  int source = 0;  // which array a load reads
  int cell = 0;    // element of that array

  auto operator<=>(const Inst&) const = default;
};

enum class StoreKind { Full, Low, High };  // the register, or one 64-bit half of an F32x4

struct Store {
  StoreKind kind;
  int value;
  int cell;
  int target = 0;  // which array
};

struct PoolEntry {
  Type type;
  std::vector<Real> lanes;
};

class Program {
 public:
  // The value of an operation; equal operations are one value.
  int emit(const Inst& inst);
  // What is emitted from now on carries this label, numbered.
  void set_label(Label label) { label_ = std::move(label), step_ = 0; }
  int constant(Type type, std::vector<Real> lanes);
  void store(StoreKind kind, int value, int cell, int target = 0) { stores_.push_back({kind, value, cell, target}); }

  const std::vector<Inst>& insts() const { return insts_; }
  const std::vector<Store>& stores() const { return stores_; }
  const std::vector<PoolEntry>& pool() const { return pool_; }
  Type type(int value) const { return insts_[value].type; }
  const Label& label(int value) const { return labels_[value]; }

 private:
  std::vector<Inst> insts_;
  std::vector<Label> labels_;
  Label label_;
  int step_ = 0;
  std::vector<Store> stores_;
  std::vector<PoolEntry> pool_;
  std::map<Inst, int> known_;
  std::map<std::pair<int, std::vector<__int128>>, int> pooled_;
};

inline bool is_load(Op op) {
  return op == Op::Load || op == Op::LoadPair || op == Op::LoadHigh || op == Op::LoadDup || op == Op::Broadcast;
}
// Operations that are written where they are used instead of being held by name.
inline bool is_leaf(Op op) { return op == Op::Constant || op == Op::Scale || op == Op::Zero; }

// How busy a body keeps the execution ports, in cycles: two additions, two multiplications and three in all, two
// shuffles within 128-bit lanes and one across or widening, three loads and two stores can start together.
struct PortUse {
  int adds = 0, muls = 0, shuffles = 0, crossings = 0, loads = 0, stores = 0, others = 0;
  double cycles() const;
  // What a body takes beyond that, for choosing between placements: a shuffle often takes the turn of an addition or a
  // multiplication.
  double estimate() const { return cycles() + kShuffleCost * (shuffles + crossings); }
  static constexpr double kShuffleCost = 0.45;  // cycles, from the times of the complex kernels in several placements
};
PortUse port_use(const Program& program);

}  // namespace xfm
