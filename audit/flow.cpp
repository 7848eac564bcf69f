#include "flow.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace xfm::audit {
namespace {

using IndexByAddress = std::unordered_map<std::uint64_t, std::size_t>;

bool ends_block(const Instruction& instruction) {
  return instruction.transfer != Transfer::None && instruction.transfer != Transfer::Call;
}

bool is_inside(const std::vector<Instruction>& code, std::uint64_t address) {
  return address >= code.front().address && address < code.back().end();
}

std::set<std::size_t> find_leaders(const std::vector<Instruction>& code, const IndexByAddress& index_of, Flow& flow) {
  std::set<std::size_t> leaders{0};
  for (std::size_t i = 0; i < code.size(); ++i) {
    if (!ends_block(code[i])) continue;
    if (i + 1 < code.size()) leaders.insert(i + 1);
    if (!code[i].target || !is_inside(code, *code[i].target)) continue;
    const auto found = index_of.find(*code[i].target);
    if (found == index_of.end()) {
      flow.stray_targets.push_back(*code[i].target);
    } else {
      leaders.insert(found->second);
    }
  }
  return leaders;
}

void connect(Flow& flow, std::size_t from, std::size_t to) {
  auto& successors = flow.blocks[from].successors;
  if (std::ranges::find(successors, to) != successors.end()) return;
  successors.push_back(to);
  flow.blocks[to].predecessors.push_back(from);
}

// An indirect jump may land on any block that nothing else reaches; taking all of them loses no path.
void connect_indirect_jumps(const std::vector<Instruction>& code, Flow& flow) {
  std::vector<std::size_t> unreached;
  for (std::size_t b = 1; b < flow.blocks.size(); ++b)
    if (flow.blocks[b].predecessors.empty() && !code[flow.blocks[b].first].is_padding()) unreached.push_back(b);
  for (std::size_t b = 0; b < flow.blocks.size(); ++b) {
    const auto tail = flow.blocks[b].last - 1;
    if (code[tail].transfer != Transfer::Jump || code[tail].target) continue;
    flow.indirect_jumps.push_back(tail);
    for (const auto to : unreached) connect(flow, b, to);
    if (unreached.empty()) flow.blocks[b].leaves = true;
  }
}

// Depth first without recursion: a body may hold thousands of blocks. An edge to a block still open closes a loop.
void order_blocks(Flow& flow) {
  enum class Mark : char { New, Open, Done };
  std::vector<Mark> marks(flow.blocks.size(), Mark::New);
  std::vector<std::pair<std::size_t, std::size_t>> stack{{0, 0}};
  marks[0] = Mark::Open;
  while (!stack.empty()) {
    auto& [block, next] = stack.back();
    const auto& successors = flow.blocks[block].successors;
    if (next == successors.size()) {
      marks[block] = Mark::Done;
      flow.reachable.push_back(block);
      stack.pop_back();
      continue;
    }
    const auto to = successors[next++];
    if (marks[to] == Mark::Open) flow.back_edges.push_back(flow.blocks[block].last - 1);
    if (marks[to] != Mark::New) continue;
    marks[to] = Mark::Open;
    stack.emplace_back(to, 0);
  }
  std::ranges::reverse(flow.reachable);
}

}  // namespace

Flow flow_of(const std::vector<Instruction>& code) {
  Flow flow;
  if (code.empty()) return flow;
  IndexByAddress index_of;
  for (std::size_t i = 0; i < code.size(); ++i) index_of[code[i].address] = i;
  const auto leaders = find_leaders(code, index_of, flow);

  std::unordered_map<std::size_t, std::size_t> block_of;
  for (auto leader = leaders.begin(); leader != leaders.end(); ++leader) {
    const auto next = std::next(leader);
    block_of[*leader] = flow.blocks.size();
    Block block;
    block.first = *leader;
    block.last = next == leaders.end() ? code.size() : *next;
    flow.blocks.push_back(block);
  }
  for (std::size_t b = 0; b < flow.blocks.size(); ++b) {
    const auto& tail = code[flow.blocks[b].last - 1];
    const bool falls_through =
        tail.transfer == Transfer::None || tail.transfer == Transfer::Call || tail.transfer == Transfer::Branch;
    if (falls_through && b + 1 < flow.blocks.size()) connect(flow, b, b + 1);
    if (tail.transfer == Transfer::Return) flow.blocks[b].leaves = true;
    if (!tail.target || tail.transfer == Transfer::Call) continue;
    if (!is_inside(code, *tail.target)) {
      flow.blocks[b].leaves = true;
    } else if (const auto found = index_of.find(*tail.target); found != index_of.end()) {
      connect(flow, b, block_of.at(found->second));
    }
  }
  connect_indirect_jumps(code, flow);
  order_blocks(flow);
  return flow;
}

}  // namespace xfm::audit
