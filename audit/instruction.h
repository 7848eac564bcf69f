// One decoded instruction, in the terms the audit asks about: what it does to the flow of control, which kind of
// floating-point operation it is, which instruction set it belongs to by its operand form, what memory it touches.
#pragma once

#include <Zydis/Zydis.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace xfm::audit {

enum class Kind {
  Integer,  // no vector register involved
  Add,
  Subtract,
  AddSubtract,
  Multiply,
  Fused,    // a product and a sum with one rounding
  Shuffle,    // moves values between lanes, from registers or a full-width memory operand
  Insert,     // a half or an element from or to memory
  Broadcast,  // one element or one half from memory to all lanes
  Blend,      // picks lanes without moving them
  Logic,
  Widen,   // single to double
  Narrow,  // double to single
  Move,    // loads, stores and copies
  Mask,    // moves of mask registers
  ZeroUpper,
  Other,  // a vector instruction that no kernel has a use for
};

enum class Lanes { None, Single, Double };  // element type of arithmetic
enum class Transfer { None, Jump, Branch, Call, Return, Trap };

struct Operation {
  Kind kind = Kind::Other;
  Lanes lanes = Lanes::None;
  bool scalar = false;
  bool needs_alignment = false;
};

class Instruction {
 public:
  std::uint64_t address = 0;
  ZydisDecodedInstruction raw{};
  ZydisDecodedOperand operands[ZYDIS_MAX_OPERAND_COUNT]{};
  Operation operation;
  Transfer transfer = Transfer::None;
  std::optional<std::uint64_t> target;  // of a direct jump, branch or call

  [[nodiscard]] std::uint64_t end() const { return address + raw.length; }
  [[nodiscard]] ZydisMnemonic mnemonic() const { return raw.mnemonic; }
  [[nodiscard]] std::span<const ZydisDecodedOperand> all() const { return {operands, raw.operand_count}; }
  [[nodiscard]] std::span<const ZydisDecodedOperand> visible() const { return {operands, raw.operand_count_visible}; }
  [[nodiscard]] int vector_bits() const { return vector_bits_; }  // widest vector register named, 0 if none
  [[nodiscard]] bool is_vex() const { return raw.encoding == ZYDIS_INSTRUCTION_ENCODING_VEX; }
  [[nodiscard]] bool is_evex() const { return raw.encoding == ZYDIS_INSTRUCTION_ENCODING_EVEX; }
  // The visible operand at a place, mask registers not counted.
  [[nodiscard]] const ZydisDecodedOperand* data(int place) const;
  [[nodiscard]] bool is_masked() const;  // works on the lanes only that a mask register names
  [[nodiscard]] bool is_padding() const;
  [[nodiscard]] const ZydisDecodedOperand* memory() const;  // the one operand that touches memory, if any
  [[nodiscard]] std::string name() const { return ZydisMnemonicGetString(raw.mnemonic); }

 private:
  friend class Decoder;
  int vector_bits_ = 0;
};

class Decoder {
 public:
  Decoder();
  // Linear sweep over a function's bytes. Stops at the first byte sequence that is no instruction.
  [[nodiscard]] std::vector<Instruction> sweep(std::span<const std::uint8_t> bytes, std::uint64_t address) const;
  [[nodiscard]] std::optional<Instruction> one(std::span<const std::uint8_t> bytes, std::uint64_t address) const;

 private:
  ZydisDecoder decoder_{};
};

// General-purpose registers as 0..15; nothing for others. Narrow forms map to their full register.
[[nodiscard]] std::optional<int> general_register(ZydisRegister reg);
// Mask registers as 0..7; nothing for others.
[[nodiscard]] std::optional<int> mask_register(ZydisRegister reg);
[[nodiscard]] bool is_vector_register(ZydisRegister reg);

}  // namespace xfm::audit
