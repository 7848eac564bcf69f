#include "generator/machine.h"

#include <quadmath.h>

#include <algorithm>
#include <functional>

#include "generator/check.h"

namespace xfm {

namespace {

struct TypeRow {
  int width;
  bool single;
  const char* name;
};

const TypeRow& row(Type type) {
  static constexpr TypeRow kRows[] = {{1, true, "float"},  {1, false, "double"},  {4, true, "__m128"},  {2, false, "__m128d"},
                                      {8, true, "__m256"}, {4, false, "__m256d"}, {16, true, "__m512"}, {8, false, "__m512d"}};
  return kRows[static_cast<int>(type)];
}

}  // namespace

int width(Type type) { return row(type).width; }
bool single_precision(Type type) { return row(type).single; }
std::string type_name(Type type) { return row(type).name; }

Type vector_type(bool single, int lanes) {
  const auto found = std::ranges::find_if(kTypes, [&](Type t) { return single_precision(t) == single && width(t) == lanes; });
  check(found != std::end(kTypes), "a register type of " + std::to_string(lanes) + " lanes");
  return *found;
}

int count(const Program& program, Op op, Type type) {
  return static_cast<int>(std::ranges::count_if(program.insts(), [&](const Inst& i) { return i.op == op && i.type == type; }));
}

bool is_load(Op op) {
  switch (op) {
    case Op::Load:
    case Op::LoadPart:
    case Op::LoadPair:
    case Op::LoadHigh:
    case Op::LoadLane:
    case Op::LoadDup:
    case Op::Broadcast: return true;
    default: return false;
  }
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
  constexpr __int128 kNegativeZero = static_cast<__int128>(1) << 120;  // beyond any other
  for (Real x : lanes)
    key.second.push_back(x == 0 && signbitq(x) ? kNegativeZero : static_cast<__int128>(x * Real(1ull << 50) * Real(1ull << 50)));
  const auto of_type = std::count_if(pool_.begin(), pool_.end(), [&](const PoolEntry& e) { return e.type == type; });
  const auto [place, fresh] = pooled_.try_emplace(std::move(key), static_cast<int>(of_type));
  if (fresh) pool_.push_back({type, std::move(lanes)});
  return emit({.op = Op::Constant, .type = type, .imm = place->second});
}

int Program::flip(Type type, int a, const std::vector<bool>& negative) {
  std::vector<bool> flipped = negative;
  if (const Inst inner = insts_[a]; inner.op == Op::Flip) {
    const std::vector<Real>& before = lanes(insts_[inner.b]);
    for (size_t l = 0; l < flipped.size(); ++l) flipped[l] = negative[l] != static_cast<bool>(signbitq(before[l]));
    a = inner.a;
  }
  if (std::ranges::none_of(flipped, std::identity())) return a;
  std::vector<Real> signs;
  for (const bool n : flipped) signs.push_back(n ? -Real(0) : Real(0));
  return emit({.op = Op::Flip, .type = type, .a = a, .b = constant(type, std::move(signs))});
}

int Program::pick(Type type, int a, int b, std::vector<int> pattern) {
  const int limit = (b < 0 ? 1 : 2) * width(type);
  check(static_cast<int>(pattern.size()) == width(type), "a pattern names a lane for every lane");
  check(std::ranges::all_of(pattern, [&](int l) { return l >= 0 && l < limit; }), "a pattern names lanes of its operands");
  const auto known = std::ranges::find(patterns_, pattern);
  const int imm = static_cast<int>(known - patterns_.begin());
  if (known == patterns_.end()) patterns_.push_back(std::move(pattern));
  return emit({.op = Op::Pick, .type = type, .a = a, .b = b, .imm = imm});
}

int Program::signed_add(Type type, int a, int b, const std::vector<int>& signs) {
  check(std::ranges::all_of(signs, [](int s) { return s == 1 || s == -1; }), "a sign is 1 or -1");
  return emit({.op = Op::SignedAdd, .type = type, .a = a, .b = b, .c = constant(type, {signs.begin(), signs.end()})});
}

const std::vector<Real>& Program::lanes(const Inst& constant) const {
  int entry = constant.imm;
  for (const PoolEntry& e : pool_)
    if (e.type == constant.type && entry-- == 0) return e.lanes;
  check(false, "a constant stands in the pool");
  return pool_.front().lanes;
}

}  // namespace xfm
