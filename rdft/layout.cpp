#include "rdft/layout.h"

namespace xfm::rdft {

int position(Layout layout, int n, int place) {
  switch (layout) {
    case Layout::Samples:
    case Layout::Pack: return place;
    case Layout::Ccs: return place == 0 ? 0 : place + 1;
    case Layout::Perm:
      if (n % 2 == 1 || place == 0) return place;
      return place == n - 1 ? 1 : place + 1;
  }
  return place;
}

std::vector<int> zero_positions(Layout layout, int n) {
  if (layout != Layout::Ccs) return {};
  return n % 2 == 0 ? std::vector{1, n + 1} : std::vector{1};
}

}  // namespace xfm::rdft
