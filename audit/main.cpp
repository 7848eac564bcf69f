// xfm_audit: reads a built shared object and says which of its promises the machine code does not keep.
// Exit status 0: all kept; 1: findings; 2: the audit could not be made.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "counts.h"
#include "report.h"

namespace {

using namespace xfm::audit;

constexpr const char* kUsage =
    "usage: xfm_audit LIBRARY --soname NAME --exports FILE [--needed NAME]... [--import NAME]...\n"
    "                 [--counts FILE]... [--report FILE]\n";

struct Options {
  std::string library, exports, report;
  std::vector<std::string> counts;
  Expected expected;
};

std::optional<Options> parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (!name.starts_with("--")) {
      if (!options.library.empty()) return std::nullopt;
      options.library = name;
      continue;
    }
    if (++i == argc) return std::nullopt;
    const std::string value = argv[i];
    if (name == "--soname") options.expected.soname = value;
    else if (name == "--exports") options.exports = value;
    else if (name == "--needed") options.expected.needed.insert(value);
    else if (name == "--import") options.expected.imports.insert(value);
    else if (name == "--counts") options.counts.push_back(value);
    else if (name == "--report") options.report = value;
    else return std::nullopt;
  }
  if (options.library.empty() || options.expected.soname.empty() || options.exports.empty()) return std::nullopt;
  return options;
}

std::set<std::string> read_names(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw BadTable(path + ": cannot be opened");
  std::set<std::string> names;
  for (std::string name; std::getline(in, name);)
    if (!name.empty() && !name.starts_with('#')) names.insert(name);
  if (names.empty()) throw BadTable(path + ": no name");
  return names;
}

void save_report(const std::string& path, const std::vector<BodySummary>& bodies) {
  const auto part = path + ".part";
  std::ofstream out(part);
  write_bodies(out, bodies);
  out.close();
  if (!out || std::rename(part.c_str(), path.c_str()) != 0) throw BadTable(path + ": cannot be written");
}

int run(Options options) {
  const auto start = std::chrono::steady_clock::now();
  options.expected.exports = read_names(options.exports);
  std::vector<CountTable> tables;
  for (const auto& path : options.counts) tables.push_back(read_count_table(path));
  auto result = audit(ElfImage(options.library), options.expected);
  compare_counts(tables, result.bodies, result.findings);
  if (!options.report.empty()) save_report(options.report, result.bodies);
  for (const auto& finding : result.findings)
    std::cout << finding.rule << '\t' << finding.where << '\t' << finding.detail << '\n';
  int kernels = 0, counted = 0;
  for (const auto& body : result.bodies) kernels += body.promise.has_value();
  for (const auto& table : tables) counted += static_cast<int>(table.rows.size());
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::cout << options.library << ": " << result.findings.size() << " findings; " << result.bodies.size()
            << " functions, " << kernels << " of them kernels and twins, " << options.expected.exports.size()
            << " exports, " << counted << " rows of counts; " << taken.count() << " s\n";
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
