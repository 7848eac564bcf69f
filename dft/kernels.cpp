#include "dft/kernels.h"

#include <algorithm>
#include <vector>

#include "generator/check.h"
#include "generator/core_model.h"
#include "generator/lanes.h"
#include "generator/schedule.h"

namespace xfm {

namespace {

Counts counts_on_one_lane(const ComplexPlan& plan, int sign) {
  const LanedTransform plain = laned_transform(plan, sign, 1, Placement::Nested);
  std::vector<Ref> outputs;
  for (const Point& p : plain.outputs) outputs.push_back(p.ref);
  const Counts complex = count(plain.graph, outputs);
  return {2 * complex.additions, 2 * complex.multiplications};
}

Counts held_counts(const ComplexRow& row, const ComplexPlan& plan, int sign) {
  const Counts counts = counts_on_one_lane(plan, sign);
  if (counts != row.built)
    throw InputError(row.where + ": length " + std::to_string(plan.plan.length) + " by '" + row.text + "' takes " +
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
std::vector<Candidate> candidates(int precision, int length, Flow flow) {
  std::vector<Candidate> out;
  const auto add = [&](Form form, Type type, int lanes) {
    out.push_back({form, type, lanes, Placement::Nested});
    if (lanes > 1 && flow == Flow::Complex) out.push_back({form, type, lanes, Placement::Flattened});
  };
  if (precision == 64) {
    const bool pairs = length % 4 == 0 && length >= 8;
    add(Form::Interleaved, pairs ? Type::F64x4 : Type::F64x2, pairs ? 2 : 1);
  } else if (length <= 5) {
    add(Form::Scalar, Type::F32, 1);
  } else if (length % 16 == 0) {
    add(Form::Interleaved, Type::F32x8, 4);
  } else {
    add(Form::Split, Type::F32x4, 4);
    add(Form::Interleaved, Type::F32x4, 2);
  }
  return out;
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
// product of both decides.
double promise(const ComplexBody& body) { return estimate(body) * cycles_per_call(body.program, schedule(body.program)); }

template <class F>
const ComplexBody& least(const std::vector<ComplexBody>& bodies, F measure) {
  std::vector<double> values;
  for (const ComplexBody& b : bodies) values.push_back(measure(b));
  return bodies[std::min_element(values.begin(), values.end()) - values.begin()];
}

}  // namespace

ComplexBody complex_body(const ComplexTables& tables, int precision, int length, int sign, const Choice& choice) {
  const ComplexRow& row = tables.row(precision, length);
  ComplexPlan plan = row.plan;
  plan.flow = choice.flow.value_or(plan.flow);
  const Counts counts = held_counts(row, plan, sign);
  std::vector<ComplexBody> bodies;
  const std::vector<Candidate> all = candidates(precision, length, plan.flow);
  const bool has_form = std::any_of(all.begin(), all.end(), [&](const Candidate& c) { return c.form == choice.form; });
  for (const Candidate& c : all) {
    if (has_form && c.form != choice.form) continue;
    const LanedTransform t = laned_transform(plan, sign, c.lanes, c.placement);
    bodies.push_back({lowered(t, c), c.form, c.type, c.placement, c.lanes, counts});
  }
  const Form form = least(bodies, estimate).form;
  std::erase_if(bodies, [&](const ComplexBody& b) { return b.form != form; });
  return bodies.size() == 1 ? bodies[0] : least(bodies, promise);
}

bool widens_products(int precision, int length) { return candidates(precision, length, Flow::Complex)[0].form == Form::Scalar; }

std::string describe(const ComplexBody& body) {
  const std::string stages = body.placement == Placement::Flattened ? ", stages apart" : "";
  switch (body.form) {
    case Form::Scalar: return "scalar";
    case Form::Split: return "split" + stages;
    case Form::Interleaved: return "interleaved by " + std::to_string(body.lanes) + stages;
  }
  return {};
}

}  // namespace xfm
