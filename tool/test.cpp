// xfm test: every function of the library against the sum that defines it, on this machine.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>

#include "tool/catalogue.h"
#include "tool/commands.h"
#include "tool/copies.h"
#include "tool/formulas.h"
#include "tool/processor.h"
#include "tool/progress.h"
#include "xfm.h"

namespace xfm::tool {

namespace {

constexpr int kFlags[] = {xfmScaleFwdByN, xfmScaleInvByN, xfmScaleBySqrtN, xfmScaleNone};

// Errors are root mean squares, in units of the precision's epsilon times that of the right result. The largest over all
// functions and data is about half of these.
constexpr double kMostEpsilons = 3, kMostEpsilonsDct4 = 6;
constexpr int kAllBins = 10;  // up to 2^10 points every bin of a DCT-IV is compared, above it a few

struct FamilyResult {
  int functions = 0;
  long calls = 0;
  double worst = 0;  // in epsilons
};

class Tester {
 public:
  explicit Tester(bool to_the_end) : to_the_end_(to_the_end), progress_("Testing", static_cast<double>(functions().size())) {}

  void run() {
    for (const Function& f : functions()) {
      if (f.kind == "kernel" && f.is_single()) kernel<float>(f);
      if (f.kind == "kernel" && !f.is_single()) kernel<double>(f);
    }
    dct4<float>("32f", to_the_end_ ? 26 : 18);
    dct4<double>("64f", to_the_end_ ? 25 : 18);
    entries();
    for (const Function& f : functions())
      if (!called_.contains(f.name)) faults_.push_back(f.name + ": no test calls it");
  }

  void print() const {
    std::printf("family                  functions    calls   error at most\n");
    for (const auto& [family, result] : results_)
      std::printf("%-22s %10d %8ld %9.2f eps\n", family.c_str(), result.functions, result.calls, result.worst);
    for (const std::string& fault : faults_) std::printf("WRONG  %s\n", fault.c_str());
  }
  [[nodiscard]] size_t faults() const { return faults_.size(); }
  [[nodiscard]] size_t functions_called() const { return called_.size(); }

 private:
  void expect(const std::string& function, bool holds, const std::string& what) {
    if (!holds && faults_.size() < 50) faults_.push_back(function + ": " + what);
  }

  FamilyResult& called(const std::string& function, const std::string& family) {
    FamilyResult& result = results_[family];
    if (called_.insert(function).second) ++result.functions, progress_.advance();
    ++result.calls;
    return result;
  }

  template <class T>
  void compare(const std::string& function, const std::string& family, const T* got, const Numbers& right, long double scale, double most) {
    long double error = 0, norm = 0;
    for (size_t i = 0; i < right.size(); ++i) {
      const long double difference = got[i] - scale * right[i];
      error += difference * difference;
      norm += scale * scale * right[i] * right[i];
    }
    const auto epsilons = static_cast<double>(std::sqrt(error / norm) / std::numeric_limits<T>::epsilon());
    FamilyResult& result = results_[family];
    result.worst = std::max(result.worst, epsilons);
    if (!(epsilons <= most)) expect(function, false, "off its formula by " + std::to_string(epsilons) + " eps");
  }

  template <class T>
  void fill(std::vector<T>& in) {
    std::uniform_real_distribution<T> uniform(-1, 1);
    for (T& value : in) value = uniform(random_);
  }

  static long double scale(const Function& f, size_t n, int flag) {
    const auto points = static_cast<long double>(n);
    if (flag == xfmScaleBySqrtN) return 1 / std::sqrt(points);
    const bool divides = (flag == xfmScaleFwdByN && f.scale != "inverse") || (flag == xfmScaleInvByN && f.scale != "forward");
    return divides ? 1 / points : 1;
  }

  // A kernel and its dispatcher, with every flag, into another array and in place; then what they refuse.
  template <class T>
  void kernel(const Function& f) {
    const size_t n = f.family == "xfmgWHT" ? size_t{1} << f.size : static_cast<size_t>(f.size);
    const auto [ins, outs] = extent(f.family, n);
    std::vector<T> in(ins), out(outs), both(std::max(ins, outs));
    fill(in);
    const Numbers right = by_formula(f.family, n, {in.begin(), in.end()});
    std::vector<T> buffer(f.takes_buffer ? buffer_bytes<T>(f) / sizeof(T) + 1 : 1);
    const std::string dispatcher = f.dispatcher();
    const bool large = f.family == "xfmgWHT";
    auto* const direct = library_.find<XfmStatus(const T*, T*, int, void*)>(f.name);
    auto* const by_size = library_.find<XfmStatus(const T*, T*, int, int, void*)>(dispatcher);
    // A kernel without a buffer leaves the argument that follows its own unread.
    for (const int flag : kFlags) {
      called(f.name, f.family);
      expect(f.name, direct(in.data(), out.data(), flag, buffer.data()) == xfmStatusOk, "fails");
      compare(f.name, f.family, out.data(), right, scale(f, n, flag), kMostEpsilons);
      std::copy(in.begin(), in.end(), both.begin());
      called(dispatcher, f.family);
      expect(dispatcher, by_size(both.data(), both.data(), f.size, flag, large ? buffer.data() : nullptr) == xfmStatusOk, "fails");
      expect(dispatcher, std::memcmp(both.data(), out.data(), outs * sizeof(T)) == 0, "in place, size " + std::to_string(f.size) + ", gives something else");
    }
    expect(f.name, direct(nullptr, out.data(), xfmScaleNone, buffer.data()) == xfmStatusNullPointer, "takes a null source");
    expect(f.name, direct(in.data(), nullptr, xfmScaleNone, buffer.data()) == xfmStatusNullPointer, "takes a null destination");
    expect(f.name, direct(in.data(), out.data(), 3, buffer.data()) == xfmStatusFlagError, "takes a flag that is none");
    for (const int size : {0, 65, -1}) expect(dispatcher, by_size(in.data(), out.data(), size, xfmScaleNone, nullptr) == xfmStatusSizeError, "takes size " + std::to_string(size));
  }

