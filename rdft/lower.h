// From a flow to scalar operations: the layout of its arrays and the precision of its values.
#pragma once

#include "generator/machine.h"
#include "rdft/counts.h"
#include "rdft/layout.h"

namespace xfm::rdft {

enum class Precision { Single, Double };

// Inputs are read from `source`, results written to `target`; one of them may be a half-spectrum array.
Program lower(const Flow& flow, Layout source, Layout target, Precision precision);

// Scalar instructions of a body, conversions and stores of +0.0 among them.
struct ScalarCounts {
  int add_single = 0, sub_single = 0, mul_single = 0;
  int add_double = 0, sub_double = 0, mul_double = 0;
  int widen = 0, narrow = 0;
  int loads = 0, stores = 0;
};
ScalarCounts scalar_counts(const Program& program);

// Stops the generator if a body does not do what its flow costs: neither less nor more.
void check_lowered(const Program& program, const Flow& flow, const FlowCounts& counts, Precision precision);

}  // namespace xfm::rdft
