// A shared object as its file tells it: sections, program headers, dynamic entries and symbols, read once and
// checked for range. Nothing here knows what the library should look like.
#pragma once

#include <elf.h>

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace xfm::audit {

struct BadImage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Section {
  std::string name;
  Elf64_Shdr header;
};

struct Symbol {
  std::string name;
  std::uint64_t address = 0;
  std::uint64_t size = 0;
  std::uint16_t section = SHN_UNDEF;
  unsigned char type = STT_NOTYPE;
  unsigned char binding = STB_LOCAL;
  unsigned char visibility = STV_DEFAULT;

  [[nodiscard]] bool is_defined_function() const {
    return (type == STT_FUNC || type == STT_GNU_IFUNC) && section != SHN_UNDEF;
  }
};

class ElfImage {
 public:
  explicit ElfImage(const std::string& path);

  [[nodiscard]] const std::vector<Section>& sections() const { return sections_; }
  [[nodiscard]] const std::vector<Elf64_Phdr>& segments() const { return segments_; }
  [[nodiscard]] const std::vector<Symbol>& symbols() const { return symbols_; }          // .symtab
  [[nodiscard]] const std::vector<Symbol>& dynamic_symbols() const { return dynamic_; }  // .dynsym
  [[nodiscard]] const std::vector<Elf64_Dyn>& dynamic_entries() const { return dynamic_entries_; }
  [[nodiscard]] bool has_symbol_table() const { return has_symbol_table_; }

  [[nodiscard]] const Section* section_named(std::string_view name) const;
  [[nodiscard]] const Section* section_at(std::uint64_t address) const;
  [[nodiscard]] std::string dynamic_string(std::uint64_t offset) const;
  [[nodiscard]] std::optional<std::uint64_t> dynamic_value(Elf64_Sxword tag) const;

  // Bytes of the image at a virtual address; empty when the file does not hold all of them.
  [[nodiscard]] std::span<const std::uint8_t> bytes_at(std::uint64_t address, std::uint64_t size) const;

  // Name of the imported function whose address the loader writes at `slot`, if the slot has one.
  [[nodiscard]] std::optional<std::string> import_of_slot(std::uint64_t slot) const;
  // All slots that a relocation fills with the address of a named symbol.
  [[nodiscard]] const std::map<std::uint64_t, std::string>& relocated_symbols() const { return slots_; }

 private:
  [[nodiscard]] std::span<const std::uint8_t> file_range(std::uint64_t offset, std::uint64_t size) const;
  template <typename Record>
  [[nodiscard]] std::vector<Record> records(std::uint64_t offset, std::uint64_t size) const;
  [[nodiscard]] std::string string_in(const Elf64_Shdr& table, std::uint64_t offset) const;
  void read_sections(const Elf64_Ehdr& header);
  void read_symbols(const Section& table, std::vector<Symbol>& out) const;
  void read_slots(const Section& relocations);

  std::vector<std::uint8_t> file_;
  std::vector<Section> sections_;
  std::vector<Elf64_Phdr> segments_;
  std::vector<Symbol> symbols_;
  std::vector<Symbol> dynamic_;
  std::vector<Elf64_Dyn> dynamic_entries_;
  std::map<std::uint64_t, std::string> slots_;
  std::string dynamic_strings_;
  bool has_symbol_table_ = false;
};

}  // namespace xfm::audit
