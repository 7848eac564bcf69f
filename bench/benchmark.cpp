#include "bench/benchmark.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <charconv>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>

#include "bench/chart.h"
#include "tool/processor.h"
#include "tool/program.h"
#include "xfm.h"

namespace xfm::bench {

namespace {

// Sizes in the form 2-16,32,64; empty where the text is something else.
std::vector<int> parse_sizes(const std::string& text) {
  std::vector<int> sizes;
  const char *at = text.data(), *const end = at + text.size();
  while (true) {
    int first = 0, last = 0;
    auto [next, error] = std::from_chars(at, end, first);
    if (error != std::errc()) return {};
    last = first;
    if (next != end && *next == '-') {
      const auto [behind, problem] = std::from_chars(next + 1, end, last);
      if (problem != std::errc()) return {};
      next = behind;
    }
    if (first < 0 || last < first || last > 1 << 20) return {};
    for (int n = first; n <= last; ++n) sizes.push_back(n);
    if (next == end) return sizes;
    if (*next != ',') return {};
    at = next + 1;
  }
}

CLI::Validator sizes_between(int least, int most) {
  const std::string range = std::to_string(least) + "-" + std::to_string(most);
  return {[=](const std::string& text) -> std::string {
            const std::vector<int> sizes = parse_sizes(text);
            for (const int n : sizes)
              if (n < least || n > most) return text + ": sizes are within " + range;
            return sizes.empty() ? text + " is no list of sizes, as " + range + " or " + std::to_string(least) + "," + std::to_string(most) : "";
          },
          "LIST"};
}

const CLI::Validator kAlignment([](const std::string& text) -> std::string {
  const std::vector<int> value = parse_sizes(text);
  const bool good = value.size() == 1 && value[0] >= 32 && value[0] <= 4096 && (value[0] & (value[0] - 1)) == 0;
  return good ? "" : text + " is no power of two from 32 to 4096";
}, "BYTES");

}  // namespace

const CLI::Validator kRegex([](const std::string& text) -> std::string {
  try {
    const std::regex expression(text);
    return "";
  } catch (const std::regex_error&) {
    return text + " is no regular expression";
  }
}, "REGEX");

bool Options::selects(const std::string& dispatcher) const { return matches(dispatcher, only); }

std::vector<int> Options::size_list() const { return parse_sizes(sizes); }

std::vector<tool::Library> Options::libraries() const {
  std::vector<tool::Library> all;
  all.emplace_back();
  const tool::Copy loaded = tool::loaded_copy();
  if (copies)
    for (const tool::Copy& copy : tool::copies())
      if (copy.level != loaded.level && copy.level <= tool::processor_level()) all.emplace_back(copy.name, copy.path);
  for (const std::string& path : against) all.emplace_back(std::filesystem::path(path).stem().string(), path);
  return all;
}

void add_options(CLI::App& app, const Benchmark& benchmark, Options& options) {
  options = benchmark.defaults;
  const auto [least, most] = benchmark.size_range;
  app.add_option("--only", options.only, "functions whose names match")->check(kRegex)->capture_default_str();
  app.add_option("--sizes", options.sizes, benchmark.size_words)->check(sizes_between(least, most))->capture_default_str();
  app.add_option("--rounds", options.pace.rounds, "rounds of every contestant; the median counts")->check(CLI::Range(1, 100000))->capture_default_str();
  app.add_option("--us", options.pace.microseconds, "microseconds of one measurement")->check(CLI::Range(1.0, 1e7))->capture_default_str();
  app.add_option("--rivals", options.rivals, "plans of FFTW: all (MEASURE and PATIENT), measure or none")
      ->check(CLI::IsMember({"all", "measure", "none"}))->capture_default_str();
  app.add_flag("--copies", options.copies, "the other copies of the library, too, as far as this processor runs them");
  if (benchmark.round_trips)
    app.add_flag("--round-trip", options.round_trip, "forward, then inverse on its result, instead of either by itself; FFTW likewise");
  app.add_option("--against", options.against, "other builds of the library, in the same rounds")->check(CLI::ExistingFile);
  app.add_option("--offset", options.offset, "bytes from an aligned address to the arrays")->check(CLI::Range(0, 4096))->capture_default_str();
  app.add_option("--align", options.alignment, "what the arrays' addresses are divisible by, before the offset")->check(kAlignment)->capture_default_str();
}

void add_options(CLI::App& app, Outputs& outputs) {
  app.add_option("--tsv", outputs.tsv, "writes the table with tabs")->type_name("FILE");
  app.add_option("--json", outputs.json, "writes the table and what it was measured on")->type_name("FILE");
  app.add_option("--plot", outputs.plot, "draws time by length (.svg or .png)")->type_name("FILE");
}

// A line a column, row and note, so that versions of a file can be compared.
std::string json_document(const std::vector<Report>& reports) {
  const nlohmann::ordered_json head = {{"program", "xfm bench"},
                                       {"processor", tool::processor_name()},
                                       {"library", xfmgenGetLibVersion()->name},
                                       {"copy", tool::loaded_copy().name}};
  std::string text = head.dump();
  text.back() = ',';
  text += "\n\"reports\": [";
  for (size_t i = 0; i < reports.size(); ++i) {
    const nlohmann::ordered_json report = reports[i].json();
    text += (i == 0 ? "\n{" : ",\n{") + ("\"benchmark\": " + report["benchmark"].dump());
    for (const char* list : {"columns", "rows", "notes"}) {
      text += std::string(",\n\"") + list + "\": [";
      for (size_t line = 0; line < report[list].size(); ++line) text += (line == 0 ? "\n" : ",\n") + report[list][line].dump();
      text += "]";
    }
    text += "}";
  }
  return text + "]}\n";
}

std::vector<Report> read_json_document(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error(path + ": cannot be opened");
  try {
    std::vector<Report> reports;
    const auto document = nlohmann::ordered_json::parse(in);
    for (const auto& report : document.at("reports")) reports.push_back(Report::from_json(report));
    return reports;
  } catch (const std::exception&) {
    throw std::runtime_error(path + ": holds no results of a benchmark");
  }
}

Results::Results(const Outputs& outputs) {
  if (!outputs.plot.empty()) format_ = tool::picture_format(outputs.plot);
  if (!outputs.tsv.empty()) tsv_ = std::make_unique<OutputFile>(outputs.tsv);
  if (!outputs.json.empty()) json_ = std::make_unique<OutputFile>(outputs.json);
  if (!outputs.plot.empty()) plot_ = std::make_unique<OutputFile>(outputs.plot);
}

void Results::write(const std::vector<Report>& reports) {
  std::string table;
  for (const Report& report : reports) table += (table.empty() ? "" : "\n") + report.tsv();
  if (tsv_ != nullptr) tsv_->write(table);
  if (json_ != nullptr) json_->write(json_document(reports));
  if (plot_ != nullptr) plot_->write(draw_chart(reports, format_));
  for (const auto& file : {&tsv_, &json_, &plot_})
    if (*file != nullptr) (*file)->commit();
}

void add_library_columns(std::vector<Column>& columns, const std::vector<tool::Library>& libraries) {
  columns.push_back({libraries[0].name() + " ns", 2, true});
  for (size_t i = 1; i < libraries.size(); ++i) {
    columns.push_back({libraries[i].name() + " ns", 2, true});
    columns.push_back({"x " + libraries[i].name(), 3});
  }
}

void add_library_cells(Row& row, const std::vector<double>& ns) {
  row.emplace_back(ns[0]);
  for (size_t i = 1; i < ns.size(); ++i) {
    row.emplace_back(ns[i]);
    row.emplace_back(ns[0] / ns[i]);
  }
}

void note_copies(Report& report, const std::string& function, const std::vector<tool::Library>& libraries) {
  constexpr double kNoise = 1.02;  // what the medians of two equal libraries differ by
  const auto column = [&](const std::string& library) {
    const auto found = std::ranges::find(report.columns(), library + " ns", &Column::name);
    return static_cast<size_t>(found - report.columns().begin());
  };
  const size_t base = column("base");
  if (base == report.columns().size()) return;
  for (const tool::Library& library : libraries) {
    if (library.name() == "base") continue;
    GeometricMean mean;
    std::string slower;
    for (const Row& row : report.rows()) {
      if (std::get<std::string>(row[0]) != function) continue;
      const double ratio = std::get<double>(row[column(library.name())]) / std::get<double>(row[base]);
      mean.add(ratio);
      if (ratio > kNoise) slower += (slower.empty() ? " " : ", ") + cell_text(std::get<double>(row[1]), 0) + " (" + cell_text(ratio, 2) + ")";
    }
    report.note(function + ", " + library.name() + " beside base: " + cell_text(mean.value(), 3) + ", slower at" + (slower.empty() ? " none" : slower));
  }
}

int run_benchmark(const Benchmark& benchmark, int argc, char** argv) {
  CLI::App app(benchmark.help);
  Options options;
  Outputs outputs;
  add_options(app, benchmark, options);
  add_options(app, outputs);
  app.callback([&] {
    tool::require_avx();
    Results results(outputs);
    results.write(benchmark.run(options));
  });
  return tool::run(app, argc, argv);
}

}  // namespace xfm::bench
