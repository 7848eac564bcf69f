#include "machine.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <vector>

namespace xfm::audit {
namespace {

constexpr int kRax = 0, kRcx = 1, kRdx = 2, kRsp = 4, kRbp = 5, kRsi = 6, kRdi = 7;
constexpr int kBufferAlignment = 16;  // what the caller and the allocator promise
constexpr int kCallerSaved[] = {0, 1, 2, 6, 7, 8, 9, 10, 11};

State join(const State& a, const State& b) {
  State out;
  for (std::size_t r = 0; r < out.registers.size(); ++r) out.registers[r] = joined(a.registers[r], b.registers[r]);
  for (std::size_t k = 0; k < out.masks.size(); ++k) out.masks[k] = joined(a.masks[k], b.masks[k]);
  for (const auto& [slot, value] : a.slots) {
    const auto other = b.slots.find(slot);
    if (other == b.slots.end()) continue;
    const auto both = joined(value, other->second);
    if (both.kind != Value::Kind::Unknown) out.slots[slot] = both;
  }
  if (a.test == b.test) out.test = a.test;
  out.src_alignment = std::min(a.src_alignment, b.src_alignment);
  out.dst_alignment = std::min(a.dst_alignment, b.dst_alignment);
  out.path = a.path;  // the same in both
  out.stored = a.stored || b.stored;
  out.upper_dirty = a.upper_dirty || b.upper_dirty;
  return out;
}

constexpr Path kPaths[] = {
    {false, BufferArgument::Untested}, {false, BufferArgument::Null}, {false, BufferArgument::Given},
    {true, BufferArgument::Untested},  {true, BufferArgument::Null},  {true, BufferArgument::Given},
};

class Machine {
 public:
  Machine(const std::vector<Instruction>& code, const Flow& flow, const std::vector<bool>& allocations)
      : code_(code), flow_(flow), allocations_(allocations) {
    trace_.reached.resize(code.size());
  }

  Trace run() {
    settle();
    recording_ = true;
    for (const auto b : flow_.reachable) {
      const auto known = trace_.accesses.size();
      for (const auto& path : kPaths) {
        const auto entry = entry_.find({b, path});
        if (entry != entry_.end()) record(b, entry->second, known);
      }
    }
    trace_.at_block = std::move(entry_);
    return std::move(trace_);
  }

 private:
  // A block that is run for several kinds of paths tells what it touches once, as far as the paths agree.
  void record(std::size_t block, State state, std::size_t first_of_block) {
    auto& accesses = trace_.accesses;
    const auto before = accesses.size();
    for (auto i = flow_.blocks[block].first; i < flow_.blocks[block].last; ++i) {
      trace_.reached[i] = true;
      if (code_[i].transfer != Transfer::None) trace_.before_transfer.emplace_back(i, state);
      step(state, i);
    }
    const auto known = accesses.begin() + static_cast<std::ptrdiff_t>(first_of_block);
    const auto fresh = accesses.begin() + static_cast<std::ptrdiff_t>(before);
    const auto is_known = [&](const Access& access) { return std::find(known, fresh, access) != fresh; };
    accesses.erase(std::remove_if(fresh, accesses.end(), is_known), accesses.end());
  }

  static State at_entry() {
    State state;
    state.registers[kRdi] = Value::address(Region::Src, 0);
    state.registers[kRsi] = Value::address(Region::Dst, 0);
    state.registers[kRdx] = Value::flag();
    state.registers[kRcx] = Value::address(Region::CallersBuffer, 0);
    state.registers[kRsp] = Value::address(Region::Stack, 0);
    return state;
  }

  // Joins only lose knowledge, so this ends; without loops one pass in topological order is all there is.
  void settle() {
    entry_[{flow_.reachable.front(), Path{}}] = at_entry();
    std::size_t rounds_left = 16 * flow_.reachable.size() + 16;
    for (bool changed = true; changed;) {
      if (rounds_left-- == 0) throw std::logic_error("the machine does not settle");
      changed = false;
      for (const auto b : flow_.reachable)
        for (const auto& path : kPaths) changed |= run_block(b, path);
      if (flow_.back_edges.empty()) break;
    }
  }

