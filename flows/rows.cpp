#include "flows/rows.h"

#include <bit>

#include "flows/numbers.h"

namespace xfm {

Plan plan_in(const TableRow& row, std::string_view column, int length, const PlanBlocks& blocks) {
  Plan plan = in_row(row, [&] { return parse_plan(row[column], blocks); });
  if (length && plan.length != length) row.fail("plan '" + row[column] + "' has length " + std::to_string(plan.length));
  return plan;
}

void check_blocks(const TableRow& row, const Plan& plan, int largest_butterfly) {
  for (const Plan* leaf : leaves(plan)) {
    if (leaf->kind != Plan::Kind::Block || !leaf->name.empty()) continue;
    const int n = leaf->length;
    const bool butterfly = n <= largest_butterfly && std::has_single_bit(static_cast<unsigned>(n));
    if (!butterfly && !(n > 2 && is_prime(n))) row.fail("no block has the length " + std::to_string(n));
  }
}

PlanBlocks read_blocks(const std::filesystem::path& file, int largest_butterfly, std::optional<int> precision) {
  PlanBlocks blocks;
  std::vector<std::string> columns{"Name", "Plan"};
  if (precision) columns.push_back("Precision");
  const Table table = Table::read(file, columns);
  for (const TableRow& row : table.rows()) {
    Plan plan = plan_in(row, "Plan", 0, blocks);
    check_blocks(row, plan, largest_butterfly);
    const std::string length = std::to_string(plan.length);
    plan.name = row["Name"];
    const std::string stem = plan.name.substr(0, plan.name.find_last_not_of("abcdefghijklmnopqrstuvwxyz") + 1);
    if (stem.empty() || stem[0] < 'A' || stem[0] > 'Z' || stem.substr(1) != length)
      row.fail("'" + plan.name + "' is no name of a block of length " + length);
    if (!blocks.emplace(plan.name, plan).second) row.fail("a second block of the name " + plan.name);
    if (!precision || row["Precision"] == "-" || row.integer("Precision") != *precision) continue;
    if (!is_prime(plan.length) || !blocks.emplace(length, plan).second)
      row.fail("no prime, or one that has a block in this precision");
  }
  return blocks;
}

}  // namespace xfm
