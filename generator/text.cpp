#include "generator/text.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "generator/check.h"

namespace xfm {

namespace {

bool scalar(Type t) { return width(t) == 1; }
std::string prefix(Type t) { return bits(t) > 128 ? "_mm" + std::to_string(bits(t)) + "_" : "_mm_"; }
std::string suffix(Type t) { return single_precision(t) ? "_ps" : "_pd"; }
std::string stem(Type t) { return single_precision(t) ? "ps" : "pd"; }
// Of the same bits as doubles, and back: pairs of singles move as doubles do.
std::string as_doubles(Type t, const std::string& v) { return prefix(t) + "castps_pd(" + v + ")"; }
std::string as_singles(Type t, const std::string& v) { return prefix(t) + "castpd_ps(" + v + ")"; }
std::string pool_member(Type t) { return (single_precision(t) ? "f" : "d") + std::to_string(width(t)); }

class BodyWriter {
 public:
  BodyWriter(const Body& body, const BodyNames& names) : p_(body.program), order_(body.order), names_(names) {}

  Statements lines() {
    size_t last_load = 0;
    for (size_t k = 0; k < order_.size() && names_.loads_first; ++k)
      if (is_load(p_.insts()[order_[k]].op)) last_load = k;
    std::vector<std::vector<const Store*>> stores(p_.insts().size());
    for (const Store& s : p_.stores()) stores[s.value].push_back(&s);

    declare_scale();
    for (size_t k = 0; k < order_.size(); ++k) {
      const int v = order_[k];
      out_.push_back("const " + type_name(p_.type(v)) + " v" + std::to_string(v) + " = " + expression(p_.insts()[v]) + ";");
      if (k == last_load)
        for (size_t j = 0; j <= k; ++j) write_stores(stores[order_[j]]);
      else if (k > last_load)
        write_stores(stores[v]);
    }
    for (const Store& s : p_.stores())
      if (is_leaf(p_.insts()[s.value].op)) write_stores({&s});
    return std::move(out_);
  }

 private:
  // One variable for each type in which the scale is used.
  void declare_scale() {
    for (const Inst& i : p_.insts()) {
      if (i.op != Op::Scale) continue;
      const std::string name = "s" + (scales_.empty() ? "" : std::to_string(scales_.size()));
      scales_[i.type] = name;
      out_.push_back("const " + type_name(i.type) + " " + name + " = " + spread_scale(i.type) + ";");
    }
  }

  std::string spread_scale(Type type) const {
    if (scalar(type)) return "*" + names_.scale;
    if (type == Type::F64x2) return (names_.scale_lanes > 1 ? "_mm_load_pd(" : "_mm_loaddup_pd(") + names_.scale + ")";
    if (bits(type) == 512) return prefix(type) + "set1" + suffix(type) + "(*" + names_.scale + ")";
    return prefix(type) + (single_precision(type) ? "broadcast_ss(" : "broadcast_sd(") + names_.scale + ")";
  }

  std::string value(int v) const {
    const Inst& i = p_.insts()[v];
    switch (i.op) {
      case Op::Scale: return scales_.at(i.type);
      case Op::Zero: return scalar(i.type) ? (i.type == Type::F32 ? "0.0f" : "0.0") : prefix(i.type) + "setzero" + suffix(i.type) + "()";
      case Op::Constant: {
        const std::string entry = names_.pool + "." + pool_member(i.type) + "[" + std::to_string(i.imm) + "]";
        return scalar(i.type) ? entry : prefix(i.type) + "load" + suffix(i.type) + "(" + entry + ")";
      }
      default: return "v" + std::to_string(v);
    }
  }

  // A full register is moved aligned only where it stands on a multiple of its own size.
  std::string access(Type type, int cell) const { return cell % width(type) == 0 ? names_.access : "Unaligned"; }

  std::string address(const std::string& array, int cell) const {
    return cell ? array + " + " + std::to_string(cell) : array;
  }

  std::string call(const Inst& i, const std::string& name, const std::string& tail = "") const {
    std::string text = prefix(i.type) + name + suffix(i.type) + "(" + value(i.a);
    if (i.b >= 0) text += ", " + value(i.b);
    return text + tail + ")";
  }

