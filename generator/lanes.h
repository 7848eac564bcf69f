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

// The register that holds the negative of a value, exactly; of a product with a constant that by the negative constant.
int negated(Program& program, int value);
// The program without operations that reach no store: products whose negatives took their place.
Program pruned(const Program& program);
// Vectors of which every lane keeps its place; `lanes` elements belong to one. -1 where anything may stand.
int blended(Program& program, const std::vector<int>& values, int lanes);

}  // namespace xfm
