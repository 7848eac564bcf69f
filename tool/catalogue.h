// The functions of the library, from the list that the build makes of them.
#pragma once

#include <string>
#include <vector>

namespace xfm::tool {

struct Function {
  std::string name;    // xfmgDFTFwd_CToC_15_32fc
  std::string kind;    // kernel, dispatcher or entry
  std::string family;  // xfmgDFTFwd_CToC
  std::string type;    // 32f, 64f, 32fc, 64fc; empty where it has none
  std::string scale;   // of a kernel: forward, inverse or self-inverse
  int size = 0;        // of a kernel: its length or order
  bool takes_buffer = false;

  [[nodiscard]] std::string dispatcher() const { return family + "_" + type; }
  [[nodiscard]] bool is_single() const { return type.starts_with("32"); }
  [[nodiscard]] bool is_complex() const { return type.ends_with('c'); }
};

const std::vector<Function>& functions();

}  // namespace xfm::tool
