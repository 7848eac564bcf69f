// Streaming stores pass by the order of all others: before the caller may go on, a fence must have put them in place.
#include "fences.h"

#include <algorithm>

namespace xfm::audit {
namespace {

bool is_streaming_store(const Instruction& code) {
  constexpr ZydisMnemonic kStores[] = {ZYDIS_MNEMONIC_VMOVNTPS, ZYDIS_MNEMONIC_VMOVNTPD, ZYDIS_MNEMONIC_VMOVNTDQ,
                                       ZYDIS_MNEMONIC_MOVNTI};
  return std::ranges::find(kStores, code.mnemonic()) != std::end(kStores);
}

bool is_fence(const Instruction& code) {
  return code.mnemonic() == ZYDIS_MNEMONIC_SFENCE || code.mnemonic() == ZYDIS_MNEMONIC_MFENCE ||
         (code.raw.attributes & ZYDIS_ATTRIB_HAS_LOCK) != 0;
}

// Whether a fence stands on some way from each block's end on. One that a condition guards counts: the stores have it, too.
std::vector<bool> fence_behind(const Body& body) {
  const auto& blocks = body.flow.blocks;
  std::vector<bool> holds(blocks.size()), behind(blocks.size());
  for (std::size_t b = 0; b < blocks.size(); ++b)
    for (auto i = blocks[b].first; i < blocks[b].last; ++i) holds[b] = holds[b] || is_fence(body.code[i]);
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t b = 0; b < blocks.size(); ++b)
      for (const auto next : blocks[b].successors)
        if (!behind[b] && (holds[next] || behind[next])) behind[b] = changed = true;
  }
  return behind;
}

}  // namespace

Unfenced unfenced_in(const Body& body, const Surroundings& around) {
  Unfenced out;
  const auto behind = fence_behind(body);
  for (std::size_t b = 0; b < body.flow.blocks.size(); ++b) {
    bool fenced = behind[b];
    for (auto i = body.flow.blocks[b].last; i-- > body.flow.blocks[b].first;) {
      const auto& code = body.code[i];
      if (is_fence(code)) fenced = true;
      if (fenced) continue;
      if (is_streaming_store(code)) out.stores = true;
      if (code.transfer == Transfer::None || code.transfer == Transfer::Return) continue;
      if (const auto callee = around.callee(code); !callee.empty()) out.callees.insert(callee);
    }
  }
  return out;
}

void check_fences(const std::map<std::string, Unfenced>& functions, Findings& findings) {
  std::set<std::string> streaming;
  for (const auto& [name, unfenced] : functions)
    if (unfenced.stores) streaming.insert(name);
  for (bool changed = true; changed;) {
    changed = false;
    for (const auto& [name, unfenced] : functions)
      for (const auto& callee : unfenced.callees)
        if (streaming.contains(callee)) changed |= streaming.insert(name).second;
  }
  for (const auto& name : streaming)
    if (name.starts_with("xfmg")) findings.push_back({"fence", name, "returns with streaming stores under way"});
}

}  // namespace xfm::audit
