#include "generator/table.h"

#include <charconv>
#include <fstream>
#include <sstream>

#include "generator/check.h"

namespace xfm {

void fail_input(std::string_view file, int line, std::string_view reason) {
  std::string text(file);
  if (line > 0) text += ":" + std::to_string(line);
  throw InputError(text + ": " + std::string(reason));
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator, start)) {
    parts.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

std::string_view trim(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<int> decimal(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return value;
}

const std::string& TableRow::operator[](std::string_view column) const {
  const auto cell = cells_.find(column);
  check(cell != cells_.end(), file_ + " was not read with a column " + std::string(column));
  return cell->second;
}

int TableRow::integer(std::string_view column) const {
  const std::string& text = (*this)[column];
  const std::optional<int> value = decimal(text);
  if (!value) fail(std::string(column) + ": \"" + text + "\" is not an integer");
  return *value;
}

void TableRow::fail(std::string_view reason) const { fail_input(file_, line_, reason); }

Table Table::read(const std::filesystem::path& path, const std::vector<std::string>& columns) {
  std::ifstream in(path);
  if (!in) fail_input(path.string(), 0, "cannot be read");
  return read(in, path.string(), columns);
}

Table Table::parse(std::string_view text, const std::string& name, const std::vector<std::string>& columns) {
  std::istringstream in{std::string(text)};
  return read(in, name, columns);
}

Table Table::read(std::istream& in, const std::string& name, const std::vector<std::string>& columns) {
  Table table;
  bool named = false;
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line.empty() || line.front() == '#') continue;
    const std::vector<std::string> cells = split(line, '\t');
    if (!named) {
      if (cells != columns) fail_input(name, number, "the columns are not the expected ones");
      named = true;
      continue;
    }
    TableRow row;
    row.file_ = name;
    row.line_ = number;
    if (cells.size() != columns.size())
      row.fail(std::to_string(cells.size()) + " cells where the table has " + std::to_string(columns.size()) +
               " columns");
    for (size_t i = 0; i < columns.size(); ++i) row.cells_[columns[i]] = cells[i];
    table.rows_.push_back(std::move(row));
  }
  if (in.bad()) fail_input(name, number, "cannot be read to its end");
  if (table.rows_.empty()) fail_input(name, 0, "has no rows");
  return table;
}

}  // namespace xfm
