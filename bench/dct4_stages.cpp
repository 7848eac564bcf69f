// Where the time of a long DCT-IV goes: each stage by itself on a planned state, the whole transform beside them.
//
// Bytes are those a stage asks for, by the sizes in the objects: source, scratches, tables, destination; what an env8 below
// the top reads of its table counts each time. Rows of a deeper level stand inside the env9 above them. env8 and env4
// are measured over all their bins and groups in order; `after env9` is what the whole transform takes beyond its env9:
// where the two take turns, less than their sum. Nanoseconds per transform, medians of interleaved rounds.
#include <stdexcept>

#include "bench/benchmark.h"
#include "dct4/objects.h"
#include "dct4/public_api.h"
#include "dct4/stages.h"

namespace xfm::bench {

using namespace xfm::dct4;

namespace {

constexpr double kVectorBytes = 32;

template <class Env>
const Env* first_of(const EnvList* list) {
  return static_cast<const Env*>(EnvList_get(list, 0));
}

struct Stage {
  std::string name;
  Calls calls;
  double read = 0, written = 0;  // bytes
};

// One use of an env7: where its result goes, which columns it takes.
template <class Real>
struct Use {
  Real* t;
  ptrdiff_t start, mirror;
};

template <class Real>
class Stages {
 public:
  Stages(int n, const Env1* root, Real* dst, const Real* src) : n_(n), src_(src) {
    const Env5* const forward = first_of<Env5>(first_of<Env3>(root->stageTwo)->stageOne);
    Real* const t = static_cast<Real*>(root->scratch);
    if (forward->stageOne->item == nullptr)
      add("env5", [=](long) { StageFunctions<Real>::env5_compute(forward, t, src); }, 0);
    else
      add_level(first_of<Env7>(forward->stageOne), {{t, 0, forward->wrap}}, kColumns, 1);
    const Env4* const groups = first_of<Env4>(first_of<Env2>(root->stageOne)->stageOne);
    add("env4", [=](long) { StageFunctions<Real>::env4_compute(groups, dst, t, {0, groups->chunks}); },
        2 * groups->radix * kVectorBytes * groups->chunks);
  }
  const std::vector<Stage>& all() const { return stages_; }

 private:
  // Every stage reads n elements and writes n, and reads its table.
  void add(const std::string& name, const std::function<void(long)>& once, double table) {
    const double elements = static_cast<double>(n_) * sizeof(Real);
    const auto calls = [once](long count) {
      for (; count > 0; --count) once(count);
    };
    stages_.push_back({name, calls, elements + table, elements});
  }

  void add_level(const Env7* split, const std::vector<Use<Real>>& uses, ptrdiff_t stride, int level) {
    const Env9* const parts = first_of<Env9>(split->stageTwo);
    const Env8* const combine = first_of<Env8>(split->stageOne);
    Real* const w = static_cast<Real*>(split->scratch);
    const Real* const src = src_;
    const std::string mark = level == 1 ? "" : " level " + std::to_string(level);
    if (parts->stageOne->item != nullptr) {
      std::vector<Use<Real>> inner;
      for (const Use<Real>& use : uses)
        for (ptrdiff_t r = 0; r < parts->radix; ++r)
          inner.push_back({w + r * kColumns, use.start + r * parts->outerSpan, use.mirror - 2 * r * parts->outerSpan});
      add_level(first_of<Env7>(parts->stageOne), inner, parts->radix * kColumns, level + 1);
    }
    add("env9" + mark,
        [=](long) {
          for (const Use<Real>& use : uses) StageFunctions<Real>::env9_compute(parts, w, src, use.start, use.mirror);
        },
        0);
    if (parts->stageOne->item != nullptr) {  // moves what the env9 and the env8 below it move
      Stage& whole = stages_.back();
      const Stage &inner_parts = stages_[stages_.size() - 3], &inner_combine = stages_[stages_.size() - 2];
      whole.read = inner_parts.read + inner_combine.read;
      whole.written = inner_parts.written + inner_combine.written;
    }
    add("env8" + mark,
        [=](long) {
          for (const Use<Real>& use : uses)
            StageFunctions<Real>::env8_compute(combine, use.t, w, stride, combine->cols * stride, {0, combine->chunks});
        },
        (2 * combine->radix - 2) * kVectorBytes * combine->chunks * static_cast<double>(uses.size()));
  }

  int n_;
  const Real* src_;
  std::vector<Stage> stages_;
};

template <class Real>
void measure(int n, const Options& options, Report& report) {
  typename Api<Real>::State* state = nullptr;
  if (Api<Real>::init_alloc(&state, n) != xfmStatusOk) throw std::runtime_error("no memory for a DCT-IV of " + std::to_string(n) + " points");
  const std::unique_ptr<typename Api<Real>::State, XfmStatus (*)(typename Api<Real>::State*)> owner(state, Api<Real>::release);
  Memory memory(2 * (n * sizeof(Real) + options.offset + options.alignment));
  Real* const x = memory.array<Real>(n, options.offset, options.alignment);
  Real* const y = memory.array<Real>(n, options.offset, options.alignment);
  for (int i = 0; i < n; ++i) x[i] = static_cast<Real>(std::sin(0.7 * i * i));
  const Env1* const root = reinterpret_cast<const Env1*>(state);
  if (root->scratch == nullptr) throw std::runtime_error("a DCT-IV of " + std::to_string(n) + " points has no stages");
  const Stages<Real> stages(n, root, y, x);
  std::vector<Calls> calls;
  for (const Stage& s : stages.all()) calls.push_back(s.calls);
  calls.push_back([&](long count) {
    for (; count > 0; --count) Api<Real>::transform(x, y, state);
  });
  const std::string function = std::string("xfmgDCT4_") + Api<Real>::kName;
  const std::vector<double> ns = race(function + ", " + std::to_string(n), calls, options.pace).ns;
  const auto row = [&](const std::string& name, double time, double read, double written, double rate) {
    report.add({function, static_cast<double>(n), name, time, time / n, read, written, rate});
  };
  double env9 = 0;
  for (size_t i = 0; i < stages.all().size(); ++i) {
    const Stage& s = stages.all()[i];
    row(s.name, ns[i], s.read / n, s.written / n, (s.read + s.written) / ns[i]);
    if (s.name == "env9") env9 = ns[i];
  }
  if (env9 > 0) row("after env9", ns.back() - env9, 0, 0, 0);
  row("transform", ns.back(), 0, 0, 0);
}

std::vector<Report> run(const Options& options) {
  Report report("dct4_stages", {{"function", kText}, {"N", 0}, {"stage", kText}, {"ns", 0}, {"ns/element"}, {"read/element"}, {"written/element"}, {"bytes/ns"}});
  for (const int exponent : options.size_list())
    if (options.selects("xfmgDCT4_32f")) measure<float>(1 << exponent, options, report);
  for (const int exponent : options.size_list())
    if (options.selects("xfmgDCT4_64f")) measure<double>(1 << exponent, options, report);
  return {report};
}

}  // namespace

const Benchmark kDct4Stages = {"dct4-stages", "Time and bytes of every stage of long DCT-IVs.",
                           "exponents: 2^exponent points", {7, 25}, {.sizes = "12-22", .pace = {.rounds = 15, .microseconds = 2000}}, run};

}  // namespace xfm::bench
