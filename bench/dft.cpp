// The complex, real and Hartley kernels of all lengths against FFTW, one transform, one thread, calls one behind the
// other on data in the first cache. The columns are
//
//   COPY ns          of this library, with xfmScaleNone; then of the other copies and builds asked for, and the ratio to each
//   FFTW ns          of FFTW's quickest plan, whose name follows (of a real transform in the quicker of its two layouts)
//   ratio            ns to that rival's
//   floor ns, x      lower bound of the kernel's plan at the clock of this run, ns to it: in the base's working form (floors.tsv),
//                    of a copy in registers that are always full, as wide as its row in plans/targets.tsv has them
//   port ns, x       the same for the operations of the body as generated, shuffles included (complex kernels)
//   chain ns         the longest chain of dependent operations of one transform (real kernels, chains.tsv)
//   conv, spills, reloads   conversions, stores to and loads from the frame in the compiled body (the audit's report)
//
// Port and chain are those of the base and stand there only; the last columns only in a build's folder. With --round-trip a
// contestant calls the forward kernel and then the inverse one on its result, and bounds are the sums of both.
#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>

#include "bench/benchmark.h"
#include "bench/dft_rivals.h"
#include "bench/tables.h"
#include "tool/catalogue.h"
#include "xfm.hpp"

namespace xfm::bench {

namespace {

using tool::Function;
using tool::Library;

struct Settings {
  explicit Settings(const Options& options) : options(options), libraries(options.libraries()) {
    for (const int n : options.size_list()) sizes.insert(n);
    const bool rivals = options.rivals != "none" && fftw_installed();
    if (rivals) efforts.push_back(Effort::Measure);
    if (rivals && options.rivals == "all") efforts.push_back(Effort::Patient);
    if (libraries[0].name() != "base") {
      floors = wide_floors(libraries[0].name());
      return;
    }
    floors = bench::floors();
    chains = bench::chains();
    ports = bench::ports();
    bodies = bench::bodies();
  }

