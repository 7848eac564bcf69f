// From a flow to scalar operations: the layout of its arrays and the precision of its values.
#pragma once

#include "generator/machine.h"
#include "rdft/counts.h"
#include "rdft/layout.h"

namespace xfm::rdft {

enum class Precision { Single, Double };

// Inputs are read from `source`, results written to `target`; one of them may be a half-spectrum array.
Program lower(const Flow& flow, Layout source, Layout target, Precision precision);

// Stops the generator if a body does not do what its flow costs: neither less nor more.
void check_lowered(const Program& program, const Flow& flow, const FlowCounts& counts, Precision precision);

}  // namespace xfm::rdft
