// What the stages know and are told beyond their objects. The benchmark of the stages calls them too.
#pragma once

#include <stddef.h>

namespace xfm::dct4 {

// Every length with a split of columns (4096 and up) has so many of them, side by side in each row.
constexpr ptrdiff_t kColumns = 32;

// Part of a stage's loop: values of h, or vectors of groups.
struct Range {
  ptrdiff_t first, count;
  ptrdiff_t after = -1;  // where the next part begins if its table is to be fetched meanwhile
};

}  // namespace xfm::dct4
