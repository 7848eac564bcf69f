// The kernels of a DCT-IV unit: the inner transforms bound to their operands, as the text of inline functions.
#pragma once

#include <string>
#include <vector>

#include "dct4/kernel_plans.h"
#include "dct4/network.h"
#include "generator/pack_forms.h"

namespace xfm::dct4 {

struct StageKernel {
  KernelPlan plan;
  Network net;
  std::vector<std::string> sources = {}, targets = {};
  std::string parameters = {};            // of the function
  std::vector<std::string> prelude = {};  // statements before the body
};

// All kernels of one precision, in the order of the unit. Operations other than the plan's are bad input.
std::vector<StageKernel> stage_kernels(const std::filesystem::path& table, const std::string& type);
// What a target makes of a kernel that is a whole transform.
pack::Forms::Form whole_form(const StageKernel& kernel, const std::string& type, const pack::Forms& forms);
// The definition of a member of Kernels<precision> (dct4/kernel_set.h), with its pool of constants.
std::string kernel_text(const StageKernel& kernel, const std::string& type, const pack::Forms& forms);

}  // namespace xfm::dct4
