// Complex kernels: from a plan row to the machine form of a body, with the counts held against the row.
#pragma once

#include <optional>
#include <string>

#include "dft/tables.h"
#include "generator/machine.h"

namespace xfm {

enum class Form { Scalar, Split, Interleaved };

struct ComplexBody {
  Program program;
  Form form;
  Type type;
  Placement placement;
  int lanes;
  Counts counts;
};

// What to choose from, for timing one choice against another.
struct Choice {
  std::optional<Form> form = {};  // only this one, where a size has several
  std::optional<Flow> flow = {};  // instead of the row's
};

// Builds the body of one size and direction (sign -1 forward, +1 inverse); throws InputError where the counts of the
// graph are not those of the row.
ComplexBody complex_body(const ComplexTables& tables, int precision, int length, int sign, const Choice& choice = {});

std::string describe(const ComplexBody& body);

// Whether products of a kernel, and the sums they stand in, are made in double and rounded once, though it is in single
// precision: so the scalar kernels, but for those that have no product at all.
bool widens_products(int precision, int length);

}  // namespace xfm
