// The results of one benchmark: a table with a row a size, printed as it grows and written whole or not at all.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <variant>
#include <vector>

namespace xfm::bench {

constexpr int kText = -1;

struct Column {
  std::string name;
  int digits = 2;        // of its numbers, behind the point; kText for a column of words
  bool plotted = false;  // nanoseconds of a contestant, drawn by length
};

// A number of 0 is one that is not there, shown as a dash.
using Cell = std::variant<double, std::string>;
using Row = std::vector<Cell>;

// Whether a function's name matches a regular expression somewhere.
[[nodiscard]] bool matches(const std::string& name, const std::string& expression);

// Every table begins with the columns "function" and "N".
class Report {
 public:
  Report(std::string name, std::vector<Column> columns);

  void add(Row row);
  void note(const std::string& line);

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }

  [[nodiscard]] std::string tsv() const;
  [[nodiscard]] nlohmann::ordered_json json() const;
  // The rows of functions whose names match a regular expression; silent.
  [[nodiscard]] Report selected(const std::string& only) const;
  // Silent: what was measured before.
  static Report from_json(const nlohmann::ordered_json& report);

 private:
  void print(const std::vector<std::string>& cells) const;
  [[nodiscard]] std::vector<std::string> texts(const Row& row) const;
  [[nodiscard]] std::vector<std::string> names() const;

  std::string name_;
  std::vector<Column> columns_;
  std::vector<Row> rows_;
  std::vector<std::string> notes_;
  bool silent_ = false;
};

std::string cell_text(double value, int digits);

}  // namespace xfm::bench
