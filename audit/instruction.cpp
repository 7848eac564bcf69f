#include "instruction.h"

#include <algorithm>
#include <array>
#include <utility>

namespace xfm::audit {
namespace {

struct Row {
  ZydisMnemonic mnemonic;
  Operation operation;
};

#define ARITHMETIC(op, kind)                                                        \
  {ZYDIS_MNEMONIC_V##op##PS, {Kind::kind, Lanes::Single, false, false}},            \
      {ZYDIS_MNEMONIC_V##op##PD, {Kind::kind, Lanes::Double, false, false}},        \
      {ZYDIS_MNEMONIC_V##op##SS, {Kind::kind, Lanes::Single, true, false}},         \
      {ZYDIS_MNEMONIC_V##op##SD, {Kind::kind, Lanes::Double, true, false}}
#define FUSED(op) ARITHMETIC(op##132, Fused), ARITHMETIC(op##213, Fused), ARITHMETIC(op##231, Fused)
#define FUSED_PACKED(op)                                                            \
  {ZYDIS_MNEMONIC_V##op##PS, {Kind::Fused, Lanes::Single, false, false}},           \
      {ZYDIS_MNEMONIC_V##op##PD, {Kind::Fused, Lanes::Double, false, false}}
#define PLAIN(op, kind) {ZYDIS_MNEMONIC_##op, {Kind::kind, Lanes::None, false, false}}
#define ALIGNED(op) {ZYDIS_MNEMONIC_##op, {Kind::Move, Lanes::None, false, true}}

// Everything a kernel may do with a vector register. What is not listed is Kind::Other.
constexpr Row kOperations[] = {
    ARITHMETIC(ADD, Add),
    ARITHMETIC(SUB, Subtract),
    ARITHMETIC(MUL, Multiply),
    FUSED(FMADD), FUSED(FMSUB), FUSED(FNMADD), FUSED(FNMSUB),
    FUSED_PACKED(FMADDSUB132), FUSED_PACKED(FMADDSUB213), FUSED_PACKED(FMADDSUB231),
    FUSED_PACKED(FMSUBADD132), FUSED_PACKED(FMSUBADD213), FUSED_PACKED(FMSUBADD231),
    {ZYDIS_MNEMONIC_VADDSUBPS, {Kind::AddSubtract, Lanes::Single, false, false}},
    {ZYDIS_MNEMONIC_VADDSUBPD, {Kind::AddSubtract, Lanes::Double, false, false}},
    {ZYDIS_MNEMONIC_VCVTSS2SD, {Kind::Widen, Lanes::None, true, false}},
    {ZYDIS_MNEMONIC_VCVTSD2SS, {Kind::Narrow, Lanes::None, true, false}},
    {ZYDIS_MNEMONIC_VCVTPS2PD, {Kind::Widen, Lanes::None, false, false}},
    {ZYDIS_MNEMONIC_VCVTPD2PS, {Kind::Narrow, Lanes::None, false, false}},
    PLAIN(VSHUFPS, Shuffle), PLAIN(VSHUFPD, Shuffle), PLAIN(VPERMILPS, Shuffle), PLAIN(VPERMILPD, Shuffle),
    PLAIN(VUNPCKLPS, Shuffle), PLAIN(VUNPCKHPS, Shuffle), PLAIN(VUNPCKLPD, Shuffle), PLAIN(VUNPCKHPD, Shuffle),
    PLAIN(VPERM2F128, Shuffle), PLAIN(VMOVHLPS, Shuffle), PLAIN(VMOVLHPS, Shuffle), PLAIN(VMOVDDUP, Shuffle),
    PLAIN(VMOVSHDUP, Shuffle), PLAIN(VMOVSLDUP, Shuffle), PLAIN(VINSERTF128, Shuffle), PLAIN(VEXTRACTF128, Shuffle),
    PLAIN(VINSERTPS, Shuffle), PLAIN(VPINSRD, Shuffle), PLAIN(VPINSRQ, Shuffle), PLAIN(VEXTRACTPS, Shuffle), PLAIN(VPSRLDQ, Shuffle), PLAIN(VPSLLDQ, Shuffle),
    PLAIN(VPERMPS, Shuffle), PLAIN(VPERMPD, Shuffle), PLAIN(VPERMT2PS, Shuffle), PLAIN(VPERMT2PD, Shuffle),
    PLAIN(VPERMI2PS, Shuffle), PLAIN(VPERMI2PD, Shuffle), PLAIN(VSHUFF32X4, Shuffle), PLAIN(VSHUFF64X2, Shuffle),
    PLAIN(VSHUFI32X4, Shuffle), PLAIN(VSHUFI64X2, Shuffle), PLAIN(VALIGND, Shuffle), PLAIN(VALIGNQ, Shuffle),
    PLAIN(VPSHUFD, Shuffle), PLAIN(VPERMQ, Shuffle), PLAIN(VPERMD, Shuffle), PLAIN(VPALIGNR, Shuffle),
    PLAIN(VINSERTF32X4, Shuffle), PLAIN(VINSERTF32X8, Shuffle), PLAIN(VINSERTF64X2, Shuffle), PLAIN(VINSERTF64X4, Shuffle),
    PLAIN(VINSERTI128, Shuffle), PLAIN(VEXTRACTI128, Shuffle), PLAIN(VPUNPCKLQDQ, Shuffle), PLAIN(VPUNPCKHQDQ, Shuffle),
    PLAIN(VEXTRACTF32X4, Shuffle), PLAIN(VEXTRACTF32X8, Shuffle), PLAIN(VEXTRACTF64X2, Shuffle), PLAIN(VEXTRACTF64X4, Shuffle),
    PLAIN(VMOVLPS, Insert), PLAIN(VMOVHPS, Insert), PLAIN(VMOVLPD, Insert), PLAIN(VMOVHPD, Insert),
    PLAIN(VBROADCASTSS, Broadcast), PLAIN(VBROADCASTSD, Broadcast), PLAIN(VBROADCASTF128, Broadcast),
    PLAIN(VBROADCASTF32X2, Broadcast), PLAIN(VBROADCASTF32X4, Broadcast), PLAIN(VBROADCASTF32X8, Broadcast),
    PLAIN(VBROADCASTF64X2, Broadcast), PLAIN(VBROADCASTF64X4, Broadcast), PLAIN(VPBROADCASTD, Broadcast),
    PLAIN(VPBROADCASTQ, Broadcast), PLAIN(VBROADCASTI128, Broadcast),
    PLAIN(VBLENDMPS, Blend), PLAIN(VBLENDMPD, Blend), PLAIN(VPBLENDD, Blend),
    PLAIN(VBLENDPS, Blend), PLAIN(VBLENDPD, Blend), PLAIN(VBLENDVPS, Blend), PLAIN(VBLENDVPD, Blend),
    PLAIN(VXORPS, Logic), PLAIN(VXORPD, Logic), PLAIN(VPXOR, Logic), PLAIN(VANDPS, Logic), PLAIN(VANDPD, Logic),
    PLAIN(VPXORD, Logic), PLAIN(VPXORQ, Logic), PLAIN(VPTERNLOGD, Logic), PLAIN(VPTERNLOGQ, Logic),
    PLAIN(VANDNPS, Logic), PLAIN(VANDNPD, Logic), PLAIN(VORPS, Logic), PLAIN(VORPD, Logic),
    PLAIN(VMOVUPS, Move), PLAIN(VMOVUPD, Move), PLAIN(VMOVDQU, Move), PLAIN(VLDDQU, Move),
    PLAIN(VMOVDQU32, Move), PLAIN(VMOVDQU64, Move), PLAIN(VMASKMOVPS, Move), PLAIN(VMASKMOVPD, Move),
    PLAIN(KMOVB, Mask), PLAIN(KMOVW, Mask), PLAIN(KMOVD, Mask), PLAIN(KMOVQ, Mask), PLAIN(KXNORB, Mask), PLAIN(KXNORW, Mask),
    PLAIN(VMOVSS, Move), PLAIN(VMOVSD, Move), PLAIN(VMOVD, Move), PLAIN(VMOVQ, Move),
    ALIGNED(VMOVAPS), ALIGNED(VMOVAPD), ALIGNED(VMOVDQA), ALIGNED(VMOVDQA32), ALIGNED(VMOVDQA64), ALIGNED(VMOVNTPS), ALIGNED(VMOVNTPD),
    PLAIN(VZEROUPPER, ZeroUpper),
};

#undef ARITHMETIC
#undef FUSED
#undef FUSED_PACKED
#undef PLAIN
#undef ALIGNED

struct Entry {
  bool known = false;
  Operation operation;
};

const std::array<Entry, ZYDIS_MNEMONIC_MAX_VALUE + 1>& operation_table() {
  static const auto table = [] {
    std::array<Entry, ZYDIS_MNEMONIC_MAX_VALUE + 1> out{};
    for (const auto& row : kOperations) out[row.mnemonic] = {true, row.operation};
    return out;
  }();
  return table;
}

// The same mnemonic does different work with and without a memory operand.
Operation by_operand_form(Operation operation, const Instruction& instruction) {
  const bool touches_memory = instruction.memory() != nullptr;
  if (operation.kind == Kind::Move && instruction.is_masked() && !touches_memory) operation.kind = Kind::Blend;
  switch (instruction.mnemonic()) {
    case ZYDIS_MNEMONIC_VMOVSS:
    case ZYDIS_MNEMONIC_VMOVSD:
      // Both sources the same register: a compiler's way to copy a scalar.
      if (!touches_memory && instruction.data(1)->reg.value != instruction.data(2)->reg.value)
        operation.kind = Kind::Blend;
      break;
    case ZYDIS_MNEMONIC_VINSERTF128:
    case ZYDIS_MNEMONIC_VINSERTF32X4:
    case ZYDIS_MNEMONIC_VINSERTF32X8:
    case ZYDIS_MNEMONIC_VINSERTF64X2:
    case ZYDIS_MNEMONIC_VINSERTF64X4:
    case ZYDIS_MNEMONIC_VEXTRACTF32X4:
    case ZYDIS_MNEMONIC_VEXTRACTF32X8:
    case ZYDIS_MNEMONIC_VEXTRACTF64X2:
    case ZYDIS_MNEMONIC_VEXTRACTF64X4:
    case ZYDIS_MNEMONIC_VEXTRACTF128:
    case ZYDIS_MNEMONIC_VINSERTPS:
    case ZYDIS_MNEMONIC_VPINSRD:
    case ZYDIS_MNEMONIC_VPINSRQ:
    case ZYDIS_MNEMONIC_VEXTRACTPS:
      if (touches_memory) operation.kind = Kind::Insert;
      break;
    case ZYDIS_MNEMONIC_VMOVDDUP:
      if (touches_memory && instruction.vector_bits() == 128) operation.kind = Kind::Broadcast;
      break;
    case ZYDIS_MNEMONIC_VBROADCASTSS:
    case ZYDIS_MNEMONIC_VBROADCASTSD:
    case ZYDIS_MNEMONIC_VBROADCASTF128:
    case ZYDIS_MNEMONIC_VBROADCASTF32X2:
    case ZYDIS_MNEMONIC_VPBROADCASTD:
    case ZYDIS_MNEMONIC_VPBROADCASTQ:
      if (!touches_memory) operation.kind = Kind::Shuffle;
      break;
    default: break;
  }
  return operation;
}

Transfer transfer_of(const ZydisDecodedInstruction& raw) {
  switch (raw.meta.category) {
    case ZYDIS_CATEGORY_UNCOND_BR: return Transfer::Jump;
    case ZYDIS_CATEGORY_COND_BR: return Transfer::Branch;
    case ZYDIS_CATEGORY_CALL: return Transfer::Call;
    case ZYDIS_CATEGORY_RET: return Transfer::Return;
    case ZYDIS_CATEGORY_INTERRUPT: return Transfer::Trap;
    default: break;
  }
  switch (raw.mnemonic) {
    case ZYDIS_MNEMONIC_UD0:
    case ZYDIS_MNEMONIC_UD1:
    case ZYDIS_MNEMONIC_UD2:
    case ZYDIS_MNEMONIC_HLT: return Transfer::Trap;
    default: return Transfer::None;
  }
}

std::optional<std::uint64_t> direct_target(const Instruction& instruction) {
  for (const auto& operand : instruction.visible()) {
    if (operand.type != ZYDIS_OPERAND_TYPE_IMMEDIATE || !operand.imm.is_relative) continue;
    return instruction.end() + static_cast<std::uint64_t>(operand.imm.value.s);
  }
  return std::nullopt;
}

int widest_vector(const Instruction& instruction) {
  int bits = 0;
  for (const auto& operand : instruction.visible()) {
    if (operand.type != ZYDIS_OPERAND_TYPE_REGISTER || !is_vector_register(operand.reg.value)) continue;
    bits = std::max<int>(bits, ZydisRegisterGetWidth(ZYDIS_MACHINE_MODE_LONG_64, operand.reg.value));
  }
  return bits;
}

}  // namespace

bool is_vector_register(ZydisRegister reg) {
  switch (ZydisRegisterGetClass(reg)) {
    case ZYDIS_REGCLASS_XMM:
    case ZYDIS_REGCLASS_YMM:
    case ZYDIS_REGCLASS_ZMM:
    case ZYDIS_REGCLASS_MMX:
    case ZYDIS_REGCLASS_X87:
    case ZYDIS_REGCLASS_MASK: return true;
    default: return false;
  }
}

std::optional<int> general_register(ZydisRegister reg) {
  const auto full = ZydisRegisterGetLargestEnclosing(ZYDIS_MACHINE_MODE_LONG_64, reg);
  if (full < ZYDIS_REGISTER_RAX || full > ZYDIS_REGISTER_R15) return std::nullopt;
  return full - ZYDIS_REGISTER_RAX;
}

std::optional<int> mask_register(ZydisRegister reg) {
  if (ZydisRegisterGetClass(reg) != ZYDIS_REGCLASS_MASK) return std::nullopt;
  return ZydisRegisterGetId(reg);
}

const ZydisDecodedOperand* Instruction::data(int place) const {
  for (const auto& operand : visible()) {
    const bool is_mask = operand.type == ZYDIS_OPERAND_TYPE_REGISTER && mask_register(operand.reg.value);
    if (!is_mask && place-- == 0) return &operand;
  }
  return nullptr;
}

bool Instruction::is_masked() const {
  return raw.avx.mask.mode != ZYDIS_MASK_MODE_INVALID && raw.avx.mask.mode != ZYDIS_MASK_MODE_DISABLED;
}

bool Instruction::is_padding() const {
  return raw.mnemonic == ZYDIS_MNEMONIC_NOP || raw.mnemonic == ZYDIS_MNEMONIC_INT3 ||
         (raw.mnemonic == ZYDIS_MNEMONIC_XCHG && operands[0].type == ZYDIS_OPERAND_TYPE_REGISTER &&
          operands[1].type == ZYDIS_OPERAND_TYPE_REGISTER && operands[0].reg.value == operands[1].reg.value);
}

const ZydisDecodedOperand* Instruction::memory() const {
  for (const auto& operand : visible()) {
    if (operand.type == ZYDIS_OPERAND_TYPE_MEMORY && operand.mem.type != ZYDIS_MEMOP_TYPE_AGEN && !is_padding())
      return &operand;
  }
  return nullptr;
}

Decoder::Decoder() { ZydisDecoderInit(&decoder_, ZYDIS_MACHINE_MODE_LONG_64, ZYDIS_STACK_WIDTH_64); }

std::optional<Instruction> Decoder::one(std::span<const std::uint8_t> bytes, std::uint64_t address) const {
  Instruction out;
  out.address = address;
  if (!ZYAN_SUCCESS(ZydisDecoderDecodeFull(&decoder_, bytes.data(), bytes.size(), &out.raw, out.operands)))
    return std::nullopt;
  out.vector_bits_ = widest_vector(out);
  out.transfer = transfer_of(out.raw);
  if (out.transfer != Transfer::None) out.target = direct_target(out);
  const auto& entry = operation_table()[out.raw.mnemonic];
  if (entry.known) {
    out.operation = by_operand_form(entry.operation, out);
  } else {
    out.operation.kind = out.vector_bits_ > 0 || out.is_vex() ? Kind::Other : Kind::Integer;
  }
  return out;
}

std::vector<Instruction> Decoder::sweep(std::span<const std::uint8_t> bytes, std::uint64_t address) const {
  std::vector<Instruction> out;
  while (!bytes.empty()) {
    auto next = one(bytes, address);
    if (!next) break;
    bytes = bytes.subspan(next->raw.length);
    address += next->raw.length;
    out.push_back(*std::move(next));
  }
  return out;
}

}  // namespace xfm::audit
