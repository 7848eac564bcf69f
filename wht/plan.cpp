#include "wht/plan.h"

#include <algorithm>
#include <numeric>

namespace xfm::wht {

namespace {

Type value_type(const TableRow& row, bool single) {
  const int lanes = row.integer("lanes");
  const int most = single ? 16 : 8;
  if (lanes < 1 || lanes > most || (lanes & (lanes - 1)) != 0 || (single && lanes == 2)) row.fail("lanes: no register has " + row["lanes"]);
  return vector_type(single, lanes);
}

Inside levels_inside(const TableRow& row, Type type) {
  const std::string& inside = row["inside"];
  if (inside == "permute" && width(type) > 1) return Inside::Permute;
  if (inside != (width(type) > 1 ? "transpose" : "-")) row.fail("inside: \"" + inside + "\" is not how these lanes run");
  return Inside::Transpose;
}

std::vector<int> pass_orders(const TableRow& row) {
  std::vector<int> orders;
  for (const std::string& text : split(row["passes"], ' ')) {
    const int order = decimal(text).value_or(0);
    if (order < 1 || order > kLargestPass)
      row.fail("passes: \"" + text + "\" is not an order from 1 to " + std::to_string(kLargestPass));
    orders.push_back(order);
  }
  return orders;
}

// The regions of the buffer are those of the first target, whose passes use them whole; those of others may use less.
void validate(const Plan& plan, const TableRow& row, const TableRow& first) {
  if (std::accumulate(plan.passes.begin(), plan.passes.end(), 0) != plan.order) row.fail("the passes do not add up to the order");
  const bool large = plan.order > kRegisterOrders;
  const size_t passes = plan.passes.size();
  if (large ? passes != 2 && passes != 3 : passes != 1) row.fail("one pass up to order 7, two or three above it");
  const int lanes = width(plan.type), group = plan.inside == Inside::Transpose ? lanes * lanes : lanes;
  if (plan.block() < group) row.fail("a block is less than a group of registers");
  const int element = plan.element_bytes();
  if (plan.main_bytes != (large ? plan.length() * element : 0)) row.fail("main: the region holds the data once from order 8 on");
  const int staged = passes == 3 ? plan.chunk() * element : 0;
  const bool holds = &row == &first ? plan.staging_bytes == staged : plan.staging_bytes >= staged;
  if (!holds) row.fail("staging: the region holds a chunk of three passes");
  if (passes == 2 && plan.staging_bytes * plan.block() / plan.length() % (lanes * element) != 0)
    row.fail("staging: no whole registers beside each block");
  if (row["staging"] != first["staging"]) row.fail("staging: " + first["target"] + " has " + first["staging"]);
}

}  // namespace

std::string Plan::form() const {
  const int lanes = width(type);
  return lanes == 1 ? "scalar" : std::to_string(lanes) + " lanes, " + row["inside"];
}

std::string Plan::note() const {
  std::string text;
  for (int pass : passes) text += (text.empty() ? "order " : " + ") + std::to_string(pass);
  return text + "; " + std::to_string(limit.additions) + " additions, " + std::to_string(limit.multiplications) +
         " multiplications in " + (width(type) > 1 ? "vectors" : "scalars");
}

std::vector<Plan> read_plans(const std::filesystem::path& path, const std::string& target, const std::string& type) {
  const Table table = Table::read(path, {"target", "type", "order", "passes", "lanes", "inside", "additions", "multiplications",
                                         "shuffles", "main", "staging"});
  std::vector<Plan> plans;
  for (const TableRow& row : table.rows()) {
    if (row["type"] != "32f" && row["type"] != "64f") row.fail("type: \"" + row["type"] + "\" is neither 32f nor 64f");
    if (row["target"] != target || row["type"] != type) continue;
    const Type value = value_type(row, type == "32f");
    Plan plan{.order = row.integer("order"),
              .type = value,
              .passes = pass_orders(row),
              .inside = levels_inside(row, value),
              .limit = {row.integer("additions"), row.integer("multiplications"), row.integer("shuffles")},
              .main_bytes = row.integer("main"),
              .staging_bytes = row.integer("staging"),
              .row = row};
    if (plan.order != static_cast<int>(plans.size()) + 1) row.fail("the orders of a type follow each other from 1 on");
    const auto alike = [&](const TableRow& other) { return other["type"] == type && other["order"] == row["order"]; };
    validate(plan, row, *std::ranges::find_if(table.rows(), alike));
    plans.push_back(std::move(plan));
  }
  if (plans.size() != kOrders) fail_input(path.string(), 0, target + " " + type + " has " + std::to_string(plans.size()) + " orders instead of 13");
  return plans;
}

}  // namespace xfm::wht
