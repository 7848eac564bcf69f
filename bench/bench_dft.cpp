// Time of the complex, real and Hartley kernels of the lengths 2 to 64 against FFTW, one transform, one thread, calls one
// behind the other on data in the first cache:
//
//   bench_dft [--only REGEX] [--sizes 2-64] [--rounds 41] [--us 40] [--rivals all|measure|none] [--against LIBRARY]
//             [--offset BYTES] [--out FILE]
//
// REGEX selects dispatchers, as CToC_32fc; the columns are
//
//   ns               of this library, with xfmScaleNone
//   MEASURE, PATIENT of FFTW so planned (of a real transform the quicker of its two layouts), and the quicker of both
//   ratio            ns to that rival's
//   floor ns, x      lower bound of the kernel's plan in its working form (floors.tsv) at the clock of this run, ns to it
//   port ns, x       the same for the operations of the body as generated, shuffles included (complex kernels)
//   against, x       of a second build of the library in the same rounds, ns to it
//   chain ns         the longest chain of dependent operations of one transform (real kernels, chains.tsv)
//   conv, spills, reloads   conversions, stores to and loads from the frame in the compiled body (the audit's report)
//
// FILE gets the same table with tabs; without --out it stands among the reports of the build.
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <set>

#include "bench/fftw_rivals.h"
#include "bench/harness.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "xfm.h"

