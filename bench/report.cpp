#include "bench/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <regex>
#include <utility>

#include "generator/check.h"

namespace xfm::bench {

namespace {

std::string joined(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) line += (line.empty() ? "" : "\t") + cell;
  return line + "\n";
}

}  // namespace

bool matches(const std::string& name, const std::string& expression) { return std::regex_search(name, std::regex(expression)); }

std::string cell_text(double value, int digits) {
  if (value == 0) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

Report::Report(std::string name, std::vector<Column> columns) : name_(std::move(name)), columns_(std::move(columns)) {
  check(columns_.size() > 2 && columns_[0].name == "function" && columns_[1].name == "N", "a report without function and N");
}

std::vector<std::string> Report::names() const {
  std::vector<std::string> names;
  for (const Column& column : columns_) names.push_back(column.name);
  return names;
}

std::vector<std::string> Report::texts(const Row& row) const {
  std::vector<std::string> texts;
  for (size_t i = 0; i < row.size(); ++i) {
    const double* const number = std::get_if<double>(&row[i]);
    texts.push_back(number != nullptr ? cell_text(*number, columns_[i].digits) : std::get<std::string>(row[i]));
  }
  return texts;
}

void Report::print(const std::vector<std::string>& cells) const {
  if (silent_) return;
  for (size_t i = 0; i < cells.size(); ++i) {
    const int width = i == 0 ? -22 : i == 1 ? 8 : std::max(10, static_cast<int>(columns_[i].name.size()) + 2) + (columns_[i].digits < 0 ? 4 : 0);
    std::printf("%*s", width, cells[i].c_str());
  }
  std::printf("\n");
  std::fflush(stdout);
}

void Report::add(Row row) {
  check(row.size() == columns_.size(), name_ + ": a row with another number of cells than columns");
  if (rows_.empty()) print(names());
  print(texts(row));
  rows_.push_back(std::move(row));
}

void Report::note(const std::string& line) {
  if (!silent_) std::printf("# %s\n", line.c_str());
  std::fflush(stdout);
  notes_.push_back(line);
}

std::string Report::tsv() const {
  std::string text = joined(names());
  for (const Row& row : rows_) text += joined(texts(row));
  for (const std::string& line : notes_) text += "# " + line + "\n";
  return text;
}

nlohmann::ordered_json Report::json() const {
  nlohmann::ordered_json columns = nlohmann::json::array(), rows = nlohmann::json::array();
  for (const Column& c : columns_) columns.push_back({{"name", c.name}, {"digits", c.digits}, {"plotted", c.plotted}});
  for (const Row& row : rows_) {
    nlohmann::ordered_json cells = nlohmann::json::array();
    for (size_t i = 0; i < row.size(); ++i) {
      const double* const number = std::get_if<double>(&row[i]);
      const double unit = std::pow(10.0, std::max(0, columns_[i].digits));
      if (number == nullptr) cells.push_back(std::get<std::string>(row[i]));
      else if (*number == 0) cells.push_back(nullptr);
      else if (columns_[i].digits == 0) cells.push_back(std::llround(*number));
      else cells.push_back(std::round(*number * unit) / unit);
    }
    rows.push_back(std::move(cells));
  }
  return {{"benchmark", name_}, {"columns", columns}, {"rows", rows}, {"notes", notes_}};
}

Report Report::selected(const std::string& only) const {
  Report result(name_, columns_);
  result.silent_ = true;
  result.notes_ = notes_;
  for (const Row& row : rows_)
    if (matches(std::get<std::string>(row[0]), only)) result.rows_.push_back(row);
  return result;
}

Report Report::from_json(const nlohmann::ordered_json& report) {
  std::vector<Column> columns;
  for (const auto& c : report.at("columns")) columns.push_back({c.at("name"), c.at("digits"), c.at("plotted")});
  Report result(report.at("benchmark"), std::move(columns));
  result.silent_ = true;
  for (const auto& cells : report.at("rows")) {
    Row row;
    for (const auto& cell : cells) {
      if (cell.is_string()) row.emplace_back(cell.get<std::string>());
      else row.emplace_back(cell.is_null() ? 0.0 : cell.get<double>());
    }
    result.add(std::move(row));
  }
  for (const auto& line : report.at("notes")) result.note(line);
  return result;
}

}  // namespace xfm::bench
