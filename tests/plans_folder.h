// Plan tables in a folder of their own, where a test spoils them and runs a generator on them.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "generator/table.h"

namespace xfm::test {

inline std::string read_text(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// A new folder, removed with all it holds.
class PlansFolder {
 public:
  PlansFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "xfm_plans_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
    path_ = name;
  }
  // With copies of tables of the project.
  explicit PlansFolder(std::initializer_list<const char*> files) : PlansFolder() {
    for (const char* file : files) std::filesystem::copy(std::filesystem::path(XFM_PLANS) / file, path_);
  }
  ~PlansFolder() { std::filesystem::remove_all(path_); }
  PlansFolder(const PlansFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  // Puts `to` for the first `from` of a file.
  void replace(const std::string& file, const std::string& from, const std::string& to) const {
    std::string text = read_text(path_ / file);
    const size_t at = text.find(from);
    if (at == std::string::npos) throw std::runtime_error(file + " has no \"" + from + "\"");
    std::ofstream(path_ / file) << text.replace(at, from.size(), to);
  }

  // Exit code of a command; what it says as an error is in `said`.
  int run(const std::string& command) {
    const int status = std::system((command + " 2>" + (path_ / "said").string()).c_str());
    said = read_text(path_ / "said");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string said;

 private:
  std::filesystem::path path_;
};

// A table as lines of cells.
class Lines {
 public:
  explicit Lines(const std::filesystem::path& path) {
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) lines_.push_back(split(line, '\t'));
  }
  // The line that begins with these cells.
  size_t find(const std::vector<std::string>& cells) const {
    for (size_t i = 0; i < lines_.size(); ++i)
      if (lines_[i].size() >= cells.size() && std::equal(cells.begin(), cells.end(), lines_[i].begin())) return i;
    throw std::runtime_error("no row " + cells.at(0));
  }
  std::vector<std::string>& operator[](size_t line) { return lines_.at(line); }
  void erase(size_t line) { lines_.erase(lines_.begin() + static_cast<long>(line)); }
  void repeat(size_t line) { lines_.insert(lines_.begin() + static_cast<long>(line), lines_.at(line)); }
  void write(const std::filesystem::path& path) const {
    std::ofstream out(path);
    for (const auto& cells : lines_)
      for (size_t i = 0; i < cells.size(); ++i) out << cells[i] << (i + 1 == cells.size() ? "\n" : "\t");
  }

 private:
  std::vector<std::vector<std::string>> lines_;
};

}  // namespace xfm::test
