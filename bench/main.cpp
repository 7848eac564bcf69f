// A program for one benchmark, XFM_BENCHMARK. Run it on a quiet machine: build/release/bench/bench_dft --help
#include "bench/benchmark.h"

int main(int argc, char** argv) { return xfm::bench::run_benchmark(xfm::bench::XFM_BENCHMARK, argc, argv); }
