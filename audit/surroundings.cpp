#include "surroundings.h"

namespace xfm::audit {

std::string hex(std::uint64_t address) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  do {
    out.insert(out.begin(), kDigits[address % 16]);
    address /= 16;
  } while (address != 0);
  return "0x" + out;
}

Surroundings::Surroundings(const ElfImage& image, const Decoder& decoder, const Target& target)
    : image_(image), decoder_(decoder), target_(target) {
  for (const auto& symbol : image.symbols()) {
    if (!symbol.is_defined_function()) continue;
    const auto [place, fresh] = functions_.try_emplace(symbol.address, symbol);
    // Of several names of one address one speaks for it: an exported one, and the first of those.
    const auto rank = [](const Symbol& s) { return std::pair(!s.name.starts_with("xfmg"), std::string_view(s.name)); };
    if (!fresh && rank(symbol) < rank(place->second)) place->second = symbol;
    own_.insert(symbol.name);
  }
}

std::string Surroundings::callee(const Instruction& transfer) const {
  const auto slot_name = [this](const Instruction& jump) -> std::string {
    const auto* memory = jump.memory();
    if (memory == nullptr || memory->mem.base != ZYDIS_REGISTER_RIP) return "";
    return image_.import_of_slot(jump.end() + static_cast<std::uint64_t>(memory->mem.disp.value)).value_or("");
  };
  if (!transfer.target) return slot_name(transfer);
  if (const auto found = functions_.find(*transfer.target); found != functions_.end()) return found->second.name;
  // A stub of the procedure linkage table: at most a landing marker, then a jump through a slot.
  std::uint64_t address = *transfer.target;
  for (int i = 0; i < 2; ++i) {
    const auto* section = image_.section_at(address);
    if (section == nullptr || !section->name.starts_with(".plt")) return "";
    const auto room = section->header.sh_addr + section->header.sh_size - address;
    const auto step = decoder_.one(image_.bytes_at(address, room), address);
    if (!step) return "";
    if (step->transfer == Transfer::Jump) return slot_name(*step);
    address = step->end();
  }
  return "";
}

}  // namespace xfm::audit
