// The machine form of a body: operations on values of one register type each, in single assignment, and the stores that
// end it. One operation becomes one intrinsic; the order of the list carries no meaning until it is scheduled.
#pragma once

#include <array>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "generator/label.h"
#include "generator/number.h"

namespace xfm {

enum class Type { F32, F64, F32x4, F64x2, F32x8, F64x4, F32x16, F64x8 };
inline constexpr Type kTypes[] = {Type::F32,   Type::F64,   Type::F32x4,  Type::F64x2,
                                  Type::F32x8, Type::F64x4, Type::F32x16, Type::F64x8};

int width(Type type);  // elements in a register
bool single_precision(Type type);
std::string type_name(Type type);  // of C++
inline int bits(Type type) { return width(type) * (single_precision(type) ? 32 : 64); }
// The type of as many elements in the precision; the one of the precision with a number of lanes.
Type vector_type(bool single, int lanes);

// Lanes are counted from the low end. Where nothing else is said an operation is there for every vector type.
enum class Op {
  Load,       // width(type) elements from `source` at `cell`
  LoadPart,   // the `imm` elements at `cell` in the low lanes, zero above
  LoadPair,   // two elements at `cell` into the low half, zero above (F32x4)
  LoadHigh,   // a, with its upper half replaced by the two elements at `cell` (F32x4)
  LoadLane,   // a, with lane `imm` replaced by the element at `cell` (128 bits)
  LoadDup,    // the complex value at `cell` in every pair of lanes (all but F64x2)
  Broadcast,  // the element at `cell` in every lane
  Constant,   // entry `imm` of the pool's rows of this type
  Scale,      // the scale in every lane
  Zero,
  Add, Sub, Mul,
  AddSub,     // lanes a - b, a + b alternating (128, 256 bits)
  Flip,       // a with the other sign in the lanes where the constant b is -0; b is +0 in the rest
  SignedAdd,  // a + b * c with one rounding, where the constant c is 1 or -1 in every lane: a + b or a - b by lane
  Shuffle,    // imm picks from a for the low and from b for the high part of each 128-bit lane
  UnpackLow, UnpackHigh,
  Permute,    // imm picks within each 128-bit lane of a
  Halves,     // 128-bit parts picked from a and b (256, 512 bits); imm as the instruction's
  PairShuffle,  // F32x8 as four pairs: imm bit l picks, within each 128-bit half, the pair of a (even l) or b (odd l)
  Blend,      // imm bit l picks lane l of b instead of a
  Insert,     // a, with lane imm % 4 replaced by lane imm / 4 of b (F32x4)
  Pick,       // lane l is the one that entry l of pattern `imm` names: of a, or from width(type) on of b where there is one
  Join,       // from a the lower, from b the upper half
  LowHalf, HighHalf,  // of a value twice as wide
  Widen, Narrow,      // F32 to F64 and back: lane by lane; F64x2 is made of the two low lanes of F32x4, and back, zero above
};

struct Inst {
  Op op;
  Type type;
  int a = -1, b = -1, c = -1;
  int imm = 0;
  int source = 0;  // which array a load reads
  int cell = 0;    // element of that array

  auto operator<=>(const Inst&) const = default;
};

enum class StoreKind {
  Full,       // the register
  Low, High,  // one 64-bit half of a 128-bit register
  Part,       // the `imm` low elements
  Lane,       // the element of lane `imm` (128 bits)
};

struct Store {
  StoreKind kind;
  int value;
  int cell;
  int target = 0;  // which array
  int imm = 0;
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
  // Lane by lane a or -a.
  int flip(Type type, int a, const std::vector<bool>& negative);
  // Lanes of a, and of b if it is given, in another order.
  int pick(Type type, int a, int b, std::vector<int> pattern);
  // Lane by lane a + b where the sign is 1, a - b where it is -1.
  int signed_add(Type type, int a, int b, const std::vector<int>& signs);
  void store(StoreKind kind, int value, int cell, int target = 0, int imm = 0) {
    stores_.push_back({kind, value, cell, target, imm});
  }

  const std::vector<Inst>& insts() const { return insts_; }
  const std::vector<Store>& stores() const { return stores_; }
  const std::vector<PoolEntry>& pool() const { return pool_; }
  const std::vector<int>& pattern(const Inst& pick) const { return patterns_[pick.imm]; }
  const std::vector<Real>& lanes(const Inst& constant) const;
  Type type(int value) const { return insts_[value].type; }
  const Label& label(int value) const { return labels_[value]; }

 private:
  std::vector<Inst> insts_;
  std::vector<Label> labels_;
  Label label_;
  int step_ = 0;
  std::vector<Store> stores_;
  std::vector<PoolEntry> pool_;
  std::vector<std::vector<int>> patterns_;
  std::map<Inst, int> known_;
  std::map<std::pair<int, std::vector<__int128>>, int> pooled_;
};

// How often a program does an operation in a type.
int count(const Program& program, Op op, Type type);

// A program with an order of its operations: each stands behind its operands. Stores are not among them; each follows its
// value, and where the body must load before it stores, the last load.
struct Body {
  Program program;
  std::vector<int> order;
};

bool is_load(Op op);
// Operations that are written where they are used instead of being held by name.
inline bool is_leaf(Op op) { return op == Op::Constant || op == Op::Scale || op == Op::Zero; }

// Visits the operands of an operation that are held by name, each once.
template <class F>
void each_operand(const std::vector<Inst>& insts, int i, F visit) {
  const auto [a, b, c] = std::array{insts[i].a, insts[i].b, insts[i].c};
  if (a >= 0 && !is_leaf(insts[a].op)) visit(a);
  if (b >= 0 && b != a && !is_leaf(insts[b].op)) visit(b);
  if (c >= 0 && c != a && c != b && !is_leaf(insts[c].op)) visit(c);
}

}  // namespace xfm
