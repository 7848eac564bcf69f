#include "generator/execute.h"

#include <cmath>

#include "generator/check.h"

namespace xfm {

namespace {

class Execution {
 public:
  Execution(const Program& program, const std::vector<Elements>& sources, double scale, std::vector<Elements>& targets)
      : p_(program), sources_(sources), scale_(scale), targets_(targets) {}

  void run() {
    for (const Inst& inst : p_.insts()) values_.push_back(value(inst));
    for (const Store& s : p_.stores()) store(s);
  }

 private:
  static double rounded(bool single, double x) { return single ? static_cast<double>(static_cast<float>(x)) : x; }

  const Elements& operand(int value, Type type) const {
    check(value >= 0 && p_.type(value) == type, "an operand has the type that its operation takes");
    return values_[value];
  }

  double element(const Inst& i, int place) const {
    const Elements& source = sources_.at(i.source);
    check(i.cell >= 0 && i.cell + place < static_cast<int>(source.size()), "a load stays in its array");
    return source[i.cell + place];
  }

  // Lane by lane what `lane` gives.
  template <class F>
  static Elements filled(Type type, F lane) {
    Elements out(width(type));
    for (int l = 0; l < width(type); ++l) out[l] = lane(l);
    return out;
  }

  // In the precision of the type: one rounding.
  Elements arithmetic(const Inst& i, double (*operation)(double, double), float (*single)(float, float)) const {
    const Elements &a = operand(i.a, i.type), &b = operand(i.b, i.type);
    return filled(i.type, [&](int l) {
      if (!single_precision(i.type)) return operation(a[l], b[l]);
      return static_cast<double>(single(static_cast<float>(a[l]), static_cast<float>(b[l])));
    });
  }
  Elements sum(const Inst& i) const {
    return arithmetic(i, [](double a, double b) { return a + b; }, [](float a, float b) { return a + b; });
  }
  Elements difference(const Inst& i) const {
    return arithmetic(i, [](double a, double b) { return a - b; }, [](float a, float b) { return a - b; });
  }
  Elements product(const Inst& i) const {
    return arithmetic(i, [](double a, double b) { return a * b; }, [](float a, float b) { return a * b; });
  }

  Elements loaded(const Inst& i) const {
    switch (i.op) {
      case Op::Load: return filled(i.type, [&](int l) { return element(i, l); });
      case Op::LoadPart: return filled(i.type, [&](int l) { return l < i.imm ? element(i, l) : 0; });
      case Op::LoadPair: return filled(i.type, [&](int l) { return l < 2 ? element(i, l) : 0; });
      case Op::LoadHigh: return filled(i.type, [&](int l) { return l < 2 ? operand(i.a, i.type)[l] : element(i, l - 2); });
      case Op::LoadLane: return filled(i.type, [&](int l) { return l == i.imm ? element(i, 0) : operand(i.a, i.type)[l]; });
      case Op::LoadDup: return filled(i.type, [&](int l) { return element(i, l % 2); });
      default: return filled(i.type, [&](int) { return element(i, 0); });
    }
  }

  // Lane l of a result whose 128-bit parts are made alike.
  static int part(Type type) { return single_precision(type) ? 4 : 2; }

  Elements shuffled(const Inst& i) const {
    const Elements &a = operand(i.a, i.type), &b = i.op == Op::Permute ? a : operand(i.b, i.type);
    const int n = part(i.type);
    return filled(i.type, [&](int l) {
      const int at = l % n, first = l - at;
      const Elements& from = i.op != Op::Permute && at >= n / 2 ? b : a;
      return from[first + (n == 4 ? i.imm >> (2 * at) & 3 : i.imm >> l & 1)];
    });
  }

  Elements unpacked(const Inst& i) const {
    const Elements &a = operand(i.a, i.type), &b = operand(i.b, i.type);
    const int n = part(i.type), high = i.op == Op::UnpackHigh ? n / 2 : 0;
    return filled(i.type, [&](int l) { return (l % 2 ? b : a)[l - l % n + high + l % n / 2]; });
  }

  Elements halves(const Inst& i) const {
    const Elements &a = operand(i.a, i.type), &b = operand(i.b, i.type);
    const int n = part(i.type), parts = width(i.type) / n;
    return filled(i.type, [&](int l) -> double {
      const int place = l / n;
      if (parts == 4) return (place < 2 ? a : b)[(i.imm >> (2 * place) & 3) * n + l % n];
      const int pick = i.imm >> (4 * place) & 15;
      if (pick & 8) return 0;
      return (pick & 2 ? b : a)[(pick & 1) * n + l % n];
    });
  }

  Elements pairs(const Inst& i) const {
    const Elements &a = operand(i.a, i.type), &b = operand(i.b, i.type);
    return filled(i.type, [&](int l) {
      const int pair = l / 2;
      return (pair % 2 ? b : a)[2 * (pair - pair % 2 + (i.imm >> pair & 1)) + l % 2];
    });
  }