  template <class T>
  size_t buffer_bytes(const Function& f) {
    const std::string name = "xfmgWHTGetBufferSize_" + f.type;
    int bytes = -1;
    called(name, "xfmgWHT");
    expect(name, library_.find<XfmStatus(int, int*)>(name)(f.size, &bytes) == xfmStatusOk && bytes > 0, "fails");
    return static_cast<size_t>(std::max(bytes, 0));
  }

  template <class T>
  void dct4(const std::string& type, int last) {
    const auto name = [&](const char* what) { return std::string("xfmgDCT4") + what + "_" + type; };
    auto* const get_size = library_.find<XfmStatus(int, int*)>(name("GetSize"));
    auto* const init = library_.find<XfmStatus(void**, int, void*)>(name("Init"));
    auto* const init_alloc = library_.find<XfmStatus(void**, int)>(name("InitAlloc"));
    auto* const release = library_.find<XfmStatus(void*)>(name("Free"));
    auto* const transform = library_.find<XfmStatus(const T*, T*, void*)>(name(""));
    for (int exponent = 1; exponent <= last; ++exponent) {
      const int n = 1 << exponent;
      int bytes = 0;
      for (const char* what : {"GetSize", "Init", "InitAlloc", "Free", ""}) called(name(what), "xfmgDCT4");
      expect(name("GetSize"), get_size(n, &bytes) == xfmStatusOk && bytes > 0, "fails");
      const std::unique_ptr<char[]> block(new char[static_cast<size_t>(bytes)]);
      void *in_block = nullptr, *own = nullptr;
      std::vector<T> in(static_cast<size_t>(n)), out(in.size());
      fill(in);
      expect(name("Init"), init(&in_block, n, block.get()) == xfmStatusOk, "fails");
      expect(name(""), transform(in.data(), out.data(), in_block) == xfmStatusOk, "fails");
      compare_dct4(name(""), in, out);
      expect(name("InitAlloc"), init_alloc(&own, n) == xfmStatusOk, "fails");
      expect(name(""), transform(in.data(), in.data(), own) == xfmStatusOk, "fails");
      expect(name(""), in == out, "in place, " + std::to_string(n) + " points, gives something else");
      expect(name("Free"), release(own) == xfmStatusOk, "fails");
    }
    expect(name(""), transform(nullptr, nullptr, nullptr) == xfmStatusNullPointer, "takes null pointers");
    expect(name("Free"), release(nullptr) == xfmStatusNullPointer, "takes a null pointer");
  }

  template <class T>
  void compare_dct4(const std::string& function, const std::vector<T>& in, const std::vector<T>& out) {
    const size_t n = in.size(), bins = std::min(n, size_t{1} << kAllBins), few = n > bins ? 8 : n;
    Numbers right;
    std::vector<T> got;
    for (size_t i = 0; i < few; ++i) {
      const size_t k = few == n ? i : (i * 2 + 1) * n / (2 * few) + i;
      right.push_back(dct4_bin(in.data(), n, k));
      got.push_back(out[k]);
    }
    compare(function, "xfmgDCT4", got.data(), right, 1, kMostEpsilonsDct4);
  }

  void entries() {
    called("xfmgenGetLibVersion", "xfmgenGetLibVersion");
    const XfmLibraryVersion* const version = library_.find<const XfmLibraryVersion*()>("xfmgenGetLibVersion")();
    expect("xfmgenGetLibVersion", version != nullptr && version->major == xfmgenGetLibVersion()->major, "gives no record");
  }

  bool to_the_end_;
  Library library_;
  Progress progress_;
  std::mt19937 random_{1};
  std::map<std::string, FamilyResult> results_;
  std::set<std::string> called_;
  std::vector<std::string> faults_;
};

void run(bool to_the_end) {
  require_avx();
  const Copy copy = loaded_copy();
  size_t faults = 0, count = 0;
  {
    Tester tester(to_the_end);
    tester.run();
    tester.print();
    faults = tester.faults();
    count = tester.functions_called();
  }
  if (faults > 0) throw std::runtime_error("the library is not right on this machine (" + copy.name + " of " + copy.path.filename().string() + ")");
  std::printf("All %zu functions of %s, %s, give what their formulas say.\n", count, copy.path.filename().c_str(), copy.name.c_str());
}

}  // namespace

void add_test(CLI::App& app) {
  CLI::App* const test = app.add_subcommand("test", "Tests every function against the sum that defines it, on this machine");
  const auto to_the_end = std::make_shared<bool>(false);
  test->add_flag("--long", *to_the_end, "the DCT-IV up to its largest lengths, which takes minutes and 2 GB");
  test->callback([to_the_end] { run(*to_the_end); });
}

}  // namespace xfm::tool
