// A benchmark as the programs of this folder and `xfm bench` run it: all take the same options.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/race.h"
#include "bench/report.h"
#include "generator/output.h"
#include "tool/copies.h"
#include "tool/picture.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

namespace xfm::bench {

struct Options {
  std::string only = ".";  // a regular expression
  std::string sizes;
  Pace pace = {};
  std::string rivals = "all";
  std::vector<std::string> against = {};
  bool copies = false;
  bool round_trip = false;  // forward and then inverse on the result
  size_t offset = 0, alignment = 64;

  [[nodiscard]] bool selects(const std::string& dispatcher) const;
  [[nodiscard]] std::vector<int> size_list() const;
  // The library in use first, then the others to be timed with it.
  [[nodiscard]] std::vector<tool::Library> libraries() const;
};

struct Benchmark {
  const char* name;
  const char* help;
  const char* size_words;         // what --sizes counts
  std::pair<int, int> size_range;
  Options defaults;
  std::vector<Report> (*run)(const Options& options);
  bool round_trips = false;       // takes --round-trip
};

extern const Benchmark kComplex, kReal, kHartley, kDft, kHadamard, kDct4, kDct4Stages, kCpp;

// Where results go besides standard output.
struct Outputs {
  std::string tsv, json, plot;
};

// The files, opened before anything is measured, so that a name that cannot be written costs no minutes.
class Results {
 public:
  explicit Results(const Outputs& outputs);
  void write(const std::vector<Report>& reports);

 private:
  std::unique_ptr<OutputFile> tsv_, json_, plot_;
  tool::PictureFormat format_ = tool::PictureFormat::Svg;
};

extern const CLI::Validator kRegex;
void add_options(CLI::App& app, const Benchmark& benchmark, Options& options);
void add_options(CLI::App& app, Outputs& outputs);

// A document of all reports with what they were measured on, and back.
std::string json_document(const std::vector<Report>& reports);
std::vector<Report> read_json_document(const std::string& path);

// "ns" of the library in use, named by its copy, then of the others, each with the ratio to it.
void add_library_columns(std::vector<Column>& columns, const std::vector<tool::Library>& libraries);
void add_library_cells(Row& row, const std::vector<double>& ns);

// A note on each copy beside the base, where both were measured: the geometric mean of its time over the base's and the
// lengths at which it is slower.
void note_copies(Report& report, const std::string& function, const std::vector<tool::Library>& libraries);

// The main of a program for one benchmark.
int run_benchmark(const Benchmark& benchmark, int argc, char** argv);

}  // namespace xfm::bench
