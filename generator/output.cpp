#include "generator/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "generator/check.h"

namespace xfm {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path, const char* what) {
  throw InputError(path + ": " + what + ": " + std::strerror(errno));
}

// Writes all of it and closes; a full disk may show only then.
bool write_all(int file, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(file, text.data() + done, text.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) break;
    done += static_cast<std::size_t>(count);
  }
  const int error = errno;
  const bool closed = close(file) == 0;
  if (done < text.size()) errno = error;
  return closed && done == text.size();
}

// What a link names in the end, there or not; a circle of links is left for the system to refuse.
fs::path behind_links(fs::path path) {
  std::error_code ignored;
  for (int link = 0; link < 40 && fs::is_symlink(fs::symlink_status(path, ignored)); ++link) {
    const auto target = fs::read_symlink(path, ignored);
    path = target.is_absolute() ? target : path.parent_path() / target;
  }
  return path;
}

// A new file beside `path` that no other program has: its name holds the process, and it must not be there yet.
int open_beside(const std::string& path, std::string& name) {
  for (int attempt = 0;; ++attempt) {
    name = path + "." + std::to_string(getpid()) + "." + std::to_string(attempt) + ".part";
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0 || errno != EEXIST) return file;
  }
}

}  // namespace

void write_file(const std::string& path, const std::string& text) {
  std::error_code ignored;
  const auto status = fs::status(path, ignored);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0 || !write_all(file, text)) fail(path, "cannot be written");
    return;
  }
  const std::string place = behind_links(path);
  std::string part;
  const int file = open_beside(place, part);
  if (file < 0) fail(path, "cannot be written");
  if (write_all(file, text) && std::rename(part.c_str(), place.c_str()) == 0) return;
  const int error = errno;
  unlink(part.c_str());
  errno = error;
  fail(path, "cannot be written");
}

}  // namespace xfm