  bool run_block(std::size_t block, const Path& path) {
    const auto entry = entry_.find({block, path});
    if (entry == entry_.end()) return false;
    State state = entry->second;
    for (auto i = flow_.blocks[block].first; i < flow_.blocks[block].last; ++i) step(state, i);
    bool changed = false;
    for (const auto to : flow_.blocks[block].successors)
      if (const auto arriving = along_edge(state, block, to)) changed |= arrive(to, *arriving);
    return changed;
  }

  bool arrive(std::size_t block, const State& state) {
    const auto [place, fresh] = entry_.try_emplace({block, state.path}, state);
    if (fresh) return true;
    auto both = join(place->second, state);
    if (both == place->second) return false;
    place->second = std::move(both);
    return true;
  }

  // What a branch on the zero flag teaches the side it leads to: the gate's alignment, whether there is a buffer; or
  // that nothing ever goes there.
  std::optional<State> along_edge(const State& state, std::size_t from, std::size_t to) const {
    const auto& tail = code_[flow_.blocks[from].last - 1];
    const bool on_zero = tail.mnemonic() == ZYDIS_MNEMONIC_JZ, on_other = tail.mnemonic() == ZYDIS_MNEMONIC_JNZ;
    if (!tail.target || (!on_zero && !on_other)) return state;
    const bool taken = code_[flow_.blocks[to].first].address == *tail.target;
    const bool zero = taken == on_zero;
    const auto& test = state.test;
    State out = state;
    switch (test.kind) {
      case ZeroTest::Kind::None: break;
      case ZeroTest::Kind::Known:
        if (zero != test.zero) return std::nullopt;
        break;
      case ZeroTest::Kind::BufferNull: out.path.buffer = zero ? BufferArgument::Null : BufferArgument::Given; break;
      case ZeroTest::Kind::Alignment: {
        if (!zero) break;
        const int alignment = 1 << std::min(5, std::countr_one(test.mask));
        if (test.of_src) out.src_alignment = std::max(out.src_alignment, alignment);
        if (test.of_dst) out.dst_alignment = std::max(out.dst_alignment, alignment);
      }
    }
    return out;
  }

  Value register_value(const State& state, ZydisRegister reg) const {
    const auto index = general_register(reg);
    return index ? state.registers[*index] : Value{};
  }

  Value address_of(const State& state, const ZydisDecodedOperand& operand, const Instruction& instruction) const {
    const auto& memory = operand.mem;
    if (instruction.raw.address_width != 64) return {};
    if (memory.segment == ZYDIS_REGISTER_FS || memory.segment == ZYDIS_REGISTER_GS) return {};
    if (memory.base == ZYDIS_REGISTER_RIP)
      return Value::address(Region::Image, static_cast<std::int64_t>(instruction.end()) + memory.disp.value);
    Value base = memory.base == ZYDIS_REGISTER_NONE ? Value::constant(0) : register_value(state, memory.base);
    base = shifted(base, memory.disp.value);
    if (memory.index == ZYDIS_REGISTER_NONE) return base;
    return sum(base, register_value(state, memory.index), memory.scale);
  }

  int proven_alignment(const State& state, const Value& address) const {
    switch (address.region) {
      case Region::Src: return std::min(state.src_alignment, grain_of(address));
      case Region::Dst: return std::min(state.dst_alignment, grain_of(address));
      case Region::Stack: return std::min(16, grain_of(shifted(address, 8)));  // entry: return address just pushed
      case Region::AlignedStack: return std::min(stack_alignment_, grain_of(address));
      case Region::Image: return grain_of(address);
      case Region::CallersBuffer:
      case Region::OwnBuffer:
      case Region::WorkBuffer: return std::min(kBufferAlignment, grain_of(address));
      case Region::None: break;
    }
    return 1;
  }

  // Lowest and highest offset from the entry stack pointer that an address may have.
  [[nodiscard]] std::pair<std::int64_t, std::int64_t> entry_offsets(Region region, std::int64_t offset) const {
    if (region == Region::AlignedStack)
      return {aligned_from_ - (stack_alignment_ - 1) + offset, aligned_from_ + offset};
    return {offset, offset};
  }

