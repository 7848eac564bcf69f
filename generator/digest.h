// A digest of what a graph computes: of every node the operation, its operands in their order, and the constants to the last bit
// of the precision in which they stand. It does not depend on the order in which nodes were made, nor on nodes that reach no output.
#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "generator/graph.h"

namespace xfm {

class Digest {
 public:
  Digest& add(std::string_view bytes) {  // FNV-1a
    for (const char c : bytes) value_ = (value_ ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return *this;
  }
  Digest& add(std::uint64_t number) {
    for (int byte = 0; byte < 8; ++byte) value_ = (value_ ^ (number >> (8 * byte) & 0xff)) * 0x100000001b3u;
    return *this;
  }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325u;
};

inline std::string hexadecimal(std::uint64_t value) {
  std::string text;
  for (int digit = 60; digit >= 0; digit -= 4) text += "0123456789abcdef"[value >> digit & 15];
  return text;
}

// By node of a graph on one lane. `single(node)` says whether products and sums of a node, and so its constants, are in single
// precision; `mark(node)` is what else a flow says of it.
template <class Single, class Mark>
std::vector<std::uint64_t> node_digests(const Graph& g, Single single, Mark mark) {
  std::vector<std::uint64_t> of(g.size());
  for (int i = 0; i < g.size(); ++i) {
    Digest d;
    d.add(static_cast<std::uint64_t>(g[i].kind)).add(mark(i)).add(single(i));
    for (const int cell : g[i].cells) d.add(static_cast<std::uint64_t>(cell));
    for (const Term& t : g[i].terms) {
      const Real c = t.coef.lane(0);
      d.add(single(i) ? std::bit_cast<std::uint32_t>(static_cast<float>(c)) : std::bit_cast<std::uint64_t>(static_cast<double>(c)));
      d.add(static_cast<std::uint64_t>(t.ref.turn)).add(of[t.ref.node]);
    }
    of[i] = d.value();
  }
  return of;
}

// Of a graph of complex values, as the interpreter reads it.
inline std::string digest(const Graph& g, std::span<const Point> outputs, bool single, bool products_widen) {
  const auto narrow = [&](int i) { return single && !(products_widen && g[i].has_products()); };
  const std::vector<std::uint64_t> of = node_digests(g, narrow, [](int) { return 0; });
  Digest d;
  d.add(single);
  for (const Point& p : outputs) d.add(static_cast<std::uint64_t>(p.ref.turn)).add(of[p.ref.node]);
  return hexadecimal(d.value());
}

}  // namespace xfm
