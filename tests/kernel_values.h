// Data that tells bits apart: plain values, zeros of both signs, infinities, subnormals, and small integers, whose sums vanish.
#pragma once

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace kernel_values {

enum class Data { Plain, Zeros, Infinities, Subnormals, SmallIntegers };
inline constexpr Data kData[] = {Data::Plain, Data::Zeros, Data::Infinities, Data::Subnormals, Data::SmallIntegers};

template <class T>
T value_of(Data data, std::mt19937& engine) {
  const T plain = static_cast<T>(static_cast<float>(engine() / 2147483648.0 - 1.0));
  const unsigned die = engine() % 8;
  switch (data) {
    case Data::Plain: return plain;
    case Data::Zeros: return die < 3 ? T(0) : die < 6 ? -T(0) : plain;
    case Data::Infinities: return die == 0 ? std::copysign(std::numeric_limits<T>::infinity(), plain) : die == 1 ? -T(0) : plain;
    case Data::Subnormals: return plain * std::numeric_limits<T>::min() * (die < 6 ? 1 : 64);
    case Data::SmallIntegers: return static_cast<T>(static_cast<int>(die % 3) - 1);
  }
  return plain;
}

template <class T>
std::vector<T> values_of(Data data, size_t count, std::mt19937& engine) {
  std::vector<T> values(count);
  for (T& v : values) v = value_of<T>(data, engine);
  return values;
}

// The first element that differs in its bits, or the length; of NaNs only the place counts.
template <class T, class U>
size_t difference(const std::vector<T>& a, const std::vector<U>& b) {
  for (size_t i = 0; i < a.size(); ++i)
    if (!(a[i] == b[i] && std::signbit(a[i]) == std::signbit(b[i])) && !(std::isnan(a[i]) && std::isnan(b[i]))) return i;
  return a.size();
}

}  // namespace kernel_values
