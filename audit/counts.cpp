#include "counts.h"

#include <algorithm>
#include <charconv>
#include <fstream>

namespace xfm::audit {
namespace {

constexpr const char* kFrameColumn = "frame_bytes";

[[noreturn]] void fail(const std::string& path, int line, const std::string& reason) {
  throw BadTable(path + ":" + std::to_string(line) + ": " + reason);
}

struct Column {
  std::string header;
  std::vector<std::string> summands;
  bool at_most = false;
};

Column column_from(std::string text) {
  Column column;
  if (text.starts_with("<=")) {
    column.at_most = true;
    text.erase(0, 2);
  }
  const auto equals = text.find('=');
  column.header = text.substr(0, equals);
  column.summands = split(equals == std::string::npos ? text : text.substr(equals + 1), '+');
  return column;
}

// Which place of a row holds which column. Without a choice all places but the first do.
std::map<std::size_t, Column> chosen_columns(const std::vector<std::string>& header, const std::string& choice,
                                             const std::string& path, int line) {
  if (header.front() != "function" && header.front() != "name")
    fail(path, line, "the first column must be 'function' or 'name'");
  std::map<std::size_t, Column> out;
  const std::vector<std::string> names(header.begin() + 1, header.end());
  for (const auto& text : choice.empty() ? names : split(choice, ',')) {
    const auto column = column_from(text);
    const auto place = std::ranges::find(header, column.header);
    if (place == header.end()) fail(path, line, "no column '" + column.header + "'");
    for (const auto& summand : column.summands)
      if (summand != kFrameColumn && std::ranges::find(count_columns(), summand) == count_columns().end())
        fail(path, line, "'" + summand + "' is no count column");
    out.emplace(place - header.begin(), column);
  }
  if (out.empty()) fail(path, line, "no count column");
  return out;
}

std::optional<Demand> demand_from(const Column& column, std::string cell, const std::string& path, int line) {
  if (cell == "-") return std::nullopt;
  Demand demand{.column = column.header, .summands = column.summands, .value = 0, .at_most = column.at_most};
  if (cell.starts_with("<=")) {
    demand.at_most = true;
    cell.erase(0, 2);
  }
  const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), demand.value);
  if (error != std::errc{} || end != cell.data() + cell.size()) fail(path, line, "'" + cell + "' is no count");
  return demand;
}

int found_count(const Demand& demand, const BodySummary& body, const Counts& counts) {
  int sum = 0;
  for (const auto& summand : demand.summands) sum += summand == kFrameColumn ? body.frame_bytes : counts.at(summand);
  return sum;
}

void compare_body(const std::vector<Demand>& demands, const BodySummary& body, Findings& findings) {
  for (const auto& [line, counts] : body.lines) {
    for (const auto& demand : demands) {
      const int found = found_count(demand, body, counts);
      if (demand.at_most ? found <= demand.value : found == demand.value) continue;
      findings.push_back({"counts", body.function,
                          line + " line, " + demand.column + ": " + std::to_string(found) + " instead of " +
                              (demand.at_most ? "at most " : "") + std::to_string(demand.value)});
    }
  }
}

}  // namespace

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> out(1);
  for (const char c : text) {
    if (c == separator) out.emplace_back();
    else out.back().push_back(c);
  }
  return out;
}

CountTable read_count_table(const std::string& path_and_columns) {
  const auto colon = path_and_columns.find(':');
  const auto path = path_and_columns.substr(0, colon);
  const auto choice = colon == std::string::npos ? "" : path_and_columns.substr(colon + 1);
  std::ifstream in(path);
  if (!in) throw BadTable(path + ": cannot be opened");
  CountTable table{.path = path, .rows = {}};
  std::map<std::size_t, Column> columns;
  std::size_t width = 0;
  std::string text;
  for (int line = 1; std::getline(in, text); ++line) {
    if (text.empty() || text.starts_with('#')) continue;
    const auto cells = split(text, '\t');
    if (columns.empty()) {
      columns = chosen_columns(cells, choice, path, line);
      width = cells.size();
      continue;
    }
    if (cells.size() != width) fail(path, line, "a row of " + std::to_string(cells.size()) + " cells");
    std::vector<Demand> demands;
    for (const auto& [place, column] : columns)
      if (auto demand = demand_from(column, cells[place], path, line)) demands.push_back(*std::move(demand));
    if (!table.rows.emplace(cells.front(), std::move(demands)).second)
      fail(path, line, cells.front() + " stands twice");
  }
  if (table.rows.empty()) throw BadTable(path + ": no row");
  return table;
}

// A family that a table speaks of is in it with all its kernels of that element type.
void compare_counts(const std::vector<CountTable>& tables, const std::vector<BodySummary>& bodies, Findings& findings) {
  std::map<std::string, const BodySummary*> by_name;
  for (const auto& body : bodies) by_name[body.function] = &body;
  std::set<std::string> counted;
  std::set<std::pair<Family, std::string>> families;
  for (const auto& table : tables) {
    for (const auto& [function, demands] : table.rows) {
      const auto body = by_name.find(function);
      if (body == by_name.end()) {
        findings.push_back({"counts", function, "in " + table.path + " but not in the library"});
        continue;
      }
      counted.insert(function);
      if (const auto& promise = body->second->promise) families.emplace(promise->family, promise->type);
      compare_body(demands, *body->second, findings);
      if (const auto twin = by_name.find(twin_name(function)); twin != by_name.end())
        compare_body(demands, *twin->second, findings);
    }
  }
  for (const auto& body : bodies) {
    const auto& promise = body.promise;
    if (!promise || promise->is_twin || promise->shape != Shape::StraightLine) continue;
    if (families.contains({promise->family, promise->type}) && !counted.contains(body.function))
      findings.push_back({"counts", body.function, "in no table"});
  }
}

}  // namespace xfm::audit
