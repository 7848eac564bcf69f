#include "dft/transform.h"

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <span>

#include "generator/check.h"
#include "generator/passes.h"

namespace xfm {

namespace {

using Points = std::vector<Point>;

// Which blocks of a stage take the form of first stages.
enum class First { All, One, None };

class Builder {
 public:
  Builder(const ComplexPlan& plan, const Recipes& recipes, int sign, int lanes, Placement placement)
      : plan_(plan), recipes_(recipes), sign_(sign), placement_(placement), g_(lanes) {}

  LanedTransform build() {
    Points x;
    for (int n = 0; n < plan_.length; ++n) x.push_back({{-2, 0}, n});  // a cell of the source, loaded where it is gathered
    LanedTransform made;
    made.outputs = transform(x);
    std::vector<Ref> refs;
    for (const Point& p : made.outputs) refs.push_back(p.ref);
    made.graph = merge_constants(g_, refs);
    for (size_t k = 0; k < refs.size(); ++k) made.outputs[k].ref = refs[k];
    return made;
  }

 private:
  Points transform(const Points& x) {
    switch (plan_.method) {
      case ComplexPlan::Method::Linked:
        if (plan_.flow == Flow::Half)
          return alone(x, [&](const std::vector<Ref>& in) { return block(plan_.plan, in, sign_, true); });
        return linked(plan_.plan, {x}, sign_, true)[0];
      case ComplexPlan::Method::Direct:
        return alone(x, [&](const std::vector<Ref>& in) { return half_spectrum_block(g_, {Plan::Kind::Block, plan_.length}, in, sign_); });
      case ComplexPlan::Method::RealLane:
        return alone(x, [&](const std::vector<Ref>& in) {
          return half_spectrum_block(g_, recipes_.by_prime.at(plan_.length), in, sign_);
        });
      case ComplexPlan::Method::RaderComplex: return rader(x);
      case ComplexPlan::Method::Bluestein: return bluestein(x);
    }
    return {};
  }

  // A block that has the first lane to itself.
  Points alone(const Points& x, const std::function<std::vector<Ref>(const std::vector<Ref>&)>& block) {
    std::vector<Ref> in;
    for (const Point& p : x) in.push_back(gather({p}));
    Points y;
    for (Ref r : block(in)) y.push_back({r, 0});
    return y;
  }

  static bool is_cell(const Point& p) { return p.ref.node == -2; }

  // A vector of up to `lanes` points. Cells of the source become one load; the missing lanes are empty.
  Ref gather(Points points) {
    points.resize(g_.lanes(), {{}, kAnyLane});
    if (std::any_of(points.begin(), points.end(), is_cell)) {
      std::vector<int> cells;
      for (const Point& p : points) cells.push_back(is_cell(p) ? p.lane : -1);
      return g_.input(cells);
    }
    return g_.regroup(points);
  }

  Ref gather_point(const std::vector<Points>& instances, std::span<const size_t> lanes, int point) {
    Points row;
    for (size_t i : lanes) row.push_back(instances[i][point]);
    return gather(std::move(row));
  }

  std::vector<Ref> block(const Plan& plan, const std::vector<Ref>& x, int sign, bool first_stage) {
    if (plan_.flow != Flow::Complex && plan.link())
      return half_spectrum_block(g_, plan, x, sign, prime_plans(recipes_, plan_.forms, first_stage));
    return complex_block(g_, recipes_, plan_.forms, plan, x, sign, first_stage);
  }

