#include "tool/catalogue.h"

#include "generator/table.h"

namespace xfm::tool {

namespace {

constexpr const char kList[] =
#include "functions.inc"
    ;

std::vector<Function> read() {
  std::vector<Function> all;
  const Table table = Table::parse(kList, "functions", {"name", "kind", "part", "family", "type", "size", "scale", "class", "arguments"});
  for (const TableRow& row : table.rows()) {
    Function f{.name = row["name"], .kind = row["kind"], .family = row["family"], .type = row["type"], .scale = row["scale"]};
    if (f.type == "-") f.type.clear();
    if (f.kind == "kernel") f.size = row.integer("size");
    f.takes_buffer = row["arguments"].ends_with("void* buffer");
    all.push_back(std::move(f));
  }
  return all;
}

}  // namespace

const std::vector<Function>& functions() {
  static const std::vector<Function> all = read();
  return all;
}

}  // namespace xfm::tool
