#include "rdft/packing.h"

namespace xfm::rdft {

namespace {

// Up to here a transform and its inverse on the result at once would be slower with loads that reach over two stores.
constexpr int kShort = 32;

int parity(Layout layout) {
  switch (layout) {
    case Layout::Ccs:
    case Layout::Perm: return 0;
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
  return {.loads = parity(source), .stores = parity(target)};
}

}  // namespace xfm::rdft