  std::string loaded_part(const Inst& i, const std::string& at) const {
    const std::string zero_above = single_precision(i.type) ? "_mm_load_ss(" : "_mm_load_sd(";
    const std::string mask = std::to_string((1u << i.imm) - 1);
    if (i.imm == 1 && bits(i.type) == 128) return zero_above + at + ")";
    if (i.imm == 2 && i.type == Type::F32x4) return pair_at(at);
    return prefix(i.type) + "maskz_loadu" + suffix(i.type) + "(" + mask + ", " + at + ")";
  }

  static std::string pair_at(const std::string& at) {
    return "_mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(" + at + ")))";
  }

  std::string loaded_lane(const Inst& i, const std::string& at) const {
    if (i.type == Type::F64x2) return std::string("_mm_load") + (i.imm ? "h" : "l") + "_pd(" + value(i.a) + ", " + at + ")";
    check(i.type == Type::F32x4, "an element is loaded into a register of 128 bits");
    return "_mm_insert_ps(" + value(i.a) + ", _mm_load_ss(" + at + "), " + std::to_string(i.imm << 4) + ")";
  }

  // The complex value at an address in every pair of lanes.
  std::string loaded_twice(Type type, const std::string& at) const {
    const std::string pair = "reinterpret_cast<const double*>(" + at + ")";
    switch (type) {
      case Type::F32x4: return as_singles(type, "_mm_loaddup_pd(" + pair + ")");
      case Type::F32x8: return as_singles(type, "_mm256_broadcast_sd(" + pair + ")");
      case Type::F32x16: return as_singles(type, "_mm512_set1_pd(*" + pair + ")");
      case Type::F64x4: return "_mm256_broadcast_pd(reinterpret_cast<const __m128d*>(" + at + "))";
      case Type::F64x8: return "_mm512_broadcast_f64x2(_mm_loadu_pd(" + at + "))";
      default: check(false, "a complex value fills half a register or less");
    }
    return {};
  }

  // The lanes that a pattern names, as an instruction's constant: two bits a lane (one of two lanes).
  static int packed(const std::vector<int>& pattern) {
    int imm = 0;
    for (size_t l = 0; l < pattern.size(); ++l) imm |= pattern[l] << (pattern.size() == 2 ? l : 2 * l);
    return imm;
  }

  std::string picked(const Inst& i) const {
    const std::vector<int>& pattern = p_.pattern(i);
    const bool one = i.b < 0;
    if (one && bits(i.type) == 128) return call(i, "permute", ", " + std::to_string(packed(pattern)));
    if (one && i.type == Type::F64x4) return "_mm256_permute4x64_pd(" + value(i.a) + ", " + std::to_string(packed(pattern)) + ")";
    const std::string index = index_register(i.type, pattern);
    if (one && i.type == Type::F32x8) return "_mm256_permutevar8x32_ps(" + value(i.a) + ", " + index + ")";
    if (one) return prefix(i.type) + "permutexvar" + suffix(i.type) + "(" + index + ", " + value(i.a) + ")";
    return prefix(i.type) + "permutex2var" + suffix(i.type) + "(" + value(i.a) + ", " + index + ", " + value(i.b) + ")";
  }

  static std::string index_register(Type type, const std::vector<int>& pattern) {
    const bool upward = single_precision(type) || bits(type) == 512;  // the others have no such intrinsic
    std::string lanes;
    for (size_t l = 0; l < pattern.size(); ++l)
      lanes += (l ? ", " : "") + std::to_string(pattern[upward ? l : pattern.size() - 1 - l]);
    const char* name = single_precision(type) ? "setr_epi32" : bits(type) == 512 ? "setr_epi64" : "set_epi64x";
    return prefix(type) + name + "(" + lanes + ")";
  }

  std::string blended(const Inst& i) const {
    if (bits(i.type) < 512) return call(i, "blend", ", " + std::to_string(i.imm));
    return prefix(i.type) + "mask_blend" + suffix(i.type) + "(" + std::to_string(i.imm) + ", " + value(i.a) + ", " + value(i.b) + ")";
  }

  std::string halves(const Inst& i) const {
    const std::string operands = "(" + value(i.a) + ", " + value(i.b) + ", " + std::to_string(i.imm) + ")";
    if (bits(i.type) == 512) return "_mm512_shuffle_" + std::string(single_precision(i.type) ? "f32x4" : "f64x2") + operands;
    return "_mm256_permute2f128" + suffix(i.type) + operands;
  }

