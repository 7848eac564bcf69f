// Every complex transform as a graph, evaluated in extended precision against the definition: the plans, index maps,
// twiddles, spectra and chirps are exact, whatever the lanes and placement.
#include <gtest/gtest.h>

#include <ostream>

#include "dft/tables.h"
#include "dft/transform.h"
#include "generator/check.h"
#include "tests/graph_values.h"

namespace {

using namespace xfm;
using namespace xfm::dft;
using graph_values::definition;
using graph_values::deviation;
using graph_values::source;
using graph_values::Value;

const ComplexTables& tables() {
  static const ComplexTables read = ComplexTables::read(XFM_PLANS);
  return read;
}

constexpr long double kBound = 1e-17L;

struct Case {
  int precision, lanes;
  friend std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.precision << " bits, " << c.lanes << " lanes"; }
};
class GeneratorFlows : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(All, GeneratorFlows, testing::Values(Case{32, 1}, Case{32, 2}, Case{32, 4}, Case{64, 1}, Case{64, 2}, Case{64, 4}),
                         [](const auto& info) {
                           return "of" + std::to_string(info.param.precision) + "bits_" + std::to_string(info.param.lanes) + "lanes";
                         });

TEST_P(GeneratorFlows, AreTheTransformExactly) {
  const auto [precision, lanes] = GetParam();
  for (const auto& [key, row] : tables().rows) {
    if (key.first != precision) continue;
    const int n = key.second;
    const std::vector<Value> x = source(n);
    for (int sign : {-1, +1}) {
      const std::vector<Value> expected = definition(x, sign);
      for (const Placement placement : {Placement::Nested, Placement::Flattened}) {
        if (placement == Placement::Flattened && (lanes == 1 || row.plan.flow != Flow::Complex)) continue;
        const LanedTransform t = laned_transform(row.plan, sign, lanes, placement);
        ASSERT_EQ(t.outputs.size(), expected.size());
        const long double off = deviation(graph_values::evaluate(t.graph, t.outputs, x), expected);
        EXPECT_LT(off, kBound) << "N = " << n << " by '" << row.text << "', sign " << sign << ", "
                               << "placement " << static_cast<int>(placement) << ", source seed " << n;
      }
    }
  }
}

// The check sees one constant that is off where a double would not show it.
TEST(GeneratorFlowsCheck, OneConstantOffIsSeen) {
  const LanedTransform t = laned_transform(tables().row(64, 15).plan, -1, 1, Placement::Nested);
  const std::vector<Value> x = source(15), expected = definition(x, -1);
  int bent = 0;
  for (int spoilt = 0; spoilt < t.graph.size(); ++spoilt) {
    Graph g;
    std::vector<Ref> made;
    const auto renewed = [&](Ref r) { return made[r.node].turned(r.turn); };
    bool products = false;
    for (int i = 0; i < t.graph.size(); ++i) {
      if (t.graph[i].kind == Node::Kind::Input) {
        made.push_back(g.input(t.graph[i].cells));
        continue;
      }
      std::vector<Term> terms = t.graph[i].terms;
      for (Term& term : terms) term.ref = renewed(term.ref);
      for (Term& term : terms)
        if (i == spoilt && !products && !term.coef.unit()) term.coef = term.coef * Coef(1 + Real(1e-14)), products = true;
      made.push_back(g.lin(terms));
    }
    std::vector<Point> outputs = t.outputs;
    for (Point& p : outputs) p.ref = renewed(p.ref);
    const long double off = deviation(graph_values::evaluate(g, outputs, x), expected);
    EXPECT_EQ(off > kBound, products) << "node " << spoilt;
    bent += products;
  }
  EXPECT_GT(bent, 10);
}

}  // namespace
