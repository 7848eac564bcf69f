// Rules on the shared object as a whole, read from its dynamic section, symbols, sections and segments.
#include <algorithm>

#include "rules.h"

namespace xfm::audit {

namespace {

constexpr const char* kLibrary = "library";

void check_symbols(const ElfImage& image, const Surroundings& around, const Expected&, Findings& findings) {
  if (!image.has_symbol_table() || around.functions().empty())
    findings.push_back({"symbols", kLibrary, "no symbol table: internal functions cannot be found"});
}

void check_soname(const ElfImage& image, const Surroundings&, const Expected& expected, Findings& findings) {
  const auto offset = image.dynamic_value(DT_SONAME);
  const auto name = offset ? image.dynamic_string(*offset) : std::string("none");
  if (name != expected.soname) findings.push_back({"soname", kLibrary, name + " instead of " + expected.soname});
}

void compare_sets(const char* rule, const std::set<std::string>& found, const std::set<std::string>& due,
                  Findings& findings) {
  for (const auto& name : found)
    if (!due.contains(name)) findings.push_back({rule, name, "not in the list"});
  for (const auto& name : due)
    if (!found.contains(name)) findings.push_back({rule, name, "missing"});
}

void check_needed(const ElfImage& image, const Surroundings&, const Expected& expected, Findings& findings) {
  std::set<std::string> found;
  for (const auto& entry : image.dynamic_entries())
    if (entry.d_tag == DT_NEEDED) found.insert(image.dynamic_string(entry.d_un.d_val));
  compare_sets("needed", found, expected.needed, findings);
}

void check_exports(const ElfImage& image, const Surroundings&, const Expected& expected, Findings& findings) {
  std::set<std::string> found;
  for (const auto& symbol : image.dynamic_symbols()) {
    if (symbol.section == SHN_UNDEF || symbol.binding == STB_LOCAL || symbol.visibility == STV_HIDDEN) continue;
    if (symbol.section == SHN_ABS && symbol.type == STT_OBJECT) continue;  // the name of a symbol version
    found.insert(symbol.name);
    if (symbol.type != STT_FUNC) findings.push_back({"exports", symbol.name, "not a function"});
  }
  compare_sets("exports", found, expected.exports, findings);
}

// The start files of the toolchain leave these weak and unresolved.
bool is_toolchain_import(const Symbol& symbol) {
  constexpr std::string_view kNames[] = {"__cxa_finalize", "__gmon_start__", "_ITM_deregisterTMCloneTable",
                                         "_ITM_registerTMCloneTable"};
  return symbol.binding == STB_WEAK && std::ranges::find(kNames, symbol.name) != std::end(kNames);
}

void check_imports(const ElfImage& image, const Surroundings&, const Expected& expected, Findings& findings) {
  for (const auto& symbol : image.dynamic_symbols()) {
    if (symbol.section != SHN_UNDEF || symbol.name.empty() || is_toolchain_import(symbol)) continue;
    if (!expected.imports.contains(symbol.name)) findings.push_back({"imports", symbol.name, "not in the list"});
  }
}

void check_writable(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  constexpr std::string_view kRelocated[] = {".dynamic",    ".got",       ".got.plt", ".data.rel.ro",
                                             ".init_array", ".fini_array"};  // the last two have a rule of their own
  for (const auto& section : image.sections()) {
    const auto& header = section.header;
    if (!(header.sh_flags & SHF_WRITE) || !(header.sh_flags & SHF_ALLOC) || header.sh_size == 0) continue;
    if (header.sh_flags & SHF_TLS) continue;
    if (std::ranges::find(kRelocated, section.name) == std::end(kRelocated))
      findings.push_back({"writable", section.name, std::to_string(header.sh_size) + " writable bytes"});
  }
  for (const auto& segment : image.segments())
    if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) && (segment.p_flags & PF_X))
      findings.push_back({"writable", kLibrary, "a segment both writable and executable"});
}

void check_constructors(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  constexpr std::pair<Elf64_Sxword, const char*> kTags[] = {{DT_INIT, "DT_INIT"},
                                                            {DT_FINI, "DT_FINI"},
                                                            {DT_INIT_ARRAY, "DT_INIT_ARRAY"},
                                                            {DT_FINI_ARRAY, "DT_FINI_ARRAY"},
                                                            {DT_PREINIT_ARRAY, "DT_PREINIT_ARRAY"}};
  for (const auto& [tag, name] : kTags)
    if (image.dynamic_value(tag)) findings.push_back({"constructors", name, "code that runs at load or unload time"});
  for (const auto& symbol : image.symbols())
    if (symbol.type == STT_GNU_IFUNC)
      findings.push_back({"constructors", symbol.name, "resolved by code at load time"});
}

// References among the library's own functions are settled when it is linked: no relocation names one of them.
void check_binding(const ElfImage& image, const Surroundings& around, const Expected&, Findings& findings) {
  for (const auto& [slot, symbol] : image.relocated_symbols())
    if (around.is_own(symbol)) findings.push_back({"binding", symbol, "bound by the loader, at " + hex(slot)});
}

