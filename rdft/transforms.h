// The families of real transforms: the table that each is made from and the layouts of its arrays.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "generator/check.h"
#include "rdft/flow.h"
#include "rdft/layout.h"

namespace xfm::rdft {

struct Transform {
  std::string unit;  // without the type
  std::string name;  // of the functions, without length and type
  Family family;
  Layout source, target;
};

inline const std::vector<Transform>& transforms() {
  static const std::vector<Transform> rows = {
      {"pgenrdftfwdccs", "xfmgDFTFwd_RToCCS", Family::Forward, Layout::Samples, Layout::Ccs},
      {"pgenrdftfwdpack", "xfmgDFTFwd_RToPack", Family::Forward, Layout::Samples, Layout::Pack},
      {"pgenrdftfwdperm", "xfmgDFTFwd_RToPerm", Family::Forward, Layout::Samples, Layout::Perm},
      {"pgenrdftinvccs", "xfmgDFTInv_CCSToR", Family::Inverse, Layout::Ccs, Layout::Samples},
      {"pgenrdftinvpack", "xfmgDFTInv_PackToR", Family::Inverse, Layout::Pack, Layout::Samples},
      {"pgenrdftinvperm", "xfmgDFTInv_PermToR", Family::Inverse, Layout::Perm, Layout::Samples},
      {"pgenhartley", "xfmgHartley", Family::Hartley, Layout::Samples, Layout::Samples},
  };
  return rows;
}

// Of the functions of that name.
inline const Transform& transform_of(const std::string& name) {
  const auto found = std::ranges::find(transforms(), name, &Transform::name);
  check(found != transforms().end(), name + " is a real transform");
  return *found;
}

}  // namespace xfm::rdft
