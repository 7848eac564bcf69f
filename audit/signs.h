// Fused operations that stand for an addition or a subtraction: one factor is 1 or -1 in every lane, so that one rounding
// is all there is.
#pragma once

#include "body.h"

namespace xfm::audit {

[[nodiscard]] bool is_fused(const Instruction& instruction);
// By instruction: whether it is a fused operation that does more than add or subtract.
[[nodiscard]] std::vector<bool> fused_products(const Body& body, const ElfImage& image);

}  // namespace xfm::audit
