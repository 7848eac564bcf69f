// The Walsh-Hadamard kernels, one thread, data in cache, the caller's buffer, against FFTW's real transform of size 2 in
// `order` dimensions (unscaled), a plain loop over 256-bit registers in the same order of levels, and two floors
// (wht_floors.tsv, by the clock of the same rounds): that of the base's form, and of 256-bit registers that are always full.
// A copy has one floor, of registers that are always full, as wide as its row in plans/targets.tsv has them.
// The results of both rivals are compared with the library's before any timing. The floors leave out what a call costs; a
// note says it. An alignment of 4096 puts all arrays at the start of a page, where the same elements compete for the
// same sets of the first-level cache.
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

#include "bench/benchmark.h"
#include "bench/fftw.h"
#include "bench/tables.h"
#include "bench/wht_loop.h"
#include "tool/catalogue.h"
#include "xfm.h"

namespace xfm::bench {

namespace {

using tool::Function;
using tool::Library;

constexpr int kOrders = 13;

template <class T>
struct Arrays {
  explicit Arrays(const Options& options) : memory(4 * (kBytes + options.offset + options.alignment)) {
    for (T** p : {&src, &dst, &other, &buffer}) *p = memory.array<T>(kBytes / sizeof(T), options.offset, options.alignment);
  }

