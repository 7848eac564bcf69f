#include "dft/tables.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

namespace {

constexpr int kSmallest = 2, kLargest = 64;

Plan plan_in(const TableRow& row, std::string_view column) {
  try {
    return parse_plan(row[column]);
  } catch (const InputError& error) {
    row.fail(error.what());
  }
}

Plan plan_in(const TableRow& row, std::string_view column, int length) {
  Plan plan = plan_in(row, column);
  if (plan.length != length) row.fail("plan '" + row[column] + "' has length " + std::to_string(plan.length));
  return plan;
}

bool is_odd_prime(int n) { return n > 2 && is_prime(n); }

BlockForm form_named(const TableRow& row, const std::string& name) {
  if (name == "direct") return BlockForm::Direct;
  if (name == "lane") return BlockForm::RealLane;
  if (name == "rader") return BlockForm::RaderComplex;
  row.fail("unknown form of a block '" + name + "'");
}

// "5:lane/direct 7:lane/direct"
BlockForms forms_in(const TableRow& row) {
  BlockForms forms;
  if (row["forms"] == "-") return forms;
  for (const std::string& entry : split(row["forms"], ' ')) {
    const size_t colon = entry.find(':'), slash = entry.find('/');
    if (colon == std::string::npos || slash == std::string::npos || slash < colon) row.fail("forms are written p:first/other");
    int prime = 0;
    const auto [end, error] = std::from_chars(entry.data(), entry.data() + colon, prime);
    if (error != std::errc() || end != entry.data() + colon) row.fail("forms are written p:first/other");
    const BlockForms::Pair pair{form_named(row, entry.substr(colon + 1, slash - colon - 1)), form_named(row, entry.substr(slash + 1))};
    if (!forms.special.emplace(prime, pair).second) row.fail("two forms for " + std::to_string(prime));
  }
  return forms;
}

Flow flow_in(const TableRow& row) {
  if (row["flow"] == "complex") return Flow::Complex;
  if (row["flow"] == "half-blocks") return Flow::HalfBlocks;
  if (row["flow"] == "half") return Flow::Half;
  row.fail("unknown flow '" + row["flow"] + "'");
}

// Half spectra go from stage to stage of a link, in the blocks of a flow with half-blocks.
void check_flow(const TableRow& row, const ComplexPlan& plan) {
  const std::vector<Plan>& parts = plan.plan.parts;
  const bool inner = std::any_of(parts.begin(), parts.end(), [](const Plan& part) { return part.link(); });
  const bool changes = plan.flow == Flow::Half ? plan.method == ComplexPlan::Method::Linked && plan.plan.link() : inner;
  if (plan.flow != Flow::Complex && (!changes || plan.forms.any(BlockForm::RaderComplex)))
    row.fail("the flow '" + row["flow"] + "' has nothing to change in this plan");
}

void collect_blocks(const Plan& plan, std::vector<const Plan*>& blocks) {
  if (plan.parts.empty()) blocks.push_back(&plan);
  for (const Plan& part : plan.parts) collect_blocks(part, blocks);
}

std::multiset<int> block_lengths(const Plan& plan) {
  std::vector<const Plan*> blocks;
  collect_blocks(plan, blocks);
  std::multiset<int> lengths;
  for (const Plan* b : blocks) lengths.insert(b->length);
  return lengths;
}

ComplexPlan method_in(const TableRow& row, int length) {
  const std::string& name = row["plan"];
  ComplexPlan plan{length, ComplexPlan::Method::Linked, flow_in(row), {}, forms_in(row)};
  if (name == "direct") {
    plan.method = ComplexPlan::Method::Direct;
  } else if (name == "real-lane") {
    plan.method = ComplexPlan::Method::RealLane;
  } else if (name == "rader") {
    plan.method = ComplexPlan::Method::RaderComplex;
    plan.plan = plan_in(row, "runs", length - 1);
  } else if (name == "bluestein") {
    plan.method = ComplexPlan::Method::Bluestein;
    plan.plan = plan_in(row, "runs");
    if (plan.plan.length < 2 * length - 1) row.fail("a chirp convolution is at least twice the length");
  } else {
    plan.plan = plan_in(row, "plan", length);
    if (row["runs"] != "-") {
      const Plan runs = plan_in(row, "runs", length);
      if (block_lengths(runs) != block_lengths(plan.plan)) row.fail("plan and runs have different blocks");
      plan.plan = runs;
    }
  }
  const bool closed = plan.method == ComplexPlan::Method::Direct || plan.method == ComplexPlan::Method::RealLane;
  if (closed && row["runs"] != "-") row.fail("'" + name + "' runs no plan");
  if (plan.method != ComplexPlan::Method::Linked && !is_odd_prime(length)) row.fail(std::to_string(length) + " is not an odd prime");
  check_flow(row, plan);
  return plan;
}

// A kernel meets the reference, or departs by at most a hundredth or downwards, with a reason.
void read_counts(const TableRow& row, ComplexRow& out) {
  out.reference = {row.integer("A"), row.integer("M")};
  out.built = out.reference;
  if (row["built A"] == "-" && row["built M"] == "-" && row["reason"] == "-") return;
  out.built = {row.integer("built A"), row.integer("built M")};
  out.reason = row["reason"];
  if (out.reason == "-" || out.reason.empty()) row.fail("a departure from the reference counts needs its reason");
  const auto near = [](int built, int reference) { return built <= reference + reference / 100; };
  if (!near(out.built.additions, out.reference.additions) || !near(out.built.multiplications, out.reference.multiplications))
    row.fail("the built counts exceed the reference by more than a hundredth");
}

// A block without a name is a butterfly or a prime.
bool has_form(int length) { return length == 2 || length == 4 || is_odd_prime(length); }

// Blocks of real-lane recipes: direct, or called by a name.
void check_lane_blocks(const TableRow& row, const Plan& plan, const Recipes& recipes) {
  std::vector<const Plan*> blocks;
  collect_blocks(plan, blocks);
  for (const Plan* b : blocks) {
    if (b->kind == Plan::Kind::NamedRader && !recipes.by_name.contains(b->name)) row.fail("no block has the name " + b->name);
    if (b->kind == Plan::Kind::Block && !has_form(b->length)) row.fail("no block has the length " + std::to_string(b->length));
  }
}

// Every prime block of a row's plan can be made in the forms that it takes.
void check_recipes(const ComplexRow& row, const Recipes& recipes) {
  const auto check_form = [&](int p, BlockForm form) {
    const bool made = form == BlockForm::Direct || (form == BlockForm::RealLane ? recipes.by_prime.contains(p) : recipes.rader_inner.contains(p));
    if (!made) throw InputError(row.where + ": '" + row.text + "' has a block of length " + std::to_string(p) + ", and no table says how it is made");
  };
  if (row.plan.method == ComplexPlan::Method::RealLane) check_form(row.plan.length, BlockForm::RealLane);
  if (row.plan.method == ComplexPlan::Method::RealLane || row.plan.method == ComplexPlan::Method::Direct) return;
  std::vector<const Plan*> blocks;
  collect_blocks(row.plan.plan, blocks);
  const std::multiset<int> lengths = block_lengths(row.plan.plan);
  for (const auto& [prime, forms] : row.plan.forms.special)
    if (!lengths.contains(prime))
      throw InputError(row.where + ": a form for " + std::to_string(prime) + ", which is no block of '" + row.text + "'");
  for (const Plan* b : blocks) {
    if (b->kind != Plan::Kind::Block || !has_form(b->length))
      throw InputError(row.where + ": '" + row.text + "' has the block " + to_text(*b) + ", which a complex plan cannot have");
    if (b->length != 2 && b->length != 4)
      for (const bool first_stage : {true, false}) check_form(b->length, row.plan.forms.of(b->length, first_stage));
  }
}

}  // namespace

