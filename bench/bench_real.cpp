// Time of the real DFT and the Hartley transform against FFTW, every length from 2 to 64, one transform, one thread:
//
//   bench_real [FAMILY|all] [TYPE|all] [rounds, 25] [BODIES.tsv]
//
// FAMILY is xfmgDFTFwd_RToCCS, xfmgDFTInv_CCSToR or xfmgHartley, TYPE 32f or 64f. The rivals run in the same rounds: r2c
// and R2HC, c2r and HC2R, or DHT, each planned with MEASURE and with PATIENT and free to overwrite an input of its own;
// the quickest of them is compared with. A figure is the median over the rounds in nanoseconds per call, calls one behind the other on data in the first cache.
// BODIES.tsv is the audit's account of the compiled bodies; it adds conversions, spills and reloads of each.
#include <dlfcn.h>
#include <fftw3.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "generator/program.h"
#include "generator/table.h"
#include "xfm.h"

namespace {

using Call = std::function<void()>;

template <class T>
struct Fftw;

template <>
struct Fftw<float> {
  using Plan = fftwf_plan;
  using Complex = fftwf_complex;
  static constexpr auto r2c = fftwf_plan_dft_r2c_1d;
  static constexpr auto c2r = fftwf_plan_dft_c2r_1d;
  static constexpr auto r2r = fftwf_plan_r2r_1d;
  static constexpr auto execute = fftwf_execute;
};

template <>
struct Fftw<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto r2c = fftw_plan_dft_r2c_1d;
  static constexpr auto c2r = fftw_plan_dft_c2r_1d;
  static constexpr auto r2r = fftw_plan_r2r_1d;
  static constexpr auto execute = fftw_execute;
};

template <class T>
struct Array {
  explicit Array(int n) : data(static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64))) {}
  ~Array() { std::free(data); }
  Array(const Array&) = delete;
  T* data;
};

struct Candidate {
  std::string name;
  Call call;
  std::vector<double> times;

  double median() {
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
  }
};

// Nanoseconds a call takes, from calls enough to fill about ten microseconds.
double time_of(const Call& call, int calls) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) call();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / calls;
}

template <class T>
std::vector<Candidate> candidates(const std::string& family, const std::string& type, int n, T* in, T* out, T* rival_in) {
  using F = Fftw<T>;
  const std::string name = family + "_" + std::to_string(n) + "_" + type;
  const auto kernel = reinterpret_cast<XfmStatus (*)(const T*, T*, int)>(dlsym(RTLD_DEFAULT, name.c_str()));
  if (kernel == nullptr) throw xfm::InputError("not in the library: " + name);
  std::vector<Candidate> all{{"xfm", [=] { kernel(in, out, xfmScaleNone); }, {}}};
  const auto rival = [&](const std::string& what, typename F::Plan plan) {
    all.push_back({what, [plan] { F::execute(plan); }, {}});
  };
  for (const auto& [effort, flag] : {std::pair{"measure", FFTW_MEASURE}, std::pair{"patient", FFTW_PATIENT}}) {
    const std::string tail = std::string(" ") + effort;
    if (family == "xfmgDFTFwd_RToCCS") {
      rival("r2c" + tail, F::r2c(n, rival_in, reinterpret_cast<typename F::Complex*>(out), flag));
      rival("R2HC" + tail, F::r2r(n, rival_in, out, FFTW_R2HC, flag));
    } else if (family == "xfmgDFTInv_CCSToR") {
      rival("c2r" + tail, F::c2r(n, reinterpret_cast<typename F::Complex*>(rival_in), out, flag));
      rival("HC2R" + tail, F::r2r(n, rival_in, out, FFTW_HC2R, flag));
    } else {
      rival("DHT" + tail, F::r2r(n, rival_in, out, FFTW_DHT, flag));
    }
  }
  return all;
}

using Keyed = std::map<std::string, xfm::TableRow>;

struct Options {
  std::string family = "all", type = "all";
  int rounds = 25;
  Keyed floors, bodies;
};

