#include "dft/kernels.h"

#include <algorithm>
#include <vector>

#include "generator/check.h"
#include "generator/core_model.h"
#include "generator/lanes.h"
#include "generator/schedule.h"

namespace xfm {

namespace {

Counts counts_on_one_lane(const ComplexRow& row, const Recipes& recipes, int sign, Placement placement) {
  const LanedTransform plain = laned_transform(row.plan, recipes, sign, 1, placement);
  std::vector<Ref> outputs;
  for (const Point& p : plain.outputs) outputs.push_back(p.ref);
  const Counts complex = count(plain.graph, outputs);
  return {2 * complex.additions, 2 * complex.multiplications};
}

Counts held_counts(const ComplexRow& row, const Recipes& recipes, int length, int sign) {
  const Counts counts = counts_on_one_lane(row, recipes, sign, Placement::Nested);
  if (counts != row.built)
    throw InputError(row.where + ": length " + std::to_string(length) + " by '" + row.text + "' takes " +
                     std::to_string(counts.additions) + " additions and " + std::to_string(counts.multiplications) +
                     " multiplications, the row has " + std::to_string(row.built.additions) + " and " +
                     std::to_string(row.built.multiplications));
  return counts;
}

bool in_real_lanes(Placement placement) { return placement == Placement::RealLane || placement == Placement::RealLaneBlocks; }

struct Candidate {
  Form form;
  Type type;
  int lanes;
  Placement placement;
};

// The working forms of a precision and length; where there are several ways to fill the lanes, all of them.
std::vector<Candidate> candidates(int precision, int length) {
  std::vector<Candidate> out;
  const auto interleaved = [&](Type type, int lanes, std::initializer_list<Placement> placements) {
    for (const Placement p : placements) out.push_back({Form::Interleaved, type, lanes, p});
  };
  using enum Placement;
  if (precision == 64 && length % 4 == 0 && length >= 8) {
    interleaved(Type::F64x4, 2, {Nested, Flattened, RealLaneBlocks});
  } else if (precision == 64) {
    interleaved(Type::F64x2, 1, {Nested, RealLaneBlocks, RealLane});
  } else if (length <= 5) {
    out.push_back({Form::Scalar, Type::F32, 1, Nested});
  } else if (length % 16 == 0) {
    interleaved(Type::F32x8, 4, {Nested, RealLaneBlocks});
  } else {
    for (const Placement p : {Nested, Flattened}) out.push_back({Form::Split, Type::F32x4, 4, p});
    interleaved(Type::F32x4, 2, {Nested, Flattened, RealLaneBlocks});
  }
  return out;
}

// Whether a plan has what a placement in real lanes changes, and takes the operations of its row there too.
bool suits(Placement placement, const ComplexRow& row, const Recipes& recipes, int sign) {
  if (!in_real_lanes(placement)) return true;
  const std::vector<Plan>& parts = row.plan.plan.parts;
  const bool changes = placement == Placement::RealLane
                           ? row.plan.method == ComplexPlan::Method::Linked && row.plan.plan.link()
                           : std::any_of(parts.begin(), parts.end(), [](const Plan& part) { return part.link(); });
  return changes && !row.plan.forms.any(BlockForm::RaderComplex) && counts_on_one_lane(row, recipes, sign, placement) == row.built;
}

Program lowered(const LanedTransform& t, const Candidate& c) {
  switch (c.form) {
    case Form::Scalar: return lower_scalar(t.graph, t.outputs);
    case Form::Split: return lower_split(t.graph, t.outputs);
    case Form::Interleaved: return lower_interleaved(t.graph, t.outputs, c.type);
  }
  return {};
}

double estimate(const ComplexBody& body) { return port_use(body.program).estimate(); }

// For placements of one form: the estimate sees the shuffles, the model of the core the values that wait in memory; the
// product of both decides. Real lanes spare shuffles and hold values for longer; within 3 % their measured times go
// either way.
double promise(const ComplexBody& body) {
  const double cycles = estimate(body) * cycles_per_call(body.program, schedule(body.program));
  return in_real_lanes(body.placement) ? cycles / 0.97 : cycles;
}

std::string lanes_used(Placement placement) {
  switch (placement) {
    case Placement::Nested: return "";
    case Placement::Flattened: return ", stages apart";
    case Placement::RealLaneBlocks: return ", blocks in real lanes";
    case Placement::RealLane: return ", real lanes";
  }
  return {};
}

template <class F>
const ComplexBody& least(const std::vector<ComplexBody>& bodies, F measure) {
  std::vector<double> values;
  for (const ComplexBody& b : bodies) values.push_back(measure(b));
  return bodies[std::min_element(values.begin(), values.end()) - values.begin()];
}

}  // namespace

ComplexBody complex_body(const ComplexTables& tables, int precision, int length, int sign, const Choice& choice) {
  const ComplexRow& row = tables.row(precision, length);
  const Recipes& recipes = tables.recipes.at(precision);
  const Counts counts = held_counts(row, recipes, length, sign);
  std::vector<ComplexBody> bodies;
  const std::vector<Candidate> all = candidates(precision, length);
  const bool has_form = std::any_of(all.begin(), all.end(), [&](const Candidate& c) { return c.form == choice.form; });
  for (const Candidate& c : all) {
    if ((has_form && c.form != choice.form) || (in_real_lanes(c.placement) && !choice.real_lanes)) continue;
    if (!suits(c.placement, row, recipes, sign)) continue;
    const LanedTransform t = laned_transform(row.plan, recipes, sign, c.lanes, c.placement);
    bodies.push_back({lowered(t, c), c.form, c.type, c.placement, c.lanes, counts});
  }
  const Form form = least(bodies, estimate).form;
  std::erase_if(bodies, [&](const ComplexBody& b) { return b.form != form; });
  return bodies.size() == 1 ? bodies[0] : least(bodies, promise);
}

std::string describe(const ComplexBody& body) {
  switch (body.form) {
    case Form::Scalar: return "scalar";
    case Form::Split: return "split" + lanes_used(body.placement);
    case Form::Interleaved: return "interleaved by " + std::to_string(body.lanes) + lanes_used(body.placement);
  }
  return {};
}

}  // namespace xfm
