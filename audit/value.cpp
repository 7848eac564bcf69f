#include "value.h"

#include <algorithm>
#include <bit>

namespace xfm::audit {
namespace {

int grain_of(std::int64_t offset) {
  if (offset == 0) return kLargestGrain;
  const auto lowest = std::uint64_t{1} << std::countr_zero(static_cast<std::uint64_t>(offset));
  return static_cast<int>(std::min<std::uint64_t>(lowest, kLargestGrain));
}

}  // namespace

int grain_of(const Value& value) { return value.exact ? grain_of(value.offset) : value.grain; }

Value inexact(Value value, int grain) {
  value.exact = false;
  value.offset = 0;
  value.grain = std::min(grain, kLargestGrain);
  return value;
}

Value shifted(const Value& value, std::int64_t by) {
  if (!is_number(value) && !is_address(value)) return by == 0 ? value : Value{};
  if (!value.exact) return inexact(value, std::min(value.grain, grain_of(by)));
  Value out = value;
  out.offset += by;
  return out;
}

Value sum(const Value& a, const Value& b, int scale) {
  if (is_number(b) && b.exact) return shifted(a, b.offset * scale);
  if (is_number(a) && a.exact && scale == 1) return shifted(b, a.offset);
  const int grain_b = is_number(b) ? b.grain * scale : is_address(b) ? grain_of(b) : scale;
  if (is_address(a) && !is_address(b)) return inexact(a, std::min(grain_of(a), grain_b));
  if (is_address(b) && !is_address(a) && scale == 1) return inexact(b, is_number(a) ? std::min(a.grain, grain_b) : 1);
  if (is_number(a) && is_number(b)) return inexact(a, std::min(grain_of(a), grain_b));
  return {};
}

Value joined(const Value& a, const Value& b) {
  if (a == b) return a;
  if (is_address(a) && is_address(b) && is_buffer(a.region) && is_buffer(b.region) && a.region != b.region) {
    auto either_a = a, either_b = b;
    either_a.region = either_b.region = Region::WorkBuffer;
    return joined(either_a, either_b);
  }
  const bool alike = a.kind == b.kind && a.region == b.region && (is_address(a) || is_number(a));
  return alike ? inexact(a, std::min(grain_of(a), grain_of(b))) : Value{};
}

// Src and dst pointers are compared with alignments up to 32 only, so larger offsets keep their low bits.
Value low_bits(const Value& value) {
  if (value.kind == Value::Kind::LowBits) return value;
  if (!is_address(value) || !value.exact || value.offset % 32 != 0) return {};
  if (value.region != Region::Src && value.region != Region::Dst) return {};
  return {.kind = Value::Kind::LowBits,
          .low_of_src = value.region == Region::Src,
          .low_of_dst = value.region == Region::Dst};
}

Value union_of_low_bits(const Value& a, const Value& b) {
  const auto low_a = low_bits(a), low_b = low_bits(b);
  if (low_a.kind != Value::Kind::LowBits || low_b.kind != Value::Kind::LowBits) return {};
  return {.kind = Value::Kind::LowBits,
          .low_of_src = low_a.low_of_src || low_b.low_of_src,
          .low_of_dst = low_a.low_of_dst || low_b.low_of_dst};
}

Value truncated_to_32(const Value& value) {
  switch (value.kind) {
    case Value::Kind::Constant: return value.exact ? Value::constant(static_cast<std::uint32_t>(value.offset)) : value;
    case Value::Kind::Flag: return value;
    default: return low_bits(value);
  }
}

Value shifted_left(const Value& value, const Value& by) {
  if (!is_number(value) || !is_number(by) || !by.exact || by.offset < 0 || by.offset > 12) return {};
  return inexact(value, grain_of(value) << by.offset);
}

}  // namespace xfm::audit
