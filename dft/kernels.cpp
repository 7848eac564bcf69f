#include "dft/kernels.h"

#include <algorithm>
#include <vector>

#include "generator/check.h"
#include "generator/core_model.h"
#include "generator/schedule.h"

namespace xfm::dft {

namespace {

Counts counts_on_one_lane(const ComplexPlan& plan, int sign) {
  const LanedTransform plain = laned_transform(plan, sign, 1, Placement::Nested);
  const Counts complex = count(plain.graph, refs_of(plain.outputs));
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

// The ways to fill the lanes of a form.
std::vector<Placement> placements(const WorkingForm& form, const ComplexRow& row) {
  if (form.lanes == 1 || row.plan.flow != Flow::Complex) return {Placement::Nested};
  return {Placement::Nested, Placement::Flattened};
}

double estimate(const ComplexBody& body) { return port_use(body.program).estimate(); }

// For placements of one form: the estimate sees the shuffles, the model of the core the values that wait in memory; the
// product of both decides.
double preference(const ComplexBody& body) { return estimate(body) * cycles_per_call(body.program, schedule(body.program)); }

}  // namespace

ComplexBody complex_body(const ComplexRow& row, int sign, const Choice& choice) {
  ComplexPlan plan = row.plan;
  plan.flow = choice.flow.value_or(plan.flow);
  const Counts counts = held_counts(row, plan, sign);
  const bool has_form = std::any_of(row.forms.begin(), row.forms.end(), [&](const WorkingForm* f) { return f->name == choice.form; });
  std::vector<ComplexBody> bodies;
  for (const WorkingForm* form : row.forms) {
    if (has_form && form->name != choice.form) continue;
    for (const Placement placement : placements(*form, row)) {
      const LanedTransform t = laned_transform(plan, sign, form->lanes, placement);
      bodies.push_back({form->lower(t.graph, t.outputs, form->type), form, placement, counts});
    }
  }
  const WorkingForm* form = std::ranges::min_element(bodies, {}, estimate)->form;
  std::erase_if(bodies, [&](const ComplexBody& b) { return b.form != form; });
  return bodies.size() == 1 ? bodies[0] : *std::ranges::min_element(bodies, {}, preference);
}

std::string describe(const ComplexBody& body) {
  return body.form->name + (body.placement == Placement::Flattened ? ", stages apart" : "");
}

}  // namespace xfm::dft