  static bool is_stack(Region region) { return region == Region::Stack || region == Region::AlignedStack; }

  void note_depth(const Value& address) {
    if (!is_stack(address.region)) return;
    if (!address.exact) return;  // indexed frame access: its allocation is seen through the stack pointer
    trace_.deepest = std::min(trace_.deepest, entry_offsets(address.region, address.offset).first);
  }

  void forget_overlap(State& state, const Value& address, int bytes) {
    if (!is_address(address) || (is_stack(address.region) && !address.exact)) {
      state.slots.clear();
      return;
    }
    if (!is_stack(address.region)) return;
    const auto [low, high] = entry_offsets(address.region, address.offset);
    std::erase_if(state.slots, [&](const auto& entry) {
      const auto& slot = entry.first;
      if (slot.region == address.region)
        return slot.offset < address.offset + bytes && address.offset < slot.offset + 8;
      const auto [slot_low, slot_high] = entry_offsets(slot.region, slot.offset);
      return slot_low < high + bytes && low < slot_high + 8;
    });
  }

  void set_slot(State& state, const Value& address, const Value& value) {
    if (!is_stack(address.region) || !address.exact || value.kind == Value::Kind::Unknown) return;
    state.slots[{address.region, address.offset}] = value;
  }

  Value slot(const State& state, const Value& address) const {
    if (!is_stack(address.region) || !address.exact) return {};
    const auto found = state.slots.find({address.region, address.offset});
    return found == state.slots.end() ? Value{} : found->second;
  }

  // Pushes, pops, calls and returns move the stack pointer by themselves; they are followed as what they are.
  static bool moves_data(const Instruction& instruction, const ZydisDecodedOperand& operand) {
    if (operand.mem.type == ZYDIS_MEMOP_TYPE_AGEN || instruction.is_padding()) return false;
    if (operand.visibility != ZYDIS_OPERAND_VISIBILITY_HIDDEN) return true;
    switch (instruction.mnemonic()) {
      case ZYDIS_MNEMONIC_PUSH:
      case ZYDIS_MNEMONIC_POP:
      case ZYDIS_MNEMONIC_LEAVE: return false;
      default: return instruction.transfer != Transfer::Call && instruction.transfer != Transfer::Return;
    }
  }

  // The parts of an operand in memory that are touched, as (offset, bytes): all of it, or the lanes that a mask names.
  static std::vector<std::pair<int, int>> touched_parts(const State& state, const Instruction& instruction,
                                                        const ZydisDecodedOperand& operand) {
    const int bytes = operand.size / 8, lane = operand.element_size / 8;
    const auto mask = mask_register(instruction.raw.avx.mask.reg);
    if (!instruction.is_masked() || !mask || lane == 0 || bytes <= lane) return {{0, bytes}};
    const auto& value = state.masks[*mask];
    if (!is_number(value) || !value.exact) return {{0, bytes}};
    std::vector<std::pair<int, int>> parts;
    for (int l = 0; l * lane < bytes; ++l) {
      if (!(value.offset >> l & 1)) continue;
      if (!parts.empty() && parts.back().first + parts.back().second == l * lane) parts.back().second += lane;
      else parts.emplace_back(l * lane, lane);
    }
    return parts;
  }

  void touch_memory(State& state, std::size_t index) {
    const auto& instruction = code_[index];
    for (const auto& operand : instruction.all()) {
      if (operand.type != ZYDIS_OPERAND_TYPE_MEMORY || !moves_data(instruction, operand)) continue;
      const auto address = address_of(state, operand, instruction);
      for (const auto& [offset, bytes] : touched_parts(state, instruction, operand)) {
        touch(state, {.instruction = index,
                      .bytes = bytes,
                      .reads = (operand.actions & ZYDIS_OPERAND_ACTION_MASK_READ) != 0,
                      .writes = (operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE) != 0},
              shifted(address, offset));
      }
    }
  }

