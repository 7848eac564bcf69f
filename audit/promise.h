// What a function's name promises of its machine code: family, size, working form, gate, array lengths.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xfm::audit {

enum class Family { Complex, RealForward, RealInverse, Hartley, WalshHadamard };
enum class Layout { None, Ccs, Pack, Perm };
enum class Form { Scalar, Bits128, Bits256 };
enum class Gate { Plain, Gate16Twin, Gate16Inline, Gate32Inline };
enum class Shape { StraightLine, Passes };  // passes: loops over a work buffer

struct Promise {
  Family family{};
  Layout layout = Layout::None;
  std::string type;  // 32fc, 64fc, 32f, 64f
  int size = 0;      // length, or order for Walsh-Hadamard
  Form form{};
  Gate gate{};
  Shape shape = Shape::StraightLine;
  bool is_twin = false;

  [[nodiscard]] bool is_double() const { return type.starts_with("64"); }
  [[nodiscard]] int component_bytes() const { return is_double() ? 8 : 4; }
  [[nodiscard]] int lines() const;           // straight lines the function must hold
  [[nodiscard]] int src_components() const;  // array lengths in components
  [[nodiscard]] int dst_components() const;
  [[nodiscard]] int buffer_bytes() const;               // of the work buffer, 0 without one
  [[nodiscard]] bool reads_component(int index) const;  // some half-spectrum cells are never looked at
};

// Nothing when the name is not that of a kernel or twin.
[[nodiscard]] std::optional<Promise> promise_of(std::string_view function);
[[nodiscard]] std::string twin_name(std::string_view kernel);
[[nodiscard]] const char* name_of(Family family);
[[nodiscard]] const char* name_of(Form form);
[[nodiscard]] const char* name_of(Gate gate);

}  // namespace xfm::audit
