#include "dct4/kernel_plans.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <set>

namespace xfm::dct4 {

namespace {

struct KindName {
  KernelKind kind;
  const char* cell;
};
constexpr KindName kKinds[] = {{KernelKind::Rotation, "rotation"}, {KernelKind::Lifting, "lifting"},
                               {KernelKind::Straight, "straight"}, {KernelKind::Forward, "forward"},
                               {KernelKind::Synthesis, "synthesis"}, {KernelKind::Combine, "combine"}};

KernelKind kind_of(const TableRow& row) {
  const auto found = std::ranges::find_if(kKinds, [&](const KindName& k) { return row["kernel"] == k.cell; });
  if (found == std::end(kKinds)) row.fail("kernel: \"" + row["kernel"] + "\" is no kind of kernel");
  return found->kind;
}

Splits splits_of(const TableRow& row, const char* column, int product) {
  const int most = row["kernel"] == "combine" ? 8 : 4;
  Splits splits;
  if (row[column] != "-")
    for (const std::string& text : split(row[column], ' ')) {
      const int factor = decimal(text).value_or(0);
      if (factor != most && factor != most / 2) row.fail(std::string(column) + ": \"" + text + "\" is no split");
      splits.push_back(factor);
    }
  if (std::accumulate(splits.begin(), splits.end(), 1, std::multiplies<>()) != product)
    row.fail(std::string(column) + ": the product is not " + std::to_string(product));
  return splits;
}

// What the splits of a plan multiply to: all but the pair that an inner transform ends with.
int split_length(KernelKind kind, int length, int columns) {
  switch (kind) {
    case KernelKind::Rotation:
    case KernelKind::Lifting: return 1;
    case KernelKind::Straight: return length / columns / 2;
    case KernelKind::Forward:
    case KernelKind::Synthesis: return length / 2;
    case KernelKind::Combine: return length;
  }
  return 0;
}

KernelPlan plan_of(const TableRow& row) {
  const KernelKind kind = kind_of(row);
  const int length = row.integer("length"), columns = kind == KernelKind::Straight ? row.integer("columns") : 0;
  if (length < 2 || (length & (length - 1)) != 0) row.fail("length: not a power of two from 2 on");
  if (kind == KernelKind::Straight ? columns < 1 || length % (2 * columns) != 0 : row["columns"] != "-")
    row.fail("columns: a straight kernel has some, in pairs of rows");
  const auto marked = [&](const char* column, const char* mark) {
    if (row[column] != "-" && row[column] != mark) row.fail(std::string(column) + ": \"" + row[column] + "\" is neither " + mark + " nor -");
    return row[column] == mark;
  };
  if (row["stores"] != "-" && kind != KernelKind::Forward) row.fail("stores: only a forward kernel has this order");
  return {.kind = kind,
          .length = length,
          .columns = columns,
          .splits = splits_of(row, "splits", split_length(kind, length, columns)),
          .group_splits = splits_of(row, "group_splits", std::max(columns, 1)),
          .fold_parts = marked("fold", "parts"),
          .finished_order = marked("stores", "finished"),
          .multiplications = row.integer("multiplications"),
          .additions = row.integer("additions"),
          .row = row};
}

}  // namespace

std::string KernelPlan::name() const { return (whole() ? "straight" : row["kernel"]) + std::to_string(length); }

std::vector<KernelPlan> read_kernel_plans(const std::filesystem::path& path, const std::string& type) {
  const Table table = Table::read(path, {"kernel", "length", "types", "columns", "splits", "group_splits", "fold",
                                         "stores", "multiplications", "additions"});
  std::vector<KernelPlan> plans;
  std::set<std::string> names;
  for (const TableRow& row : table.rows()) {
    KernelPlan plan = plan_of(row);
    if (!names.insert(plan.name()).second) row.fail("this kernel has a row already");
    for (const std::string& t : split(row["types"], ' ')) {
      if (t != "32f" && t != "64f") row.fail("types: \"" + t + "\" is neither 32f nor 64f");
      if (t == type) plans.push_back(plan);
    }
  }
  return plans;
}

}  // namespace xfm::dct4
