#include "dft/transform.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <span>

#include "dft/lane_factors.h"
#include "generator/check.h"
#include "generator/passes.h"

namespace xfm::dft {

namespace {

// A lane of a vector, or a cell of the source, which is loaded where it is gathered.
struct Spot : Point {
  int cell = -1;

  bool is_cell() const { return cell >= 0; }
  bool missing() const { return !ref && !is_cell(); }
};
using Points = std::vector<Spot>;

class Builder {
 public:
  Builder(const ComplexPlan& plan, int sign, int lanes, Placement placement)
      : plan_(plan.plan), flow_(plan.flow), sign_(sign), placement_(placement), g_(lanes) {}

  LanedTransform build() {
    Points x;
    for (int n = 0; n < plan_.length; ++n) x.push_back({{}, n});
    LanedTransform made;
    for (const Spot& p : transform(x)) made.outputs.push_back(p);
    std::vector<Ref> refs = refs_of(made.outputs);
    made.graph = turn_products(merge_constants(g_, refs), refs);
    for (size_t k = 0; k < refs.size(); ++k) made.outputs[k].ref = refs[k];
    return made;
  }

 private:
  Points transform(const Points& x) {
    if (plan_.kind == Plan::Kind::ComplexRader) return rader(x);
    if (plan_.kind == Plan::Kind::Chirp) return chirp(x);
    return flow_ == Flow::Half ? blocks(plan_, {x}, sign_)[0] : linked(plan_, {x}, sign_)[0];
  }

  // A vector of up to `lanes` points. Cells of the source become one load; the missing lanes are empty.
  Ref gather(Points points) {
    points.resize(g_.lanes());
    if (std::any_of(points.begin(), points.end(), [](const Spot& p) { return p.is_cell(); })) {
      std::vector<int> cells;
      for (const Spot& p : points) cells.push_back(p.cell);
      return g_.input(cells);
    }
    std::vector<Point> lanes;
    for (const Spot& p : points) lanes.push_back(p.ref ? Point(p) : Point{{}, kAnyLane});
    return g_.regroup(lanes);
  }

  Ref gather_point(const std::vector<Points>& instances, std::span<const size_t> lanes, int point) {
    Points row;
    for (size_t i : lanes) row.push_back(instances[i][point]);
    return gather(std::move(row));
  }

  std::vector<Ref> block(const Plan& plan, const std::vector<Ref>& x, int sign) {
    return flow_ != Flow::Complex && plan.link() ? half_spectrum_block(g_, plan, x, sign) : complex_block(g_, plan, x, sign);
  }

  // The vector of which a vector is a product.
  int source(Ref r) const {
    const auto found = multiplied_.find(r.node);
    return found == multiplied_.end() ? r.node : found->second;
  }

  // An order of instances in which those that fill both lanes of the same vectors already are neighbours.
  std::vector<size_t> side_by_side(const std::vector<Points>& instances) const {
    std::vector<size_t> order(instances.size());
    std::iota(order.begin(), order.end(), 0);
    if (g_.lanes() != 2 || instances[0][0].is_cell()) return order;
    const auto together = [&](size_t low, size_t high) {
      for (size_t n = 0; n < instances[low].size(); ++n) {
        const Point &a = instances[low][n], &b = instances[high][n];
        if (!a.ref || !b.ref || source(a.ref) != source(b.ref) || a.lane != 0 || b.lane != 1) return false;
      }
      return true;
    };
    std::vector<size_t> pairs, single;
    std::vector<char> taken(instances.size());
    for (size_t i = 0; i < instances.size(); ++i) {
      for (size_t j = 0; j < instances.size() && !taken[i]; ++j) {
        if (taken[j] || !together(i, j)) continue;
        pairs.insert(pairs.end(), {i, j});
        taken[i] = taken[j] = 1;
      }
    }
    for (size_t i = 0; i < instances.size(); ++i)
      if (!taken[i]) single.push_back(i);
    pairs.insert(pairs.end(), single.begin(), single.end());
    return pairs;
  }

