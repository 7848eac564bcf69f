// The core that kernels are arranged for: what each operation asks of it. The estimate of a body's busiest port
// (`port_use`) and the model that runs a body (`cycles_per_call`) both read this one table.
#pragma once

#include "generator/machine.h"

namespace xfm {

// Where an operation can start.
enum class Work {
  None,      // nowhere: a register taken otherwise, or an operand of its user
  Load,
  Add,       // sums, and conversions between precisions
  Multiply,  // products, and sums made as such
  Shuffle,   // moves within 128-bit parts
  Cross,     // moves across them
  Logic,     // picks lanes in place, changes signs
};

struct Cost {
  Work work;
  int latency;  // cycles from the operands to the result
};
Cost cost(Op op);

// Numbers of the core, and those that were fitted to the times of kernels by
//   build/release/bench/bench_dft --only CToC --rivals none --against OTHER
// where OTHER is a build with another value (or build/release/bench/libxfm_split_form.so, for another form of each kernel).
namespace core {
constexpr unsigned kMultiplyPorts = 0b00011, kAddPorts = 0b01100, kShufflePorts = 0b00110, kCrossPorts = 0b00100,
                   kAnyPort = 0b01111, kStorePort = 0b10000;
constexpr int kLoadLatency = 8, kPerCycle = 6;
constexpr int kLoadsPerCycle = 2, kQueue = 64, kInFlight = 256, kPrologue = 12;  // fitted, all of them to orders of operations
constexpr int kWindows[] = {16, 32, 64};  // fitted: operations among which one is moved forward
constexpr int kSpares[] = {6, 2};         // fitted: registers that such moves leave free
constexpr double kShuffleCost = 0.45;     // fitted to forms: cycles by which a shuffle delays sums and products
}  // namespace core

unsigned ports(Op op);  // by bit; none for a load

// How busy a body keeps the execution ports, in cycles: two additions, two multiplications and three in all, two
// shuffles within 128-bit lanes and one across, three loads and two stores can start together.
struct PortUse {
  int adds = 0, muls = 0, converts = 0, shuffles = 0, crossings = 0, loads = 0, stores = 0, others = 0;
  int moves() const { return shuffles + crossings; }
  double cycles() const;
  // What a body takes beyond that, for choosing between placements: a shuffle often takes the turn of an addition or a
  // multiplication.
  double estimate() const { return cycles() + core::kShuffleCost * moves(); }
};
PortUse port_use(const Program& program);

}  // namespace xfm
