// Rules on how a body runs: its line, its calls, the memory it touches and in which order, its stack.
#include <algorithm>
#include <tuple>

#include "rules.h"

namespace xfm::audit {
namespace {

constexpr int kFrameLimit = 3072;
constexpr int kMostFindingsPerRule = 4;

class Report {
 public:
  Report(const char* rule, const Body& body, Findings& findings) : rule_(rule), body_(body), findings_(findings) {}
  void operator()(const std::string& detail) {
    if (++count_ <= kMostFindingsPerRule) findings_.push_back({rule_, body_.name, detail});
  }
  void at(std::size_t instruction, const std::string& detail) {
    const auto& code = body_.code[instruction];
    (*this)(code.name() + " at " + hex(code.address) + ": " + detail);
  }

 private:
  const char* rule_;
  const Body& body_;
  Findings& findings_;
  int count_ = 0;
};

bool is_data(const Access& access) { return access.region == Region::Src || access.region == Region::Dst; }
bool is_stack(const Access& access) { return access.region == Region::Stack || access.region == Region::AlignedStack; }
const char* array_name(Region region) { return region == Region::Src ? "src" : "dst"; }

// From the jump's target on the function only gives back its frame and returns: two lines may share these last steps.
bool leads_out(const Body& body, const Instruction& jump) {
  const auto target = std::ranges::find_if(body.code, [&](const Instruction& code) { return code.address == jump.target; });
  const auto stop = std::find_if(target, body.code.end(), [](const Instruction& code) {
    const auto kind = code.operation.kind;
    return code.transfer != Transfer::None || (kind != Kind::Integer && kind != Kind::ZeroUpper);
  });
  return stop != body.code.end() && stop->transfer == Transfer::Return;
}

// One line, or two where the kernel holds both bodies; no loop; after the first access no choice any more.
void check_straight_line(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight()) return;
  Report report("straight-line", body, findings);
  for (const auto target : body.flow.stray_targets) report("a jump to " + hex(target) + ", inside an instruction");
  for (const auto i : body.flow.indirect_jumps)
    if (body.trace.reached[i]) report.at(i, "an indirect jump");
  for (const auto i : body.flow.back_edges) report.at(i, "closes a loop");
  if (!body.flow.back_edges.empty()) return;
  for (const auto& [i, state] : body.trace.before_transfer) {
    if (!state.path.touched) continue;
    if (body.code[i].transfer == Transfer::Branch) report.at(i, "a branch after the first access");
    if (body.code[i].transfer == Transfer::Jump && !leads_out(body, body.code[i]))
      report.at(i, "a jump after the first access");
  }
  for (const auto b : body.side_entries)
    report.at(body.flow.blocks[b].first, "a part of the body that is reached without its beginning");
  for (std::size_t i = 0; i < body.code.size(); ++i)
    if (!body.trace.reached[i] && !body.code[i].is_padding()) report.at(i, "no path leads here");
  const auto expected = static_cast<std::size_t>(body.promise->lines());
  if (body.lines.size() != expected)
    report(std::to_string(body.lines.size()) + " straight lines where " + std::to_string(expected) + " are due");
}

// Before a line come tests and the choice of a constant; the arithmetic is all in the line.
void check_prologue(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight()) return;
  Report report("prologue", body, findings);
  std::vector<bool> in_line(body.code.size());
  for (const auto& line : body.lines)
    for (const auto i : line.instructions) in_line[i] = true;
  for (std::size_t i = 0; i < body.code.size(); ++i) {
    const auto kind = body.code[i].operation.kind;
    const bool works = kind != Kind::Integer && kind != Kind::Move && kind != Kind::Broadcast && kind != Kind::Logic &&
                       kind != Kind::ZeroUpper && kind != Kind::Mask;
    if (works && body.trace.reached[i] && !in_line[i] && !body.lines.empty())
      report.at(i, "work outside the straight line");
  }
}

// Jumps and branches out of the function count as calls.
bool leaves_function(const Body& body, const Instruction& code) {
  if (code.transfer != Transfer::Jump && code.transfer != Transfer::Branch) return false;
  return code.target && (*code.target < body.address || *code.target >= body.address + body.bytes);
}

// A call of the body: its twin only, with the three arguments as they came and, for a jump, the stack as it was.
void check_twin_call(const Body& body, std::size_t i, const State& state, Report& report) {
  if (state.path.touched) report.at(i, "a call after the first access");
  const std::tuple<const char*, int, Value> due[] = {{"src", 7, Value::address(Region::Src, 0)},
                                                     {"dst", 6, Value::address(Region::Dst, 0)},
                                                     {"flag", 2, Value::flag()},
                                                     {"buffer", 1, Value::address(Region::CallersBuffer, 0)}};
  for (const auto& [argument, number, value] : due)
    if (state.registers[number] != value && (number != 1 || body.is_passes()))
      report.at(i, std::string("the twin does not get the kernel's own ") + argument);
  if (body.code[i].transfer != Transfer::Call && state.registers[4] != Value::address(Region::Stack, 0))
    report.at(i, "the stack is not as it was on entry");
}