  std::string joined(const Inst& i) const {
    const Type half = vector_type(single_precision(i.type), width(i.type) / 2);
    const std::string cast = prefix(i.type) + "cast" + stem(i.type) + std::to_string(bits(half)) + "_" + stem(i.type) +
                             std::to_string(bits(i.type)) + "(" + value(i.a) + ")";
    const char* insert = bits(i.type) == 256 ? "insertf128_" : single_precision(i.type) ? "insertf32x8" : "insertf64x4";
    return prefix(i.type) + insert + (bits(i.type) == 256 ? stem(i.type) : "") + "(" + cast + ", " + value(i.b) + ", 1)";
  }

  std::string low_half(const Inst& i) const {
    const Type whole = p_.type(i.a);
    return prefix(whole) + "cast" + stem(whole) + std::to_string(bits(whole)) + "_" + stem(whole) + std::to_string(bits(i.type)) +
           "(" + value(i.a) + ")";
  }

  std::string high_half(const Inst& i) const {
    const Type whole = p_.type(i.a);
    const std::string tail = "(" + value(i.a) + ", 1)";
    if (bits(whole) == 256) return "_mm256_extractf128" + suffix(i.type) + tail;
    return std::string("_mm512_extract") + (single_precision(i.type) ? "f32x8_ps" : "f64x4_pd") + tail;
  }

  std::string converted(const Inst& i) const {
    const Type from = p_.type(i.a);
    if (scalar(i.type)) return "static_cast<" + type_name(i.type) + ">(" + value(i.a) + ")";
    const Type wider = single_precision(from) ? i.type : from;
    return prefix(wider) + "cvt" + stem(from) + "_" + stem(i.type) + "(" + value(i.a) + ")";
  }

  std::string signed_sum(const Inst& i) const {
    const std::string operands = "(" + value(i.b) + ", " + value(i.c) + ", " + value(i.a) + ")";
    if (scalar(i.type)) return (single_precision(i.type) ? "__builtin_fmaf" : "__builtin_fma") + operands;
    return prefix(i.type) + "fmadd" + suffix(i.type) + operands;
  }

  // Operators on registers too: the compiler has no call to expand.
  std::string arithmetic(const Inst& i, const std::string& sign) const { return value(i.a) + " " + sign + " " + value(i.b); }

  std::string expression(const Inst& i) const {
    const std::string imm = ", " + std::to_string(i.imm);
    const bool load = is_load(i.op);
    const std::string at = load ? address(names_.sources[i.source], i.cell) : "";
    switch (i.op) {
      case Op::Load:
        return scalar(i.type) ? names_.sources[i.source] + "[" + std::to_string(i.cell) + "]"
                              : access(i.type, i.cell) + "::load" + std::to_string(width(i.type)) + "(" + at + ")";
      case Op::LoadPart: return loaded_part(i, at);
      case Op::LoadPair: return pair_at(at);
      case Op::LoadHigh: return "_mm_loadh_pi(" + value(i.a) + ", reinterpret_cast<const __m64*>(" + at + "))";
      case Op::LoadLane: return loaded_lane(i, at);
      case Op::LoadDup: return loaded_twice(i.type, at);
      case Op::Broadcast:
        if (i.type == Type::F64x2) return "_mm_loaddup_pd(" + at + ")";
        if (bits(i.type) == 512) return prefix(i.type) + "set1" + suffix(i.type) + "(*(" + at + "))";
        return prefix(i.type) + "broadcast_" + (single_precision(i.type) ? "ss(" : "sd(") + at + ")";
      case Op::Add: return arithmetic(i, "+");
      case Op::Sub: return arithmetic(i, "-");
      case Op::Mul: return arithmetic(i, "*");
      case Op::AddSub: return call(i, "addsub");
      case Op::Flip: return call(i, "xor");
      case Op::SignedAdd: return signed_sum(i);
      case Op::Shuffle: return call(i, "shuffle", imm);
      case Op::UnpackLow: return call(i, "unpacklo");
      case Op::UnpackHigh: return call(i, "unpackhi");
      case Op::Permute: return call(i, "permute", imm);
      case Op::Halves: return halves(i);
      case Op::PairShuffle:
        return as_singles(i.type, prefix(i.type) + "shuffle_pd(" + as_doubles(i.type, value(i.a)) + ", " +
                                      as_doubles(i.type, value(i.b)) + imm + ")");
      case Op::Blend: return blended(i);
      case Op::Insert: return call(i, "insert", ", " + std::to_string(i.imm / 4 << 6 | i.imm % 4 << 4));
      case Op::Pick: return picked(i);
      case Op::Join: return joined(i);
      case Op::LowHalf: return low_half(i);
      case Op::HighHalf: return high_half(i);
      case Op::Widen:
      case Op::Narrow: return converted(i);
      case Op::Constant:
      case Op::Scale:
      case Op::Zero: break;
    }
    check(false, "a held operation has an expression");
    return {};
  }

