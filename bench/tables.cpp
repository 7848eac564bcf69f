#include "bench/tables.h"

#include <fstream>
#include <iterator>
#include <sstream>

#include "generator/core.h"
#include "tool/catalogue.h"

namespace xfm::bench {

namespace fs = std::filesystem;

namespace {

constexpr const char kFloors[] =
#include "floors.inc"
    ;
constexpr const char kChains[] =
#include "chains.inc"
    ;
constexpr const char kHadamardFloors[] =
#include "wht_floors.inc"
    ;

constexpr const char kTargets[] =
#include "targets.inc"
    ;
constexpr const char* kComplexOperations[] = {
#include "pgendftfwd32fcg9.inc"
    ,
#include "pgendftfwd64fcg9.inc"
    ,
#include "pgendftinv32fcg9.inc"
    ,
#include "pgendftinv64fcg9.inc"
};
constexpr const char* kRealOperations[] = {
#include "pgenrdftfwdccs32f.inc"
    ,
#include "pgenrdftfwdccs64f.inc"
    ,
#include "pgenrdftinvccs32f.inc"
    ,
#include "pgenrdftinvccs64f.inc"
    ,
#include "pgenhartley32f.inc"
    ,
#include "pgenhartley64f.inc"
};
constexpr const char kDct4Operations[] =
#include "dct4_counts.inc"
    ;

// Bits of the widest registers of a copy, named by its level; 0 for the base and for libraries of other names.
int widest(const std::string& copy) {
  const Table targets = parse_table(kTargets, "targets.tsv");
  for (const TableRow& row : targets.rows())
    if (row["level"] == copy) return row.integer("widest");
  return 0;
}

// What a number of operations on elements keeps of the core, all registers full.
class FullRegisters {
 public:
  explicit FullRegisters(int bits) : bits_(bits) {}
  int of(int elements, bool single) const {
    const int lanes = bits_ / (single ? 32 : 64);
    return (elements + lanes - 1) / lanes;
  }

 private:
  int bits_;
};

// Of xfmgDFTFwd_CToC_15_32fc the 15.
int length_of(const std::string& kernel) { return std::stoi(split(kernel, '_').at(2)); }

// A sum that rounds to single and one that rounds to double do not share a register.
PortUse complex_use(const TableRow& row, const FullRegisters& registers) {
  const bool single = row["name"].ends_with("32fc");
  const int components = 2 * length_of(row["name"]);
  PortUse use;
  use.adds = registers.of(row.integer("A"), single);
  use.muls = registers.of(row.integer("M") + components, single);  // the scale
  use.loads = use.stores = registers.of(components, single);
  return use;
}

PortUse real_use(const TableRow& row, const FullRegisters& registers) {
  const bool single = row["name"].ends_with("32f");
  const auto sum = [&](std::initializer_list<const char*> columns) {
    int all = 0;
    for (const char* column : columns) all += row.integer(column);
    return all;
  };
  PortUse use;
  use.adds = registers.of(sum({"vaddss", "vsubss"}), true) + registers.of(sum({"vaddsd", "vsubsd"}), false);
  use.muls = registers.of(sum({"vmulss"}), true) + registers.of(sum({"vmulsd"}), false);
  use.converts = registers.of(sum({"vcvtss2sd"}), false) + registers.of(sum({"vcvtsd2ss"}), false);
  use.loads = registers.of(sum({"src_loads"}), single);
  use.stores = registers.of(sum({"dst_stores"}), single);
  return use;
}

Table read_table(const fs::path& path) {
  std::ifstream in(path);
  return parse_table({std::istreambuf_iterator<char>(in), {}}, path.string());
}

// The three layouts share a column, under the name of CCS.
std::string one_layout(std::string name) {
  for (const char* const layout : {"Pack", "Perm"})
    if (const size_t at = name.find(layout); at != std::string::npos) name.replace(at, 4, "CCS");
  return name;
}

// A row for each length and a column for each dispatcher; dispatchers without a column are left out.
Cycles by_kernel(const Table& table) {
  Cycles cycles;
  for (const tool::Function& f : tool::functions()) {
    if (f.kind != "dispatcher") continue;
    const std::string column = one_layout(f.name);
    for (const TableRow& row : table.rows())
      if (row.has(column)) cycles[f.family + "_" + row["N"] + "_" + f.type] = std::stod(row[column]);
  }
  return cycles;
}

fs::path reports_folder() { return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "reports"; }

}  // namespace

Table parse_table(const std::string& text, const std::string& name) {
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line) && (line.empty() || line[0] == '#')) {
  }
  return Table::parse(text, name, split(line, '\t'));
}

Cycles floors() { return by_kernel(parse_table(kFloors, "floors.tsv")); }
Cycles chains() { return by_kernel(parse_table(kChains, "chains.tsv")); }

Cycles wide_floors(const std::string& copy) {
  Cycles cycles;
  if (widest(copy) == 0) return cycles;
  const FullRegisters registers(widest(copy));
  for (const char* text : kComplexOperations) {
    const Table table = parse_table(text, "operations of complex kernels");
    for (const TableRow& row : table.rows()) cycles[row["name"]] = complex_use(row, registers).cycles();
  }
  for (const char* text : kRealOperations) {
    const Table table = parse_table(text, "operations of real kernels");
    for (const TableRow& row : table.rows()) cycles[row["name"]] = real_use(row, registers).cycles();
  }
  return cycles;
}

double wide_hadamard_floor(const std::string& copy, int order, bool single) {
  if (widest(copy) == 0) return 0;
  const FullRegisters registers(widest(copy));
  PortUse use;
  use.adds = registers.of(order << order, single);
  use.muls = use.loads = use.stores = registers.of(1 << order, single);
  return use.cycles();
}

double wide_dct4_floor(const std::string& copy, int length, bool single) {
  if (widest(copy) == 0) return 0;
  const FullRegisters registers(widest(copy));
  const Table table = parse_table(kDct4Operations, "operations of the DCT-IV");
  for (const TableRow& row : table.rows()) {
    const bool whole = row["kernel"] == "rotation" || row["kernel"] == "lifting" || row["kernel"] == "straight";
    if (!whole || row.integer("length") != length || row["precision"] != (single ? "32f" : "64f")) continue;
    PortUse use;
    use.adds = registers.of(row.integer("additions"), single);
    use.muls = registers.of(row.integer("multiplications"), single);
    use.loads = use.stores = registers.of(length, single);
    return use.cycles();
  }
  return 0;
}

Table hadamard_floors() { return parse_table(kHadamardFloors, "wht_floors.tsv"); }

Cycles ports() {
  Cycles cycles;
  if (!fs::is_directory(reports_folder())) return cycles;
  for (const auto& entry : fs::directory_iterator(reports_folder())) {
    const std::string file = entry.path().filename();
    if (!file.starts_with("pgendft") || !file.ends_with(".tsv")) continue;
    const Table report = read_table(entry.path());
    for (const TableRow& row : report.rows()) cycles[row["name"]] = std::stod(row["port cycles"]);
  }
  return cycles;
}

std::map<std::string, TableRow> bodies() {
  const fs::path path = reports_folder() / "audit_bodies.tsv";
  std::map<std::string, TableRow> bodies;
  if (!fs::exists(path)) return bodies;
  const Table report = read_table(path);
  for (const TableRow& row : report.rows()) bodies.emplace(row["function"], row);
  return bodies;
}

}  // namespace xfm::bench