  const Options& options;
  std::vector<Library> libraries;
  std::set<int> sizes;
  std::vector<Effort> efforts;
  Cycles floors, ports, chains;
  std::map<std::string, TableRow> bodies;
};

Transform transform_of(const std::string& family) {
  if (family == "xfmgDFTFwd_CToC") return Transform::ComplexForward;
  if (family == "xfmgDFTInv_CToC") return Transform::ComplexInverse;
  if (family == "xfmgHartley") return Transform::Hartley;
  return family.starts_with("xfmgDFTFwd") ? Transform::RealForward : Transform::RealInverse;
}

Transform inverse_of(Transform transform) {
  if (transform == Transform::ComplexForward) return Transform::ComplexInverse;
  return transform == Transform::RealForward ? Transform::RealInverse : transform;
}

// The kernel that takes the result of a forward one back: xfmgDFTInv_CCSToR_15_32f of xfmgDFTFwd_RToCCS_15_32f. The Hartley
// transform takes itself back.
std::string inverse_of(const std::string& name) {
  const std::string forward = "Fwd_";
  const size_t at = name.find(forward);
  if (at == std::string::npos) return name;
  const size_t parts = at + forward.size(), to = name.find("To", parts), end = name.find('_', to);
  return name.substr(0, at) + "Inv_" + name.substr(to + 2, end - to - 2) + "To" + name.substr(parts, to - parts) + name.substr(end);
}

template <class T>
Calls repeated(const Library& library, const std::string& name, const T* src, T* dst) {
  auto* const kernel = library.find<XfmStatus(const T*, T*, int)>(name);
  return [=](long count) {
    static volatile int flag = xfmScaleNone;  // as if the caller did not know it
    for (const int f = flag; count > 0; --count) kernel(src, dst, f);
  };
}

template <class T>
Calls round_trips(const Library& library, const std::string& name, const T* src, T* dst, T* back) {
  auto* const forward = library.find<XfmStatus(const T*, T*, int)>(name);
  auto* const inverse = library.find<XfmStatus(const T*, T*, int)>(inverse_of(name));
  return [=](long count) {
    static volatile int flag = xfmScaleNone;
    for (const int f = flag; count > 0; --count) forward(src, dst, f), inverse(dst, back, f);
  };
}

// A kernel and its rivals on data of their own.
template <class T>
class Entry {
 public:
  Entry(const Settings& settings, const Function& f)
      : f_(f),
        transform_(transform_of(f.family)),
        length_(f.is_complex() ? 2 * f.size : f.size + 2),  // components, with room for CCS
        memory_(6 * (length_ * sizeof(T) + settings.options.offset + settings.options.alignment)) {
    for (T** array : {&src_, &dst_, &back_, &rival_src_, &rival_dst_, &rival_back_})
      *array = memory_.array<T>(length_, settings.options.offset, settings.options.alignment);
    const bool trip = settings.options.round_trip;
    for (const Library& library : settings.libraries)
      contestants_.push_back(trip ? round_trips(library, f.name, src_, dst_, back_) : repeated(library, f.name, src_, dst_));
    for (const Effort effort : settings.efforts)
      for (int kind = 0; kind < DftRival<T>::kinds(transform_); ++kind) {
        rivals_.emplace_back(transform_, kind, f.size, rival_src_, rival_dst_, effort);
        if (trip) rival_inverses_.emplace_back(inverse_of(transform_), kind, f.size, rival_dst_, rival_back_, effort);
      }
    for (size_t i = 0; i < rivals_.size(); ++i) {
      if (trip) contestants_.push_back([this, i](long count) { for (; count > 0; --count) rivals_[i].run(1), rival_inverses_[i].run(1); });
      else contestants_.push_back([this, i](long count) { rivals_[i].run(count); });
    }
    fill();
    contestants_[0](1);
    compare_with_rivals();
  }
  Entry(const Entry&) = delete;  // the contestants point here

  [[nodiscard]] const std::vector<Calls>& contestants() const { return contestants_; }

  // ns: of the contestants in their order.
  Row row(const Settings& settings, const std::vector<double>& ns, double ns_per_cycle) const {
    Row row = {f_.dispatcher(), static_cast<double>(f_.size)};
    const auto behind = ns.begin() + static_cast<std::ptrdiff_t>(settings.libraries.size());
    add_library_cells(row, {ns.begin(), behind});
    const auto best = std::min_element(behind, ns.end());
    const bool any = best != ns.end();
    row.emplace_back(any ? *best : 0);
    row.emplace_back(any ? rivals_[best - behind].name() : "-");
    row.emplace_back(any ? ns[0] / *best : 0);
    const auto bound = [&](const Cycles& cycles, bool ratio) {
      double value = 0;
      for (const std::string& name : settings.options.round_trip ? std::vector{f_.name, inverse_of(f_.name)} : std::vector{f_.name})
        if (const auto found = cycles.find(name); found != cycles.end()) value += found->second * ns_per_cycle;
      row.emplace_back(value);
      if (ratio) row.emplace_back(value == 0 ? 0 : ns[0] / value);
    };
    if (!settings.floors.empty()) bound(settings.floors, true);
    if (!settings.ports.empty()) bound(settings.ports, true);
    if (!settings.chains.empty()) bound(settings.chains, false);
    if (!settings.bodies.empty()) add_body(row, settings);
    return row;
  }

 private:
  void add_body(Row& row, const Settings& settings) const {
    const auto found = settings.bodies.find(f_.name);
    for (const auto& names : {std::vector{"widen", "narrow"}, {"spills"}, {"reloads"}}) {
      int count = 0;
      for (const char* name : names) count += found == settings.bodies.end() ? 0 : found->second.integer(name);
      row.emplace_back(static_cast<double>(count));
    }
  }

