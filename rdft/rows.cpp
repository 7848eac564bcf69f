#include "rdft/rows.h"

#include <map>

#include "flows/rows.h"
#include "generator/check.h"
#include "generator/functions.h"
#include "generator/table.h"
#include "rdft/transforms.h"

namespace xfm::rdft {

namespace {

constexpr int kLargestButterfly = 8;

using C = FlowCounts;
const std::map<std::string, int C::*> kCounts = {{"Add", &C::additions},
                                                 {"Mul", &C::multiplications},
                                                 {"Doublings", &C::doublings},
                                                 {"Folded doublings", &C::folded_doublings},
                                                 {"Non-root", &C::non_root},
                                                 {"32f single add", &C::single_additions},
                                                 {"32f double add", &C::double_additions},
                                                 {"Widen", &C::widenings},
                                                 {"Narrow", &C::inner_narrowings},
                                                 {"Narrow, inner", &C::inner_narrowings},
                                                 {"Narrow, last", &C::last_narrowings}};

struct TableOf {
  std::string file;
  std::vector<std::string> columns;
};

const TableOf& table_of(Family family) {
  static const std::map<Family, TableOf> tables = {
      {Family::Forward,
       {"real_forward_plans.tsv",
        {"N", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow, inner", "Narrow, last", "Plan",
         "Numbering", "Sums in double"}}},
      {Family::Inverse,
       {"real_inverse_plans.tsv",
        {"N", "Add", "Mul", "Doublings", "Folded doublings", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow",
         "Plan", "Sums in double"}}},
      {Family::Hartley,
       {"hartley_plans.tsv",
        {"N", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow", "Plan", "Form",
         "Sums in double"}}}};
  return tables.at(family);
}

// "5,2,2 shared loads" or "-".
WideSums wide_sums(const TableRow& row) {
  WideSums wide;
  const std::string& text = row["Sums in double"];
  if (text == "-") return wide;
  const std::vector<std::string> words = split(text, ' ');
  wide.additions = in_row(row, [&] { return integers("Sums in double", words[0]); });
  for (size_t i = 1; i < words.size(); ++i) {
    if (words[i] == "shared") {
      wide.shared = true;
    } else if (words[i] == "loads") {
      wide.loads = true;
    } else {
      row.fail("Sums in double: unknown word '" + words[i] + "'");
    }
  }
  return wide;
}

FlowPlan read_plan(const TableRow& row, Family family, const PlanBlocks& blocks) {
  FlowPlan made{family, row.integer("N"), plan_in(row, "Plan", row.integer("N"), blocks)};
  check_blocks(row, made.plan, kLargestButterfly);
  if (row.has("Numbering")) made.plan = in_row(row, [&] { return numbered(made.plan, row["Numbering"]); });
  if (row.has("Form")) {
    if (row["Form"] != "forward" && row["Form"] != "transposed") row.fail("Form: neither forward nor transposed");
    made.transposed = row["Form"] == "transposed";
  }
  made.wide = wide_sums(row);
  return made;
}

void compare(const TableRow& row, const FlowCounts& counts) {
  std::string departures;
  const auto hold = [&](const std::string& column, const std::string& got) {
    if (row[column] != got) departures += "; column " + column + ": the row has " + row[column] + ", the flow " + got;
  };
  for (const auto& [column, count] : kCounts)
    if (row.has(column)) hold(column, std::to_string(counts.*count));
  std::string roots;
  for (int m : counts.roots) roots += (roots.empty() ? "" : " ") + std::to_string(m);
  hold("Roots", roots.empty() ? "-" : roots);
  if (!departures.empty()) row.fail("N = " + row["N"] + departures);
  if (!row.has("Narrow, last") && counts.last_narrowings) row.fail("N = " + row["N"] + ": a cell ends in an open double expression");
}

}  // namespace

std::string table_name(Family family) { return table_of(family).file; }

std::vector<Row> read_rows(const std::filesystem::path& plans, Family family) {
  const TableOf& from = table_of(family);
  const FunctionList functions = FunctionList::read(plans / "functions.tsv");
  const PlanBlocks blocks = read_blocks(plans / "real_blocks.tsv", kLargestButterfly);
  const Table table = Table::read(plans / from.file, from.columns);
  const std::string& name = std::ranges::find(transforms(), family, &Transform::family)->name;
  const std::vector<const Function*> kernels = functions.kernels(name + "_32f");
  std::vector<Row> rows;
  for (const TableRow& row : table.rows()) {
    if (rows.size() == kernels.size()) row.fail("no function has this length");
    const int expected = kernels[rows.size()]->size;
    if (row.integer("N") != expected) row.fail("N: expected " + std::to_string(expected));
    const FlowPlan plan = read_plan(row, family, blocks);
    Flow flow = in_row(row, [&] { return make_flow(plan); });
    FlowCounts counts = count_flow(flow);
    compare(row, counts);
    rows.push_back({plan.length, row["Plan"], std::move(flow), std::move(counts)});
  }
  if (rows.size() != kernels.size())
    table.rows().back().fail("the table ends before N = " + std::to_string(kernels.back()->size));
  return rows;
}

}  // namespace xfm::rdft
