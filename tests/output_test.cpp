// Files that programs leave behind: whole or not at all, whatever stands at their place.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>

#include "generator/check.h"
#include "generator/output.h"

namespace {

namespace fs = std::filesystem;

std::string content(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class Output : public testing::Test {
 protected:
  Output() : folder_(fs::path(testing::TempDir()) / ("output." + std::to_string(getpid()))) { fs::create_directory(folder_); }
  ~Output() override { fs::remove_all(folder_); }
  std::string path(const char* name) const { return folder_ / name; }
  std::set<std::string> names() const {
    std::set<std::string> out;
    for (const auto& entry : fs::directory_iterator(folder_)) out.insert(entry.path().filename());
    return out;
  }
  std::string reason(const std::string& file, const std::string& text) {
    try {
      xfm::write_file(file, text);
    } catch (const xfm::InputError& error) {
      return error.what();
    }
    return "written";
  }

 private:
  fs::path folder_;
};

TEST_F(Output, ReplacesARegularFileAndKeepsALink) {
  xfm::write_file(path("a"), "old");
  xfm::write_file(path("a"), "new");
  EXPECT_EQ(content(path("a")), "new");
  fs::create_symlink("a", path("link"));
  xfm::write_file(path("link"), "by the link");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(content(path("a")), "by the link");
  fs::create_symlink("nothing", path("dangling"));
  xfm::write_file(path("dangling"), "new");
  EXPECT_EQ(content(path("nothing")), "new");
  EXPECT_EQ(names(), (std::set<std::string>{"a", "link", "dangling", "nothing"}));
}

TEST_F(Output, HasTheRightsThatTheProcessGivesOrTheFileHad) {
  const mode_t before = umask(027);
  xfm::write_file(path("a"), "text");
  umask(before);
  EXPECT_EQ(fs::status(path("a")).permissions(), fs::perms(0640));
  fs::permissions(path("a"), fs::perms(0604));
  xfm::write_file(path("a"), "new");
  EXPECT_EQ(fs::status(path("a")).permissions(), fs::perms(0604));
}

TEST_F(Output, WritesToADeviceAndLeavesItOne) {
  // Nodes of its own: a fault must not reach those of the system.
  if (mknod(path("null").c_str(), S_IFCHR | 0666, makedev(1, 3)) != 0 || mknod(path("full").c_str(), S_IFCHR | 0666, makedev(1, 7)) != 0 ||
      !std::ofstream(path("null")))
    GTEST_SKIP() << "no device can be made here";
  xfm::write_file(path("null"), "text");
  EXPECT_TRUE(fs::is_character_file(path("null")));
  EXPECT_NE(reason(path("full"), "text").find("full: cannot be written: No space left on device"), std::string::npos);
  EXPECT_TRUE(fs::is_character_file(path("full")));
}

TEST_F(Output, WritesToAPipeAndLeavesItOne) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  const pid_t reader = fork();
  if (reader == 0) alarm(20), _exit(content(path("pipe")) == "text" ? 0 : 1);
  xfm::write_file(path("pipe"), "text");
  int status = -1;
  waitpid(reader, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(fs::is_fifo(path("pipe")));
}

TEST_F(Output, LeavesNothingWhereItFails) {
  xfm::write_file(path("a"), "old");
  const rlimit small{4096, RLIM_INFINITY};  // as on a disk that is full
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{small.rlim_cur, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  const auto said = reason(path("a"), std::string(100'000, 'x'));
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_NE(said.find("a: cannot be written"), std::string::npos) << said;
  EXPECT_EQ(content(path("a")), "old");
  EXPECT_EQ(names(), std::set<std::string>{"a"});
  fs::create_directory(path("folder"));
  EXPECT_NE(reason(path("folder"), "text"), "written");
  EXPECT_NE(reason(path("none/a"), "text"), "written");
  EXPECT_EQ(names(), (std::set<std::string>{"a", "folder"}));
}

TEST_F(Output, ManyAtOnceDoNotDisturbEachOther) {
  constexpr int kWriters = 8, kRounds = 50;
  for (int w = 0; w < kWriters; ++w) {
    if (fork() != 0) continue;
    for (int i = 0; i < kRounds; ++i)
      if (reason(path("a"), std::string(10'000, static_cast<char>('a' + w))) != "written") _exit(1);
    _exit(0);
  }
  for (int w = 0; w < kWriters; ++w) {
    int status = -1;
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  const auto text = content(path("a"));
  EXPECT_EQ(text, std::string(10'000, text.at(0)));
  EXPECT_EQ(names(), std::set<std::string>{"a"});
}

}  // namespace
