#include "generator/pack_stores.h"

#include <algorithm>
#include <map>

#include "generator/check.h"

namespace xfm::pack {

namespace {

constexpr double kStore = 0.3, kExtract = 0.7;

// Neighbouring cells that are stored at once.
struct Chunk {
  size_t first;  // among the outputs
  int count;
};

class Storing {
 public:
  Storing(const Network& network, Registers& registers, Program& program, int lanes, int parity)
      : out_(network.outputs), operations_(network.operations), registers_(registers), program_(program), lanes_(lanes),
        parity_(parity) {}

  void run() {
    std::map<int, std::vector<Chunk>> by_size;
    for (const Chunk& c : chunks()) by_size[-c.count].push_back(c);
    std::vector<Vector> vectors;
    for (const auto& [size, list] : by_size)
      for (Vector& v : joined(list, -size)) vectors.push_back(std::move(v));
    std::vector<Lanes> wants;
    for (const Vector& v : vectors) wants.push_back(v.want);
    registers_.supply(wants);
    for (const Vector& v : vectors)
      for (const auto& [chunk, lane] : v.chunks)
        store(registers_.value(v.want), type_of(chunk), lane, chunk.count, out_[chunk.first].cell, out_[chunk.first].target);
  }

 private:
  struct Vector {
    Lanes want = kEmpty;
    std::vector<std::pair<Chunk, int>> chunks;  // and their first lanes
  };

  Type type_of(const Chunk& c) const { return registers_.type(operations_[out_[c.first].operation].single); }

  bool neighbours(size_t first, int count) const {
    if (first + count > out_.size()) return false;
    const Output& begin = out_[first];
    for (int k = 0; k < count; ++k) {
      const Output& o = out_[first + k];
      if (o.target != begin.target || o.cell != begin.cell + k ||
          operations_[o.operation].single != operations_[begin.operation].single)
        return false;
    }
    return true;
  }

  // Whether a chunk begins or ends between the cells of a pair.
  bool splits_pair(size_t first, int count) const {
    if (parity_ < 0) return false;
    const auto inside = [&](size_t at) { return at > 0 && at < out_.size() && (out_[at].cell - parity_) % 2 != 0 && out_[at].cell > parity_; };
    return inside(first) || inside(first + count);
  }

  Lanes placed(const Chunk& c, int lane, Lanes want = kEmpty) const {
    for (int k = 0; k < c.count; ++k) want[lane + k] = out_[c.first + k].operation;
    return want;
  }

  // What a chunk costs, if what shares its register bears its part.
  double price(const Chunk& c) {
    double least = 1e9;
    for (int lane = 0; lane < lanes_; lane += c.count) {
      const bool extracted = c.count == 1 ? lane > 0 : lane >= lanes_ / 2 && lanes_ > 2 && bits(type_of(c)) > 128;
      least = std::min(least, registers_.price(placed(c, lane)) * (c.count == 2 && lanes_ > 2 ? 0.6 : 1) + (extracted ? kExtract : 0));
    }
    return least + kStore;
  }

  // The division of all cells that costs least.
  std::vector<Chunk> chunks() {
    const size_t n = out_.size();
    std::vector<double> cost(n + 1, 1e9);
    std::vector<int> last(n + 1);
    cost[0] = 0;
    for (size_t first = 0; first < n; ++first)
      for (int count = lanes_; count > 0; count /= 2) {
        if (cost[first] >= 1e9 || !neighbours(first, count) || splits_pair(first, count)) continue;
        const double total = cost[first] + price({first, count});
        if (total < cost[first + count]) cost[first + count] = total, last[first + count] = count;
      }
    check(cost[n] < 1e9, "every cell is stored");
    std::vector<Chunk> out;
    for (size_t end = n; end > 0; end -= last[end]) out.push_back({end - last[end], last[end]});
    std::ranges::reverse(out);
    return out;
  }

  // Chunks of one size into registers, each with those that come out of the same moves.
  std::vector<Vector> joined(std::vector<Chunk> list, int size) {
    std::vector<Vector> out;
    while (!list.empty()) {
      Vector v;
      double price = 0;
      for (bool more = true; more && !list.empty();) {
        more = false;
        double least = 1e9;
        size_t best = 0;
        int at = 0;
        for (size_t i = 0; i < list.size() && (i == 0 || !v.chunks.empty()); ++i)
          for (int lane = 0; lane + size <= lanes_; lane += size) {
            if (v.want[lane] != kNone || (!v.chunks.empty() && type_of(list[i]) != type_of(v.chunks[0].first))) continue;
            const double p = registers_.price(placed(list[i], lane, v.want));
            if (p < least) least = p, best = i, at = lane;
          }
        const bool worth = v.chunks.empty() || least <= price + registers_.price(placed(list[best], at)) - 0.01 || least <= price;
        if (least >= 1e9 || !worth) break;
        v.want = placed(list[best], at, v.want);
        v.chunks.emplace_back(list[best], at);
        list.erase(list.begin() + static_cast<long>(best));
        price = least;
        more = true;
      }
      out.push_back(std::move(v));
    }
    return out;
  }

  void store(int value, Type type, int lane, int count, int cell, int target) {
    if (count == width(type)) return program_.store(StoreKind::Full, value, cell, target);
    if (bits(type) > 128) {
      const bool upper = lane >= width(type) / 2;
      const Type half = vector_type(single_precision(type), width(type) / 2);
      const int part = program_.emit({.op = upper ? Op::HighHalf : Op::LowHalf, .type = half, .a = value});
      return store(part, half, upper ? lane - width(half) : lane, count, cell, target);
    }
    const int element = single_precision(type) ? 4 : 8;
    if (count * element == 8) return program_.store(lane == 0 ? StoreKind::Low : StoreKind::High, value, cell, target);
    program_.store(StoreKind::Lane, value, cell, target, lane);
  }

  const std::vector<Output>& out_;
  const std::vector<Operation>& operations_;
  Registers& registers_;
  Program& program_;
  const int lanes_, parity_;
};

}  // namespace

void store_outputs(const Network& network, Registers& registers, Program& program, int lanes, int parity) {
  Storing(network, registers, program, lanes, parity).run();
}

}  // namespace xfm::pack
