#include "dft/tables.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "flows/rows.h"
#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

namespace {

constexpr int kSmallest = 2, kLargest = 64;

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

std::multiset<int> block_lengths(const Plan& plan) {
  std::multiset<int> lengths;
  for (const Plan* b : leaves(plan)) lengths.insert(b->length);
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
    plan.plan = plan_in(row, "runs", 0);
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

void read_counts(const TableRow& row, ComplexRow& out) {
  const StatedCount additions = stated_count(row, "A"), multiplications = stated_count(row, "M");
  out.reference = {additions.reference, multiplications.reference};
  out.built = {additions.built, multiplications.built};
  out.reason = departure_reason(row);
}

// A block without a name is a butterfly or a prime.
bool has_form(int length) { return length == 2 || length == 4 || is_odd_prime(length); }

// Every prime block of a row's plan can be made in the forms that it takes.
void check_recipes(const ComplexRow& row, const Recipes& recipes) {
  const auto check_form = [&](int p, BlockForm form) {
    const bool made = form == BlockForm::Direct || (form == BlockForm::RealLane ? recipes.by_prime.contains(p) : recipes.rader_inner.contains(p));
    if (!made) throw InputError(row.where + ": '" + row.text + "' has a block of length " + std::to_string(p) + ", and no table says how it is made");
  };
  if (row.plan.method == ComplexPlan::Method::RealLane) check_form(row.plan.length, BlockForm::RealLane);
  if (row.plan.method == ComplexPlan::Method::RealLane || row.plan.method == ComplexPlan::Method::Direct) return;
  const std::multiset<int> lengths = block_lengths(row.plan.plan);
  for (const auto& [prime, forms] : row.plan.forms.special)
    if (!lengths.contains(prime))
      throw InputError(row.where + ": a form for " + std::to_string(prime) + ", which is no block of '" + row.text + "'");
  for (const Plan* b : leaves(row.plan.plan)) {
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

  PlanBlocks named_blocks;
  const Table blocks = Table::read(lane_blocks, {"block", "precision", "prime", "first", "second"});
  for (const TableRow& row : blocks.rows()) {
    const int prime = row.integer("prime");
    if (!is_odd_prime(prime)) row.fail(std::to_string(prime) + " is not an odd prime");
    Plan plan{Plan::Kind::Rader, prime, {plan_in(row, "first", prime - 1, named_blocks), plan_in(row, "second", prime - 1, named_blocks)}};
    check_blocks(row, plan, 4);
    if (row["block"] != "-") {
      if (row["precision"] != "-") row.fail("precision is 32 or 64, for a block with a name -");
      in_row(row, [&] { define_block(named_blocks, row["block"], std::move(plan)); });
    } else {
      if (row["precision"] != "32" && row["precision"] != "64") row.fail("precision is 32 or 64, for a block with a name -");
      if (!tables.recipes[row.integer("precision")].by_prime.emplace(prime, plan).second) row.fail("a second block of this prime");
    }
  }
  for (int precision : {32, 64}) tables.recipes[precision].rader_inner[13] = tables.row(32, 12).plan.plan;
  for (const auto& [key, row] : tables.rows) check_recipes(row, tables.recipes.at(key.first));
  return tables;
}

}  // namespace xfm
