#include "dft/kernels.h"

#include <algorithm>
#include <vector>

#include "generator/check.h"
#include "generator/lanes.h"

namespace xfm {

namespace {

Counts held_counts(const ComplexTables& tables, int precision, int length, int sign) {
  const ComplexRow& row = tables.row(precision, length);
  const LanedTransform plain = laned_transform(row.plan, tables.recipes.at(precision), sign, 1, Placement::Nested);
  std::vector<Ref> outputs;
  for (const Point& p : plain.outputs) outputs.push_back(p.ref);
  Counts counts = count(plain.graph, outputs);
  counts.additions *= 2;  // complex values
  counts.multiplications *= 2;
  if (counts.additions != row.built.additions || counts.multiplications != row.built.multiplications)
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

Program lowered(const LanedTransform& t, const Candidate& c) {
  switch (c.form) {
    case Form::Scalar: return lower_scalar(t.graph, t.outputs);
    case Form::Split: return lower_split(t.graph, t.outputs);
    case Form::Interleaved: return lower_interleaved(t.graph, t.outputs, c.type);
  }
  return {};
}

}  // namespace

ComplexBody complex_body(const ComplexTables& tables, int precision, int length, int sign, std::optional<Form> only) {
  const Counts counts = held_counts(tables, precision, length, sign);
  std::optional<ComplexBody> best;
  double least = 0;
  const std::vector<Candidate> all = candidates(precision, length);
  const bool choice = std::any_of(all.begin(), all.end(), [&](const Candidate& c) { return c.form == only; });
  for (const Candidate& c : all) {
    if (choice && c.form != only) continue;
    const LanedTransform t = laned_transform(tables.row(precision, length).plan, tables.recipes.at(precision), sign, c.lanes, c.placement);
    ComplexBody body{lowered(t, c), c.form, c.type, c.placement, c.lanes, counts};
    const double cycles = port_use(body.program).estimate();
    if (!best || cycles < least) least = cycles, best = std::move(body);
  }
  return *best;
}

std::string describe(const ComplexBody& body) {
  switch (body.form) {
    case Form::Scalar: return "scalar";
    case Form::Split: return body.placement == Placement::Nested ? "split" : "split, stages apart";
    case Form::Interleaved:
      return "interleaved by " + std::to_string(body.lanes) + (body.placement == Placement::Nested ? "" : ", stages apart");
  }
  return {};
}

}  // namespace xfm
