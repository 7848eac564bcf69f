// Tab-separated tables: the format of every data file under plans/. Lines that start with '#' and empty lines are
// skipped; the first other line names the columns.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xfm {

// Throws InputError with a message "file:line: reason"; line 0 stands for the file as a whole.
[[noreturn]] void fail_input(std::string_view file, int line, std::string_view reason);

class Table;

class TableRow {
 public:
  // The cell under a column; asking for a column the table was not read with is a bug.
  [[nodiscard]] const std::string& operator[](std::string_view column) const;
  [[nodiscard]] bool has(std::string_view column) const { return cells_.contains(column); }
  // The cell as a decimal integer; anything else is bad input.
  [[nodiscard]] int integer(std::string_view column) const;
  [[nodiscard]] std::string where() const { return file_ + ":" + std::to_string(line_); }
  // Reports bad input in this row.
  [[noreturn]] void fail(std::string_view reason) const;

 private:
  friend class Table;
  std::string file_;
  int line_ = 0;
  std::map<std::string, std::string, std::less<>> cells_;
};

class Table {
 public:
  // Reads a file whose columns are exactly `columns`, in this order, and which has at least one row.
  static Table read(const std::filesystem::path& path, const std::vector<std::string>& columns);
  // The same from a text at hand; `name` stands for the file in messages.
  static Table parse(std::string_view text, const std::string& name, const std::vector<std::string>& columns);

  [[nodiscard]] const std::vector<TableRow>& rows() const { return rows_; }

 private:
  static Table read(std::istream& in, const std::string& name, const std::vector<std::string>& columns);
  std::vector<TableRow> rows_;
};

// A text that is a decimal integer as a whole.
std::optional<int> decimal(std::string_view text);
// Splits at every separator; the pieces keep their blanks.
std::vector<std::string> split(std::string_view text, char separator);
std::string_view trim(std::string_view text);

}  // namespace xfm
