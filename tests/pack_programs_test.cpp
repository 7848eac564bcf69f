// Packed programs without a compiler: every kernel of every wide target gives the bits of its scalar program, from arrays of
// exact length, by as many additions and multiplications in lanes that reach an output; every move of lanes does what it is listed for; labels make the families that lanes run over.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "dct4/kernels.h"
#include "generator/check.h"
#include "generator/execute.h"
#include "generator/output.h"
#include "generator/pack.h"
#include "generator/pack_recipes.h"
#include "rdft/lower.h"
#include "rdft/packing.h"
#include "rdft/rows.h"
#include "tests/live_lanes.h"

namespace {

using namespace xfm;
using namespace xfm::rdft;

const std::string kPlans = XFM_PLANS;
constexpr double kUntouched = 777;

struct Shape {
  Family family;
  Layout source, target;
};
const Shape kShapes[] = {
    {Family::Forward, Layout::Samples, Layout::Ccs},  {Family::Forward, Layout::Samples, Layout::Pack},
    {Family::Forward, Layout::Samples, Layout::Perm}, {Family::Inverse, Layout::Ccs, Layout::Samples},
    {Family::Inverse, Layout::Pack, Layout::Samples}, {Family::Inverse, Layout::Perm, Layout::Samples},
    {Family::Hartley, Layout::Samples, Layout::Samples}};

size_t length(Layout layout, int n) { return layout == Layout::Ccs ? (n % 2 ? n + 1 : n + 2) : n; }

// Zeros of both signs, infinities, values next to the least and the greatest, and others, all of which a single can have.
Elements some_values(size_t count, bool single, unsigned seed) {
  std::mt19937 engine(seed);
  const auto least = single ? std::numeric_limits<float>::denorm_min() : std::numeric_limits<double>::denorm_min();
  Elements out(count);
  for (double& x : out) {
    x = static_cast<float>(engine() / 2147483648.0 - 1);
    const unsigned kind = engine() % 32;
    if (kind < 4) x = kind % 2 ? 0.0 : -0.0;
    if (kind == 4) x = least * (engine() % 9);
    if (kind == 5 && seed % 4 == 3) x = engine() % 2 ? INFINITY : -INFINITY;
    if (kind == 6) x *= single ? 0x1p100 : 0x1p900;
  }
  return out;
}

bool same(double a, double b) { return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b)); }

// The first cell in which two programs differ, or -1.
int difference(const Program& a, const Program& b, const Elements& source, size_t length, double scale) {
  std::vector<Elements> out[2];
  for (int k : {0, 1}) {
    out[k] = {Elements(length, kUntouched)};
    execute(k == 0 ? a : b, {source}, scale, out[k]);
  }
  for (size_t i = 0; i < length; ++i)
    if (!same(out[0][0][i], out[1][0][i])) return static_cast<int>(i);
  return -1;
}

class PackedPrograms : public testing::TestWithParam<const char*> {
 protected:
  // Packs a scalar program by its row, if that says so, and compares the two.
  void compare(const Program& scalar, const std::string& kernels, int n, const std::string& type, pack::Grid grid, size_t given, size_t made) {
    const pack::Rule& rule = recipes_.find(target_.name, kernels, n, type);
    if (rule.lanes == 1) return;
    ++packed_;
    const pack::Network network = pack::read_network(scalar);
    const Program wide = pack::pack(network, pack::find_families(network), rule, target_, grid);
    check_admitted(wide, target_);
    EXPECT_EQ(test::LiveLanes(wide).counts(), test::LiveLanes(scalar).counts()) << kernels << " N = " << n << ", " << type << ": additions and multiplications in lanes that reach an output";
    for (const double scale : {1.0, static_cast<double>(1.0f / static_cast<float>(n))})
      for (unsigned seed = 0; seed < 4; ++seed)
        ASSERT_EQ(difference(scalar, wide, some_values(given, type == "32f", seed), made, scale), -1)
            << kernels << " N = " << n << ", " << type << ", " << pack::form_text(rule) << ", scale " << scale << ", seed " << seed;
  }

  const Target target_ = read_target(kPlans + "/targets.tsv", GetParam());
  const pack::Recipes recipes_ = pack::Recipes::read(kPlans + "/pack_recipes.tsv");
  int packed_ = 0;
};