  void write_stores(const std::vector<const Store*>& stores) {
    for (const Store* s : stores) out_.push_back(stored(*s, value(s->value), address(names_.targets[s->target], s->cell)));
  }

  std::string stored(const Store& s, const std::string& v, const std::string& at) const {
    const Type type = p_.type(s.value);
    const bool pair = type == Type::F32x4;  // halves are two singles
    const std::string place = pair ? "reinterpret_cast<__m64*>(" + at + ")" : at;
    switch (s.kind) {
      case StoreKind::Low:
      case StoreKind::High: {
        const char* name = s.kind == StoreKind::Low ? "_mm_storel_" : "_mm_storeh_";
        return std::string(name) + (pair ? "pi(" : "pd(") + place + ", " + v + ");";
      }
      case StoreKind::Part:
        if (s.imm == 1 && bits(type) == 128) return prefix(type) + (single_precision(type) ? "store_ss(" : "store_sd(") + at + ", " + v + ");";
        return prefix(type) + "mask_storeu" + suffix(type) + "(" + at + ", " + std::to_string((1u << s.imm) - 1) + ", " + v + ");";
      case StoreKind::Lane:
        check(pair, "single lanes are stored of four");
        return "*reinterpret_cast<int*>(" + at + ") = _mm_extract_ps(" + v + ", " + std::to_string(s.imm) + ");";
      case StoreKind::Full: break;
    }
    if (scalar(type)) return names_.targets[s.target] + "[" + std::to_string(s.cell) + "] = " + v + ";";
    return access(type, s.cell) + "::store(" + at + ", " + v + ");";
  }

  const Program& p_;
  const std::vector<int>& order_;
  const BodyNames& names_;
  std::map<Type, std::string> scales_;
  Statements out_;
};

std::string row_text(const std::vector<Real>& lanes, bool single) {
  std::string text;
  for (Real x : lanes) text += (text.empty() ? "" : ", ") + (single ? float_literal(x) : double_literal(x));
  char decimal[64];
  std::snprintf(decimal, sizeof decimal, "%.9g", static_cast<double>(lanes[0]));
  return (lanes.size() == 1 ? text : "{" + text + "}") + ",  // " + decimal + "\n";
}

}  // namespace

Statements body_text(const Body& body, const BodyNames& names) {
  return BodyWriter(body, names).lines();
}

std::string pool_text(const Program& program, const std::string& name, bool single, const std::vector<Real>& scales,
                      int scale_lanes) {
  std::string members, values;
  const std::string lanes = std::to_string(scale_lanes);
  if (!scales.empty()) {
    members += "  " + std::string(scale_lanes > 1 ? "alignas(16) " : "") + (single ? "float" : "double") + " scale[" +
               std::to_string(scales.size()) + "]" + (scale_lanes > 1 ? "[" + lanes + "]" : "") + ";\n";
    values += "    {\n";
    for (Real s : scales) values += "        " + row_text(std::vector<Real>(scale_lanes, s), single);
    values += "    },\n";
  }
  for (Type t : kTypes) {
    std::string rows;
    int used = 0;
    for (const PoolEntry& e : program.pool()) {
      if (e.type != t) continue;
      rows += "        " + row_text(e.lanes, single_precision(t));
      ++used;
    }
    if (!used) continue;
    const int w = width(t);
    members += "  " + (w > 1 ? "alignas(" + std::to_string(w * (single_precision(t) ? 4 : 8)) + ") " : std::string()) +
               (single_precision(t) ? "float " : "double ") + pool_member(t) + "[" + std::to_string(used) + "]" +
               (w > 1 ? "[" + std::to_string(w) + "]" : "") + ";\n";
    values += "    {\n" + rows + "    },\n";
  }
  return "struct Pool_" + name + " {\n" + members + "};\nXFM_POOL const Pool_" + name + " owngPool_" + name + " = {\n" +
         values + "};\n";
}

}  // namespace xfm
