// Passes over expression graphs: a graph goes in, a graph comes out.
#pragma once

#include <span>
#include <vector>

#include "generator/graph.h"

namespace xfm {

struct Counts {
  int additions = 0;        // terms of every node less one
  int multiplications = 0;  // distinct products with a coefficient other than 1

  friend bool operator==(const Counts&, const Counts&) = default;
};

// The nodes that reach an output, in creation (hence topological) order.
std::vector<int> live_nodes(const Graph& g, std::span<const Ref> outputs);

Counts count(const Graph& g, std::span<const Ref> outputs);
// The same products, but c times a value and c times its quarter turn are two: so many stand in registers of complex values.
int products_with_turns(const Graph& g, std::span<const Ref> outputs);

// Runs the transposed network of `outputs` in `target`: sums become fan-outs and the reverse, constants stay. `feed`
// holds a value of `target` for each output; the result has one for each of `inputs`, nodes of g that end the network.
std::vector<Ref> transpose(const Graph& g, std::span<const int> inputs, std::span<const Ref> outputs, Graph& target,
                           std::span<const Ref> feed);

// Repeats a network in `target`, on a value of it for each input cell.
std::vector<Ref> placed(const Graph& g, std::vector<Ref> outputs, Graph& target, std::span<const Ref> feed);

// A sum of products that is used once, by a constant product, gives its constants to that product. Repeats until nothing
// moves; `outputs` become those of the result.
Graph merge_constants(const Graph& g, std::vector<Ref>& outputs);

// Where sums take only quarter turns of a sum of products, the products make the turn, which costs them nothing; likewise
// for sums of such sums. `outputs` become those of the result.
Graph turn_products(const Graph& g, std::vector<Ref>& outputs);

}  // namespace xfm