  void touch(State& state, Access access, const Value& address) {
    access.region = is_address(address) ? address.region : Region::None;
    access.exact = is_address(address) && address.exact;
    access.offset = address.offset;
    access.after_store = state.stored;
    access.proven_alignment = proven_alignment(state, address);
    if (recording_) trace_.accesses.push_back(access);
    note_depth(address);
    if (access.writes) forget_overlap(state, address, access.bytes);
    if (access.region != Region::Src && access.region != Region::Dst) return;
    state.path.touched = true;
    if (access.writes) state.stored = true;
  }

  void set_register(State& state, const ZydisDecodedOperand& operand, const Value& value) {
    const auto index = general_register(operand.reg.value);
    if (!index) return;
    if (operand.size == 64) state.registers[*index] = value;
    else if (operand.size == 32) state.registers[*index] = truncated_to_32(value);
    else state.registers[*index] = {};
  }

  // What an integer instruction reads from one of its operands.
  Value operand_value(const State& state, const ZydisDecodedOperand& operand, const Instruction& instruction) const {
    switch (operand.type) {
      case ZYDIS_OPERAND_TYPE_REGISTER: return register_value(state, operand.reg.value);
      case ZYDIS_OPERAND_TYPE_IMMEDIATE: return Value::constant(operand.imm.value.s);
      case ZYDIS_OPERAND_TYPE_MEMORY:
        return operand.size == 64 ? slot(state, address_of(state, operand, instruction)) : Value{};
      default: return {};
    }
  }

  static bool is_register(const ZydisDecodedOperand& operand) { return operand.type == ZYDIS_OPERAND_TYPE_REGISTER; }

  void push(State& state, const Value& value) {
    auto& top = state.registers[kRsp];
    top = shifted(top, -8);
    forget_overlap(state, top, 8);
    set_slot(state, top, value);
  }

  Value pop(State& state) {
    auto& top = state.registers[kRsp];
    const auto value = slot(state, top);
    top = shifted(top, 8);
    return value;
  }

  void align_stack(State& state, std::int64_t mask) {
    auto& top = state.registers[kRsp];
    const auto alignment = -mask;
    const bool usable = top.region == Region::Stack && top.exact && alignment >= 16 && alignment <= kLargestGrain &&
                        std::has_single_bit(static_cast<std::uint64_t>(alignment));
    const bool repeated = stack_alignment_ != 1 && (aligned_from_ != top.offset || stack_alignment_ != alignment);
    if (!usable || repeated) {
      top = {};
      return;
    }
    aligned_from_ = top.offset;
    stack_alignment_ = static_cast<int>(alignment);
    top = Value::address(Region::AlignedStack, 0);
  }

  ZeroTest alignment_test(const State& state, const Instruction& instruction) const {
    const auto& left = instruction.operands[0];
    const auto& right = instruction.operands[1];
    if (!is_register(left) || right.type != ZYDIS_OPERAND_TYPE_IMMEDIATE) return {};
    if (left.reg.value >= ZYDIS_REGISTER_AH && left.reg.value <= ZYDIS_REGISTER_BH) return {};
    const auto low = low_bits(register_value(state, left.reg.value));
    if (low.kind != Value::Kind::LowBits) return {};
    return {.kind = ZeroTest::Kind::Alignment,
            .of_src = low.low_of_src,
            .of_dst = low.low_of_dst,
            .mask = right.imm.value.u};
  }

  // A whole value compared with zero.
  ZeroTest null_test(const State& state, const Instruction& instruction) const {
    const auto& left = instruction.operands[0];
    if (left.size != 64) return {};
    const auto value = operand_value(state, left, instruction);
    const bool is_buffer = value == Value::address(Region::CallersBuffer, 0);
    if (is_buffer && state.path.buffer == BufferArgument::Untested) return {.kind = ZeroTest::Kind::BufferNull};
    if (is_buffer) return {.kind = ZeroTest::Kind::Known, .zero = state.path.buffer == BufferArgument::Null};
    if (is_number(value) && value.exact) return {.kind = ZeroTest::Kind::Known, .zero = value.offset == 0};
    return {};
  }

