// xfm_audit: reads a built shared object and says which of its promises the machine code does not keep.
// Exit status 0: all kept; 1: findings; 2: the audit could not be made.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "counts.h"
#include "generator/output.h"
#include "report.h"

namespace {

using namespace xfm::audit;

constexpr const char* kUsage =
    "usage: xfm_audit check LIBRARY --soname NAME --exports FILE [--needed NAME]... [--import NAME]...\n"
    "                 [--counts FILE]... [--report FILE]\n"
    "       xfm_audit report LIBRARY --report FILE [--joined FILE --join GENERATOR_REPORT...]\n"
    "A report holds a row for every body; joined, the generator's rows with the counts of the machine code.\n";

struct Options {
  std::string command, library, exports, report, joined;
  std::vector<std::string> counts, to_join;
  Expected expected;

  [[nodiscard]] bool complete() const {
    if (joined.empty() != to_join.empty()) return false;
    if (command == "report") return !report.empty();
    return command == "check" && !expected.soname.empty() && !exports.empty();
  }
};

std::optional<Options> parse(int argc, char** argv) {
  if (argc < 3) return std::nullopt;
  Options options{.command = argv[1],
                  .library = argv[2],
                  .exports = {},
                  .report = {},
                  .joined = {},
                  .counts = {},
                  .to_join = {},
                  .expected = {}};
  for (int i = 3; i + 1 < argc; i += 2) {
    const std::string name = argv[i], value = argv[i + 1];
    if (name == "--soname") options.expected.soname = value;
    else if (name == "--exports") options.exports = value;
    else if (name == "--needed") options.expected.needed.insert(value);
    else if (name == "--import") options.expected.imports.insert(value);
    else if (name == "--counts") options.counts.push_back(value);
    else if (name == "--join") options.to_join.push_back(value);
    else if (name == "--joined") options.joined = value;
    else if (name == "--report") options.report = value;
    else return std::nullopt;
  }
  if (argc % 2 == 0 || !options.complete()) return std::nullopt;
  return options;
}

// The first column of a table, below its header.
std::set<std::string> read_names(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw BadTable(path + ": cannot be opened");
  std::set<std::string> names;
  bool in_table = false;
  for (std::string row; std::getline(in, row);) {
    if (row.empty() || row.starts_with('#')) continue;
    const auto name = split(row, '\t').front();
    if (!in_table && name != "name") throw BadTable(path + ": the first column must be 'name'");
    if (in_table && !names.insert(name).second) throw BadTable(path + ": " + name + " stands twice");
    in_table = true;
  }
  if (names.empty()) throw BadTable(path + ": no name");
  return names;
}

template <typename Write>
void save(const std::string& path, Write write) {
  std::ostringstream out;
  write(out);
  xfm::write_file(path, out.str());
}

void print_summary(const Options& options, const AuditResult& result, const std::vector<CountTable>& tables,
                   std::chrono::duration<double> taken) {
  std::size_t kernels = 0, rows = 0;
  for (const auto& body : result.bodies) kernels += body.promise.has_value();
  for (const auto& table : tables) rows += table.rows.size();
  std::cout << options.library << ": " << result.findings.size() << " findings; " << result.bodies.size()
            << " functions, " << kernels << " of them kernels and twins, " << options.expected.exports.size()
            << " exports, " << rows << " rows of counts; " << taken.count() << " s\n";
}

int run(Options options) {
  const auto start = std::chrono::steady_clock::now();
  const bool judged = options.command == "check";
  std::vector<CountTable> tables;
  if (judged) options.expected.exports = read_names(options.exports);
  for (const auto& path : options.counts) tables.push_back(read_count_table(path));
  auto result = audit(ElfImage(options.library), options.expected);
  compare_counts(tables, result.bodies, result.findings);
  if (!options.report.empty()) save(options.report, [&](std::ostream& out) { write_bodies(out, result.bodies); });
  if (!options.joined.empty())
    save(options.joined, [&](std::ostream& out) { write_joined(out, options.to_join, result.bodies); });
  if (!judged) return 0;
  for (const auto& finding : result.findings)
    std::cout << finding.rule << '\t' << finding.where << '\t' << finding.detail << '\n';
  print_summary(options, result, tables, std::chrono::steady_clock::now() - start);
  std::cout.flush();
  if (!std::cout) throw std::runtime_error("standard output: cannot be written");
  return result.findings.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const auto options = parse(argc, argv);
  if (!options) {
    std::cerr << kUsage;
    return 2;
  }
  try {
    return run(*options);
  } catch (const std::exception& error) {
    std::cerr << "xfm_audit: " << error.what() << '\n';
    return 2;
  }
}
