// xfm bench: the benchmarks, one family or all.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <memory>
#include <span>

#include "bench/benchmark.h"
#include "tool/commands.h"
#include "tool/processor.h"

namespace xfm::tool {

namespace {

using namespace bench;

const Benchmark* const kBenchmarks[] = {&kComplex, &kReal, &kHartley, &kHadamard, &kDct4, &kDct4Stages, &kCpp};
const std::span<const Benchmark* const> kFamilies(kBenchmarks, 5);  // those of transforms

struct Settings {
  Outputs outputs;
  std::vector<std::string> from;
  Options all;
  int rounds = 0;
  std::vector<Options> one = std::vector<Options>(std::size(kBenchmarks));
};

void run_all(const Settings& settings) {
  Results results(settings.outputs);
  std::vector<Report> reports;
  if (!settings.from.empty()) {
    for (const std::string& file : settings.from)
      for (const Report& report : read_json_document(file)) reports.push_back(report.selected(settings.all.only));
  } else {
    require_avx();
    for (const Benchmark* family : kFamilies) {
      Options options = family->defaults;
      options.rivals = settings.all.rivals;
      options.copies = settings.all.copies;
      options.pace.rounds = settings.rounds > 0 ? settings.rounds : options.pace.rounds;
      for (Report& report : family->run(options)) reports.push_back(std::move(report));
    }
  }
  results.write(reports);
}

}  // namespace

void add_bench(CLI::App& app) {
  CLI::App* const bench = app.add_subcommand("bench", "Times the transforms beside FFTW, if that is installed");
  const auto settings = std::make_shared<Settings>();
  bench->footer("Without a family all transforms are timed, by their own settings; FAMILY --help tells these.\n"
                "Figures of one run compare; those of different runs do only on a quiet machine.");
  bench->require_subcommand(0, 1);
  add_options(*bench, settings->outputs);
  bench->add_option("--from", settings->from, "takes the results of earlier runs instead of measuring")->type_name("FILE.json");
  bench->add_option("--only", settings->all.only, "of earlier results: functions whose names match")->check(kRegex);
  bench->add_option("--rounds", settings->rounds, "rounds of every family, else those of its own settings")->check(CLI::Range(1, 100000));
  bench->add_flag("--copies", settings->all.copies, "the other copies of the library, too, as far as this processor runs them");
  bench->add_option("--rivals", settings->all.rivals, "plans of FFTW: all (MEASURE and PATIENT), measure or none")
      ->check(CLI::IsMember({"all", "measure", "none"}))->capture_default_str();
  for (size_t i = 0; i < std::size(kBenchmarks); ++i) {
    CLI::App* const family = bench->add_subcommand(kBenchmarks[i]->name, kBenchmarks[i]->help);
    add_options(*family, *kBenchmarks[i], settings->one[i]);
    add_options(*family, settings->outputs);
    family->callback([settings, i] {
      require_avx();
      Results results(settings->outputs);
      results.write(kBenchmarks[i]->run(settings->one[i]));
    });
  }
  bench->callback([settings, bench] {
    if (bench->get_subcommands().empty()) run_all(*settings);
  });
}

}  // namespace xfm::tool
