// What the abstract machine knows of one register or stack slot, and the little arithmetic on it.
#pragma once

#include <cstdint>

namespace xfm::audit {

enum class Region {
  None,
  Src,
  Dst,
  Stack,          // offsets from the stack pointer at entry
  AlignedStack,   // offsets from the stack pointer after it was aligned downwards
  Image,          // an address of the shared object itself
  CallersBuffer,  // the work buffer that came as an argument
  OwnBuffer,      // the one that was allocated
  WorkBuffer,     // either, depending on the path
};

[[nodiscard]] inline bool is_buffer(Region region) {
  return region == Region::CallersBuffer || region == Region::OwnBuffer || region == Region::WorkBuffer;
}

struct Value {
  enum class Kind { Unknown, Constant, Address, LowBits, Flag };
  Kind kind = Kind::Unknown;
  Region region = Region::None;
  bool exact = false;       // Address, Constant: the offset or value is known
  std::int64_t offset = 0;  // Address: offset into the region; Constant: its value
  int grain = 1;            // inexact: a power of two that divides every offset or value it may have
  bool low_of_src = false;  // LowBits: the low bits are those of src, of dst, or of src | dst
  bool low_of_dst = false;

  static Value constant(std::int64_t value) { return {.kind = Kind::Constant, .exact = true, .offset = value}; }
  static Value address(Region region, std::int64_t offset) {
    return {.kind = Kind::Address, .region = region, .exact = true, .offset = offset};
  }
  static Value somewhere_in(Region region, int grain) {
    return {.kind = Kind::Address, .region = region, .grain = grain};
  }
  static Value multiple_of(int grain) { return {.kind = Kind::Constant, .grain = grain}; }
  static Value flag() { return {.kind = Kind::Flag}; }
  bool operator==(const Value&) const = default;
};

inline constexpr int kLargestGrain = 4096;  // loaders place an image on page boundaries

[[nodiscard]] inline bool is_address(const Value& value) { return value.kind == Value::Kind::Address; }
[[nodiscard]] inline bool is_number(const Value& value) { return value.kind == Value::Kind::Constant; }

// The largest power of two, up to kLargestGrain, that divides the offset or value.
[[nodiscard]] int grain_of(const Value& value);
[[nodiscard]] Value inexact(Value value, int grain);
[[nodiscard]] Value shifted(const Value& value, std::int64_t by);
[[nodiscard]] Value sum(const Value& a, const Value& b, int scale = 1);  // a + b * scale
[[nodiscard]] Value shifted_left(const Value& value, const Value& by);
[[nodiscard]] Value joined(const Value& a, const Value& b);  // what holds of both
[[nodiscard]] Value low_bits(const Value& value);
[[nodiscard]] Value union_of_low_bits(const Value& a, const Value& b);
[[nodiscard]] Value truncated_to_32(const Value& value);

}  // namespace xfm::audit