  // An order of instances in which those that fill both lanes of the same vectors already are neighbours.
  std::vector<size_t> side_by_side(const std::vector<Points>& instances) const {
    std::vector<size_t> order(instances.size());
    std::iota(order.begin(), order.end(), 0);
    if (g_.lanes() != 2 || is_cell(instances[0][0])) return order;
    const auto together = [&](size_t low, size_t high) {
      for (size_t n = 0; n < instances[low].size(); ++n) {
        const Point &a = instances[low][n], &b = instances[high][n];
        if (!a.ref || !(a.ref == b.ref) || a.lane != 0 || b.lane != 1) return false;
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

  // Instances of a block, `lanes` to a vector.
  std::vector<Points> blocks(const Plan& plan, const std::vector<Points>& instances, int sign, First first) {
    std::vector<Points> outputs(instances.size());
    const std::vector<size_t> order = side_by_side(instances);
    for (size_t start = 0; start < instances.size(); start += g_.lanes()) {
      const std::span lanes(order.begin() + start, std::min<size_t>(g_.lanes(), instances.size() - start));
      std::vector<Ref> in;
      for (int n = 0; n < plan.length; ++n) in.push_back(gather_point(instances, lanes, n));
      const bool has_first = std::find(lanes.begin(), lanes.end(), 0) != lanes.end();
      const std::vector<Ref> out = block(plan, in, sign, first == First::All || (first == First::One && has_first));
      for (size_t l = 0; l < lanes.size(); ++l)
        for (Ref r : out) outputs[lanes[l]].push_back({r, static_cast<int>(l)});
    }
    return outputs;
  }

  // A link at the outermost level of lanes, for several instances at once.
  std::vector<Points> linked(const Plan& plan, const std::vector<Points>& instances, int sign, bool first_stage) {
    if (!plan.link()) return blocks(plan, instances, sign, first_stage ? First::All : First::None);
    const LinkMap map(plan);
    const int count = static_cast<int>(instances.size());
    std::vector<Points> in;
    for (int m = 0; m < count; ++m)
      for (int j = 0; j < map.b; ++j) {
        in.emplace_back();
        for (int i = 0; i < map.a; ++i) in.back().push_back(instances[m][map.input(i, j)]);
      }
    std::vector<Points> u = inner(plan.first(), in, sign, first_stage ? First::All : First::None);

    std::vector<Points> rows;
    for (int m = 0; m < count; ++m)
      for (int k1 = 0; k1 < map.a; ++k1) {
        rows.emplace_back();
        for (int j = 0; j < map.b; ++j) rows.back().push_back(u[m * map.b + j][k1]);
      }
    const auto groups = [&](int n) { return (n + g_.lanes() - 1) / g_.lanes(); };
    const bool before_regrouping = (map.a - 1) * groups(count * map.b) < (map.b - 1) * groups(count * map.a);
    if (map.twiddles) twiddle(rows, map, sign, before_regrouping);
    const std::vector<Points> z = inner(plan.second(), rows, sign, first_stage ? First::One : First::None);

    std::vector<Points> y;
    for (int m = 0; m < count; ++m) {
      y.emplace_back(map.length());
      for (int k1 = 0; k1 < map.a; ++k1)
        for (int k2 = 0; k2 < map.b; ++k2) y[m][map.output(k1, k2)] = z[m * map.a + k1][k2];
    }
    return y;
  }

  std::vector<Points> inner(const Plan& plan, const std::vector<Points>& instances, int sign, First first) {
    return placement_ == Placement::Flattened ? linked(plan, instances, sign, first == First::All)
                                              : blocks(plan, instances, sign, first);
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
          for (size_t l = 0; l < lanes.size(); ++l) rows[lanes[l]][j] = {v, static_cast<int>(l)};
        }
      }
    }
    std::map<int, std::vector<std::pair<Point*, int>>> held;  // by node: its points and their exponents
    for (size_t r = 0; r < rows.size(); ++r)
      for (int j = 0; j < map.b; ++j) {
        Point& p = rows[r][j];
        if (p.ref) held[p.ref.node].emplace_back(&p, sign * j * static_cast<int>(r % map.a));
      }
    for (auto& [node, points] : held) {
      Angles angles{std::vector<int>(g_.lanes()), map.length()};
      std::vector<char> used(g_.lanes());
      for (const auto& [p, e] : points) {
        angles.num[p->lane] = e;
        used[p->lane] = 1;
      }
      for (int l = 0; l < g_.lanes(); ++l)
        if (!used[l]) angles.num[l] = points[0].second;
      for (auto& [p, e] : points) p->ref = twiddled_lanes(g_, p->ref, angles);
    }
  }

