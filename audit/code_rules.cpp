// Rules on single instructions: which may appear in which body.
#include <algorithm>

#include "rules.h"
#include "signs.h"

namespace xfm::audit {
namespace {

constexpr int kMostFindingsPerRule = 4;  // of one body; the rest would repeat them

std::string text_of(const Instruction& instruction) {
  std::string out = instruction.name() + " at " + hex(instruction.address);
  for (const auto& operand : instruction.visible()) {
    if (operand.type == ZYDIS_OPERAND_TYPE_REGISTER)
      out += std::string(" ") + ZydisRegisterGetString(operand.reg.value);
    else if (operand.type == ZYDIS_OPERAND_TYPE_MEMORY) out += " m" + std::to_string(operand.size);
  }
  return out;
}

template <typename Offends>
void each_instruction(const Body& body, Findings& findings, const char* rule, Offends offends) {
  int count = 0;
  for (const auto& instruction : body.code) {
    const std::string reason = offends(instruction);
    if (reason.empty()) continue;
    if (++count <= kMostFindingsPerRule) findings.push_back({rule, body.name, text_of(instruction) + ": " + reason});
  }
  if (count > kMostFindingsPerRule)
    findings.push_back({rule, body.name, std::to_string(count - kMostFindingsPerRule) + " more of the kind"});
}

bool is_vector_work(const Instruction& instruction) { return instruction.operation.kind != Kind::Integer; }

bool is_arithmetic(const Instruction& instruction) {
  switch (instruction.operation.kind) {
    case Kind::Add:
    case Kind::Subtract:
    case Kind::AddSubtract:
    case Kind::Multiply:
    case Kind::Fused:
    case Kind::Widen:
    case Kind::Narrow: return true;
    default: return false;
  }
}

// What every 64-bit processor has, hints to fetch a line included, plus hint codes that older ones take for no-operations.
bool is_base_set(ZydisISASet set) {
  constexpr ZydisISASet kBase[] = {
      ZYDIS_ISA_SET_I86,     ZYDIS_ISA_SET_I186,     ZYDIS_ISA_SET_I286REAL,    ZYDIS_ISA_SET_I386,
      ZYDIS_ISA_SET_I486,    ZYDIS_ISA_SET_I486REAL, ZYDIS_ISA_SET_PENTIUMREAL, ZYDIS_ISA_SET_PPRO,
      ZYDIS_ISA_SET_FAT_NOP, ZYDIS_ISA_SET_LONGMODE, ZYDIS_ISA_SET_CMOV,        ZYDIS_ISA_SET_CET,
      ZYDIS_ISA_SET_SSE_PREFETCH,
  };
  return std::ranges::find(kBase, set) != std::end(kBase);
}

void check_decoded(const Body& body, const Surroundings&, Findings& findings) {
  const auto end = body.code.empty() ? body.address : body.code.back().end();
  if (end != body.address + body.bytes || body.bytes == 0)
    findings.push_back({"decoding", body.name, "no instruction at " + hex(end)});
}

// A fused operation rounds a product and a sum at once. Where the target has them, one with a factor of 1 or -1 in every
// lane stands for an addition or a subtraction.
void check_fma(const Body& body, const Surroundings& around, Findings& findings) {
  if (!around.target().admits("FMA")) {
    each_instruction(body, findings, "fma",
                     [](const Instruction& instruction) { return is_fused(instruction) ? "fused multiply-add" : ""; });
    return;
  }
  if (std::ranges::none_of(body.code, is_fused)) return;
  const auto wrong = fused_products(body, around.image());
  each_instruction(body, findings, "fma", [&](const Instruction& instruction) {
    return wrong[&instruction - body.code.data()] ? "fused multiply-add without a factor of all 1 or -1" : "";
  });
}

// Prefixes of the processors that the target is for: VEX, and EVEX where there are 512-bit registers.
bool has_encoding(const Instruction& instruction, const Target& target) {
  return instruction.is_vex() || (instruction.is_evex() && target.widest == 512);
}

void check_encoding(const Body& body, const Surroundings& around, Findings& findings) {
  each_instruction(body, findings, "encoding", [&](const Instruction& instruction) -> std::string {
    const bool floating = is_vector_work(instruction) || instruction.raw.meta.category == ZYDIS_CATEGORY_X87_ALU;
    if (!floating || has_encoding(instruction, around.target()) || is_fused(instruction)) return "";
    return around.target().widest == 512 ? "neither a VEX nor an EVEX encoding" : "not a VEX encoding";
  });
}

void check_generation(const Body& body, const Surroundings& around, Findings& findings) {
  const auto& target = around.target();
  each_instruction(body, findings, "generation", [&](const Instruction& instruction) -> std::string {
    const auto set = instruction.raw.meta.isa_set;
    const bool other_rule = (is_fused(instruction) && !target.admits("FMA")) ||
                            (is_vector_work(instruction) && !has_encoding(instruction, target));
    if (target.admits(ZydisISASetGetString(set)) || is_base_set(set) || other_rule) return "";
    return std::string("this form belongs to ") + ZydisISASetGetString(set);
  });
}

void check_operation(const Body& body, const Surroundings& around, Findings& findings) {
  if (!body.promise) return;
  each_instruction(body, findings, "operation", [&](const Instruction& instruction) {
    const auto set = instruction.raw.meta.isa_set;
    const bool admitted = has_encoding(instruction, around.target()) && around.target().admits(ZydisISASetGetString(set));
    const bool other = (instruction.operation.kind == Kind::Other && admitted) || set == ZYDIS_ISA_SET_SSE_PREFETCH;
    return other ? "not among a kernel's operations" : "";
  });
}

// Scalar bodies may copy and clear whole 128-bit registers but compute, load and store element by element. Vector
// bodies compute in registers of exactly their width and never name a wider one.
std::string width_fault(const Instruction& instruction, Form form) {
  const auto& operation = instruction.operation;
  const int bits = instruction.vector_bits();
  if (bits == 0 || !instruction.is_vex()) return "";
  const int widest = form == Form::Bits256 ? 256 : 128;
  if (bits > widest) return "wider than the working form";
  if (form == Form::Scalar) {
    const bool moves_lanes = operation.kind == Kind::Shuffle || operation.kind == Kind::Insert ||
                             operation.kind == Kind::Broadcast || operation.kind == Kind::Blend;
    if (moves_lanes || (is_arithmetic(instruction) && !operation.scalar)) return "packed work in a scalar body";
    return "";
  }
  if (!is_arithmetic(instruction)) return "";
  if (operation.scalar) return "scalar arithmetic in a vector body";
  return bits < widest ? "narrower than the working form" : "";
}

void check_width(const Body& body, const Surroundings& around, Findings& findings) {
  if (!body.promise || !around.target().is_base) return;  // other copies fill what registers they have
  const auto form = body.promise->form;
  each_instruction(body, findings, "width",
                   [form](const Instruction& instruction) { return width_fault(instruction, form); });
  if (!body.is_straight()) return;
  for (const auto& access : body.trace.accesses) {
    const bool data = access.region == Region::Src || access.region == Region::Dst;
    if (form == Form::Scalar && data && access.bytes != body.promise->component_bytes())
      findings.push_back(
          {"width", body.name, text_of(body.at(access)) + ": a scalar body moves one component at a time"});
  }
}

// Where a body may hold which precision: double bodies nothing in single, single bodies nothing in double, apart
// from the real families and the two small complex sizes that widen.
bool may_widen(const Promise& promise) {
  if (promise.is_double() || promise.family == Family::WalshHadamard) return false;
  return promise.family != Family::Complex || promise.size == 3 || promise.size == 5;
}

void check_precision(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.promise || may_widen(*body.promise)) return;
  const auto foreign = body.promise->is_double() ? Lanes::Single : Lanes::Double;
  each_instruction(body, findings, "precision", [foreign](const Instruction& instruction) {
    const auto kind = instruction.operation.kind;
    if (kind == Kind::Widen || kind == Kind::Narrow) return "a conversion in a body of one precision";
    return instruction.operation.lanes == foreign ? "arithmetic in the other precision" : "";
  });
}

// The stages of the DCT-IV hold whole independent transforms in the lanes: 256-bit arithmetic in one precision, no move
// across the halves of a register, and in the combine stage (env8) no move between lanes at all.
std::string stage_fault(const Instruction& instruction, bool is_double, bool is_combine, int widest) {
  const auto& operation = instruction.operation;
  if (is_arithmetic(instruction)) {
    const bool fills = instruction.vector_bits() == 256 || instruction.vector_bits() == widest;
    if (operation.scalar || !fills) return "not 256-bit arithmetic";
    if (operation.lanes != (is_double ? Lanes::Double : Lanes::Single)) return "not in the stage's precision";
  }
  if (instruction.mnemonic() == ZYDIS_MNEMONIC_VPERM2F128) return "crosses the halves of a register";
  const bool moves_lanes =
      operation.kind == Kind::Shuffle || operation.kind == Kind::Insert || operation.kind == Kind::Blend;
  if (is_combine && moves_lanes) return "moves lanes in the combine stage";
  return operation.kind == Kind::Other ? "not among a stage's operations" : "";
}

void check_stages(const Body& body, const Surroundings& around, Findings& findings) {
  constexpr std::string_view kPrefix = "owngDCT4_", kStages[] = {"env4", "env5", "env8", "env9", "env9_direct"};
  const std::string_view name = body.name;
  const auto stage =
      std::ranges::find_if(kStages, [&](std::string_view s) { return name.ends_with(std::string(s) + "_compute"); });
  if (!name.starts_with(kPrefix) || stage == std::end(kStages)) return;
  const bool is_double = name.substr(kPrefix.size()).starts_with("64f");
  each_instruction(body, findings, "stages", [&](const Instruction& instruction) {
    return stage_fault(instruction, is_double, *stage == "env8", around.target().widest);
  });
}

}  // namespace

std::vector<BodyRule> code_rules() {
  return {
      {"decoding", check_decoded},    {"fma", check_fma},
      {"encoding", check_encoding},   {"generation", check_generation},
      {"operation", check_operation}, {"width", check_width},
      {"precision", check_precision}, {"stages", check_stages},
  };
}

}  // namespace xfm::audit
