#include "generator/text.h"

namespace xfm {

namespace {

std::string base_name(const std::string& symbol) {  // xfmgDFTFwd_CToC_8_32fc -> DFTFwd_CToC_8_32fc
  return symbol.substr(4);
}

std::string buffer_parameter(const Kernel& k) { return k.work_buffer ? ", void* buffer" : ""; }
std::string buffer_argument(const Kernel& k) { return k.work_buffer ? ", buffer" : ""; }

std::string null_test() { return "  if (src == nullptr || dst == nullptr) return xfmStatusNullPointer;\n"; }

// Flags are compared in the order 8, 4, 1, 2; each picks a scale and nothing else, so that one body serves them all. It
// stands in the way of the first, for taken jumps are much of the time of the smallest kernels.
std::string select(const Kernel& k) {
  const std::string root = "scale += 1;", by_n = "scale += 2;", one = "{}";  // places in the pool
  return "  const auto* scale = owngPool_" + base_name(k.symbol) +
         ".scale;\n"
         "  if (__builtin_expect(flag != xfmScaleNone, 0)) {\n"
         "    if (flag == xfmScaleBySqrtN) " + root +
         "\n    else if (flag == xfmScaleFwdByN) " + (k.scale == ScaleRule::Inverse ? one : by_n) +
         "\n    else if (flag == xfmScaleInvByN) " + (k.scale == ScaleRule::Forward ? one : by_n) +
         "\n    else return xfmStatusFlagError;\n  }\n"
         "  asm volatile(\"\" : \"+r\"(scale));\n";
}

std::string run(const Kernel& k, const std::string& access) {
  return "body_" + base_name(k.symbol) + "<" + access + ">(src, dst, scale" + buffer_argument(k) + ");\n";
}

std::string signature(const Kernel& k, const std::string& name) {
  return "XfmStatus " + name + "(const " + k.element + "* src, " + k.element + "* dst, int flag" + buffer_parameter(k) + ")";
}

std::string body_function(const Kernel& k) {
  const std::string component = k.single ? "float" : "double";
  BodyNames names;
  names.pool = "owngPool_" + base_name(k.symbol);
  names.scale = k.scale_lanes > 1 ? "*scale" : "scale";
  names.scale_lanes = k.scale_lanes;
  const std::string row = k.scale_lanes > 1 ? component + " (*scale)[" + std::to_string(k.scale_lanes) + "]" : component + "* scale";
  std::string text = "template <class Access>\nXFM_INLINE void body_" + base_name(k.symbol) + "(const " + k.element + "* src, " +
                     k.element + "* dst, const " + row + buffer_parameter(k) + ") {\n";
  text += "  const " + component + "* x = reinterpret_cast<const " + component + "*>(src);\n  " + component +
          "* y = reinterpret_cast<" + component + "*>(dst);\n";
  const Body* body = std::get_if<Body>(&k.body);
  for (const std::string& line : body ? body_text(*body, names) : std::get<Statements>(k.body)) text += "  " + line + "\n";
  return text + "}\n\n";
}

std::string checked(const Kernel& k, const std::string& access) {
  return null_test() + select(k) + "  " + run(k, access) + "  return xfmStatusOk;\n}\n";
}

std::string two_bodies(const Kernel& k, int bytes) {
  const std::string test = "misaligned(src, " + std::to_string(bytes) + ") || misaligned(dst, " + std::to_string(bytes) + ")";
  const std::string null_first = bytes == 32 ? null_test() : "";
  const std::string null_later = bytes == 32 ? "" : null_test();
  return null_first + "  if (" + test + ") {\n" + null_later + select(k) + "  " + run(k, "Unaligned") +
         "  return xfmStatusOk;\n  }\n" + null_later + select(k) + "  " + run(k, "Aligned") + "  return xfmStatusOk;\n}\n";
}

}  // namespace

Kernel Kernel::of(const Function& f) {
  return {.symbol = f.name,
          .element = "Xfm" + f.type,
          .single = f.type.starts_with("32"),
          .gate = f.gate,
          .length = f.part == "wht" ? 1 << f.size : f.size,
          .scale = f.scale,
          .work_buffer = f.takes_buffer(),
          .note = {},
          .body = {}};
}

std::string kernel_text(const Kernel& k) {
  const std::string name = base_name(k.symbol);
  const Real n = k.length;
  const Body* body = std::get_if<Body>(&k.body);
  std::string text = "// " + k.symbol + ": " + k.note + "\n" +
                     pool_text(body ? body->program : Program(), name, k.single, {1, 1 / square_root(n), 1 / n}, k.scale_lanes) + "\n" + body_function(k);
  const std::string twin = "owng" + name + "_unaligned";
  if (k.gate == Gate::Gate16Twin)
    text += "extern \"C\" XFM_HIDDEN [[gnu::noinline]] " + signature(k, twin) + " {\n" + checked(k, "Unaligned") + "\n";
  text += "extern \"C\" " + signature(k, k.symbol) + " {\n";
  switch (k.gate) {
    case Gate::Plain: text += checked(k, "Unaligned"); break;
    case Gate::Gate16Twin:
      text += "  if (misaligned(src, 16) || misaligned(dst, 16)) return " + twin + "(src, dst, flag" + buffer_argument(k) +
              ");\n" + checked(k, "Aligned");
      break;
    case Gate::Gate16Inline: text += two_bodies(k, 16); break;
    case Gate::Gate32Inline: text += two_bodies(k, 32); break;
  }
  return text + "\n";
}

std::string unit_head(const std::string& unit, const std::string& maker) {
  return "// " + unit + ": written by " + maker + "; do not edit.\n\n#include \"xfm.h\"\n\n#include \"generator/kernel_support.h\"\n\n";
}

}  // namespace xfm