// A block of exactly the stated size, and only once nothing can be refused any more.
void check_allocation(const Body& body, std::size_t i, const State& state, Report& report) {
  const auto due = Value::constant(body.promise->buffer_bytes());
  if (state.registers[7] != due) report.at(i, "does not allocate " + std::to_string(due.offset) + " bytes");
  if (state.path.touched) report.at(i, "allocates after the first access");
}

void check_calls(const Body& body, const Surroundings& around, Findings& findings) {
  Report report("call", body, findings);
  const bool has_twin = body.promise && body.promise->gate == Gate::Gate16Twin && !body.promise->is_twin;
  bool calls_twin = false;
  for (const auto& [i, state] : body.trace.before_transfer) {
    const auto& code = body.code[i];
    if (code.transfer != Transfer::Call && !leaves_function(body, code)) continue;
    const auto callee = around.callee(code);
    if (has_twin && callee == twin_name(body.name)) {
      calls_twin = true;
      check_twin_call(body, i, state, report);
    } else if (body.is_passes() && callee == kAllocator) {
      check_allocation(body, i, state, report);
    } else if (body.is_passes() && callee == kDeallocator) {
      const auto& block = state.registers[7];
      if (block.region != Region::OwnBuffer || !block.exact || block.offset != 0)
        report.at(i, "frees what it has not allocated");
    } else if (body.promise) {
      report.at(i, "calls " + (callee.empty() ? "an unknown function" : callee));
    } else if (callee.empty() && code.target) {
      report.at(i, "calls what is no function of the library");
    }
  }
  if (has_twin && !calls_twin) report("never calls its twin");
}

void check_stack_balance(const Body& body, const Surroundings&, Findings& findings) {
  Report report("stack", body, findings);
  if (body.trace.stack_lost) report("the stack pointer cannot be followed");
  for (const auto& [i, state] : body.trace.before_transfer)
    if (body.code[i].transfer == Transfer::Return && state.registers[4] != Value::address(Region::Stack, 0))
      report.at(i, "the stack pointer is not where it was on entry");
}

// The line ends with success; what leaves before it was refused.
void check_status(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight() || body.lines.empty()) return;
  constexpr int kOk = 0, kNullPointer = -8, kFlagError = -16;
  Report report("status", body, findings);
  for (const auto& [i, state] : body.trace.before_transfer) {
    if (body.code[i].transfer != Transfer::Return) continue;
    const auto& value = state.registers[0];
    const auto status = static_cast<std::int32_t>(value.offset);
    if (value.kind != Value::Kind::Constant || !value.exact) {
      if (state.path.touched) report.at(i, "the status after the body cannot be told");
    } else if (state.path.touched ? status != kOk : status != kNullPointer && status != kFlagError) {
      report.at(i, "returns " + std::to_string(status) + (state.path.touched ? " after the body" : " without a body"));
    }
  }
}

void check_frame(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.promise) return;
  if (body.frame_bytes >= kFrameLimit)
    findings.push_back({"frame", body.name, std::to_string(body.frame_bytes) + " bytes of stack"});
}

// On every way out of a function the upper halves are clean.
void check_zero_upper(const Body& body, const Surroundings&, Findings& findings) {
  Report report("zero-upper", body, findings);
  std::set<std::size_t> leaving;
  for (const auto& block : body.flow.blocks)
    if (block.leaves) leaving.insert(block.last - 1);
  for (const auto& [i, state] : body.trace.before_transfer) {
    const auto& code = body.code[i];
    const char* const way = code.transfer == Transfer::Return   ? "return"
                            : code.transfer == Transfer::Call   ? "call"
                            : leaving.contains(i)               ? "jump"
                                                                : nullptr;
    if (way != nullptr && state.upper_dirty) report.at(i, std::string("256-bit work and no vzeroupper before the ") + way);
  }
}

void check_attribution(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.promise) return;
  Report report("attribution", body, findings);
  for (const auto& access : body.trace.accesses) {
    const bool may_vary = body.is_passes() && !is_stack(access);  // loops walk over arrays
    if (access.region == Region::None) report.at(access.instruction, "the address cannot be followed");
    else if (is_buffer(access.region) && !body.is_passes())
      report.at(access.instruction, "an access through an argument that the kernel does not have");
    else if (access.region != Region::Image && !access.exact && !may_vary)
      report.at(access.instruction, "an address worked out at run time");
    else if (access.region == Region::Src && access.writes) report.at(access.instruction, "a store to src");
    else if (access.region == Region::Dst && access.reads) report.at(access.instruction, "a load from dst");
    else if (access.region == Region::Image && access.writes) report.at(access.instruction, "a store to static memory");
  }
}

void check_order(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.promise) return;
  Report report("order", body, findings);
  for (const auto& access : body.trace.accesses)
    if (access.region == Region::Src && access.reads && access.after_store)
      report.at(access.instruction, "loads src after a store to dst");
}