  ZeroTest zero_test(const State& state, const Instruction& instruction) const {
    switch (instruction.mnemonic()) {
      case ZYDIS_MNEMONIC_TEST:
        return same_register(instruction) ? null_test(state, instruction) : alignment_test(state, instruction);
      case ZYDIS_MNEMONIC_AND: return alignment_test(state, instruction);
      case ZYDIS_MNEMONIC_CMP: {
        const auto& right = instruction.operands[1];
        const bool with_zero = right.type == ZYDIS_OPERAND_TYPE_IMMEDIATE && right.imm.value.u == 0;
        return with_zero ? null_test(state, instruction) : ZeroTest{};
      }
      default: return {};
    }
  }

  // The second operand of a commutative "op r, r" with both the same register.
  static bool same_register(const Instruction& instruction) {
    return is_register(instruction.operands[0]) && is_register(instruction.operands[1]) &&
           instruction.operands[0].reg.value == instruction.operands[1].reg.value;
  }

  // What is called leaves the frame alone unless it was given an address in it.
  void finish_call(State& state, bool allocates) {
    const bool escapes = std::ranges::any_of(kCallerSaved, [&](int r) { return is_stack(state.registers[r].region); });
    for (const auto r : kCallerSaved) state.registers[r] = {};
    if (escapes) state.slots.clear();
    if (allocates) state.registers[kRax] = Value::address(Region::OwnBuffer, 0);
  }

  void integer_effects(State& state, const Instruction& instruction) {
    const auto& first = instruction.operands[0];
    const auto& second = instruction.operands[1];
    const auto left = [&] { return operand_value(state, first, instruction); };
    const auto right = [&] { return operand_value(state, second, instruction); };
    switch (instruction.mnemonic()) {
      case ZYDIS_MNEMONIC_MOV:
        if (is_register(first)) set_register(state, first, right());
        else if (first.size == 64) set_slot(state, address_of(state, first, instruction), right());
        return;
      case ZYDIS_MNEMONIC_LEA: set_register(state, first, address_of(state, second, instruction)); return;
      case ZYDIS_MNEMONIC_ADD:
        if (is_register(first)) set_register(state, first, sum(left(), right()));
        return;
      case ZYDIS_MNEMONIC_SUB:
        if (!is_register(first)) return;
        if (const auto by = right(); is_number(by) && by.exact) set_register(state, first, shifted(left(), -by.offset));
        else set_register(state, first, {});
        return;
      case ZYDIS_MNEMONIC_INC:
      case ZYDIS_MNEMONIC_DEC:
        if (is_register(first))
          set_register(state, first, shifted(left(), instruction.mnemonic() == ZYDIS_MNEMONIC_INC ? 1 : -1));
        return;
      case ZYDIS_MNEMONIC_SHL:
        if (is_register(first)) set_register(state, first, shifted_left(left(), right()));
        return;
      case ZYDIS_MNEMONIC_MOVSXD:
      case ZYDIS_MNEMONIC_CDQE: {
        const auto value = instruction.mnemonic() == ZYDIS_MNEMONIC_CDQE ? state.registers[kRax] : right();
        auto& target = instruction.mnemonic() == ZYDIS_MNEMONIC_CDQE
                           ? state.registers[kRax]
                           : state.registers[*general_register(first.reg.value)];
        target = is_number(value) ? inexact(value, grain_of(value)) : Value{};
        return;
      }
      case ZYDIS_MNEMONIC_XOR:
        if (is_register(first)) set_register(state, first, same_register(instruction) ? Value::constant(0) : Value{});
        return;
      case ZYDIS_MNEMONIC_OR:
        if (is_register(first)) set_register(state, first, union_of_low_bits(left(), right()));
        return;
      case ZYDIS_MNEMONIC_AND:
        if (is_register(first) && general_register(first.reg.value) == kRsp &&
            second.type == ZYDIS_OPERAND_TYPE_IMMEDIATE)
          align_stack(state, second.imm.value.s);
        else if (is_register(first)) set_register(state, first, {});
        return;
      case ZYDIS_MNEMONIC_PUSH: push(state, left()); return;
      case ZYDIS_MNEMONIC_POP: {
        const auto value = pop(state);
        if (is_register(first)) set_register(state, first, value);
        return;
      }
      case ZYDIS_MNEMONIC_LEAVE:
        state.registers[kRsp] = state.registers[kRbp];
        state.registers[kRbp] = pop(state);
        return;
      case ZYDIS_MNEMONIC_XCHG:
        if (!is_register(first) || !is_register(second)) break;
        {
          const auto a = left(), b = right();
          set_register(state, first, b);
          set_register(state, second, a);
        }
        return;
      default: break;
    }
    if (instruction.raw.meta.category == ZYDIS_CATEGORY_CMOV) {
      set_register(state, first, joined(left(), right()));
      return;
    }
    if (instruction.transfer == Transfer::Call) {
      finish_call(state, allocations_[static_cast<std::size_t>(&instruction - code_.data())]);
      return;
    }
    if (instruction.transfer != Transfer::None) return;
    for (const auto& operand : instruction.all())
      if (is_register(operand) && (operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE)) set_register(state, operand, {});
  }

