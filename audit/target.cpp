#include "target.h"

#include <charconv>
#include <fstream>
#include <map>

#include "counts.h"

namespace xfm::audit {

Target read_target(const std::string& path, const std::string& name) {
  std::ifstream in(path);
  if (!in) throw BadTable(path + ": cannot be opened");
  std::vector<std::string> columns;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    const auto cells = split(line, '\t');
    if (columns.empty()) {
      columns = cells;
      continue;
    }
    if (cells.size() != columns.size()) throw BadTable(path + ": a row of " + std::to_string(cells.size()) + " cells");
    std::map<std::string, std::string> row;
    for (std::size_t c = 0; c < cells.size(); ++c) row[columns[c]] = cells[c];
    if (row["name"] != name) continue;
    Target target{.name = name, .sets = {}, .widest = 0, .is_base = row["level"] == "-"};
    for (const auto& set : split(row["sets"], ' ')) target.sets.insert(set);
    const auto& widest = row["widest"];
    const auto [end, error] = std::from_chars(widest.data(), widest.data() + widest.size(), target.widest);
    if (error != std::errc{} || end != widest.data() + widest.size()) throw BadTable(path + ": '" + widest + "' is no width");
    return target;
  }
  throw BadTable(path + ": no target " + name);
}

}  // namespace xfm::audit
