#include "signs.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <optional>

namespace xfm::audit {
namespace {

// What a vector register holds: the bytes of the image from an address on, repeated to its width.
struct Held {
  std::uint64_t address = 0;
  int bytes = 0;
  int bits = 0;  // of the register that they fill, zeros above
  bool operator==(const Held&) const = default;
};

struct State {
  std::map<int, Held> registers;
  std::map<StackSlot, Held> slots;
  bool operator==(const State&) const = default;
};

State join(State a, const State& b) {
  std::erase_if(a.registers, [&](const auto& entry) {
    const auto other = b.registers.find(entry.first);
    return other == b.registers.end() || other->second != entry.second;
  });
  std::erase_if(a.slots, [&](const auto& entry) {
    const auto other = b.slots.find(entry.first);
    return other == b.slots.end() || other->second != entry.second;
  });
  return a;
}

std::optional<int> vector_register(const ZydisDecodedOperand& operand) {
  if (operand.type != ZYDIS_OPERAND_TYPE_REGISTER) return std::nullopt;
  switch (ZydisRegisterGetClass(operand.reg.value)) {
    case ZYDIS_REGCLASS_XMM:
    case ZYDIS_REGCLASS_YMM:
    case ZYDIS_REGCLASS_ZMM: return ZydisRegisterGetId(operand.reg.value);
    default: return std::nullopt;
  }
}

// A constant of the image, as an operand.
std::optional<Held> image_operand(const Instruction& instruction, const ZydisDecodedOperand& operand) {
  if (operand.type != ZYDIS_OPERAND_TYPE_MEMORY || operand.mem.base != ZYDIS_REGISTER_RIP) return std::nullopt;
  if (operand.mem.index != ZYDIS_REGISTER_NONE) return std::nullopt;
  const auto address = instruction.end() + static_cast<std::uint64_t>(operand.mem.disp.value);
  return Held{.address = address, .bytes = operand.size / 8, .bits = operand.size};
}

// The two operands that are multiplied: 132, 213 and 231 say which of the three they are.
std::optional<std::pair<int, int>> factors(const Instruction& instruction) {
  const std::string name = instruction.name();
  if (name.find("addsub") != std::string::npos || name.find("subadd") != std::string::npos) return std::nullopt;
  if (name.find("132") != std::string::npos) return std::pair(0, 2);
  if (name.find("213") != std::string::npos) return std::pair(0, 1);
  if (name.find("231") != std::string::npos) return std::pair(1, 2);
  return std::nullopt;
}

template <typename Element>
bool is_sign(const std::uint8_t* bytes) {
  Element value;
  std::memcpy(&value, bytes, sizeof value);
  return std::abs(value) == 1;
}

class Signs {
 public:
  Signs(const Body& body, const ElfImage& image) : body_(body), image_(image), wrong_(body.code.size()), access_of_(body.code.size()) {
    for (const auto& access : body.trace.accesses)
      if (access.exact && (access.region == Region::Stack || access.region == Region::AlignedStack))
        access_of_[access.instruction] = &access;
  }

  std::vector<bool> run() {
    const auto& flow = body_.flow;
    if (flow.reachable.empty()) return wrong_;
    entry_[flow.reachable.front()] = {};
    for (bool changed = true; changed;) {
      changed = false;
      for (const auto b : flow.reachable) {
        if (!entry_.contains(b)) continue;
        State state = entry_[b];
        for (auto i = flow.blocks[b].first; i < flow.blocks[b].last; ++i) step(state, i);
        for (const auto to : flow.blocks[b].successors) changed |= arrive(to, state);
      }
    }
    wrong_.assign(wrong_.size(), false);  // as long as constants seemed to last
    for (auto& [b, state] : entry_)
      for (auto i = flow.blocks[b].first; i < flow.blocks[b].last; ++i) step(state, i);
    return wrong_;
  }

 private:
  bool arrive(std::size_t block, const State& state) {
    const auto [place, fresh] = entry_.try_emplace(block, state);
    if (fresh) return true;
    auto both = join(place->second, state);
    if (both == place->second) return false;
    place->second = std::move(both);
    return true;
  }

