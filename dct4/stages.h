// What the stages are told beyond their objects. Plain records: the benchmark of the stages calls them too.
#pragma once

#include <stddef.h>

namespace xfm::dct4 {

struct Rows {
  ptrdiff_t columns;  // side by side
  ptrdiff_t stride;   // from row to row
};

// Part of a stage's loop: values of h, or vectors of groups.
struct Range {
  ptrdiff_t first, count;
};

}  // namespace xfm::dct4
