#include "rdft/rows.h"

#include <algorithm>

#include "generator/check.h"
#include "generator/table.h"

namespace xfm::rdft {

namespace {

using Columns = std::vector<std::string>;

const Columns kShared = {"Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen"};

Columns joined(std::initializer_list<Columns> parts) {
  Columns all;
  for (const Columns& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

Columns columns(Family family) {
  const Columns middle(kShared.begin() + 2, kShared.end());
  switch (family) {
    case Family::Forward:
      return joined({{"N", "Method", "Stage order", "Second order"}, kShared,
                     {"Narrow, inner", "Narrow, last", "Plan", "Orientation", "Sums in double"}});
    case Family::Inverse:
      return joined({{"N", "Method", "Stage order, output side", "Add", "Mul", "Doublings", "Folded doublings"}, middle,
                     {"Narrow", "Plan", "Sums in double"}});
    case Family::Hartley:
      return joined({{"N", "Method", "Stage order"}, kShared, {"Narrow", "Plan", "Form", "Two-point stage", "Sums in double"}});
  }
  return {};
}

// Runs `read`; bad input that it finds is reported in this row.
template <class Read>
auto in_row(const TableRow& row, Read read) {
  try {
    return read();
  } catch (const InputError& error) {
    row.fail(error.what());
  }
}

// "5,2,2 shared loads" or "-".
WideSums wide_sums(const TableRow& row) {
  WideSums wide;
  const std::string& text = row["Sums in double"];
  if (text == "-") return wide;
  const std::vector<std::string> words = split(text, ' ');
  for (const std::string& number : split(words[0], ',')) {
    if (number.empty() || number.size() > 2 || number.find_first_not_of("0123456789") != std::string::npos)
      row.fail("Sums in double: \"" + number + "\" is not a number of additions");
    wide.additions.push_back(std::stoi(number));
  }
  for (size_t i = 1; i < words.size(); ++i) {
    if (words[i] == "shared") {
      wide.shared = true;
    } else if (words[i] == "loads") {
      wide.loads = true;
    } else {
      row.fail("Sums in double: unknown word \"" + words[i] + "\"");
    }
  }
  return wide;
}

Recipe read_recipe(const TableRow& row, Family family, const Blocks& blocks) {
  Recipe recipe;
  recipe.family = family;
  recipe.length = row.integer("N");
  recipe.plan = in_row(row, [&] { return parse_plan(row["Plan"], blocks); });
  if (recipe.plan->length != recipe.length) row.fail("Plan: the plan is of length " + std::to_string(recipe.plan->length));
  if (family == Family::Forward)
    recipe.plan = in_row(row, [&] { return oriented(recipe.plan, row["Orientation"]); });
  if (family == Family::Hartley) {
    if (row["Form"] != "forward" && row["Form"] != "transposed") row.fail("Form: neither forward nor transposed");
    if (row["Form"] == "transposed") recipe.form = Form::Transposed;
  }
  recipe.wide = wide_sums(row);
  return recipe;
}

std::string dotted(const std::vector<int>& order) {
  std::string text;
  for (int radix : order) text += (text.empty() ? "" : ".") + std::to_string(radix);
  return text;
}

// The second transform of a Rader block from the bins inward; a bin and its conjugate are one element.
std::string second_order(const Plan& plan) {
  const Rader* block = std::get_if<Rader>(&plan.form);
  return block ? dotted(nested_stage_order(*block->even)) : "-";
}

// A transposed network runs its stages in the opposite order. The first transform of a Rader block in it is the transpose
// of the second one, whose plan leaves out the two-point stage of a bin and its conjugate: it comes first or last.
std::string transposed_order(const TableRow& row, const Plan& plan) {
  const Rader* block = std::get_if<Rader>(&plan.form);
  std::vector<int> order = nested_stage_order(block ? *block->even : plan);
  std::reverse(order.begin(), order.end());
  const std::string& two = row["Two-point stage"];
  if (block ? two != "first" && two != "last" : two != "-") row.fail("Two-point stage: first or last for a Rader block, else -");
  if (block) order.insert(two == "first" ? order.begin() : order.end(), 2);
  return dotted(order);
}

std::string roots_text(const std::set<int>& roots) {
  std::string text;
  for (int m : roots) text += (text.empty() ? "" : " ") + std::to_string(m);
  return text.empty() ? "-" : text;
}

struct Derived {
  std::string column, value;
};

std::vector<Derived> derived_columns(const TableRow& row, const Recipe& recipe, const FlowCounts& c) {
  const auto number = [](int n) { return std::to_string(n); };
  const Plan& plan = *recipe.plan;
  std::vector<Derived> all = {{"Method", method(plan)},
                              {"Add", number(c.additions)},
                              {"Mul", number(c.multiplications)},
                              {"Roots", roots_text(c.roots)},
                              {"Non-root", number(c.non_root)},
                              {"32f single add", number(c.single_additions)},
                              {"32f double add", number(c.double_additions)},
                              {"Widen", number(c.widenings)}};
  const std::string order = recipe.form == Form::Transposed ? transposed_order(row, plan) : dotted(stage_order(plan));
  all.push_back({recipe.family == Family::Inverse ? "Stage order, output side" : "Stage order", order});
  if (recipe.family == Family::Forward) {
    all.push_back({"Second order", second_order(plan)});
    all.push_back({"Narrow, inner", number(c.inner_narrowings)});
    all.push_back({"Narrow, last", number(c.last_narrowings)});
  } else {
    all.push_back({"Narrow", number(c.inner_narrowings)});
  }
  if (recipe.family == Family::Inverse) {
    all.push_back({"Doublings", number(c.doublings)});
    all.push_back({"Folded doublings", number(c.folded_doublings)});
  }
  return all;
}

void compare(const TableRow& row, const Recipe& recipe, const FlowCounts& counts) {
  std::string departures;
  for (const Derived& d : derived_columns(row, recipe, counts))
    if (row[d.column] != d.value)
      departures += "; column " + d.column + ": the row has " + row[d.column] + ", the flow " + d.value;
  if (!departures.empty()) row.fail("N = " + row["N"] + departures);
  if (recipe.family == Family::Forward) return;
  if (counts.last_narrowings) row.fail("N = " + row["N"] + ": a cell ends in an open double expression");
}

Blocks read_blocks(const std::filesystem::path& file) {
  Blocks blocks;
  const Table table = Table::read(file, {"Name", "Plan"});
  for (const TableRow& row : table.rows()) {
    const PlanPtr plan = in_row(row, [&] { return parse_plan(row["Plan"], blocks); });
    if (!blocks.emplace(row["Name"], plan).second) row.fail("Name: defined before");
  }
  return blocks;
}

}  // namespace

std::string table_name(Family family) {
  switch (family) {
    case Family::Forward: return "real_forward_plans.tsv";
    case Family::Inverse: return "real_inverse_plans.tsv";
    case Family::Hartley: return "hartley_plans.tsv";
  }
  return {};
}

std::vector<Row> read_rows(const std::filesystem::path& plans, Family family) {
  const Blocks blocks = read_blocks(plans / "real_blocks.tsv");
  const Table table = Table::read(plans / table_name(family), columns(family));
  std::vector<Row> rows;
  for (const TableRow& row : table.rows()) {
    const int expected = static_cast<int>(rows.size()) + 2;
    if (row.integer("N") != expected) row.fail("N: expected " + std::to_string(expected));
    const Recipe recipe = read_recipe(row, family, blocks);
    Flow flow = in_row(row, [&] { return make_flow(recipe); });
    FlowCounts counts = count_flow(flow);
    compare(row, recipe, counts);
    rows.push_back({recipe.length, row["Plan"], std::move(flow), std::move(counts)});
  }
  if (rows.size() != 63) table.rows().back().fail("the table ends before N = 64");
  return rows;
}

}  // namespace xfm::rdft