TEST_P(PackedPrograms, GiveTheBitsOfTheScalarOnes) {
  for (const Shape& shape : kShapes)
    for (const Row& row : read_rows(kPlans, shape.family))
      for (const Precision precision : {Precision::Single, Precision::Double}) {
        const int n = row.length;
        compare(lower(row.flow, shape.source, shape.target, precision), kernels_name(shape.family), n,
                precision == Precision::Single ? "32f" : "64f", grid(shape.source, shape.target, n), length(shape.source, n),
                length(shape.target, n));
        if (HasFatalFailure()) return;
      }
  EXPECT_GT(packed_, 700) << "most kernels are packed";
}

TEST_P(PackedPrograms, OfTheDct4GiveTheBitsOfTheScalarOnes) {
  for (const std::string type : {"32f", "64f"})
    for (const dct4::StageKernel& k : dct4::stage_kernels(kPlans + "/dct4_kernels.tsv", type)) {
      const int n = k.plan.length;
      if (k.plan.whole()) compare(k.net.program(), "dct4", n, type, {}, n, n);
      if (HasFatalFailure()) return;
    }
  EXPECT_GE(packed_, 6) << "of eleven straight lines most are packed";
}

INSTANTIATE_TEST_SUITE_P(Targets, PackedPrograms, testing::Values("v3", "v4"));

TEST(PackMoves, EveryWayGivesTheWantedLanes) {
  std::mt19937 engine(1);
  for (const char* name : {"v3", "v4"}) {
    const Target target = read_target(kPlans + "/targets.tsv", name);
    pack::Moves moves(target);
    for (const Type type : {Type::F64x2, Type::F32x4, Type::F64x4}) {
      const int w = width(type);
      for (int trial = 0; trial < 300; ++trial) {
        pack::Want want = pack::kEmpty;
        for (int l = 0; l < w; ++l) want[l] = static_cast<int>(engine() % (2 * w + 1)) - 1;
        Program program;
        const int a = program.emit({.op = Op::Load, .type = type}), b = program.emit({.op = Op::Load, .type = type, .cell = w});
        program.store(StoreKind::Full, emit(program, type, moves.way(type, want), a, b), 0);
        check_admitted(program, target);
        Elements source(2 * w);
        for (int i = 0; i < 2 * w; ++i) source[i] = i;
        std::vector<Elements> out{Elements(w)};
        execute(program, {source}, 1, out);
        for (int l = 0; l < w; ++l)
          ASSERT_TRUE(want[l] == pack::kNone || out[0][l] == want[l]) << name << ", lane " << l << " of " << w;
      }
    }
  }
}

// Classes of three by four points: sums of one class and the same sums of the others are a family over the classes.
TEST(PackFamilies, LanesRunOverTheLoopThatIsNamed) {
  Graph graph;
  std::vector<Ref> sums;
  for (int k = 0; k < 4; ++k) {
    const Graph::Loop row(graph, "row", k);
    for (int j = 0; j < 3; ++j) {
      const Graph::Loop class_of(graph, "class", j);
      sums.push_back(graph.add(graph.input(3 * k + j), graph.input(12 + 3 * k + j)));
    }
  }
  Program program;
  for (const Ref r : sums) {
    const std::vector<Term>& terms = graph[r.node].terms;
    const auto load = [&](const Term& t) {
      program.set_label({});
      return program.emit({.op = Op::Load, .type = Type::F64, .cell = graph[t.ref.node].cells[0]});
    };
    const int a = load(terms[0]), b = load(terms[1]);
    program.set_label(graph[r.node].label);
    program.store(StoreKind::Full, program.emit({.op = Op::Add, .type = Type::F64, .a = a, .b = b}), static_cast<int>(&r - sums.data()));
  }
  const pack::Network network = pack::read_network(program);
  const std::vector<pack::Family> families = pack::find_families(network);
  ASSERT_EQ(families.size(), 1u);
  EXPECT_EQ(families[0].loops, (std::vector<std::string>{"row", "class"}));
  const auto sizes = [&](const pack::Rule& rule) {
    std::vector<size_t> out;
    for (const std::vector<int>& run : pack::runs(network, families, rule, 0)) out.push_back(run.size());
    return out;
  };
  EXPECT_EQ(sizes({4, {"class"}, false, false}), (std::vector<size_t>{3, 3, 3, 3}));
  EXPECT_EQ(sizes({4, {"class"}, false, true}), (std::vector<size_t>{4, 4, 4}));
  EXPECT_EQ(sizes({4, {"row"}, false, false}), (std::vector<size_t>{4, 4, 4}));
  EXPECT_EQ(sizes({4, {}, true, false}), (std::vector<size_t>{4, 4, 4})) << "row is the outermost";
}

