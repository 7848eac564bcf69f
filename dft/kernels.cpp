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

struct Candidate {
  Form form;
  Type type;
  int lanes;
  Placement placement;
};

// The working forms of a precision and length; where there are several ways to fill the lanes, all of them.
std::vector<Candidate> candidates(int precision, int length) {
  if (precision == 64) {
    if (length % 4 == 0 && length >= 8)
      return {{Form::Interleaved, Type::F64x4, 2, Placement::Nested}, {Form::Interleaved, Type::F64x4, 2, Placement::Flattened}};
    return {{Form::Interleaved, Type::F64x2, 1, Placement::Nested}};
  }
  if (length <= 5) return {{Form::Scalar, Type::F32, 1, Placement::Nested}};
  if (length % 16 == 0) return {{Form::Interleaved, Type::F32x8, 4, Placement::Nested}};
  return {{Form::Split, Type::F32x4, 4, Placement::Nested},
          {Form::Split, Type::F32x4, 4, Placement::Flattened},
          {Form::Interleaved, Type::F32x4, 2, Placement::Nested},
          {Form::Interleaved, Type::F32x4, 2, Placement::Flattened}};
}

// A plan in real-lane form that takes other operations than its row has is not built.
bool keeps_counts(const ComplexRow& row, const Recipes& recipes, int sign, Placement placement) {
  return !row.plan.forms.any(BlockForm::RaderComplex) && counts_on_one_lane(row, recipes, sign, placement) == row.built;
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

// Rotations put off to the end spare shuffles, which the estimate sees, and hold values for longer, which the model of the
// core sees: the product of both decides. Within 3 % of it the measured times go either way.
double promise(const ComplexBody& body) {
  return estimate(body) * cycles_per_call(body.program, schedule(body.program));
}
constexpr double kWorthwhile = 0.97;

std::string lanes_used(Placement placement) {
  switch (placement) {
    case Placement::Nested: return "";
    case Placement::Flattened: return ", stages apart";
    case Placement::RealLaneBlocks: return ", blocks in real lanes";
    case Placement::RealLane: return ", real lanes";
  }
  return {};
}

}  // namespace

ComplexBody complex_body(const ComplexTables& tables, int precision, int length, int sign, std::optional<Form> only) {
  const ComplexRow& row = tables.row(precision, length);
  const Recipes& recipes = tables.recipes.at(precision);
  const Counts counts = held_counts(row, recipes, length, sign);
  const auto body_of = [&](const Candidate& c) {
    const LanedTransform t = laned_transform(row.plan, recipes, sign, c.lanes, c.placement);
    return ComplexBody{lowered(t, c), c.form, c.type, c.placement, c.lanes, counts};
  };
  std::optional<ComplexBody> best;
  const std::vector<Candidate> all = candidates(precision, length);
  const bool choice = std::any_of(all.begin(), all.end(), [&](const Candidate& c) { return c.form == only; });
  for (const Candidate& c : all) {
    if (choice && c.form != only) continue;
    ComplexBody body = body_of(c);
    if (!best || estimate(body) < estimate(*best)) best = std::move(body);
  }
  if (best->form != Form::Interleaved) return *best;

  const ComplexBody plain = *best;
  std::optional<double> least;
  for (const Placement placement : {Placement::RealLane, Placement::RealLaneBlocks}) {
    if ((placement == Placement::RealLane && plain.lanes > 1) || !keeps_counts(row, recipes, sign, placement)) continue;
    ComplexBody body = body_of({plain.form, plain.type, plain.lanes, placement});
    if (estimate(body) >= estimate(plain)) continue;
    if (!least) least = kWorthwhile * promise(plain);
    if (const double promised = promise(body); promised < *least) least = promised, best = std::move(body);
  }
  return *best;
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
