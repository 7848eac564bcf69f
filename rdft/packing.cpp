#include "rdft/packing.h"

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
  if (n > kShort) return {};
  if (source == target) return {.loads = 0, .stores = 0};  // a Hartley transform of a Hartley transform
  return {.loads = parity(source, n), .stores = parity(target, n)};
}

}  // namespace xfm::rdft