  // Uniform in [-1, 1]; a half-spectrum with real ends.
  void fill() {
    std::mt19937 engine(f_.size);
    for (int i = 0; i < length_; ++i) src_[i] = static_cast<T>(engine() / 2147483648.0 - 1);
    if (transform_ == Transform::RealInverse) src_[1] = src_[f_.size / 2 * 2 + 1] = 0;
    std::copy(src_, src_ + length_, rival_src_);
  }

  // Every plan must compute what the kernel does before it is timed; of the three layouts CCS stands for all.
  void compare_with_rivals() {
    if (f_.family.find("Pack") != std::string::npos || f_.family.find("Perm") != std::string::npos) return;
    const bool spectrum = f_.family.ends_with("RToCCS");
    const int count = spectrum ? f_.size / 2 * 2 + 2 : f_.is_complex() ? length_ : f_.size;
    for (const DftRival<T>& rival : rivals_) {
      const bool half_complex = rival.name().starts_with("R2HC") || rival.name().starts_with("HC2R");
      const int given = transform_ == Transform::RealInverse ? f_.size / 2 * 2 + 2 : length_;
      for (int i = 0; i < given; ++i) rival_src_[half_complex && !spectrum ? half_complex_place(i) : i] = src_[i];
      rival.run(1);
      double largest = 0, error = 0;
      for (int i = 0; i < count; ++i) {
        if (half_complex && spectrum && imaginary_of_real_bin(i)) continue;
        const double value = rival_dst_[half_complex && spectrum ? half_complex_place(i) : i];
        largest = std::max(largest, std::abs(value));
        error = std::max(error, std::abs(double(dst_[i]) - value));
      }
      if (!(error <= (sizeof(T) == 4 ? 2e-6 : 4e-15) * largest)) throw std::runtime_error(f_.name + " differs from FFTW, " + rival.name());
    }
    std::copy(src_, src_ + length_, rival_src_);
  }

  // FFTW's half-complex layout: real parts upward, then imaginary parts downward; zeros of CCS have no place there and go
  // behind the end.
  [[nodiscard]] bool imaginary_of_real_bin(int place) const { return place == 1 || place == f_.size + 1; }
  [[nodiscard]] int half_complex_place(int place) const {
    if (place % 2 == 0) return place / 2;
    return imaginary_of_real_bin(place) ? f_.size : f_.size - place / 2;
  }

