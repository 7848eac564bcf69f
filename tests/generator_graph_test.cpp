// The expression graph, its passes, and the numbers in it.
#include <gtest/gtest.h>
#include <quadmath.h>

#include <cstdlib>

#include "generator/check.h"
#include "generator/graph.h"
#include "generator/number.h"
#include "generator/passes.h"
#include "tests/graph_values.h"

namespace {

using namespace xfm;
using graph_values::text;

// A graph of x0, x1, x2, and x3 on one lane.
struct Sketch {
  Graph g;
  Ref a = g.input(0), b = g.input(1), c = g.input(2), d = g.input(3);

  void check(Ref r, const std::string& expected) const { EXPECT_EQ(text(g, r), expected); }
  // Both are made, and as one node that differs by that turn.
  void one_node(Ref first, Ref second, int turn) const {
    EXPECT_EQ(second, first.turned(turn)) << text(g, first) << " and " << text(g, second);
  }
};

TEST(GeneratorGraph, SignsAndTurnsStandInTheReference) {
  Sketch s;
  s.check(s.a.turned(4), "x0");
  s.check(-s.a.turned(1), "-ix0");
  s.check(s.g.add(s.a, s.b), "(x0 + x1)");
  s.check(s.g.add(-s.a, s.c), "(-x0 + x2)");
  s.check(s.g.add(-s.b, -s.c), "-(x1 + x2)");
  s.check(s.g.sub(s.a.turned(1), s.d.turned(3)), "(ix0 + ix3)");
  s.check(s.g.add(s.b, s.d.turned(1)), "(x1 + ix3)");
  s.check(s.g.scale(-0.5, s.a), "-(0.5*x0)");
  s.check(s.g.lin({{-2, s.a}, {0.5, s.d}}), "(2*-x0 + 0.5*x3)");
  s.check(s.g.scale(Coef(-1), s.a), "-x0");
}

TEST(GeneratorGraph, ZerosAndEqualTermsCollapse) {
  Sketch s;
  s.check(s.g.sub(s.a, s.a), "0");
  s.check(s.g.add({}, s.b), "x1");
  s.check(s.g.scale(0, s.b), "0");
  s.check(s.g.lin({{2, s.a}, {-1, s.a}}), "x0");
  s.check(s.g.lin({{2, s.a}, {1, -s.a}, {0.25, s.b}}), "(x0 + 0.25*x1)");
  s.check(s.g.lin({{1, s.a}, {3, s.a.turned(1)}}), "(x0 + 3*ix0)");  // a complex factor is two terms
  s.check(s.g.sum({}), "0");
}

TEST(GeneratorGraph, EqualUpToATurnIsOneNode) {
  Sketch s;
  const Ref sum = s.g.add(s.a, s.b), difference = s.g.sub(s.a, s.b), turned = s.g.add(s.a, s.b.turned(1));
  const Ref product = s.g.lin({{0.5, s.a}, {0.25, s.c}});
  const int nodes = s.g.size();
  s.one_node(sum, s.g.add(s.b, s.a), 0);
  s.one_node(sum, s.g.sub(-s.a, s.b), 2);
  s.one_node(difference, s.g.sub(s.b, s.a), 2);
  s.one_node(turned, s.g.add(s.a.turned(1), -s.b), 1);
  s.one_node(turned, s.g.sub(s.b, s.a.turned(1)), 3);
  s.one_node(product, s.g.lin({{-0.25, s.c}, {0.5, -s.a}}), 2);
  s.one_node(product, s.g.lin({{0.5, s.a}, {Coef(Real(0.25) + Real(1e-28)), s.c}}), 0);
  s.one_node(s.a, s.g.input(0), 0);
  EXPECT_EQ(s.g.size(), nodes);

  // Neither another constant, nor another order of additions, nor a conjugate is the same.
  EXPECT_NE(s.g.lin({{0.5, s.a}, {Coef(Real(0.25) + Real(1e-20)), s.c}}).node, product.node);
  EXPECT_NE(s.g.add(s.g.add(s.a, s.b), s.c).node, s.g.add(s.a, s.g.add(s.b, s.c)).node);
  EXPECT_NE(s.g.sub(s.a, s.b.turned(1)).node, turned.node);
}

TEST(GeneratorGraph, VectorsAreRegrouped) {
  Graph g(2);
  const Ref a = g.input({0, 1}), b = g.input({2, -1});
  EXPECT_EQ(g.regroup({{a, 0}, {a, 1}}), a);
  EXPECT_EQ(g.regroup({{a, 0}, {{}, kAnyLane}}), a);
  EXPECT_EQ(g.regroup({{-a, 0}, {-a, 1}}), -a);
  EXPECT_FALSE(g.regroup({{}, {}}));
  EXPECT_FALSE(g.input({-1, -1}));
  const Ref crossed = g.regroup({{b, 0}, {a.turned(1), 0}});
  EXPECT_NE(crossed.node, a.node);
  EXPECT_EQ(g.regroup({{b, 0}, {a.turned(1), 0}}), crossed);
  const Ref product = g.scale(Coef(std::vector<Real>{2, -3}), crossed);
  const std::vector<Point> outputs{{product, 0}, {product, 1}};
  const std::vector<graph_values::Value> y = graph_values::evaluate(g, outputs, {{1, 2}, {0, 0}, {5, 7}});
  EXPECT_EQ(y[0], graph_values::Value(10, 14));
  EXPECT_EQ(y[1], graph_values::Value(6, -3));
  EXPECT_THROW(g.input({1}), InternalError);
  EXPECT_THROW(g.regroup({{a, 0}}), InternalError);
}

TEST(GeneratorPasses, CountsAreOfDistinctLiveOperations) {
  const auto check = [](const Graph& g, const std::vector<Ref>& outputs, int additions, int multiplications) {
    const Counts c = count(g, outputs);
    EXPECT_EQ(c.additions, additions);
    EXPECT_EQ(c.multiplications, multiplications);
  };
  Sketch s;
  check(s.g, {s.a, {}}, 0, 0);
  const Ref half = s.g.lin({{0.5, s.a}, {1, s.b}}), minus = s.g.lin({{0.5, s.a}, {-1, s.b}});
  check(s.g, {half}, 1, 1);
  check(s.g, {half, minus}, 2, 1);  // 0.5*x0 is formed once, also where it is subtracted or turned
  check(s.g, {half, s.g.lin({{0.5, s.a.turned(1)}, {1, s.c}})}, 2, 1);
  check(s.g, {half, -half}, 1, 1);
  check(s.g, {half, s.g.lin({{0.25, s.a}, {1, s.b}})}, 2, 2);
  check(s.g, {s.g.sum(std::vector<Ref>{s.a, s.b, s.c, s.d})}, 3, 0);
}

TEST(GeneratorPasses, TransposedNetworksAreTransposedMatrices) {
  Sketch s;
  const Ref sum = s.g.add(s.a, s.b), difference = s.g.sub(s.a, s.b);
  const Ref mixed = s.g.lin({{0.25, difference.turned(1)}, {-2, s.c.turned(3)}});
  const std::vector<Ref> outputs{s.g.add(sum, s.c), -mixed, s.g.add(mixed, s.g.scale(3, sum)), difference};
  const std::vector<int> inputs{s.a.node, s.b.node, s.c.node, s.d.node};
  Graph t;
  std::vector<Ref> feed;
  for (int i = 0; i < 4; ++i) feed.push_back(t.input(i));
  const std::vector<Ref> back = transpose(s.g, inputs, outputs, t, feed);
  ASSERT_EQ(back.size(), 4u);
  EXPECT_FALSE(back[3]) << "x3 reaches no output";

  const auto column = [](const Graph& g, const std::vector<Ref>& outs, int unit) {
    std::vector<Point> points;
    for (Ref r : outs) points.push_back({r, 0});
    std::vector<graph_values::Value> source(4);
    source[unit] = 1;
    return graph_values::evaluate(g, points, source);
  };
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) EXPECT_EQ(column(s.g, outputs, j)[i], column(t, back, i)[j]) << i << " " << j;
  EXPECT_EQ(count(t, back).multiplications, count(s.g, outputs).multiplications);
}

