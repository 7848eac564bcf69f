// The list of public functions (plans/functions.tsv), expanded to one record per function.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "generator/gate.h"

namespace xfm {

// Which flag divides by N: xfmScaleFwdByN (Forward), xfmScaleInvByN (Inverse), both (SelfInverse).
enum class ScaleRule { Forward, Inverse, SelfInverse };

enum class FunctionKind { Kernel, Dispatcher, Entry };

struct Function {
  std::string name;        // xfmgDFTFwd_CToC_15_32fc
  FunctionKind kind = FunctionKind::Entry;
  std::string part;        // the folder it comes from: dft, rdft, wht, dct4, frame
  std::string family;      // xfmgDFTFwd_CToC
  std::string dispatcher;  // of a kernel or dispatcher: xfmgDFTFwd_CToC_32fc
  std::string type;        // 32f, 64f, 32fc, 64fc; empty where the function has none
  std::string returns;     // C text
  std::string arguments;   // C text
  std::string index;       // of a dispatcher: the argument that selects the kernel, len or order
  int size = 0;            // of a kernel: its length or order
  ScaleRule scale = ScaleRule::Forward;              // of a kernel
  Gate gate = Gate::Plain;  // of a kernel
  std::string doc;         // one line, empty for a kernel

  // Whether a work buffer is its last argument.
  [[nodiscard]] bool takes_buffer() const { return arguments.ends_with("void* buffer"); }
  // The C declaration without the semicolon.
  [[nodiscard]] std::string declaration() const;
  // Name of the function that takes the misaligned calls of a Gate16Twin kernel.
  [[nodiscard]] std::string twin_name() const;
};

class FunctionList {
 public:
  // Reads and validates the table; the functions keep its order, a dispatcher standing before its kernels.
  static FunctionList read(const std::filesystem::path& path);

  [[nodiscard]] const std::vector<Function>& functions() const { return functions_; }
  // The function of that name, or null.
  [[nodiscard]] const Function* find(std::string_view name) const;
  // The kernels of a dispatcher in ascending order of size.
  [[nodiscard]] std::vector<const Function*> kernels(std::string_view dispatcher) const;
  // Only the functions whose part, family, dispatcher or own name is among `names`; an unknown name is bad input.
  [[nodiscard]] FunctionList restricted_to(const std::vector<std::string>& names) const;

 private:
  std::vector<Function> functions_;
};

std::string_view to_string(Gate gate);
std::string_view to_string(ScaleRule scale);
std::string_view to_string(FunctionKind kind);

}  // namespace xfm