// What the loader has relocated is read-only from then on, all of it before the first call.
void check_protection(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  const bool now = (image.dynamic_value(DT_FLAGS).value_or(0) & DF_BIND_NOW) != 0 ||
                   (image.dynamic_value(DT_FLAGS_1).value_or(0) & DF_1_NOW) != 0 || image.dynamic_value(DT_BIND_NOW);
  if (!now) findings.push_back({"protection", kLibrary, "functions are bound at their first call"});
  for (const auto& section : image.sections()) {
    const auto& header = section.header;
    if (!(header.sh_flags & SHF_WRITE) || !(header.sh_flags & SHF_ALLOC) || header.sh_size == 0) continue;
    const bool covered = std::ranges::any_of(image.segments(), [&](const Elf64_Phdr& segment) {
      return segment.p_type == PT_GNU_RELRO && header.sh_addr >= segment.p_vaddr &&
             header.sh_addr + header.sh_size <= segment.p_vaddr + segment.p_memsz;
    });
    const bool other_rule = section.name == ".data" || section.name == ".bss" || (header.sh_flags & SHF_TLS);
    if (!covered && !other_rule) findings.push_back({"protection", section.name, "stays writable"});
  }
}

void check_thread_storage(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  for (const auto& segment : image.segments())
    if (segment.p_type == PT_TLS) findings.push_back({"thread-storage", kLibrary, "thread-local data"});
}

void check_text_relocations(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  const bool flagged = (image.dynamic_value(DT_FLAGS).value_or(0) & DF_TEXTREL) != 0;
  if (flagged || image.dynamic_value(DT_TEXTREL))
    findings.push_back({"text-relocations", kLibrary, "the loader must patch code"});
}

void check_executable_stack(const ElfImage& image, const Surroundings&, const Expected&, Findings& findings) {
  for (const auto& segment : image.segments())
    if (segment.p_type == PT_GNU_STACK && !(segment.p_flags & PF_X)) return;
  findings.push_back({"executable-stack", kLibrary, "asks for an executable stack"});
}

// Between functions there is padding and nothing else: no code escapes the rules of bodies.
void check_coverage(const ElfImage& image, const Surroundings& around, const Expected&, Findings& findings) {
  if (around.functions().empty()) return;  // the rule on symbols speaks
  const Decoder decoder;
  for (const auto& section : image.sections()) {
    const auto& header = section.header;
    if (!(header.sh_flags & SHF_EXECINSTR) || section.name.starts_with(".plt")) continue;
    const auto end = header.sh_addr + header.sh_size;
    std::uint64_t covered = header.sh_addr;
    const auto check_gap = [&](std::uint64_t to) {
      if (to <= covered) return;
      for (const auto& instruction : decoder.sweep(image.bytes_at(covered, to - covered), covered))
        if (!instruction.is_padding())
          return findings.push_back(
              {"coverage", section.name, "code at " + hex(instruction.address) + " outside any function"});
    };
    for (const auto& [address, function] : around.functions()) {
      if (address < header.sh_addr || address >= end) continue;
      check_gap(address);
      covered = std::max(covered, address + function.size);
    }
    check_gap(end);
  }
}

// A kernel of the twin class has its twin, hidden, and a twin has its kernel.
void check_twins(const ElfImage& image, const Surroundings& around, const Expected&, Findings& findings) {
  for (const auto& symbol : image.symbols()) {
    if (!symbol.is_defined_function()) continue;
    const auto promise = promise_of(symbol.name);
    if (symbol.name.starts_with("owng") && symbol.name.ends_with("_unaligned") && !promise)
      findings.push_back({"twins", symbol.name, "a twin that no kernel has"});
    if (!promise || promise->gate != Gate::Gate16Twin || promise->is_twin) continue;
    if (!around.is_own(twin_name(symbol.name))) findings.push_back({"twins", symbol.name, "its twin is missing"});
  }
}

// One address, one function: folded functions would leave a body without an audit of its own.
void check_folding(const ElfImage& image, const Surroundings& around, const Expected&, Findings& findings) {
  for (const auto& symbol : image.symbols())
    if (symbol.is_defined_function() && around.name_at(symbol.address) != symbol.name)
      findings.push_back({"folding", symbol.name, "shares its code with " + around.name_at(symbol.address)});
}

}  // namespace

std::vector<LibraryRule> library_rules() {
  return {
      {"symbols", check_symbols},
      {"soname", check_soname},
      {"needed", check_needed},
      {"exports", check_exports},
      {"imports", check_imports},
      {"writable", check_writable},
      {"constructors", check_constructors},
      {"binding", check_binding},
      {"protection", check_protection},
      {"thread-storage", check_thread_storage},
      {"text-relocations", check_text_relocations},
      {"executable-stack", check_executable_stack},
      {"coverage", check_coverage},
      {"twins", check_twins},
      {"folding", check_folding},
  };
}

}  // namespace xfm::audit