  Elements picked(const Inst& i) const {
    const Elements& a = operand(i.a, i.type);
    const std::vector<int>& pattern = p_.pattern(i);
    const int n = width(i.type);
    return filled(i.type, [&](int l) { return pattern[l] < n ? a[pattern[l]] : operand(i.b, i.type)[pattern[l] - n]; });
  }

  Elements half(const Inst& i) const {
    check(width(p_.type(i.a)) == 2 * width(i.type) && single_precision(p_.type(i.a)) == single_precision(i.type), "half of a register");
    return filled(i.type, [&](int l) { return values_[i.a][l + (i.op == Op::HighHalf ? width(i.type) : 0)]; });
  }

  Elements joined(const Inst& i) const {
    const int n = width(i.type) / 2;
    const Type type = vector_type(single_precision(i.type), n);
    const Elements &a = operand(i.a, type), &b = operand(i.b, type);
    return filled(i.type, [&](int l) { return l < n ? a[l] : b[l - n]; });
  }

  // As many lanes as both registers have; what is left of the result is zero.
  Elements converted(const Inst& i) const {
    const Type from = p_.type(i.a);
    const bool widens = i.op == Op::Widen;
    check(single_precision(from) == widens && single_precision(i.type) != widens, "a conversion is to the other precision");
    check(width(from) == width(i.type) || (bits(from) == 128 && bits(i.type) == 128), "lanes are converted one by one");
    const Elements& a = values_[i.a];
    return filled(i.type, [&](int l) { return l < width(from) ? rounded(!widens, a[l]) : 0; });
  }

  Elements value(const Inst& i) const {
    const bool single = single_precision(i.type);
    switch (i.op) {
      case Op::Constant: {
        const std::vector<Real>& lanes = p_.lanes(i);
        return filled(i.type, [&](int l) { return single ? static_cast<float>(lanes[l]) : static_cast<double>(lanes[l]); });
      }
      case Op::Scale: return Elements(width(i.type), scale_);
      case Op::Zero: return Elements(width(i.type), 0.0);
      case Op::Add: return sum(i);
      case Op::Sub: return difference(i);
      case Op::Mul: return product(i);
      case Op::AddSub: {
        const Elements low = difference(i), high = sum(i);
        return filled(i.type, [&](int l) { return (l % 2 ? high : low)[l]; });
      }
      case Op::Flip: {
        const Elements &a = operand(i.a, i.type), &signs = operand(i.b, i.type);
        return filled(i.type, [&](int l) { return std::signbit(signs[l]) ? -a[l] : a[l]; });
      }
      case Op::SignedAdd: {
        const Elements plus = sum(i), minus = difference(i), &signs = operand(i.c, i.type);
        return filled(i.type, [&](int l) { return (signs[l] < 0 ? minus : plus)[l]; });
      }
      case Op::Shuffle:
      case Op::Permute: return shuffled(i);
      case Op::UnpackLow:
      case Op::UnpackHigh: return unpacked(i);
      case Op::Halves: return halves(i);
      case Op::PairShuffle: return pairs(i);
      case Op::Blend: return filled(i.type, [&](int l) { return operand(i.imm >> l & 1 ? i.b : i.a, i.type)[l]; });
      case Op::Insert: return filled(i.type, [&](int l) { return l == i.imm % 4 ? operand(i.b, i.type)[i.imm / 4] : operand(i.a, i.type)[l]; });
      case Op::Pick: return picked(i);
      case Op::Join: return joined(i);
      case Op::LowHalf:
      case Op::HighHalf: return half(i);
      case Op::Widen:
      case Op::Narrow: return converted(i);
      default: return loaded(i);
    }
  }

  void store(const Store& s) {
    const Elements& v = values_.at(s.value);
    const int n = static_cast<int>(v.size());
    switch (s.kind) {
      case StoreKind::Full: return put(s, v, 0, n);
      case StoreKind::Low: return put(s, v, 0, n / 2);
      case StoreKind::High: return put(s, v, n / 2, n / 2);
      case StoreKind::Part: return put(s, v, 0, s.imm);
      case StoreKind::Lane: return put(s, v, s.imm, 1);
    }
  }

  void put(const Store& s, const Elements& v, int first, int count) {
    Elements& target = targets_.at(s.target);
    check(s.cell >= 0 && s.cell + count <= static_cast<int>(target.size()), "a store stays in its array");
    for (int l = 0; l < count; ++l) target[s.cell + l] = v[first + l];
  }

  const Program& p_;
  const std::vector<Elements>& sources_;
  const double scale_;
  std::vector<Elements>& targets_;
  std::vector<Elements> values_;
};

}  // namespace

void execute(const Program& program, const std::vector<Elements>& sources, double scale, std::vector<Elements>& targets) {
  Execution(program, sources, scale, targets).run();
}

}  // namespace xfm