  // The registers above the first sixteen have no part in what vzeroupper is for.
  static bool has_upper_half(ZydisRegister reg) {
    const auto kind = ZydisRegisterGetClass(reg);
    return (kind == ZYDIS_REGCLASS_YMM || kind == ZYDIS_REGCLASS_ZMM) && ZydisRegisterGetId(reg) < 16;
  }

  void mask_effects(State& state, const Instruction& instruction) {
    const auto& first = instruction.operands[0];
    if (first.type != ZYDIS_OPERAND_TYPE_REGISTER || !(first.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE)) return;
    const auto mask = mask_register(first.reg.value);
    if (!mask) return;
    const auto& second = instruction.operands[1];
    const bool moves = instruction.operation.kind == Kind::Mask && instruction.raw.operand_count_visible == 2;
    const auto index = moves && is_register(second) ? general_register(second.reg.value) : std::nullopt;
    state.masks[*mask] = index ? state.registers[*index] : Value{};
  }

  void vector_effects(State& state, const Instruction& instruction) {
    const auto mnemonic = instruction.mnemonic();
    if (mnemonic == ZYDIS_MNEMONIC_VZEROUPPER || mnemonic == ZYDIS_MNEMONIC_VZEROALL) state.upper_dirty = false;
    for (const auto& operand : instruction.visible()) {
      const bool written = is_register(operand) && (operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE);
      if (written && has_upper_half(operand.reg.value)) state.upper_dirty = true;
    }
    if (instruction.transfer == Transfer::Call) state.upper_dirty = false;
  }

  void flag_effects(State& state, const Instruction& instruction, const ZeroTest& test) {
    const auto* flags = instruction.raw.cpu_flags;
    if (flags != nullptr && (flags->modified | flags->set_0 | flags->set_1 | flags->undefined) != 0) state.test = test;
    if (instruction.transfer == Transfer::Call) state.test = {};
  }

  void step(State& state, std::size_t index) {
    const auto& instruction = code_[index];
    const auto test = zero_test(state, instruction);
    touch_memory(state, index);
    integer_effects(state, instruction);
    vector_effects(state, instruction);
    mask_effects(state, instruction);
    flag_effects(state, instruction, test);
    const auto& top = state.registers[kRsp];
    if (!is_stack(top.region) || !top.exact) trace_.stack_lost = true;
    else note_depth(top);
  }

  const std::vector<Instruction>& code_;
  const Flow& flow_;
  const std::vector<bool>& allocations_;
  std::map<std::pair<std::size_t, Path>, State> entry_;
  Trace trace_;
  bool recording_ = false;
  int stack_alignment_ = 1;
  std::int64_t aligned_from_ = 0;
};

}  // namespace

const State* Trace::reaching(std::size_t block, bool touched) const {
  for (const auto& path : kPaths) {
    if (path.touched != touched) continue;
    if (const auto found = at_block.find({block, path}); found != at_block.end()) return &found->second;
  }
  return nullptr;
}

Trace run(const std::vector<Instruction>& code, const Flow& flow, const std::vector<bool>& allocations) {
  if (code.empty()) return {};
  return Machine(code, flow, allocations).run();
}

}  // namespace xfm::audit
