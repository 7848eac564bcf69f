#include "elf_image.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace xfm::audit {

ElfImage::ElfImage(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw BadImage(path + ": cannot be opened");
  file_.assign(std::istreambuf_iterator<char>(in), {});
  try {
    const auto header = records<Elf64_Ehdr>(0, sizeof(Elf64_Ehdr)).front();
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) throw BadImage("not an ELF file");
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_machine != EM_X86_64 || header.e_type != ET_DYN)
      throw BadImage("not a 64-bit x86 shared object");
    segments_ = records<Elf64_Phdr>(header.e_phoff, std::uint64_t{header.e_phnum} * sizeof(Elf64_Phdr));
    read_sections(header);
    for (const auto& section : sections_) {
      if (section.header.sh_type == SHT_SYMTAB) {
        has_symbol_table_ = true;
        read_symbols(section, symbols_);
      }
      if (section.header.sh_type == SHT_DYNSYM) read_symbols(section, dynamic_);
      if (section.header.sh_type == SHT_DYNAMIC) {
        dynamic_entries_ = records<Elf64_Dyn>(section.header.sh_offset, section.header.sh_size);
        const auto& strings = sections_.at(section.header.sh_link).header;
        const auto bytes = file_range(strings.sh_offset, strings.sh_size);
        dynamic_strings_.assign(bytes.begin(), bytes.end());
      }
    }
    while (!dynamic_entries_.empty() && dynamic_entries_.back().d_tag == DT_NULL) dynamic_entries_.pop_back();
    for (const auto& section : sections_)
      if (section.header.sh_type == SHT_RELA && (section.header.sh_flags & SHF_ALLOC)) read_slots(section);
  } catch (const BadImage& error) {
    throw BadImage(path + ": " + error.what());
  } catch (const std::out_of_range&) {
    throw BadImage(path + ": a section index is out of range");
  }
}

std::span<const std::uint8_t> ElfImage::file_range(std::uint64_t offset, std::uint64_t size) const {
  if (offset > file_.size() || size > file_.size() - offset) throw BadImage("truncated file");
  return std::span(file_).subspan(offset, size);
}

template <typename Record>
std::vector<Record> ElfImage::records(std::uint64_t offset, std::uint64_t size) const {
  const auto bytes = file_range(offset, size);
  std::vector<Record> out(size / sizeof(Record));
  std::memcpy(out.data(), bytes.data(), out.size() * sizeof(Record));
  return out;
}

std::string ElfImage::string_in(const Elf64_Shdr& table, std::uint64_t offset) const {
  if (offset >= table.sh_size) throw BadImage("a string lies outside its table");
  const auto bytes = file_range(table.sh_offset + offset, table.sh_size - offset);
  std::string out;
  for (const auto byte : bytes) {
    if (byte == 0) return out;
    out.push_back(static_cast<char>(byte));
  }
  throw BadImage("an unterminated string");
}

void ElfImage::read_sections(const Elf64_Ehdr& header) {
  const auto headers = records<Elf64_Shdr>(header.e_shoff, std::uint64_t{header.e_shnum} * sizeof(Elf64_Shdr));
  if (headers.empty()) throw BadImage("no section headers");
  const auto& names = headers.at(header.e_shstrndx);
  for (const auto& section : headers) sections_.push_back({string_in(names, section.sh_name), section});
}

void ElfImage::read_symbols(const Section& table, std::vector<Symbol>& out) const {
  const auto& strings = sections_.at(table.header.sh_link).header;
  for (const auto& raw : records<Elf64_Sym>(table.header.sh_offset, table.header.sh_size)) {
    out.push_back({.name = string_in(strings, raw.st_name),
                   .address = raw.st_value,
                   .size = raw.st_size,
                   .section = raw.st_shndx,
                   .type = static_cast<unsigned char>(ELF64_ST_TYPE(raw.st_info)),
                   .binding = static_cast<unsigned char>(ELF64_ST_BIND(raw.st_info)),
                   .visibility = static_cast<unsigned char>(ELF64_ST_VISIBILITY(raw.st_other))});
  }
}

void ElfImage::read_slots(const Section& relocations) {
  for (const auto& entry : records<Elf64_Rela>(relocations.header.sh_offset, relocations.header.sh_size)) {
    const auto type = ELF64_R_TYPE(entry.r_info);
    if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT && type != R_X86_64_64) continue;
    slots_[entry.r_offset] = dynamic_.at(ELF64_R_SYM(entry.r_info)).name;
  }
}

const Section* ElfImage::section_named(std::string_view name) const {
  for (const auto& section : sections_)
    if (section.name == name) return &section;
  return nullptr;
}

const Section* ElfImage::section_at(std::uint64_t address) const {
  for (const auto& section : sections_) {
    const auto& header = section.header;
    if ((header.sh_flags & SHF_ALLOC) && address >= header.sh_addr && address - header.sh_addr < header.sh_size)
      return &section;
  }
  return nullptr;
}

std::string ElfImage::dynamic_string(std::uint64_t offset) const {
  if (offset >= dynamic_strings_.size()) throw BadImage("a dynamic string lies outside its table");
  return dynamic_strings_.c_str() + offset;
}

std::optional<std::uint64_t> ElfImage::dynamic_value(Elf64_Sxword tag) const {
  for (const auto& entry : dynamic_entries_)
    if (entry.d_tag == tag) return entry.d_un.d_val;
  return std::nullopt;
}

std::span<const std::uint8_t> ElfImage::bytes_at(std::uint64_t address, std::uint64_t size) const {
  const auto* section = section_at(address);
  if (section == nullptr || section->header.sh_type == SHT_NOBITS) return {};
  const auto offset = address - section->header.sh_addr;
  if (size > section->header.sh_size - offset) return {};
  return file_range(section->header.sh_offset + offset, size);
}

std::optional<std::string> ElfImage::import_of_slot(std::uint64_t slot) const {
  const auto found = slots_.find(slot);
  if (found == slots_.end()) return std::nullopt;
  return found->second;
}

}  // namespace xfm::audit
