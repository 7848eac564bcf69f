#include "generator/text.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "generator/check.h"
#include "generator/schedule.h"

namespace xfm {

namespace {

std::string prefix(Type t) { return t == Type::F32x8 || t == Type::F64x4 ? "_mm256_" : "_mm_"; }
std::string suffix(Type t) { return single_precision(t) ? "_ps" : "_pd"; }
bool scalar(Type t) { return width(t) == 1; }
std::string pool_member(Type t) { return (single_precision(t) ? "f" : "d") + std::to_string(width(t)); }

class BodyWriter {
 public:
  BodyWriter(const Program& p, const BodyNames& names) : p_(p), names_(names) {}

  std::vector<std::string> lines() {
    const std::vector<int> order = schedule(p_);
    size_t last_load = 0;
    for (size_t k = 0; k < order.size() && names_.loads_first; ++k)
      if (is_load(p_.insts()[order[k]].op)) last_load = k;
    std::vector<std::vector<const Store*>> stores(p_.insts().size());
    for (const Store& s : p_.stores()) stores[s.value].push_back(&s);

    declare_scale();
    for (size_t k = 0; k < order.size(); ++k) {
      const int v = order[k];
      out_.push_back("const " + type_name(p_.type(v)) + " v" + std::to_string(v) + " = " + expression(p_.insts()[v]) + ";");
      if (k == last_load)
        for (size_t j = 0; j <= k; ++j) write_stores(stores[order[j]]);
      else if (k > last_load)
        write_stores(stores[v]);
    }
    for (const Store& s : p_.stores())
      if (is_leaf(p_.insts()[s.value].op)) write_stores({&s});
    return std::move(out_);
  }

 private:
  void declare_scale() {
    for (const Inst& i : p_.insts()) {
      if (i.op != Op::Scale) continue;
      const std::string from = i.type == Type::F64x2  ? (names_.scale_lanes > 1 ? "_mm_load_pd(" : "_mm_loaddup_pd(") + names_.scale + ")"
                               : scalar(i.type)       ? "*" + names_.scale
                               : i.type == Type::F64x4 ? "_mm256_broadcast_sd(" + names_.scale + ")"
                                                       : prefix(i.type) + "broadcast_ss(" + names_.scale + ")";
      out_.push_back("const " + type_name(i.type) + " s = " + from + ";");
    }
  }

  std::string value(int v) const {
    const Inst& i = p_.insts()[v];
    switch (i.op) {
      case Op::Scale: return "s";
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

  std::string arithmetic(const Inst& i, const std::string& sign, const std::string& name) const {
    return scalar(i.type) ? value(i.a) + " " + sign + " " + value(i.b) : call(i, name);
  }

  std::string expression(const Inst& i) const {
    const std::string imm = ", " + std::to_string(i.imm);
    const bool f8 = i.type == Type::F32x8;
    const bool load = is_load(i.op);
    const std::string at = load ? address(names_.sources[i.source], i.cell) : "";
    switch (i.op) {
      case Op::Load:
        return scalar(i.type) ? names_.sources[i.source] + "[" + std::to_string(i.cell) + "]"
                              : access(i.type, i.cell) + "::load" + std::to_string(width(i.type)) + "(" + at + ")";
      case Op::LoadPair: return "_mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(" + at + ")))";
      case Op::LoadHigh: return "_mm_loadh_pi(" + value(i.a) + ", reinterpret_cast<const __m64*>(" + at + "))";
      case Op::LoadDup: return "_mm_castpd_ps(_mm_loaddup_pd(reinterpret_cast<const double*>(" + at + ")))";
      case Op::Broadcast:
        return prefix(i.type) + "broadcast_" + (single_precision(i.type) ? "ss(" : "sd(") + at + ")";
      case Op::Add: return arithmetic(i, "+", "add");
      case Op::Sub: return arithmetic(i, "-", "sub");
      case Op::Mul: return arithmetic(i, "*", "mul");
      case Op::AddSub: return call(i, "addsub");
      case Op::Shuffle: return call(i, "shuffle", imm);
      case Op::UnpackLow: return call(i, "unpacklo");
      case Op::UnpackHigh: return call(i, "unpackhi");
      case Op::Permute: return call(i, "permute", imm);
      case Op::Halves:
        return "_mm256_permute2f128" + suffix(i.type) + "(" + value(i.a) + ", " + value(i.b) + imm + ")";
      case Op::PairShuffle:
        return "_mm256_castpd_ps(_mm256_shuffle_pd(_mm256_castps_pd(" + value(i.a) + "), _mm256_castps_pd(" + value(i.b) +
               ")" + imm + "))";
      case Op::Blend: return call(i, "blend", imm);
      case Op::Join:
        return f8 ? "_mm256_insertf128_ps(_mm256_castps128_ps256(" + value(i.a) + "), " + value(i.b) + ", 1)"
                  : "_mm256_insertf128_pd(_mm256_castpd128_pd256(" + value(i.a) + "), " + value(i.b) + ", 1)";
      case Op::LowHalf:
        return (single_precision(i.type) ? "_mm256_castps256_ps128(" : "_mm256_castpd256_pd128(") + value(i.a) + ")";
      case Op::HighHalf: return "_mm256_extractf128" + suffix(i.type) + "(" + value(i.a) + ", 1)";
      case Op::Widen: return "static_cast<double>(" + value(i.a) + ")";
      case Op::Narrow: return "static_cast<float>(" + value(i.a) + ")";
      case Op::Constant:
      case Op::Scale:
      case Op::Zero: break;
    }
    check(false, "a held operation has an expression");
    return {};
  }

  void write_stores(const std::vector<const Store*>& stores) {
    for (const Store* s : stores) {
      const std::string v = value(s->value);
      const std::string at = address(names_.targets[s->target], s->cell);
      if (s->kind == StoreKind::Low) {
        out_.push_back("_mm_storel_pi(reinterpret_cast<__m64*>(" + at + "), " + v + ");");
      } else if (s->kind == StoreKind::High) {
        out_.push_back("_mm_storeh_pi(reinterpret_cast<__m64*>(" + at + "), " + v + ");");
      } else if (scalar(p_.type(s->value))) {
        out_.push_back(names_.targets[s->target] + "[" + std::to_string(s->cell) + "] = " + v + ";");
      } else {
        out_.push_back(access(p_.type(s->value), s->cell) + "::store(" + at + ", " + v + ");");
      }
    }
  }

  const Program& p_;
  const BodyNames& names_;
  std::vector<std::string> out_;
};

std::string row_text(const std::vector<Real>& lanes, bool single) {
  std::string text;
  for (Real x : lanes) text += (text.empty() ? "" : ", ") + (single ? float_literal(x) : double_literal(x));
  char decimal[64];
  std::snprintf(decimal, sizeof decimal, "%.9g", static_cast<double>(lanes[0]));
  return (lanes.size() == 1 ? text : "{" + text + "}") + ",  // " + decimal + "\n";
}

}  // namespace

std::vector<std::string> body_text(const Program& program, const BodyNames& names) {
  return BodyWriter(program, names).lines();
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
  for (Type t : {Type::F32, Type::F64, Type::F32x4, Type::F64x2, Type::F32x8, Type::F64x4}) {
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

void write_file(const std::string& path, const std::string& text) {
  const std::string part = path + ".part";
  {
    std::ofstream out(part, std::ios::binary);
    out << text;
    out.flush();
    if (!out) throw InputError(part + ": cannot be written");
  }
  if (std::rename(part.c_str(), path.c_str()) != 0) throw InputError(path + ": cannot be put in place");
}

}  // namespace xfm
