// The plan tables of the complex transforms.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "dft/forms.h"
#include "dft/transform.h"
#include "generator/functions.h"
#include "generator/passes.h"

namespace xfm::dft {

struct ComplexRow {
  ComplexPlan plan;
  std::vector<const WorkingForm*> forms;  // one or more; the kernel stands in the quickest of them
  std::string text;        // as the table has it
  Counts reference;        // additions and multiplications of real numbers, the scale left out
  Counts built;            // what a kernel must have: the reference, or a departure with its reason
  std::string reason;      // "-" where the reference is met
  std::string where;       // file and line

  // Every form of a row widens or none does: it decides bits.
  bool widens_products() const { return forms[0]->widens; }
};

struct ComplexTables {
  // The tables in a directory, validated: a row for every kernel of the function list and no other, lengths of plans,
  // departures with reasons.
  static ComplexTables read(const std::filesystem::path& plans);

  const ComplexRow& row(int precision, int length) const;

  std::map<std::pair<int, int>, ComplexRow> rows;  // by precision and length
};

int precision_of(const Function& kernel);

}  // namespace xfm::dft
