// The functions of the library by address, and the names behind calls, stubs and slots.
#pragma once

#include <map>
#include <set>

#include "elf_image.h"
#include "instruction.h"
#include "target.h"

namespace xfm::audit {

// What one body may ask of the library around it.
class Surroundings {
 public:
  Surroundings(const ElfImage& image, const Decoder& decoder, const Target& target);
  [[nodiscard]] const ElfImage& image() const { return image_; }
  [[nodiscard]] const Target& target() const { return target_; }
  // The function at a call's or jump's target: one of the library's own or, through a stub or slot, an import.
  [[nodiscard]] std::string callee(const Instruction& transfer) const;
  [[nodiscard]] const std::string& name_at(std::uint64_t address) const { return functions_.at(address).name; }
  [[nodiscard]] bool is_own(const std::string& function) const { return own_.contains(function); }
  [[nodiscard]] const std::map<std::uint64_t, Symbol>& functions() const { return functions_; }

 private:
  const ElfImage& image_;
  const Decoder& decoder_;
  const Target& target_;
  std::map<std::uint64_t, Symbol> functions_;  // by address
  std::set<std::string> own_;
};

[[nodiscard]] std::string hex(std::uint64_t address);

}  // namespace xfm::audit
