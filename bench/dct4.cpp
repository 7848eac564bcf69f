// The DCT-IV of the lengths 2^1 to 2^25 against FFTW's own (REDFT11) and against FFTW's complex transform of half the
// length (dct4_rival.h), one thread. Every measurement begins with calls that are not timed, so that the caches hold what
// the contestant uses. Results are compared before any timing. A copy has a floor for the lengths that are one straight line: the
// operations in registers that are always full, as wide as its row in plans/targets.tsv has them, at the clock of the run.
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>

#include "bench/benchmark.h"
#include "bench/dct4_rival.h"
#include "bench/fftw.h"
#include "bench/tables.h"
#include "xfm.h"

namespace xfm::bench {

namespace {

using tool::Library;

// A state of one copy of the library.
template <class T>
class Transform {
 public:
  Transform(const Library& library, const std::string& type, int n)
      : free_(library.find<XfmStatus(void*)>("xfmgDCT4Free_" + type)), call_(library.find<Call>("xfmgDCT4_" + type)) {
    if (library.find<XfmStatus(void**, int)>("xfmgDCT4InitAlloc_" + type)(&state_, n) != xfmStatusOk)
      throw std::runtime_error("no memory for a DCT-IV of " + std::to_string(n) + " points");
  }
  ~Transform() { free_(state_); }
  Transform(const Transform&) = delete;
  void run(const T* src, T* dst) const { call_(src, dst, state_); }

 private:
  using Call = XfmStatus(const T*, T*, void*);
  void* state_ = nullptr;
  XfmStatus (*free_)(void*);
  Call* call_;
};

template <class T>
void compare(const T* ours, const T* theirs, double factor, int n, const std::string& what) {
  double square = 0, norm = 0;
  for (int i = 0; i < n; ++i) {
    const double difference = double(ours[i]) - factor * theirs[i];
    square += difference * difference;
    norm += double(ours[i]) * ours[i];
  }
  if (!(std::sqrt(square / norm) < (sizeof(T) == 4 ? 1e-5 : 1e-13)))
    throw std::runtime_error("the DCT-IV of " + std::to_string(n) + " points differs from " + what);
}

template <class T>
void measure(const std::string& type, int n, const Options& options, const std::vector<Library>& libraries, Report& report) {
  const size_t bytes = n * sizeof(T) + options.offset + options.alignment;
  Memory memory(5 * bytes);
  T *x, *y, *r, *p, *q;
  for (T** array : {&x, &y, &r, &p, &q}) *array = memory.array<T>(n, options.offset, options.alignment);
  std::vector<std::unique_ptr<Transform<T>>> transforms;
  std::vector<Calls> calls;
  for (const Library& library : libraries) {
    transforms.push_back(std::make_unique<Transform<T>>(library, type, n));
    calls.push_back([t = transforms.back().get(), x, y](long count) { for (; count > 0; --count) t->run(x, y); });
  }
  std::unique_ptr<HalfLength<T>> half;
  std::unique_ptr<FftwPlan<T>> dct;
  const bool rivals = options.rivals != "none" && HalfLength<T>::runs_here();
  if (rivals) {
    Fftw<T>::get().set_timelimit(10);
    half = std::make_unique<HalfLength<T>>(n);
    dct = std::make_unique<FftwPlan<T>>(Fftw<T>::get().plan_r2r_1d(n, p, q, kFftwRedft11, kFftwMeasure));
    calls.push_back([&, x, r](long count) { for (; count > 0; --count) half->run(x, r); });
    calls.push_back([&](long count) { dct->run(count); });
  }
  std::mt19937 random(n);
  std::normal_distribution<double> normal;
  for (int i = 0; i < n; ++i) x[i] = p[i] = static_cast<T>(normal(random));
  calls[0](1);
  if (rivals) {
    half->run(x, r);
    dct->run();
    compare(y, r, 1, n, "the half-length rival");
    compare(y, q, 0.5, n, "FFTW's");  // whose sum has a factor of two
  }

  const auto [ns, ns_per_cycle] = race("DCT-IV " + type + ", " + std::to_string(n), calls, options.pace);
  const size_t own = libraries.size();
  Row row = {"xfmgDCT4_" + type, static_cast<double>(n)};
  add_library_cells(row, {ns.begin(), ns.begin() + static_cast<std::ptrdiff_t>(own)});
  for (const size_t rival : {own, own + 1}) {
    row.emplace_back(rivals ? ns[rival] : 0);
    row.emplace_back(rivals ? ns[0] / ns[rival] : 0);
  }
  const double floor = wide_dct4_floor(libraries[0].name(), n, sizeof(T) == 4) * ns_per_cycle;
  row.emplace_back(floor);
  row.emplace_back(floor == 0 ? 0 : ns[0] / floor);
  report.add(std::move(row));
}

void summarise(Report& report, const std::string& function) {
  std::string line = function + ", geometric means:";
  for (size_t c = 0; c < report.columns().size(); ++c) {
    const std::string& name = report.columns()[c].name;
    if (!name.starts_with("x ")) continue;
    GeometricMean mean;
    double worst = 0;
    for (const Row& row : report.rows()) {
      const double value = std::get<double>(row[c]);
      if (std::get<std::string>(row[0]) != function || value == 0) continue;
      mean.add(value);
      worst = std::max(worst, value);
    }
    if (mean.count() > 0) line += " " + name + " " + cell_text(mean.value(), 3) + " (at most " + cell_text(worst, 3) + "),";
  }
  line.pop_back();
  report.note(line);
}

std::vector<Report> run(const Options& options) {
  const std::vector<Library> libraries = options.libraries();
  std::vector<Column> columns = {{"function", kText}, {"N", 0}};
  add_library_columns(columns, libraries);
  columns.insert(columns.end(), {{"half-length ns", 1, true}, {"x half-length", 3}, {"REDFT11 ns", 1, true}, {"x REDFT11", 3}, {"floor ns"}, {"x floor", 3}});
  Report report("dct4", columns);
  for (const std::string type : {"32f", "64f"}) {
    if (!options.selects("xfmgDCT4_" + type)) continue;
    for (const int exponent : options.size_list()) {
      if (type == "32f") measure<float>(type, 1 << exponent, options, libraries, report);
      else measure<double>(type, 1 << exponent, options, libraries, report);
    }
    if (options.size_list().size() > 1) summarise(report, "xfmgDCT4_" + type);
    note_copies(report, "xfmgDCT4_" + type, libraries);
  }
  if (report.rows().empty()) throw std::runtime_error("--only " + options.only + " selects no function of this benchmark");
  return {report};
}

}  // namespace

const Benchmark kDct4 = {"dct4", "DCT-IV against FFTW's and against FFTW's complex transform of half the length.",
                           "exponents: 2^exponent points", {1, 25}, {.sizes = "1-22", .pace = {.rounds = 15, .microseconds = 2000}}, run};

}  // namespace xfm::bench