  // Instances of a block, `lanes` to a vector. Those that lack points have fewer operations, so a vector holds only such as
  // lack the same; each stands on the lane that it would have among the others. Of a second stage, every `rows` instances
  // are those of one link.
  std::vector<Points> blocks(const Plan& plan, const std::vector<Points>& instances, int sign, int rows = 1) {
    std::vector<Points> outputs(instances.size());
    const std::vector<size_t> order = side_by_side(instances);
    for (size_t start = 0; start < instances.size(); start += g_.lanes()) {
      std::map<std::pair<bool, std::vector<bool>>, std::vector<int>> alike;  // by kind of row and missing points: the lanes
      for (size_t l = 0; l < static_cast<size_t>(g_.lanes()) && start + l < instances.size(); ++l) {
        const size_t i = order[start + l];
        const bool real = plan.kind == Plan::Kind::Rows && real_bin(static_cast<int>(i) % rows, rows);
        alike[{real, missing(instances[i])}].push_back(static_cast<int>(l));
      }
      for (const auto& [kind, lanes] : alike) {
        std::vector<Ref> in;
        for (int n = 0; n < plan.length; ++n) {
          Points row(g_.lanes());
          for (int l : lanes) row[l] = instances[order[start + l]][n];
          in.push_back(gather(std::move(row)));
        }
        const std::vector<Ref> out = block(kind.first ? plan.in_real_rows() : plan.in_complex_rows(), in, sign);
        for (int l : lanes)
          for (Ref r : out) outputs[order[start + l]].push_back({r, l});
      }
    }
    return outputs;
  }

  static std::vector<bool> missing(const Points& points) {
    std::vector<bool> lacks;
    for (const Spot& p : points) lacks.push_back(p.missing());
    return lacks;
  }

  // A link at the outermost level of lanes, for several instances at once.
  std::vector<Points> linked(const Plan& plan, const std::vector<Points>& instances, int sign, int rows_of_link = 1) {
    if (!plan.link()) return blocks(plan, instances, sign, rows_of_link);
    const LinkMap map(plan);
    const int count = static_cast<int>(instances.size());
    std::vector<Points> in;
    for (const Points& x : instances)
      for (Points& points : map.classes(std::span<const Spot>(x))) in.push_back(std::move(points));
    std::vector<Points> u = inner(plan.first(), in, sign);

    std::vector<Points> rows;
    for (int m = 0; m < count; ++m)
      for (int k1 = 0; k1 < map.a; ++k1) {
        rows.emplace_back();
        for (int j = 0; j < map.b; ++j) rows.back().push_back(u[m * map.b + j][k1]);
      }
    const auto groups = [&](int n) { return (n + g_.lanes() - 1) / g_.lanes(); };
    const bool before_regrouping = (map.a - 1) * groups(count * map.b) < (map.b - 1) * groups(count * map.a);
    if (map.twiddles) twiddle(rows, map, sign, before_regrouping);
    const std::vector<Points> z = inner(plan.second(), rows, sign, map.a);

    std::vector<Points> y;
    for (int m = 0; m < count; ++m) {
      y.emplace_back(map.length());
      for (int k1 = 0; k1 < map.a; ++k1)
        for (int k2 = 0; k2 < map.b; ++k2) y[m][map.output(k1, k2)] = z[m * map.a + k1][k2];
    }
    return y;
  }

  std::vector<Points> inner(const Plan& plan, const std::vector<Points>& instances, int sign, int rows = 1) {
    return placement_ == Placement::Flattened ? linked(plan, instances, sign, rows) : blocks(plan, instances, sign, rows);
  }

  // Multiplies point j of row k1 by its twiddle: on the vectors that hold the points now, or on those of the next stage,
  // whichever are fewer.
  void twiddle(std::vector<Points>& rows, const LinkMap& map, int sign, bool before_regrouping) {
    if (!before_regrouping) {
      const std::vector<size_t> order = side_by_side(rows);
      for (size_t start = 0; start < rows.size(); start += g_.lanes()) {
        const std::span lanes(order.begin() + start, std::min<size_t>(g_.lanes(), rows.size() - start));
        for (int j = 0; j < map.b; ++j) {
          const Ref v = gather_point(rows, lanes, j);
          for (size_t l = 0; l < lanes.size(); ++l)
            if (rows[lanes[l]][j].ref) rows[lanes[l]][j] = {v, static_cast<int>(l)};
        }
      }
    }
    std::vector<Point*> points;
    std::vector<ComplexNumber> factors;
    for (size_t r = 0; r < rows.size(); ++r)
      for (int j = 0; j < map.b; ++j) {
        points.push_back(&rows[r][j]);
        factors.push_back(map.twiddle(sign, j, static_cast<int>(r % map.a)));
      }
    multiply(points, factors);
  }