  static constexpr size_t kBytes = (sizeof(T) << kOrders) + 8192;  // the largest work buffer
  Memory memory;
  T *src, *dst, *other, *buffer;
};

template <class T>
FftwPlan<T> hadamard_plan(const Arrays<T>& a, int order) {
  const std::vector<int> sizes(order, 2), kinds(order, kFftwR2hc);
  const Fftw<T>& fftw = Fftw<T>::get();
  fftw.set_timelimit(2);
  return FftwPlan<T>(fftw.plan_r2r(order, sizes.data(), a.src, a.other, kinds.data(), kFftwMeasure | kFftwPreserveInput));
}

template <class T>
Calls repeated(const Library& library, const Function& f, const Arrays<T>& a) {
  static volatile int flag = xfmScaleNone;  // from memory, so that no contestant is specialised
  if (!f.takes_buffer) {
    auto* const kernel = library.find<XfmStatus(const T*, T*, int)>(f.name);
    return [=, &a](long count) {
      for (const int s = flag; count > 0; --count) kernel(a.src, a.dst, s);
    };
  }
  auto* const kernel = library.find<XfmStatus(const T*, T*, int, void*)>(f.name);
  return [=, &a](long count) {
    for (const int s = flag; count > 0; --count) kernel(a.src, a.dst, s, a.buffer);
  };
}

template <class T>
void compare(const Arrays<T>& a, const Calls& library, const Function& f, const FftwPlan<T>* fftw) {
  const size_t length = size_t{1} << f.size;
  library(1);
  loop_hadamard(a.src, a.other, f.size, T(1));
  if (std::memcmp(a.dst, a.other, length * sizeof(T)) != 0) throw std::runtime_error(f.name + " differs from the loop");
  if (fftw == nullptr) return;
  fftw->run();
  for (size_t i = 0; i < length; ++i)
    if (!(std::abs(a.dst[i] - a.other[i]) <= 1e-4 * std::sqrt(double(length)))) throw std::runtime_error(f.name + " differs from FFTW");
}

template <class T>
Race measure(const Arrays<T>& a, const Function& f, const Options& options, const std::vector<Library>& libraries) {
  std::unique_ptr<FftwPlan<T>> fftw;
  if (options.rivals != "none" && fftw_installed()) fftw = std::make_unique<FftwPlan<T>>(hadamard_plan(a, f.size));
  std::mt19937 random(f.size);
  std::uniform_real_distribution<T> uniform(-1, 1);
  for (int i = 0; i < 1 << f.size; ++i) a.src[i] = uniform(random);  // after planning, which overwrites
  volatile int order = f.size;
  std::vector<Calls> contestants;
  for (const Library& library : libraries) contestants.push_back(repeated(library, f, a));
  compare(a, contestants[0], f, fftw.get());
  contestants.push_back([&](long count) { for (const int o = order; count > 0; --count) loop_hadamard(a.src, a.other, o, T(1)); });
  if (fftw != nullptr) contestants.push_back([&](long count) { fftw->run(count); });
  return race(f.name, contestants, options.pace);
}

template <class T>
void add_row(const Function& f, const Options& options, const std::vector<Library>& libraries, const TableRow& floors, Report& report) {
  const Arrays<T> arrays(options);
  const auto [ns, ns_per_cycle] = measure(arrays, f, options, libraries);
  const size_t own = libraries.size();
  const double loop = ns[own], fftw = ns.size() > own + 1 ? ns[own + 1] : 0;
  Row row = {f.dispatcher(), static_cast<double>(1 << f.size)};
  add_library_cells(row, {ns.begin(), ns.begin() + static_cast<std::ptrdiff_t>(own)});
  const bool base = libraries[0].name() == "base";
  const double cycles = base ? std::stod(floors["limit"]) : wide_hadamard_floor(libraries[0].name(), f.size, f.is_single());
  const double limit = cycles * ns_per_cycle, free = base ? std::stod(floors["free"]) * ns_per_cycle : 0;
  for (const double value : {loop, ns[0] / loop, fftw, fftw == 0 ? 0 : ns[0] / fftw, limit, limit == 0 ? 0 : ns[0] / limit, free}) row.emplace_back(value);
  report.add(std::move(row));
}

// Geometric means over the orders of at least `least`.
void summarise(Report& report, const std::string& type, int least) {
  std::string line = type + (least > 1 ? " from order " + std::to_string(least) + " on" : "") + ", geometric means:";
  bool any = false;
  for (size_t c = 0; c < report.columns().size(); ++c) {
    const std::string& name = report.columns()[c].name;
    if (!name.starts_with("x ")) continue;
    GeometricMean mean;
    for (const Row& row : report.rows())
      if (std::get<std::string>(row[0]).ends_with(type) && std::get<double>(row[1]) >= 1 << least && std::get<double>(row[c]) > 0)
        mean.add(std::get<double>(row[c]));
    if (mean.count() > 0) line += " " + name + " " + cell_text(mean.value(), 3) + ",", any = true;
  }
  line.pop_back();
  if (any) report.note(line);
}

// A function of the library that returns at once.
double call_alone(const Pace& pace) {
  volatile int order = 0;
  int size = 0;
  return race("a call that returns at once", {[&](long count) { for (const int o = order; count > 0; --count) xfmgWHTGetBufferSize_32f(o, &size); }},
              pace).ns[0];
}

std::vector<Report> run(const Options& options) {
  if (options.offset % 32 != 0) throw std::runtime_error("--offset of this benchmark is a multiple of 32: the loop wants aligned arrays");
  const std::vector<Library> libraries = options.libraries();
  std::vector<Column> columns = {{"function", kText}, {"N", 0}};
  add_library_columns(columns, libraries);
  columns.insert(columns.end(), {{"loop ns", 2, true}, {"x loop", 3}, {"FFTW ns", 2, true}, {"x FFTW", 3}, {"floor ns"}, {"x floor", 3}, {"free ns"}});
  Report report("wht", columns);
  report.note("a call that returns at once: " + cell_text(call_alone(options.pace), 2) + " ns");
  const Table floors = hadamard_floors();
  for (const TableRow& row : floors.rows())
    for (const int order : options.size_list()) {
      const std::string name = "xfmgWHT_" + row["order"] + "_" + row["type"];
      if (row.integer("order") != order || !options.selects("xfmgWHT_" + row["type"])) continue;
      for (const Function& f : tool::functions()) {
        if (f.name != name) continue;
        if (f.is_single()) add_row<float>(f, options, libraries, row, report);
        else add_row<double>(f, options, libraries, row, report);
      }
    }
  if (report.rows().empty()) throw std::runtime_error("--only " + options.only + " selects no function of this benchmark");
  for (const char* type : {"32f", "64f", "f"})
    for (const int least : {1, 4}) summarise(report, type, least);
  for (const char* type : {"32f", "64f"})
    if (options.selects(std::string("xfmgWHT_") + type)) note_copies(report, std::string("xfmgWHT_") + type, libraries);
  return {report};
}

}  // namespace

const Benchmark kHadamard = {"wht", "Walsh-Hadamard transform of 2 to 8192 points against a plain loop and FFTW.", "orders: 2^order points", {1, kOrders},
                              {.sizes = "1-13", .pace = {.microseconds = 2000}}, run};

}  // namespace xfm::bench
