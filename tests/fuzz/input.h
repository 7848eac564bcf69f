// The bytes of one fuzzed input, taken one after the other; zeros behind their end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}
  [[nodiscard]] bool empty() const { return at_ == end_; }
  std::uint8_t byte() { return at_ == end_ ? 0 : *at_++; }
  bool flag() { return (byte() & 1) != 0; }
  unsigned below(unsigned limit) { return byte() % limit; }
  int any() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return static_cast<int>(value);
  }

 private:
  const std::uint8_t *at_, *end_;
};

// The promise under test; its breach ends the run, and the input is kept.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace fuzz
