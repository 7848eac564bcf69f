#include "dft/tables.h"

#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

namespace {

constexpr int kSmallest = 2, kLargest = 64;

Plan plan_in(const TableRow& row, std::string_view column, int length) {
  try {
    Plan plan = parse_plan(row[column]);
    if (plan.length != length) row.fail("plan '" + row[column] + "' has length " + std::to_string(plan.length));
    return plan;
  } catch (const InputError& error) {
    row.fail(error.what());
  }
}

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
    forms.special[std::stoi(entry.substr(0, colon))] = {form_named(row, entry.substr(colon + 1, slash - colon - 1)),
                                                        form_named(row, entry.substr(slash + 1))};
  }
  return forms;
}

ComplexPlan method_in(const TableRow& row, int length) {
  const std::string& name = row["plan"];
  ComplexPlan plan{length, ComplexPlan::Method::Linked, {}, forms_in(row)};
  if (name == "direct") {
    plan.method = ComplexPlan::Method::Direct;
  } else if (name == "real-lane") {
    plan.method = ComplexPlan::Method::RealLane;
  } else if (name == "rader") {
    plan.method = ComplexPlan::Method::RaderComplex;
    plan.plan = plan_in(row, "runs", length - 1);
  } else if (name == "bluestein") {
    plan.method = ComplexPlan::Method::Bluestein;
    try {
      plan.plan = parse_plan(row["runs"]);
    } catch (const InputError& error) {
      row.fail(error.what());
    }
    if (plan.plan.length < 2 * length - 1) row.fail("a chirp convolution is at least twice the length");
  } else {
    plan.plan = plan_in(row, "plan", length);
    if (row["runs"] != "-") plan.plan = plan_in(row, "runs", length);
  }
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

}  // namespace

ComplexTables ComplexTables::read(const std::filesystem::path& plans, const std::filesystem::path& lane_blocks) {
  ComplexTables tables;
  const Table rows = Table::read(plans, {"N", "precision", "plan", "runs", "forms", "A", "M", "built A", "built M", "reason"});
  for (const TableRow& row : rows.rows()) {
    const int length = row.integer("N"), precision = row.integer("precision");
    if (length < kSmallest || length > kLargest) row.fail("length out of range");
    if (precision != 32 && precision != 64) row.fail("precision is 32 or 64");
    ComplexRow entry{.plan = method_in(row, length), .text = row["plan"], .where = plans.string() + ":" + std::to_string(row.line())};
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
    if (row["middle row"] != "real" && row["middle row"] != "complex") row.fail("a middle row is real or complex");
    LaneRecipe recipe{plan_in(row, "first", prime - 1), plan_in(row, "second", prime - 1), row["middle row"] == "complex"};
    for (int precision : {32, 64}) {
      Recipes& recipes = tables.recipes[precision];
      if (row["block"] != "-") {
        recipes.by_name.emplace(row["block"], recipe);
      } else if (row.integer("precision") == precision) {
        recipes.by_prime.emplace(prime, recipe);
      }
      recipes.rader_inner[13] = tables.row(32, 12).plan.plan;
    }
  }
  return tables;
}

}  // namespace xfm