  // Every vector that holds some of the points times a constant for each of them.
  void multiply(Points& points, const std::vector<ComplexNumber>& constants) {
    std::map<std::pair<int, int>, std::vector<int>> held;
    for (size_t j = 0; j < points.size(); ++j)
      if (points[j].ref) held[{points[j].ref.node, points[j].ref.turn}].push_back(static_cast<int>(j));
    for (const auto& [ref, bins] : held) {
      std::vector<Real> c(g_.lanes()), s(g_.lanes());
      for (int j : bins) {
        c[points[j].lane] = constants[j].re;
        s[points[j].lane] = constants[j].im;
      }
      const Ref product = Physical{g_}.times(points[bins[0]].ref, Coef(c), Coef(s));
      for (int j : bins) points[j].ref = product;
    }
  }

  // A point of the source on a given lane, all others empty.
  Ref on_lane(const Point& cell, int lane) {
    Points points(g_.lanes());
    points[lane] = cell;
    return gather(std::move(points));
  }

  Points rader(const Points& x) {
    const int p = plan_.length, root = primitive_root(p), length = p - 1;
    Points in;
    for (int q = 0; q < length; ++q) in.push_back(x[power_mod(root, q, p)]);
    Points bins = linked(plan_.plan, {in}, -1, false)[0];
    Points y(p);
    y[0] = {g_.add(on_lane(x[0], bins[0].lane), bins[0].ref), bins[0].lane};
    multiply(bins, rader_spectrum(p, root, sign_));
    const int dc = bins[0].ref.node;
    const Ref fed = g_.add(on_lane(x[0], bins[0].lane), bins[0].ref);
    for (Point& b : bins)
      if (b.ref.node == dc) b.ref = fed;
    const Points c = linked(mirrored(plan_.plan), {bins}, +1, false)[0];
    const int inverse_root = power_mod(root, p - 2, p);
    for (int q = 0; q < length; ++q) y[power_mod(inverse_root, q, p)] = c[q];
    return y;
  }

  Points bluestein(const Points& x) {
    const int p = plan_.length, t = plan_.plan.length;
    // exp(-sign*i*pi*m^2/p); its conjugate is the chirp on both ends.
    const auto chirp = [&](int m, int s) {
      const int e = s * (m * m % (2 * p));
      return ComplexNumber{cos_turn(e, 2 * p), sin_turn(e, 2 * p)};
    };
    Points z(t);
    chirped_input(x, z, [&](int n) { return chirp(n, sign_); });
    Points bins = linked(plan_.plan, {z}, -1, false)[0];
    std::vector<ComplexNumber> spectrum(t);
    for (int j = 0; j < t; ++j) {
      ComplexNumber d{1, 0};
      for (int m = 1; m < p; ++m) {
        const ComplexNumber w = chirp(m, -sign_);
        const Real twice = 2 * cos_turn(m * j, t);
        d.re += twice * w.re;
        d.im += twice * w.im;
      }
      spectrum[j] = {d.re / t, d.im / t};
    }
    multiply(bins, spectrum);
    Points r = linked(mirrored(plan_.plan), {bins}, +1, false)[0];
    r.resize(p);
    std::vector<ComplexNumber> last;
    for (int k = 0; k < p; ++k) last.push_back(chirp(k, sign_));
    multiply(r, last);
    return r;
  }

  // The chirp is put on the vectors that the first stage of the convolution gathers: its blocks take points b, b + B, ...
  template <class Chirp>
  void chirped_input(const Points& x, Points& z, const Chirp& chirp) {
    const int p = plan_.length, lanes = g_.lanes();
    for (int start = 0; start < p; start += lanes) {
      Points row;
      for (int n = start; n < std::min(start + lanes, p); ++n) row.push_back(x[n]);
      const Ref v = gather(row);
      Points held;
      std::vector<ComplexNumber> constants;
      for (size_t l = 0; l < row.size(); ++l) {
        held.push_back({v, static_cast<int>(l)});
        constants.push_back(chirp(start + static_cast<int>(l)));
      }
      multiply(held, constants);
      // The lanes behind the data are zero in the vector already.
      for (int l = 0; l < lanes; ++l) z[start + l] = {held[0].ref, l};
    }
  }

  const ComplexPlan& plan_;
  const Recipes& recipes_;
  const int sign_;
  const Placement placement_;
  Graph g_;
};

}  // namespace

LanedTransform laned_transform(const ComplexPlan& plan, const Recipes& recipes, int sign, int lanes, Placement placement) {
  return Builder(plan, recipes, sign, lanes, placement).build();
}

}  // namespace xfm
