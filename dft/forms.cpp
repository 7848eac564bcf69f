#include "dft/forms.h"

#include <algorithm>

namespace xfm::dft {

namespace {

Program scalar(const Graph& graph, std::span<const Point> outputs, Type) { return lower_scalar(graph, outputs); }
Program split(const Graph& graph, std::span<const Point> outputs, Type) { return lower_split(graph, outputs); }

const std::vector<Gate> kGates128 = {Gate::Gate16Inline, Gate::Gate16Twin}, kGates256 = {Gate::Gate32Inline, Gate::Plain};
const WorkingForm kForms[] = {
    {"scalar", Type::F32, 1, true, {Gate::Plain}, scalar},
    {"split", Type::F32x4, 4, false, kGates128, split},
    {"interleaved by 2", Type::F32x4, 2, false, kGates128, lower_interleaved},
    {"interleaved by 4", Type::F32x8, 4, false, kGates256, lower_interleaved},
    {"interleaved by 1", Type::F64x2, 1, false, kGates128, lower_interleaved},
    {"interleaved by 2", Type::F64x4, 2, false, kGates256, lower_interleaved},
};

}  // namespace

const WorkingForm* working_form(int precision, std::string_view name) {
  const auto found = std::find_if(std::begin(kForms), std::end(kForms), [&](const WorkingForm& form) {
    return form.name == name && single_precision(form.type) == (precision == 32);
  });
  return found == std::end(kForms) ? nullptr : found;
}

}  // namespace xfm::dft