  // Every vector that holds some of the points times a factor for each of them.
  void multiply(const std::vector<Point*>& points, const std::vector<ComplexNumber>& factors) {
    struct Vector {
      Ref ref;
      std::vector<std::optional<ComplexNumber>> factors;
      std::vector<Point*> points;
    };
    std::vector<Vector> vectors;
    for (size_t i = 0; i < points.size(); ++i) {
      const Point& p = *points[i];
      if (!p.ref) continue;
      auto v = std::find_if(vectors.begin(), vectors.end(), [&](const Vector& held) {
        return held.ref == p.ref && (!held.factors[p.lane] || *held.factors[p.lane] == factors[i]);
      });
      if (v == vectors.end()) v = vectors.insert(v, {p.ref, std::vector<std::optional<ComplexNumber>>(g_.lanes()), {}});
      v->factors[p.lane] = factors[i];
      v->points.push_back(points[i]);
    }
    for (const Vector& v : vectors) {
      std::vector<Ref> products = times_lanes(g_, v.ref, v.factors);
      if (g_.lanes() > 2) products = in_one(products);
      for (Point* p : v.points) p->ref = products[p->lane];
      for (Ref product : products)
        if (product && product.node != v.ref.node) multiplied_.emplace(product.node, source(v.ref));
    }
  }

  void multiply(Points& points, const std::vector<ComplexNumber>& factors) {
    std::vector<Point*> all;
    for (Spot& p : points) all.push_back(&p);
    multiply(all, factors);
  }

  // One vector of the lanes of several: shuffles of more than two lanes share their first steps where they take vectors whole.
  std::vector<Ref> in_one(const std::vector<Ref>& by_lane) {
    std::vector<Point> points;
    for (int l = 0; l < g_.lanes(); ++l) points.push_back(by_lane[l] ? Point{by_lane[l], l} : Point{{}, kAnyLane});
    return std::vector<Ref>(by_lane.size(), g_.regroup(points));
  }

  Points rader(const Points& x) {
    const auto add = [&](const Spot& first, const Spot& bin) {
      Points alone(g_.lanes());
      alone[bin.lane] = first;
      return Spot{{g_.add(gather(std::move(alone)), bin.ref), bin.lane}};
    };
    const auto run = [&](const Plan& plan, const Points& points, int sign) { return linked(plan, {points}, sign)[0]; };
    const auto times = [&](Points& bins, const std::vector<ComplexNumber>& spectrum) { multiply(bins, spectrum); };
    return complex_rader(plan_, std::span<const Spot>(x), sign_, add, times, run);
  }

  Points chirp(const Points& x) {
    const int p = plan_.length, t = plan_.first().length;
    // exp(sign*i*pi*m^2/p) on both ends, with the other sign in between.
    std::vector<ComplexNumber> factors;
    for (int m = 0; m < p; ++m) factors.push_back(ComplexNumber::root(sign_ * (m * m % (2 * p)), 2 * p));
    Points bins = linked(plan_.first(), {chirped(x, factors, t)}, -1)[0];
    std::vector<ComplexNumber> spectrum(t);
    for (int j = 0; j < t; ++j) {
      ComplexNumber d{1, 0};
      for (int m = 1; m < p; ++m) {
        const Real twice = 2 * cos_turn(m * j, t);
        d.re += twice * factors[m].re;
        d.im -= twice * factors[m].im;
      }
      spectrum[j] = {d.re / t, d.im / t};
    }
    multiply(bins, spectrum);
    Points r = linked(mirrored(plan_.first()), {bins}, +1)[0];
    r.resize(p);
    multiply(r, factors);
    return r;
  }

  // The source times the chirp, on the vectors that the first stage of the convolution gathers, and zeros behind it.
  Points chirped(const Points& x, const std::vector<ComplexNumber>& factors, int length) {
    Points z;
    for (size_t start = 0; start < x.size(); start += g_.lanes()) {
      const size_t end = std::min(start + g_.lanes(), x.size());
      const Ref v = gather({x.begin() + start, x.begin() + end});
      Points held;
      for (size_t n = start; n < end; ++n) held.push_back({{v, static_cast<int>(n - start)}});
      multiply(held, {factors.begin() + start, factors.begin() + end});
      z.insert(z.end(), held.begin(), held.end());
    }
    z.resize(length);
    return z;
  }

  const Plan& plan_;
  const Flow flow_;
  const int sign_;
  const Placement placement_;
  Graph g_;
  std::map<int, int> multiplied_;  // vectors made by `multiply`, and what of
};

}  // namespace

LanedTransform laned_transform(const ComplexPlan& plan, int sign, int lanes, Placement placement) {
  return Builder(plan, sign, lanes, placement).build();
}

}  // namespace xfm::dft