  const Function& f_;
  Transform transform_;
  int length_;
  Memory memory_;
  T *src_, *dst_, *back_, *rival_src_, *rival_dst_, *rival_back_;
  std::vector<DftRival<T>> rivals_, rival_inverses_;  // those of a round trip
  std::vector<Calls> contestants_;
};

// All lengths of a dispatcher take part in one race, so that a while in which the machine is slower falls on all of them.
template <class T>
void measure(const Settings& settings, const std::string& dispatcher, Report& report) {
  std::vector<std::unique_ptr<Entry<T>>> entries;
  std::vector<Calls> contestants;
  for (const Function& f : tool::functions()) {
    if (f.kind != "kernel" || f.dispatcher() != dispatcher || !settings.sizes.contains(f.size)) continue;
    entries.push_back(std::make_unique<Entry<T>>(settings, f));
    contestants.insert(contestants.end(), entries.back()->contestants().begin(), entries.back()->contestants().end());
  }
  if (entries.empty()) return;
  const Race times = race(dispatcher, contestants, settings.options.pace);
  auto ns = times.ns.begin();
  for (const auto& entry : entries) {
    const auto behind = ns + static_cast<std::ptrdiff_t>(entry->contestants().size());
    report.add(entry->row(settings, {ns, behind}, times.ns_per_cycle));
    ns = behind;
  }
}

std::vector<Column> columns_of(const Settings& settings) {
  std::vector<Column> columns = {{"function", kText}, {"N", 0}};
  add_library_columns(columns, settings.libraries);
  columns.insert(columns.end(), {{"FFTW ns", 2, true}, {"FFTW's plan", kText}, {"ratio", 3}});
  if (!settings.floors.empty()) columns.insert(columns.end(), {{"floor ns"}, {"x floor"}});
  if (!settings.ports.empty()) columns.insert(columns.end(), {{"port ns"}, {"x port"}});
  if (!settings.chains.empty()) columns.push_back({"chain ns", 1});
  if (!settings.bodies.empty()) columns.insert(columns.end(), {{"conv", 0}, {"spills", 0}, {"reloads", 0}});
  return columns;
}

// Over the rows of one dispatcher: the geometric mean of each column of ratios.
void summarise(Report& report, const std::string& dispatcher) {
  std::string line = dispatcher + ", geometric means:";
  for (size_t c = 0; c < report.columns().size(); ++c) {
    const std::string& name = report.columns()[c].name;
    if (name != "ratio" && !name.starts_with("x ")) continue;
    GeometricMean mean;
    int above = 0;
    for (const Row& row : report.rows()) {
      if (std::get<std::string>(row[0]) != dispatcher) continue;
      const double value = std::get<double>(row[c]);
      if (value > 0) mean.add(value);
      above += value > 1;
    }
    if (mean.count() == 0) continue;
    line += " " + cell_text(mean.value(), 3);
    line += name == "ratio" ? " of FFTW (slower in " + std::to_string(above) + " of " + std::to_string(mean.count()) + ")," : " " + name + ",";
  }
  line.pop_back();
  report.note(line);
}

// Dispatchers whose names match both expressions.
std::vector<Report> run(const Options& options, const std::string& name, const std::string& family) {
  const Settings settings(options);
  Report report(name, columns_of(settings));
  if (options.rivals != "none" && !fftw_installed()) report.note("FFTW is not installed (libfftw3f.so.3, libfftw3.so.3): measured without it");
  for (const Function& f : tool::functions()) {
    if (f.kind != "dispatcher" || !matches(f.name, family) || !options.selects(f.name)) continue;
    if (options.round_trip && f.name.find("Inv_") != std::string::npos) continue;
    if (f.is_single()) measure<float>(settings, f.name, report);
    else measure<double>(settings, f.name, report);
    summarise(report, f.name);
    note_copies(report, f.name, settings.libraries);
  }
  if (report.rows().empty()) throw std::runtime_error("--only " + options.only + " selects no function of this benchmark");
  return {report};
}

std::vector<Report> run_complex(const Options& options) { return run(options, "complex", "CToC"); }
std::vector<Report> run_real(const Options& options) { return run(options, "real", "DFT.*(CCS|Pack|Perm)"); }
std::vector<Report> run_hartley(const Options& options) { return run(options, "hartley", "Hartley"); }
std::vector<Report> run_dft(const Options& options) { return run(options, "dft", "DFT|Hartley"); }

Options defaults(const char* only) {
  Options options;
  options.only = only;
  options.sizes = std::to_string(shortest_dft) + "-" + std::to_string(longest_dft);
  return options;
}

}  // namespace

const char* const kWords = "lengths, as 2-16,32,64";
const std::pair kRange(shortest_dft, longest_dft);
const Benchmark kComplex = {"complex", "Complex DFT of all lengths against FFTW.", kWords, kRange, defaults("."), run_complex, true};
const Benchmark kReal = {"real", "Real DFT of all lengths against FFTW.", kWords, kRange, defaults("CCS"), run_real, true};
const Benchmark kHartley = {"hartley", "Hartley transform of all lengths against FFTW.", kWords, kRange, defaults("."), run_hartley, true};
const Benchmark kDft = {"dft", "Complex, real and Hartley kernels against FFTW.", kWords, kRange, defaults("CToC|CCS|Hartley"), run_dft, true};

}  // namespace xfm::bench
