// A scalar program as the packer sees it: operations on values of one lane each, the array elements that they begin with,
// and the cells that they end in.
#pragma once

#include <array>
#include <vector>

#include "generator/machine.h"

namespace xfm::pack {

inline constexpr int kMaxLanes = 8;
inline constexpr int kNone = -1;
// Lane by lane an operation, or kNone where a lane holds nothing in particular.
using Lanes = std::array<int, kMaxLanes>;
inline constexpr Lanes kEmpty = {kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone};

enum class Kind { Input, Zero, Sum, Product, Scale, Widen, Narrow, Negate };

struct Operation {
  Kind kind;
  bool single;         // precision of the result
  int a = kNone, b = kNone;
  bool minus = false;  // Sum: a - b
  Real factor = 0;     // Product
  int source = 0, cell = 0;  // Input
  std::vector<int> users = {};
  int height = 0;      // operations behind it on the longest way to a store
  Label label = {};

  bool in_memory() const { return kind == Kind::Input || kind == Kind::Zero; }
};

struct Output {
  int cell;
  int operation;
  int target = 0;
};

struct Network {
  std::vector<Operation> operations;  // in an order in which they can be done
  std::vector<Output> outputs;        // by target and cell; two that store zero name one operation
  int cells = 0;                      // elements of the source that may be read, from the first on
  bool wide_scale = false;            // a scale in double is the scale in single, widened
};

// The operations that reach a store. One without a label of its own, since it comes before the sums of the flow, is
// labelled by those that use it.
Network read_network(const Program& program);

}  // namespace xfm::pack
