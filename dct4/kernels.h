// The kernels of a DCT-IV unit: the inner transforms bound to their operands, as the text of inline functions.
#pragma once

#include <string>
#include <vector>

#include "dct4/network.h"

namespace xfm {

struct StageKernel {
  std::string kind;  // forward, synthesis, combine, straight
  int length = 0;
  Network net;
  std::vector<std::string> sources, targets;
  std::string parameters;           // of the function <kind><length>
  std::vector<std::string> prelude;  // statements before the body
};

// All kernels of one precision, in the order of the unit.
std::vector<StageKernel> stage_kernels(bool single);
std::string kernel_text(const StageKernel& kernel, bool single);

}  // namespace xfm