struct Means {
  double rival = 0, floor = 0;
  int sizes = 0, won = 0;
};

template <class T>
void measure(const Options& options, const std::string& family, const std::string& type) {
  Means means;
  for (int n = 2; n <= 64; ++n) {
    Array<T> in(n + 2), out(n + 2), rival_in(n + 2);
    std::vector<Candidate> all = candidates<T>(family, type, n, in.data, out.data, rival_in.data);
    std::mt19937 engine(n);
    for (int i = 0; i < n + 2; ++i) in.data[i] = rival_in.data[i] = T(engine()) / T(4294967296.0);
    const int calls = std::max(20, static_cast<int>(10000 / time_of(all[0].call, 100)));
    for (int round = 0; round < options.rounds; ++round)
      for (Candidate& c : all) c.times.push_back(time_of(c.call, calls));
    const double ours = all[0].median();
    Candidate* best = &all[1];
    for (size_t i = 2; i < all.size(); ++i)
      if (all[i].median() < best->median()) best = &all[i];
    const std::string name = family + "_" + std::to_string(n) + "_" + type;
    const xfm::TableRow& floor = options.floors.at(name);
    const double bound = std::stod(floor["floor ns"]);
    std::printf("%s\t%.2f\t%.2f\t%s\t%.3f\t%.2f\t%.3f\t%s", name.c_str(), ours, best->median(), best->name.c_str(),
                ours / best->median(), bound, ours / bound, floor["chain cycles"].c_str());
    if (const auto body = options.bodies.find(name); body != options.bodies.end())
      std::printf("\t%d\t%s\t%s\t%s", body->second.integer("widen") + body->second.integer("narrow"),
                  body->second["spills"].c_str(), body->second["reloads"].c_str(), body->second["code_bytes"].c_str());
    std::printf("\n");
    means.rival += std::log(ours / best->median());
    means.floor += std::log(ours / bound);
    means.won += ours < best->median();
    ++means.sizes;
  }
  std::printf("# %s %s: %.3f of the best rival's time (geometric mean over %d sizes, faster in %d), %.2f times the floor\n",
              family.c_str(), type.c_str(), std::exp(means.rival / means.sizes), means.sizes, means.won,
              std::exp(means.floor / means.sizes));
  std::fflush(stdout);
}

Keyed read_floors() {
  Keyed floors;
  const xfm::Table table = xfm::Table::read(XFM_REAL_FLOORS, {"family", "type", "N", "floor ns", "chain cycles"});
  for (const xfm::TableRow& row : table.rows()) floors.emplace(row["family"] + "_" + row["N"] + "_" + row["type"], row);
  return floors;
}

Keyed read_bodies(const char* path) {
  Keyed bodies;
  std::ifstream in(path);
  std::string header;
  std::getline(in, header);
  const xfm::Table table = xfm::Table::read(path, xfm::split(header, '\t'));
  for (const xfm::TableRow& row : table.rows()) bodies.emplace(row["function"], row);
  return bodies;
}

void program(int argc, char** argv) {
  Options options;
  options.floors = read_floors();
  if (argc > 1) options.family = argv[1];
  if (argc > 2) options.type = argv[2];
  if (argc > 3) options.rounds = std::max(1, std::atoi(argv[3]));
  if (argc > 4) options.bodies = read_bodies(argv[4]);
  std::printf("kernel\tns\trival ns\trival\tratio\tfloor ns\tof floor\tchain cycles%s\n",
              options.bodies.empty() ? "" : "\tconversions\tspills\treloads\tbytes");
  bool any = false;
  for (const char* family : {"xfmgDFTFwd_RToCCS", "xfmgDFTInv_CCSToR", "xfmgHartley"}) {
    if (options.family != "all" && options.family != family) continue;
    any = true;
    if (options.type != "64f") measure<float>(options, family, "32f");
    if (options.type != "32f") measure<double>(options, family, "64f");
  }
  if (!any) throw xfm::InputError("no family is named " + options.family);
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
