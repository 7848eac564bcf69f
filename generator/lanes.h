// Working forms: how a graph of complex values stands in registers.
//
//   scalar       one real component a register; products in double and narrowed when their sum ends (single precision)
//   split        four real or four imaginary parts of a graph of four lanes (128 bits, single precision)
//   interleaved  the complex values of a graph with one lane (F64x2), two (F32x4, F64x4) or four (F32x8), components
//                side by side as in memory
//
// The permutations of the first and last stage are in the addresses of loads and stores; regrouped vectors become
// shuffles. Every output is multiplied by the scale as its last operation.
#pragma once

#include <span>

#include "generator/graph.h"
#include "generator/machine.h"

namespace xfm {

// outputs[k]: where element k of the destination comes from.
Program lower_scalar(const Graph& graph, std::span<const Point> outputs);
Program lower_split(const Graph& graph, std::span<const Point> outputs);
Program lower_interleaved(const Graph& graph, std::span<const Point> outputs, Type type);

// The nodes that reach an output, in creation order.
std::vector<int> live_nodes(const Graph& graph, std::span<const Point> outputs);

// Terms of a sum in machine form, each a value to be added or subtracted.
struct Signed {
  int value = -1;
  bool negative = false;
};
// Adds up neighbours, then neighbours of the sums; the sign that is left stays with the result.
Signed signed_sum(Program& program, std::vector<Signed> terms);

}  // namespace xfm