// Two networks of one shape on cells that take turns, with other factors, and with signs and operands the other way round in
// the second, where only uses tell which of two sums belongs to which. The end, where both meet, is nobody's pair.
TEST(PackPairs, StandOppositeEachOtherInNetworksOfOneShape) {
  Program p;
  const auto load = [&](int cell) { return p.emit({.op = Op::Load, .type = Type::F64, .cell = cell}); };
  const auto sum = [&](Op op, int a, int b) { return p.emit({.op = op, .type = Type::F64, .a = a, .b = b}); };
  const auto product = [&](Real factor, int a) {
    return p.emit({.op = Op::Mul, .type = Type::F64, .a = p.constant(Type::F64, {factor}), .b = a});
  };
  const int e = sum(Op::Add, load(0), load(2)), f = sum(Op::Sub, load(0), load(2));
  const int g = sum(Op::Add, load(3), load(1)), h = sum(Op::Sub, load(3), load(1));
  const int x = sum(Op::Add, e, product(3, f)), y = sum(Op::Sub, product(5, g), h);
  p.store(StoreKind::Full, sum(Op::Add, x, y), 0);

  const pack::Network network = pack::read_network(p);
  const auto shape = [&](int operation) {
    const pack::Operation& o = network.operations[operation];
    const auto cell = [&](int operand) { return operand == pack::kNone ? 0 : network.operations[operand].cell; };
    return std::tuple(o.kind, o.minus, static_cast<int>(o.factor), cell(o.a) + cell(o.b));
  };
  using enum pack::Kind;
  using Shape = std::tuple<pack::Kind, bool, int, int>;
  std::set<std::pair<Shape, Shape>> pairs;
  for (const std::vector<int>& pair : pack::find_pairs(network, pack::PairsFrom::Source, 0))
    pairs.insert({shape(pair.at(0)), shape(pair.at(1))});
  const std::set<std::pair<Shape, Shape>> wanted = {{{Sum, false, 0, 2}, {Sum, true, 0, 4}},
                                                    {{Sum, true, 0, 2}, {Sum, false, 0, 4}},
                                                    {{Product, false, 3, 0}, {Product, false, 5, 0}},
                                                    {{Sum, false, 0, 0}, {Sum, true, 0, 0}}};
  EXPECT_EQ(pairs, wanted);
}

TEST(PackRecipes, RefuseRowsThatMakeNoSense) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "pack_recipes_test.tsv";
  const auto message = [&](const std::string& row) -> std::string {
    write_file(path.string(), pack::recipe_columns() + row + "\n");
    try {
      pack::Recipes::read(path).find("v4", "hartley", 8, "64f");
    } catch (const InputError& e) {
      return std::string(e.what()).substr(path.string().size());
    }
    return {};
  };
  EXPECT_EQ(message("v4\thartley\t8\t64f\t2\tclass,row\tinnermost across"), "");
  EXPECT_EQ(message("v4\thartley\t8\t64f\t3\tclass\tinnermost"), ":2: Lanes: expected 1, 2, 4 or 8");
  EXPECT_EQ(message("v4\thartley\t8\t64f\t2\tclass\tupward"),
            ":2: Order: expected innermost or outermost, across or not, or pairs and where they begin");
  EXPECT_EQ(message("v4\thartley\t8\t64f\t2\t-\tpairs from the results"), "");
  EXPECT_EQ(message("v4\thartley\t8\t64f\t4\t-\tpairs"), ":2: pairs are two lanes without loops");
  EXPECT_EQ(message("v4\thartley\t9\t64f\t2\tclass\tinnermost"), ": no row for v4, hartley, 8, 64f");
  std::filesystem::remove(path);
}

}  // namespace
