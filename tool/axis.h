// The marks of an axis.
#pragma once

#include <string>
#include <vector>

namespace xfm::tool {

struct Mark {
  double value;
  std::string text;
};

// At 0 and multiples of 1, 2 or 5 times a power of ten up to `range`, at most `most` steps.
std::vector<Mark> even_marks(double range, int most);
// At 1, 2 and 5 times the powers of ten within the range.
std::vector<Mark> decade_marks(double least, double most);

}  // namespace xfm::tool
