// Running programs: what they print, how they end, how much memory they took; and a folder for what they write.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace xfm::test {

namespace fs = std::filesystem;

inline std::string contents(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

struct Ended {
  int status = -1;  // the exit status, or the signal's number behind 128
  std::string out, errors;
  long kilobytes = 0;  // the largest resident size

  [[nodiscard]] bool one_line_of_error() const { return !errors.empty() && errors.find('\n') == errors.size() - 1; }
};

// Every case has a folder of its own, removed at its end.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "xfm_test_XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }
  // A line of the shell, in the case's folder.
  Ended run(const std::string& command) const {
    const std::string line = "cd " + folder_.string() + " && { " + command + "\n} >.out 2>.errors";
    const pid_t child = fork();
    if (child == 0) {
      execl("/bin/bash", "bash", "-c", line.c_str(), nullptr);
      _exit(127);
    }
    int status = 0;
    rusage used{};
    wait4(child, &status, 0, &used);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), contents(path(".out")), contents(path(".errors")), used.ru_maxrss};
  }
  // Names in the folder, but for those that a run writes itself.
  [[nodiscard]] size_t files() const {
    return static_cast<size_t>(std::count_if(fs::directory_iterator(folder_), {}, [](const auto& entry) {
      return entry.path().filename() != ".out" && entry.path().filename() != ".errors";
    }));
  }

 private:
  fs::path folder_;
};

}  // namespace xfm::test
