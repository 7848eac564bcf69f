// What a call through the C++ binding takes beside the C call, for each way to call: the length a template argument or known
// at run time only, arrays whose extents are known, a state of the DCT-IV, and many transforms in one loop (ns of one).
#include <stdexcept>

#include "bench/benchmark.h"
#include "bench/cpp_calls.h"
#include "xfm.hpp"

namespace xfm::bench {

namespace {

constexpr int kKernel = 60, kExtent = 31, kState = 64, kBatch = 8, kBatchCount = 16;

template <class Call>
Calls repeated(Call call) {
  return [call](long count) {
    for (; count > 0; --count) call();
  };
}

struct Way {
  const char *name, *function;
  int size;
  int transforms;  // of one call
  Calls c, cpp;
};

// Complex data of both kinds of call, in one place.
struct Complex {
  explicit Complex(size_t count) : x(count, {1, 0.5F}), y(count) {}
  [[nodiscard]] const Xfm32fc* c_x() const { return reinterpret_cast<const Xfm32fc*>(x.data()); }
  [[nodiscard]] Xfm32fc* c_y() { return reinterpret_cast<Xfm32fc*>(y.data()); }
  std::vector<std::complex<float>> x, y;
};

std::vector<Report> run(const Options& options) {
  Report report("cpp", {{"function", kText}, {"N", 0}, {"way", kText}, {"C ns", 2, true}, {"C++ ns", 2, true}, {"x C", 3}});
  Complex kernel(kKernel), batch(kBatch * kBatchCount);
  std::vector<double> cells(64, 0.5), samples(64);
  std::array<float, kExtent> points{1}, hartley{};
  std::vector<float> block(kState, 0.25F), coefficients(kState);
  const Dct4<float> state(kState);
  XfmDCT4State_32f* pointer = nullptr;
  if (xfmgDCT4InitAlloc_32f(&pointer, kState) != xfmStatusOk) throw std::runtime_error("no memory for a state of the DCT-IV");
  const std::unique_ptr<XfmDCT4State_32f, XfmStatus (*)(XfmDCT4State_32f*)> owner(pointer, xfmgDCT4Free_32f);

  std::vector<Way> ways = {
      {"template", "xfmgDFTFwd_CToC_32fc", kKernel, 1, repeated([&] { kernel_c(kernel.c_x(), kernel.c_y()); }),
       repeated([&] { kernel_cpp(kernel.x.data(), kernel.y.data()); })},
      {"extents", "xfmgHartley_32f", kExtent, 1, repeated([&] { (void)extent_c(points.data(), hartley.data()); }),
       repeated([&] { (void)extent_cpp(points, hartley); })},
      {"state", "xfmgDCT4_32f", kState, 1, repeated([&] { (void)state_c(&pointer, block.data(), coefficients.data()); }),
       repeated([&] { (void)state_cpp(state, block.data(), coefficients.data()); })},
      {"loop", "xfmgDFTFwd_CToC_32fc", kBatch, kBatchCount,
       repeated([&] { batch_c(batch.c_x(), batch.c_y(), kBatchCount); }),
       repeated([&] { batch_cpp(batch.x.data(), batch.y.data(), kBatchCount); })}};
  for (const int n : options.size_list())
    ways.push_back({"run time", "xfmgDFTInv_PermToR_64f", n, 1,
                    repeated([&, n] { (void)dispatcher_c(cells.data(), samples.data(), n); }),
                    repeated([&, n] { (void)dispatcher_cpp(cells.data(), samples.data(), n); })});

  GeometricMean mean;
  for (const Way& way : ways) {
    if (!options.selects(way.function)) continue;
    const std::vector<double> ns = race(std::string(way.function) + ", " + way.name, {way.c, way.cpp}, options.pace).ns;
    mean.add(ns[1] / ns[0]);
    report.add({way.function, static_cast<double>(way.size), way.name, ns[0] / way.transforms, ns[1] / way.transforms, ns[1] / ns[0]});
  }
  if (mean.count() == 0) throw std::runtime_error("--only " + options.only + " selects no function of this benchmark");
  report.note("C++ binding, geometric mean: " + cell_text(mean.value(), 3) + " x C");
  return {report};
}

}  // namespace

const Benchmark kCpp = {"cpp", "Calls through xfm.hpp beside the C calls.", "lengths known at run time only, as 2-16,32,64",
                        {shortest_dft, longest_dft}, {.sizes = "2,16,64"}, run};

}  // namespace xfm::bench
