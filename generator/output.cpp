#include "generator/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "generator/check.h"

namespace xfm {

namespace fs = std::filesystem;

namespace {

// All bytes, or an error number.
int write_all(int file, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t done = ::write(file, bytes, count);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return done < 0 ? errno : ENOSPC;
    bytes += done;
    count -= static_cast<std::size_t>(done);
  }
  return 0;
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

// A name beside `target` that no other program has: it holds the process.
fs::path name_beside(const fs::path& target, int attempt) {
  return target.string() + "." + std::to_string(getpid()) + "." + std::to_string(attempt) + ".part";
}

}  // namespace

OutputFile::OutputFile(const fs::path& path) : path_(path), target_(path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status)) fail(EISDIR);
  if (fs::exists(status)) {
    if (access(path.c_str(), W_OK) != 0) fail(errno);
    regular_ = fs::is_regular_file(status);
  }
  if (regular_) target_ = behind_links(path);
  const fs::path parent = target_.has_parent_path() ? target_.parent_path() : ".";
  open_in(regular_ ? parent : fs::temp_directory_path(ignored));
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!part_.empty()) unlink(part_.c_str());
}

// Without a name, so that nothing stays behind even of a program that is killed, where the file system can.
void OutputFile::open_in(const fs::path& folder) {
  descriptor_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor_ >= 0) return;
  if (errno != EOPNOTSUPP && errno != EISDIR) fail(errno);
  for (int attempt = 0; descriptor_ < 0; ++attempt) {
    const fs::path name = name_beside(folder / target_.filename(), attempt);
    descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ >= 0) part_ = name;
    else if (errno != EEXIST) fail(errno);
  }
}

void OutputFile::fail(int error) const { throw InputError(path_.string() + ": cannot be written: " + std::strerror(error)); }

void OutputFile::write(std::string_view bytes) {
  if (const int error = write_all(descriptor_, bytes.data(), bytes.size())) fail(error);
}

void OutputFile::commit() {
  if (regular_) put_in_place();
  else copy_into_place();
}

void OutputFile::put_in_place() {
  struct stat existing;
  if (stat(target_.c_str(), &existing) == 0 && fchmod(descriptor_, existing.st_mode & 07777) != 0) fail(errno);
  const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
  for (int attempt = 0; part_.empty(); ++attempt) {
    const fs::path name = name_beside(target_, attempt);
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) part_ = name;
    else if (errno != EEXIST) fail(errno);
  }
  // A full disk may show only now.
  if (close(std::exchange(descriptor_, -1)) != 0) fail(errno);
  if (std::rename(part_.c_str(), target_.c_str()) != 0) fail(errno);
  part_.clear();
}

void OutputFile::copy_into_place() {
  const int out = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
  if (out < 0) fail(errno);
  char block[1 << 16];
  off_t at = 0;
  int error = 0;
  for (ssize_t got = 1; got > 0 && error == 0; at += got) {
    got = pread(descriptor_, block, sizeof block, at);
    error = got < 0 ? errno : write_all(out, block, static_cast<std::size_t>(got));
  }
  if (close(out) != 0 && error == 0) error = errno;
  if (error != 0) fail(error);
}

void write_file(const fs::path& path, std::string_view text) {
  OutputFile file(path);
  file.write(text);
  file.commit();
}

}  // namespace xfm
