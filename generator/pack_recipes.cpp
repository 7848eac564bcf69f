#include "generator/pack_recipes.h"

#include "generator/check.h"
#include "generator/table.h"

namespace xfm::pack {

namespace {

const std::vector<std::string> kColumns = {"Target", "Kernels", "N", "Type", "Lanes", "Loops", "Order"};

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
  return text;
}

std::string pairs_text(PairsFrom from) {
  switch (from) {
    case PairsFrom::Anywhere: return "pairs";
    case PairsFrom::Source: return "pairs from the source";
    case PairsFrom::Results: return "pairs from the results";
  }
  return {};
}

std::string order_text(const Rule& rule) {
  if (rule.pairs) return pairs_text(*rule.pairs);
  return std::string(rule.outermost ? "outermost" : "innermost") + (rule.across ? " across" : "");
}

Rule read_rule(const TableRow& row) {
  Rule rule;
  rule.lanes = row.integer("Lanes");
  if (rule.lanes != 1 && rule.lanes != 2 && rule.lanes != 4 && rule.lanes != 8) row.fail("Lanes: expected 1, 2, 4 or 8");
  if (row["Loops"] != "-") rule.loops = split(row["Loops"], ',');
  for (const PairsFrom from : kPairsFrom)
    if (row["Order"] == pairs_text(from)) {
      if (rule.lanes != 2 || !rule.loops.empty()) row.fail("pairs are two lanes without loops");
      rule.pairs = from;
      return rule;
    }
  for (const bool outermost : {false, true})
    for (const bool across : {false, true}) {
      rule.outermost = outermost, rule.across = across;
      if (order_text(rule) == row["Order"]) return rule;
    }
  row.fail("Order: expected innermost or outermost, across or not, or pairs and where they begin");
}

}  // namespace

Recipes Recipes::read(const std::filesystem::path& path) {
  Recipes recipes;
  recipes.path_ = path;
  const Table table = Table::read(path, kColumns);
  for (const TableRow& row : table.rows())
    if (!recipes.rules_.try_emplace({row["Target"], row["Kernels"], row.integer("N"), row["Type"]}, read_rule(row)).second)
      row.fail("this kernel has a row already");
  return recipes;
}

const Rule& Recipes::find(const std::string& target, const std::string& kernels, int size, const std::string& type) const {
  const auto found = rules_.find({target, kernels, size, type});
  if (found == rules_.end())
    throw InputError(path_.string() + ": no row for " + target + ", " + kernels + ", " + std::to_string(size) + ", " + type);
  return found->second;
}

std::string recipe_columns() { return joined(kColumns, "\t") + "\n"; }

std::string recipe_text(const std::string& target, const std::string& kernels, int size, const std::string& type, const Rule& rule) {
  return joined({target, kernels, std::to_string(size), type, std::to_string(rule.lanes),
                 rule.loops.empty() ? "-" : joined(rule.loops, ","), order_text(rule)},
                "\t") + "\n";
}

std::string form_text(const Rule& rule) {
  if (rule.lanes == 1) return "scalar";
  const std::string loops = rule.loops.empty() ? "" : joined(rule.loops, ", ") + ", ";
  if (rule.pairs) return order_text(rule);
  return std::to_string(rule.lanes) + " lanes over " + loops + order_text(rule);
}

}  // namespace xfm::pack