TEST(GeneratorPasses, ProductsTakeTheTurnsOfTheirSums) {
  const auto check = [](const Sketch& s, std::vector<Ref> outputs, const std::vector<std::string>& expected) {
    const Graph result = turn_products(s.g, outputs);
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(text(result, outputs[i]), expected[i]);
  };
  Sketch s;
  const Ref sum = s.g.lin({{0.5, s.a}, {0.25, -s.b}}), both = s.g.add(sum, s.g.scale(3, s.c));
  const Ref turned = s.g.add(s.d, sum.turned(1));
  check(s, {turned, s.g.sub(s.c, sum.turned(1))}, {"(x3 + (0.5*ix0 + 0.25*-ix1))", "(x2 + -(0.5*ix0 + 0.25*-ix1))"});
  check(s, {s.g.add(s.d, both.turned(3))}, {"(x3 + -((0.5*ix0 + 0.25*-ix1) + (3*ix2)))"});
  check(s, {turned, sum}, {"(x3 + i(0.5*x0 + 0.25*-x1))"});                                        // wanted as it is, too
  check(s, {turned, s.g.add(s.c, sum)}, {"(x3 + i(0.5*x0 + 0.25*-x1))"});
  check(s, {s.g.add(s.d, s.g.lin({{0.5, s.a}, {1, s.b}}).turned(1))}, {"(x3 + i(0.5*x0 + x1))"});  // x1 would have to be turned
}

