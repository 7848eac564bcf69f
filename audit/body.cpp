#include "body.h"

#include <algorithm>

namespace xfm::audit {
namespace {

// The scalar instructions that are counted one by one, since a precision rule speaks of each.
constexpr ZydisMnemonic kScalarMnemonics[] = {
    ZYDIS_MNEMONIC_VADDSS, ZYDIS_MNEMONIC_VSUBSS, ZYDIS_MNEMONIC_VMULSS,    ZYDIS_MNEMONIC_VADDSD,
    ZYDIS_MNEMONIC_VSUBSD, ZYDIS_MNEMONIC_VMULSD, ZYDIS_MNEMONIC_VCVTSS2SD, ZYDIS_MNEMONIC_VCVTSD2SS,
};

const char* packed_column(Kind kind) {
  switch (kind) {
    case Kind::Add: return "packed_add";
    case Kind::Subtract: return "packed_sub";
    case Kind::AddSubtract: return "packed_addsub";
    case Kind::Multiply: return "packed_mul";
    default: return nullptr;
  }
}

const char* kind_column(Kind kind) {
  switch (kind) {
    case Kind::Add:
    case Kind::Subtract:
    case Kind::AddSubtract:
    case Kind::Fused: return "adds";  // it stands for one, or is a finding
    case Kind::Multiply: return "muls";
    case Kind::Shuffle: return "shuffles";
    case Kind::Insert: return "inserts";
    case Kind::Broadcast: return "broadcasts";
    case Kind::Blend: return "blends";
    case Kind::Logic: return "logic";
    case Kind::Widen: return "widen";
    case Kind::Narrow: return "narrow";
    default: return nullptr;
  }
}

void count_instruction(const Instruction& instruction, Counts& counts) {
  ++counts["instructions"];
  const auto& operation = instruction.operation;
  if (const auto* column = kind_column(operation.kind)) ++counts[column];
  if (const auto* column = packed_column(operation.kind); column != nullptr && !operation.scalar) ++counts[column];
  if (std::ranges::find(kScalarMnemonics, instruction.mnemonic()) != std::end(kScalarMnemonics))
    ++counts[instruction.name()];
  if (operation.kind == Kind::Move && instruction.memory() == nullptr) ++counts["copies"];
  counts["vector_bits"] = std::max(counts["vector_bits"], operation.scalar ? 0 : instruction.vector_bits());
}

void count_access(const Access& access, Counts& counts) {
  const bool stack = access.region == Region::Stack || access.region == Region::AlignedStack;
  if (access.region == Region::Src && access.reads) ++counts["src_loads"];
  if (access.region == Region::Dst && access.writes) ++counts["dst_stores"];
  if (access.region == Region::Image && access.reads) ++counts["constant_loads"];
  if (stack && access.reads) ++counts["reloads"];
  if (stack && access.writes) ++counts["spills"];
}

Counts empty_counts() {
  Counts counts;
  for (const auto& column : count_columns()) counts[column] = 0;
  return counts;
}

Counts count_over(const Body& body, const std::vector<std::size_t>& instructions) {
  Counts counts = empty_counts();
  std::vector<bool> wanted(body.code.size());
  for (const auto i : instructions) {
    wanted[i] = true;
    count_instruction(body.code[i], counts);
  }
  for (const auto& access : body.trace.accesses) {
    if (!wanted[access.instruction]) continue;
    count_access(access, counts);
    wanted[access.instruction] = false;  // one instruction, one access, whatever paths lead to it
  }
  return counts;
}

const char* line_name(const Body& body, const State& state) {
  if (!body.promise || body.promise->gate == Gate::Plain) return "plain";
  return state.src_alignment > 1 && state.dst_alignment > 1 ? "aligned" : "unaligned";
}

Line line_from(const Body& body, std::size_t head) {
  Line line{.name = line_name(body, *body.trace.reaching(head, false)), .instructions = {}, .counts = {}};
  std::vector<bool> walked(body.flow.blocks.size());
  for (std::size_t b = head; !walked[b];) {
    walked[b] = true;
    const auto& block = body.flow.blocks[b];
    for (auto i = block.first; i < block.last; ++i) line.instructions.push_back(i);
    if (block.successors.size() != 1) break;
    b = block.successors.front();
  }
  line.counts = count_over(body, line.instructions);
  return line;
}

void find_lines(Body& body) {
  std::vector<std::size_t> block_of(body.code.size());
  for (std::size_t b = 0; b < body.flow.blocks.size(); ++b)
    for (auto i = body.flow.blocks[b].first; i < body.flow.blocks[b].last; ++i) block_of[i] = b;
  std::vector<bool> holds_data(body.flow.blocks.size());
  for (const auto& access : body.trace.accesses)
    if (access.region == Region::Src || access.region == Region::Dst) holds_data[block_of[access.instruction]] = true;
  for (std::size_t b = 0; b < body.flow.blocks.size(); ++b) {
    if (!holds_data[b]) continue;
    if (body.trace.reaching(b, false) == nullptr) continue;
    if (body.trace.reaching(b, true) != nullptr) body.side_entries.push_back(b);
    else body.lines.push_back(line_from(body, b));
  }
}

// After the first access there is nothing left to choose; where there is, no line can be told.
bool branches_late(const Body& body) {
  return std::ranges::any_of(body.trace.before_transfer, [&](const auto& entry) {
    return body.code[entry.first].transfer == Transfer::Branch && entry.second.path.touched;
  });
}

}  // namespace

const std::vector<std::string>& count_columns() {
  static const auto columns = [] {
    std::vector<std::string> out{"instructions", "vector_bits", "adds",          "muls",      "shuffles", "inserts",
                                 "broadcasts",   "blends",      "logic",         "widen",     "narrow",   "copies",
                                 "packed_add",   "packed_sub",  "packed_addsub", "packed_mul"};
    for (const auto mnemonic : kScalarMnemonics) out.emplace_back(ZydisMnemonicGetString(mnemonic));
    out.insert(out.end(), {"src_loads", "dst_stores", "constant_loads", "reloads", "spills"});
    return out;
  }();
  return columns;
}

Body analyse(const ElfImage& image, const Decoder& decoder, const Surroundings& around, const Symbol& function) {
  Body body;
  body.name = function.name;
  body.address = function.address;
  body.bytes = function.size;
  body.promise = promise_of(function.name);
  body.code = decoder.sweep(image.bytes_at(function.address, function.size), function.address);
  if (body.code.empty()) return body;
  body.flow = flow_of(body.code);
  std::vector<bool> allocations(body.code.size());
  for (std::size_t i = 0; i < body.code.size(); ++i)
    allocations[i] = body.code[i].transfer == Transfer::Call && around.callee(body.code[i]) == kAllocator;
  body.trace = run(body.code, body.flow, allocations);
  body.frame_bytes = static_cast<int>(-body.trace.deepest);
  std::vector<std::size_t> all(body.code.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  body.whole = count_over(body, all);
  if (body.is_straight() && body.flow.back_edges.empty() && !branches_late(body)) find_lines(body);
  return body;
}

}  // namespace xfm::audit