  bool all_signs(const Held& held, const Instruction& instruction) const {
    const bool is_double = instruction.operation.lanes == Lanes::Double;
    const int element = is_double ? 8 : 4;
    if (held.bits < instruction.vector_bits() && !instruction.operation.scalar) return false;
    const int bytes = instruction.operation.scalar ? element : held.bytes;
    if (bytes < element || bytes % element != 0) return false;
    const auto data = image_.bytes_at(held.address, bytes);
    if (static_cast<int>(data.size()) < bytes) return false;
    for (int at = 0; at < bytes; at += element)
      if (!(is_double ? is_sign<double>(&data[at]) : is_sign<float>(&data[at]))) return false;
    return true;
  }

  std::optional<Held> held_by(const State& state, const Instruction& instruction, int place) const {
    const auto& operand = *instruction.data(place);
    if (auto constant = image_operand(instruction, operand)) {
      if (repeats(instruction)) constant->bits = instruction.vector_bits();
      return constant;
    }
    const auto reg = vector_register(operand);
    if (!reg) return std::nullopt;
    const auto found = state.registers.find(*reg);
    return found == state.registers.end() ? std::nullopt : std::optional(found->second);
  }

  // The operand from memory is one element or one part for all lanes.
  static bool repeats(const Instruction& instruction) {
    return instruction.operation.kind == Kind::Broadcast || instruction.raw.avx.broadcast.mode != ZYDIS_BROADCAST_MODE_INVALID;
  }

  // What a move or broadcast puts into a register.
  std::optional<Held> moved(const State& state, std::size_t i) const {
    const auto& instruction = body_.code[i];
    const auto kind = instruction.operation.kind;
    if ((kind != Kind::Move && kind != Kind::Broadcast) || instruction.is_masked()) return std::nullopt;
    if (instruction.data(1) == nullptr || instruction.data(2) != nullptr) return std::nullopt;
    if (const auto* slot = access_of_[i]) {
      const auto found = state.slots.find({slot->region, slot->offset});
      return found == state.slots.end() || found->second.bytes > slot->bytes ? std::nullopt : std::optional(found->second);
    }
    return held_by(state, instruction, 1);
  }

  void step(State& state, std::size_t i) {
    const auto& instruction = body_.code[i];
    if (is_fused(instruction)) {
      const auto pair = factors(instruction);
      const auto fits = [&](int place) {
        const auto held = held_by(state, instruction, place);
        return held && all_signs(*held, instruction);
      };
      wrong_[i] = !pair || !(fits(pair->first) || fits(pair->second));
    }
    const auto value = moved(state, i);
    for (const auto& operand : instruction.all()) {
      const auto reg = vector_register(operand);
      if (!reg || !(operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE)) continue;
      state.registers.erase(*reg);
      if (value) state.registers[*reg] = *value;
    }
    if (instruction.transfer == Transfer::Call) state = {};
    if (const auto* access = access_of_[i]; access != nullptr && access->writes) keep(state, *access, instruction);
  }

  static void keep(State& state, const Access& access, const Instruction& instruction) {
    std::erase_if(state.slots, [&](const auto& entry) {
      const auto& [slot, held] = entry;
      return slot.region != access.region || (slot.offset < access.offset + access.bytes && access.offset < slot.offset + 64);
    });
    if (instruction.operation.kind != Kind::Move || instruction.is_masked()) return;
    const auto reg = vector_register(*instruction.data(1));
    if (!reg) return;
    if (const auto found = state.registers.find(*reg); found != state.registers.end())
      state.slots[{access.region, access.offset}] = found->second;
  }

  const Body& body_;
  const ElfImage& image_;
  std::vector<bool> wrong_;
  std::vector<const Access*> access_of_;  // to the stack, by instruction
  std::map<std::size_t, State> entry_;
};

}  // namespace

bool is_fused(const Instruction& instruction) { return instruction.operation.kind == Kind::Fused; }

std::vector<bool> fused_products(const Body& body, const ElfImage& image) { return Signs(body, image).run(); }

}  // namespace xfm::audit