TEST(GeneratorPasses, ConstantsMoveIntoTheProductsThatUseThem) {
  const auto check = [](const Sketch& s, std::vector<Ref> outputs, const std::vector<std::string>& expected) {
    const Graph merged = merge_constants(s.g, outputs);
    ASSERT_EQ(outputs.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(text(merged, outputs[i]), expected[i]);
  };
  {
    Sketch s;
    const Ref inner = s.g.lin({{0.5, s.a}, {0.25, -s.b}}), outer = s.g.lin({{4, inner}, {1, s.c}});
    check(s, {outer}, {"(2*x0 + -x1 + x2)"});
    check(s, {s.g.lin({{4, inner.turned(1)}, {1, s.c}})}, {"(2*ix0 + -ix1 + x2)"});
    check(s, {outer, inner}, {"(4*(0.5*x0 + 0.25*-x1) + x2)", "(0.5*x0 + 0.25*-x1)"});  // stored as it is
    check(s, {outer, s.g.add(inner, s.d)}, {"(4*(0.5*x0 + 0.25*-x1) + x2)", "((0.5*x0 + 0.25*-x1) + x3)"});
  }
  {
    Sketch s;
    const Ref product = s.g.scale(0.5, s.a);
    const std::vector<Ref> users{s.g.lin({{3, product}, {1, s.b}}), s.g.lin({{5, product}, {1, s.c}})};
    check(s, users, {"(3*(0.5*x0) + x1)", "(5*(0.5*x0) + x2)"});
  }
  {
    Sketch s;  // a plain term has no constant to give
    const Ref inner = s.g.lin({{0.5, s.a}, {1, s.b}});
    check(s, {s.g.lin({{3, inner}, {1, s.c}})}, {"(3*(0.5*x0 + x1) + x2)"});
  }
}

TEST(GeneratorNumbers, AnglesAreExactWhereTheyCanBe) {
  for (int den = 1; den <= 128; ++den)
    for (int num = -den; num <= 2 * den; ++num) {
      const Real angle = 2 * M_PIq * num / den;
      ASSERT_LT(static_cast<double>(fabsq(cos_turn(num, den) - cosq(angle))), 5e-33) << num << "/" << den;
      ASSERT_LT(static_cast<double>(fabsq(sin_turn(num, den) - sinq(angle))), 5e-33) << num << "/" << den;
      const bool quarter = 4 * num % den == 0, eighth = 8 * num % den == 0;
      ASSERT_TRUE(!quarter || cos_turn(num, den) * sin_turn(num, den) == 0) << num << "/" << den;
      // Angles that mirror each other have the same bits.
      ASSERT_TRUE(cos_turn(num, den) == cos_turn(-num, den) && sin_turn(num, den) == -sin_turn(-num, den)) << num << "/" << den;
      ASSERT_TRUE(eighth || sin_turn(num, den) == cos_turn(den - 4 * num, 4 * den)) << num << "/" << den;
    }
}

TEST(GeneratorNumbers, LiteralsAreRoundedOnce) {
  const auto check = [](Real x, float single, double twice) {
    EXPECT_EQ(std::strtof(float_literal(x).c_str(), nullptr), single);
    EXPECT_EQ(float_literal(x).back(), 'f');
    EXPECT_EQ(std::strtod(double_literal(x).c_str(), nullptr), twice);
  };
  check(Real(1) / 3, 0x1.555556p-2f, 0x1.5555555555555p-2);
  check(-square_root(Real(0.5)), -0x1.6a09e6p-1f, -0x1.6a09e667f3bcdp-1);
  // A trifle above the midpoint of two singles, and of two doubles: rounding on the way would lose it.
  check(1 + Real(0x1p-24) + Real(0x1p-60), 0x1.000002p+0f, 0x1.000001p+0);
  check(1 + Real(0x1p-53) + Real(0x1p-90), 1.0f, 0x1.0000000000001p+0);
  check(1 - Real(0x1p-25) - Real(0x1p-80), 0x1.fffffep-1f, 0x1.ffffffp-1);
}

}  // namespace
