#include "bench/tables.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

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

Table read_table(const fs::path& path) {
  std::ifstream in(path);
  return parse_table({std::istreambuf_iterator<char>(in), {}}, path.string());
}

// A row for each length and a column for each dispatcher; dispatchers without a column are left out.
Cycles by_kernel(const Table& table) {
  Cycles cycles;
  for (const tool::Function& f : tool::functions()) {
    if (f.kind != "dispatcher") continue;
    const std::string column = std::regex_replace(f.name, std::regex("Pack|Perm"), "CCS");
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
