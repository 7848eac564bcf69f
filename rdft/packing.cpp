#include "rdft/packing.h"

#include <algorithm>

namespace xfm::rdft {

namespace {

// Up to here a transform and its inverse on the result at once would be slower with loads that reach over two stores.
constexpr int kShort = 32;

// Of the first cell of a pair (R_k, I_k); an odd half spectrum is the same in Pack and Perm.
int parity(Layout layout, int n) {
  switch (layout) {
    case Layout::Ccs: return 0;
    case Layout::Perm: return n % 2;
    case Layout::Pack: return 1;
    case Layout::Samples: return -1;
  }
  return -1;
}

}  // namespace

std::string kernels_name(Family family) {
  switch (family) {
    case Family::Forward: return "real forward";
    case Family::Inverse: return "real inverse";
    case Family::Hartley: return "hartley";
  }
  return {};
}

pack::Grid grid(Layout source, Layout target, int n) {
  const bool hartley = source == target;  // in pairs of neighbours; a Hartley transform is its own inverse
  const int loads = hartley ? 0 : parity(source, n), stores = hartley ? 0 : parity(target, n);
  pack::Grid grid{.pairs = std::max(loads, stores)};
  if (n <= kShort) grid.loads = loads, grid.stores = stores;
  return grid;
}

}  // namespace xfm::rdft