namespace {

using namespace xfm::bench;

struct Settings {
  std::regex only;
  std::set<int> sizes;
  Pace pace;
  bool measure = true, patient = true;
  void* against = nullptr;
  size_t offset = 0;
  std::ofstream out;
  std::map<std::string, double> floors, ports, chains;  // cycles by kernel
  std::map<std::string, xfm::TableRow> bodies;          // the audit's account of the compiled bodies
};

Transform transform_of(const std::string& family) {
  if (family == "xfmgDFTFwd_CToC") return Transform::ComplexForward;
  if (family == "xfmgDFTInv_CToC") return Transform::ComplexInverse;
  if (family == "xfmgHartley") return Transform::Hartley;
  return family.starts_with("xfmgDFTFwd") ? Transform::RealForward : Transform::RealInverse;
}

struct Line {
  std::string kernel, rival;
  double ns = 0, measure = 0, patient = 0, ratio = 0, floor = 0, x_floor = 0, port = 0, x_port = 0, against = 0, x_against = 0, chain = 0,
         conversions = 0, spills = 0, reloads = 0;
};

// A column without a value is a dash.
std::string cell(double value, int digits) {
  if (value == 0) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

void print(std::ofstream& out, const std::vector<std::string>& cells) {
  for (size_t i = 0; i < cells.size(); ++i) {
    std::printf(i == 0 ? "%-26s" : i == 4 ? "  %-13s" : "%9s", cells[i].c_str());
    out << (i == 0 ? "" : "\t") << cells[i];
  }
  std::printf("\n");
  std::fflush(stdout);
  out << "\n";
}

void print(std::ofstream& out, const Line& l) {
  print(out, {l.kernel, cell(l.ns, 2), cell(l.measure, 2), cell(l.patient, 2), l.rival, cell(l.ratio, 3), cell(l.floor, 2),
              cell(l.x_floor, 2), cell(l.port, 2), cell(l.x_port, 2), cell(l.against, 2), cell(l.x_against, 3),
              cell(l.chain, 1), cell(l.conversions, 0), cell(l.spills, 0), cell(l.reloads, 0)});
}

template <class T>
using Kernel = XfmStatus (*)(const T*, T*, int);

template <class T>
Kernel<T> find(void* library, const std::string& name) {
  void* const address = dlsym(library, name.c_str());
  if (address == nullptr) throw xfm::InputError("not in the library: " + name);
  return reinterpret_cast<Kernel<T>>(address);
}

template <class T>
Calls repeated(Kernel<T> kernel, const T* src, T* dst) {
  return [=](long count) {
    static volatile int flag = xfmScaleNone;  // as if the caller did not know it
    for (const int f = flag; count > 0; --count) kernel(src, dst, f);
  };
}

// A kernel and its rivals on data of their own.
template <class T>
class Entry {
 public:
  Entry(const Settings& settings, const xfm::Function& f)
      : f_(f),
        transform_(transform_of(f.family)),
        length_(f.type.ends_with('c') ? 2 * f.size : f.size + 2),  // components, with room for CCS
        memory_(4 * (length_ * sizeof(T) + settings.offset + 64)) {
    for (T** array : {&src_, &dst_, &rival_src_, &rival_dst_}) *array = memory_.array<T>(length_, settings.offset);
    contestants_.push_back(repeated(find<T>(RTLD_DEFAULT, f.name), src_, dst_));
    if (settings.against != nullptr) contestants_.push_back(repeated(find<T>(settings.against, f.name), src_, dst_));
    for (const Effort effort : {Effort::Measure, Effort::Patient})
      for (int kind = 0; kind < FftwPlan<T>::kinds(transform_); ++kind)
        if (effort == Effort::Patient ? settings.patient : settings.measure)
          plans_.emplace_back(transform_, kind, f.size, rival_src_, rival_dst_, effort);
    for (size_t i = 0; i < plans_.size(); ++i) contestants_.push_back([this, i](long count) { plans_[i].run(count); });
    fill();
    contestants_[0](1);
    compare_with_rivals();
  }
  Entry(const Entry&) = delete;  // the contestants point here

  const std::vector<Calls>& contestants() const { return contestants_; }

  // ns: of the contestants in their order.
  Line line(const Settings& settings, const double* ns, double ns_per_cycle) const {
    Line line{.kernel = f_.name, .rival = "-", .ns = ns[0]};
    if (settings.against != nullptr) line.against = ns[1], line.x_against = line.ns / line.against;
    double best = 0;
    for (size_t i = 0; i < plans_.size(); ++i) {
      const double rival = ns[contestants_.size() - plans_.size() + i];
      double& of_effort = plans_[i].name().ends_with("PATIENT") ? line.patient : line.measure;
      if (of_effort == 0 || rival < of_effort) of_effort = rival;
      if (best == 0 || rival < best) best = rival, line.rival = plans_[i].name();
    }
    if (best > 0) line.ratio = line.ns / best;
    if (const auto found = settings.floors.find(f_.name); found != settings.floors.end())
      line.floor = found->second * ns_per_cycle, line.x_floor = line.ns / line.floor;
    if (const auto found = settings.ports.find(f_.name); found != settings.ports.end())
      line.port = found->second * ns_per_cycle, line.x_port = line.ns / line.port;
    if (const auto found = settings.chains.find(f_.name); found != settings.chains.end()) line.chain = found->second * ns_per_cycle;
    if (const auto found = settings.bodies.find(f_.name); found != settings.bodies.end()) {
      line.conversions = found->second.integer("widen") + found->second.integer("narrow");
      line.spills = found->second.integer("spills");
      line.reloads = found->second.integer("reloads");
    }
    return line;
  }

 private:
  // Uniform in [-1, 1]; a half-spectrum with real ends.
  void fill() {
    std::mt19937 engine(f_.size);
    for (int i = 0; i < length_; ++i) src_[i] = static_cast<T>(engine() / 2147483648.0 - 1);
    if (transform_ == Transform::RealInverse) src_[1] = src_[f_.size / 2 * 2 + 1] = 0;
    std::copy(src_, src_ + length_, rival_src_);
  }

  // Every plan must compute what the kernel does before it is timed; of the three layouts CCS stands for all.
  void compare_with_rivals() {
    if (f_.family.ends_with("RToPack") || f_.family.ends_with("RToPerm") || f_.family.ends_with("PackToR") || f_.family.ends_with("PermToR"))
      return;
    const bool spectrum = f_.family.ends_with("RToCCS");
    const int count = spectrum ? f_.size / 2 * 2 + 2 : f_.type.ends_with('c') ? length_ : f_.size;
    for (const FftwPlan<T>& plan : plans_) {
      const bool half_complex = plan.name().starts_with("R2HC") || plan.name().starts_with("HC2R");
      const int given = transform_ == Transform::RealInverse ? f_.size / 2 * 2 + 2 : length_;
      for (int i = 0; i < given; ++i) rival_src_[half_complex && !spectrum ? half_complex_place(i) : i] = src_[i];
      plan.run(1);
      double largest = 0, error = 0;
      for (int i = 0; i < count; ++i) {
        if (half_complex && spectrum && imaginary_of_real_bin(i)) continue;
        const double rival = rival_dst_[half_complex && spectrum ? half_complex_place(i) : i];
        largest = std::max(largest, std::abs(rival));
        error = std::max(error, std::abs(double(dst_[i]) - rival));
      }
      if (!(error <= (sizeof(T) == 4 ? 2e-6 : 4e-15) * largest)) throw xfm::InputError(f_.name + " differs from FFTW, " + plan.name());
    }
    std::copy(src_, src_ + length_, rival_src_);
  }

  // FFTW's half-complex layout: real parts upward, then imaginary parts downward; zeros of CCS have no place there and go
  // behind the end.
  bool imaginary_of_real_bin(int place) const { return place == 1 || place == f_.size + 1; }
  int half_complex_place(int place) const {
    if (place % 2 == 0) return place / 2;
    return imaginary_of_real_bin(place) ? f_.size : f_.size - place / 2;
  }

  const xfm::Function& f_;
  Transform transform_;
  int length_;
  Memory memory_;
  T *src_, *dst_, *rival_src_, *rival_dst_;
  std::vector<FftwPlan<T>> plans_;
  std::vector<Calls> contestants_;
};

// All lengths take part in one race, so that a while in which the machine is slower falls on all of them.
template <class T>
std::vector<Line> measure(const Settings& settings, const std::vector<const xfm::Function*>& kernels) {
  std::vector<std::unique_ptr<Entry<T>>> entries;
  std::vector<Calls> contestants;
  for (const xfm::Function* f : kernels) {
    if (!settings.sizes.contains(f->size)) continue;
    entries.push_back(std::make_unique<Entry<T>>(settings, *f));
    contestants.insert(contestants.end(), entries.back()->contestants().begin(), entries.back()->contestants().end());
  }
  const Race times = race(contestants, settings.pace);
  std::vector<Line> lines;
  const double* ns = times.ns.data();
  for (const auto& entry : entries) {
    lines.push_back(entry->line(settings, ns, times.ns_per_cycle));
    ns += entry->contestants().size();
  }
  return lines;
}

void summarise(std::ofstream& out, const std::string& dispatcher, const std::vector<Line>& lines) {
  const auto mean = [&](double Line::*column) {
    GeometricMean m;
    for (const Line& l : lines)
      if (l.*column > 0) m.add(l.*column);
    return m.count() > 0 ? m.value() : 0;
  };
  const auto slower = std::count_if(lines.begin(), lines.end(), [](const Line& l) { return l.ratio > 1; });
  char text[256];
  std::snprintf(text, sizeof text, "# %s, %zu sizes, geometric means: %s of FFTW (slower in %ld), %s x floor, %s x port, %s x against",
                dispatcher.c_str(), lines.size(), cell(mean(&Line::ratio), 3).c_str(), static_cast<long>(slower),
                cell(mean(&Line::x_floor), 3).c_str(), cell(mean(&Line::x_port), 3).c_str(), cell(mean(&Line::x_against), 3).c_str());
  std::printf("%s\n", text);
  out << text << "\n";
}

// Cycles by kernel, from a table with a row for each length and a column for each dispatcher; the layouts share theirs (they
// differ in a store or two of the smallest lengths). Dispatchers without a column are left out.
std::map<std::string, double> read_cycles(const char* path) {
  std::map<std::string, double> cycles;
  const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
  const xfm::Table table = read_table(path);
  for (const xfm::Function& f : list.functions()) {
    if (f.kind != xfm::FunctionKind::Dispatcher) continue;
    const std::string column = std::regex_replace(f.name, std::regex("Pack|Perm"), "CCS");
    for (const xfm::TableRow& row : table.rows())
      if (row.has(column)) cycles[f.family + "_" + row["N"] + "_" + f.type] = std::stod(row[column]);
  }
  return cycles;
}

// The audit's rows by function; of a kernel with two bodies the first. Empty before the audit has run.
std::map<std::string, xfm::TableRow> read_bodies() {
  const std::filesystem::path path = std::string(XFM_REPORTS) + "/audit_bodies.tsv";
  std::map<std::string, xfm::TableRow> bodies;
  if (!std::filesystem::exists(path)) return bodies;
  const xfm::Table report = read_table(path);
  for (const xfm::TableRow& row : report.rows()) bodies.emplace(row["function"], row);
  return bodies;
}

// The cycles for which the generated body of a complex kernel keeps the busiest port, where its generator tells.
std::map<std::string, double> read_ports() {
  std::map<std::string, double> cycles;
  for (const auto& entry : std::filesystem::directory_iterator(XFM_REPORTS)) {
    const std::string file = entry.path().filename();
    if (!file.starts_with("pgendft") || !file.ends_with(".tsv")) continue;
    const xfm::Table report = read_table(entry.path());
    for (const xfm::TableRow& row : report.rows()) cycles[row["name"]] = std::stod(row["port cycles"]);
  }
  return cycles;
}

void run(Settings& settings) {
  const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
  print(settings.out, {"kernel", "ns", "MEASURE", "PATIENT", "rival", "ratio", "floor ns", "x floor", "port ns", "x port", "against", "x",
                       "chain ns", "conv", "spills", "reloads"});
  bool any = false;
  for (const xfm::Function& f : list.functions()) {
    if (f.kind != xfm::FunctionKind::Dispatcher || (f.part != "dft" && f.part != "rdft") || !std::regex_search(f.name, settings.only))
      continue;
    const std::vector<Line> lines =
        f.type.starts_with("32") ? measure<float>(settings, list.kernels(f.name)) : measure<double>(settings, list.kernels(f.name));
    for (const Line& line : lines) print(settings.out, line);
    if (!lines.empty()) summarise(settings.out, f.name, lines);
    any = any || !lines.empty();
  }
  if (!any) throw xfm::InputError("no kernel of this build is selected");
}

void program(int argc, char** argv) {
  Options options({{"only", "CToC|CCS|Hartley", "dispatchers, a regular expression"},
                   {"sizes", "2-64", "lengths, as 2-16,32,64"},
                   {"rounds", "41", "of every length"},
                   {"us", "40", "microseconds of one measurement"},
                   {"rivals", "all", "plans of FFTW: all (MEASURE and PATIENT), measure or none"},
                   {"against", "", "a second build of the library"},
                   {"offset", "0", "bytes from an aligned address to the arrays"},
                   {"out", std::string(XFM_REPORTS) + "/bench_dft.tsv", "file of the results"}});
  options.parse(argc, argv);
  Settings settings;
  settings.only = std::regex(options["only"]);
  for (const int n : parse_sizes(options["sizes"])) settings.sizes.insert(n);
  settings.pace = {std::max(1, static_cast<int>(options.number("rounds"))), options.number("us")};
  settings.offset = static_cast<size_t>(options.number("offset"));
  settings.measure = options["rivals"] != "none";
  settings.patient = options["rivals"] == "all";
  if (settings.measure && !settings.patient && options["rivals"] != "measure") throw xfm::InputError("--rivals is all, measure or none");
  if (!options["against"].empty()) {
    settings.against = dlopen(options["against"].c_str(), RTLD_NOW | RTLD_LOCAL);
    if (settings.against == nullptr) throw xfm::InputError(dlerror());
  }
  settings.floors = read_cycles(XFM_FLOORS);
  settings.chains = read_cycles(XFM_CHAINS);
  settings.bodies = read_bodies();
  settings.ports = read_ports();
  settings.out.open(options["out"]);
  if (!settings.out) throw xfm::InputError("cannot write " + options["out"]);
  run(settings);
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