void check_alignment(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.promise) return;
  Report report("alignment", body, findings);
  for (const auto& access : body.trace.accesses) {
    const auto& code = body.at(access);
    if (!code.operation.needs_alignment || access.proven_alignment >= access.bytes) continue;
    report.at(access.instruction, "needs " + std::to_string(access.bytes) + "-byte alignment, proven are " +
                                      std::to_string(access.proven_alignment));
  }
}

// The work buffer is aligned to 16 bytes whatever src and dst are, and kernel and twin move it so; wider registers, which the
// copies for newer processors have, cannot rely on more.
void check_buffer(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_passes()) return;
  Report report("buffer", body, findings);
  bool loaded = false, stored = false;
  for (const auto& access : body.trace.accesses) {
    if (!is_buffer(access.region)) continue;
    (access.writes ? stored : loaded) = true;
    const auto& operation = body.at(access).operation;
    if (operation.kind == Kind::Move && !operation.needs_alignment && access.bytes <= 16)
      report.at(access.instruction, "an unaligned move of the buffer");
  }
  if (!loaded || !stored) report("the buffer is not used");
}

// The gate in the code is the gate of the class: which alignment its aligned line may rely on.
void check_gate(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight() || body.lines.empty() || body.promise->is_twin) return;
  Report report("gate", body, findings);
  const auto gate = body.promise->gate;
  const int due = gate == Gate::Plain ? 1 : gate == Gate::Gate32Inline ? 32 : 16;
  int aligned_lines = 0;
  for (const auto& line : body.lines) {
    int src = 1, dst = 1;
    for (std::size_t b = 0; b < body.flow.blocks.size(); ++b) {
      if (body.flow.blocks[b].first != line.instructions.front()) continue;
      src = body.trace.reaching(b, false)->src_alignment;
      dst = body.trace.reaching(b, false)->dst_alignment;
    }
    if (src == due && dst == due) ++aligned_lines;
    else if (src != 1 && dst != 1) report("a line behind a test for " + std::to_string(std::min(src, dst)) + " bytes");
  }
  const int lines_due = gate == Gate::Plain ? static_cast<int>(body.lines.size()) : 1;
  if (aligned_lines != lines_due)
    report(std::to_string(aligned_lines) + " lines proven " + std::to_string(due) + "-byte aligned");
}

// Every line loads all of src that its layout uses and nothing else, and stores each component of dst once.
void check_extent(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight()) return;
  Report report("extent", body, findings);
  const auto& promise = *body.promise;
  const int component = promise.component_bytes();
  for (const auto& line : body.lines) {
    std::vector<bool> in_line(body.code.size());
    for (const auto i : line.instructions) in_line[i] = true;
    std::vector<int> loads(promise.src_components()), stores(promise.dst_components());
    for (const auto& access : body.trace.accesses) {
      if (!in_line[access.instruction] || !is_data(access) || !access.exact) continue;
      const bool is_load = access.region == Region::Src;
      if (is_load ? !access.reads : !access.writes) continue;
      auto& counts = is_load ? loads : stores;
      const auto end = access.offset + access.bytes;
      if (access.offset < 0 || end > static_cast<std::int64_t>(counts.size()) * component ||
          access.offset % component) {
        report.at(access.instruction, std::string("outside ") + array_name(access.region));
        continue;
      }
      for (auto c = access.offset / component; c < end / component; ++c) ++counts[c];
    }
    for (int c = 0; c < promise.src_components(); ++c)
      if ((loads[c] > 0) != promise.reads_component(c))
        report("src component " + std::to_string(c) + (loads[c] > 0 ? " is loaded" : " is never loaded"));
    for (int c = 0; c < promise.dst_components(); ++c)
      if (stores[c] != 1)
        report("dst component " + std::to_string(c) + " is stored " + std::to_string(stores[c]) + " times");
  }
}

// Both lines of a kernel that holds two do the same arithmetic.
void check_equal_lines(const Body& body, const Surroundings&, Findings& findings) {
  if (!body.is_straight() || body.lines.size() != 2) return;
  for (const auto* column : {"adds", "muls", "widen", "narrow"}) {
    const int a = body.lines[0].counts.at(column), b = body.lines[1].counts.at(column);
    if (a == b) continue;
    findings.push_back(
        {"twin-arithmetic", body.name,
         std::string(column) + ": " + std::to_string(a) + " in one line, " + std::to_string(b) + " in the other"});
  }
}

}  // namespace

std::vector<BodyRule> flow_rules() {
  return {
      {"straight-line", check_straight_line},
      {"prologue", check_prologue},
      {"call", check_calls},
      {"stack", check_stack_balance},
      {"status", check_status},
      {"frame", check_frame},
      {"zero-upper", check_zero_upper},
      {"attribution", check_attribution},
      {"order", check_order},
      {"alignment", check_alignment},
      {"gate", check_gate},
      {"buffer", check_buffer},
      {"extent", check_extent},
      {"twin-arithmetic", check_equal_lines},
  };
}

}  // namespace xfm::audit