const ComplexRow& ComplexTables::row(int precision, int length) const {
  const auto found = rows.find({precision, length});
  if (found == rows.end()) throw InputError("no plan for length " + std::to_string(length) + " in precision " + std::to_string(precision));
  return found->second;
}

ComplexTables ComplexTables::read(const std::filesystem::path& plans, const std::filesystem::path& lane_blocks) {
  ComplexTables tables;
  const Table rows = Table::read(plans, {"N", "precision", "plan", "runs", "flow", "forms", "A", "M", "built A", "built M", "reason"});
  for (const TableRow& row : rows.rows()) {
    const int length = row.integer("N"), precision = row.integer("precision");
    if (length < kSmallest || length > kLargest) row.fail("length out of range");
    if (precision != 32 && precision != 64) row.fail("precision is 32 or 64");
    ComplexRow entry;
    entry.plan = method_in(row, length);
    entry.text = row["plan"];
    entry.where = plans.string() + ":" + std::to_string(row.line());
    read_counts(row, entry);
    if (!tables.rows.emplace(std::pair(precision, length), std::move(entry)).second) row.fail("a second row for this length");
  }
  for (int precision : {32, 64})
    for (int n = kSmallest; n <= kLargest; ++n)
      if (!tables.rows.contains({precision, n}))
        fail_input(plans.string(), 0, "no row for length " + std::to_string(n) + ", precision " + std::to_string(precision));

  const Table blocks = Table::read(lane_blocks, {"block", "precision", "prime", "first", "second", "middle row"});
  for (const TableRow& row : blocks.rows()) {
    const int prime = row.integer("prime");
    if (!is_odd_prime(prime)) row.fail(std::to_string(prime) + " is not an odd prime");
    if (row["middle row"] != "real" && row["middle row"] != "complex") row.fail("a middle row is real or complex");
    const bool named = row["block"] != "-";
    if (named && plan_in(row, "block", prime).kind != Plan::Kind::NamedRader) row.fail("'" + row["block"] + "' is no name of a block");
    if (named ? row["precision"] != "-" : row["precision"] != "32" && row["precision"] != "64")
      row.fail("precision is 32 or 64, for a block with a name -");
    LaneRecipe recipe{plan_in(row, "first", prime - 1), plan_in(row, "second", prime - 1), row["middle row"] == "complex"};
    for (int precision : {32, 64}) {
      Recipes& recipes = tables.recipes[precision];
      if (named) {
        if (!recipes.by_name.emplace(row["block"], recipe).second) row.fail("a second block of this name");
      } else if (row.integer("precision") == precision) {
        if (!recipes.by_prime.emplace(prime, recipe).second) row.fail("a second block of this prime");
      }
      recipes.rader_inner[13] = tables.row(32, 12).plan.plan;
    }
  }
  for (const TableRow& row : blocks.rows())
    for (const char* column : {"first", "second"}) check_lane_blocks(row, parse_plan(row[column]), tables.recipes.at(64));
  for (const auto& [key, row] : tables.rows) check_recipes(row, tables.recipes.at(key.first));
  return tables;
}

}  // namespace xfm
