#include "tool/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace xfm::tool {

namespace fs = std::filesystem;

namespace {

// All bytes, or an error number.
int write_all(int descriptor, const char* bytes, size_t count) {
  while (count > 0) {
    const ssize_t done = ::write(descriptor, bytes, count);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return done < 0 ? errno : ENOSPC;
    bytes += done;
    count -= static_cast<size_t>(done);
  }
  return 0;
}

// A name beside `target` that nothing else uses.
std::string unused_name(const fs::path& target) {
  return (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
}

mode_t creation_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const fs::path& path) : path_(path), target_(path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status)) fail(EISDIR);
  if (fs::exists(status)) {
    if (access(path.c_str(), W_OK) != 0) fail(errno);
    regular_ = fs::is_regular_file(status);
    if (regular_) target_ = fs::canonical(path);
  } else if (fs::is_symlink(fs::symlink_status(path, ignored))) {
    fail(ENOENT);
  }
  const fs::path parent = target_.has_parent_path() ? target_.parent_path() : ".";
  const fs::path folder = regular_ ? parent : fs::temp_directory_path(ignored);
  descriptor_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor_ >= 0) return;
  if (errno != EOPNOTSUPP && errno != EISDIR) fail(errno);
  std::string name = unused_name(folder / target_.filename());
  descriptor_ = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor_ < 0) fail(errno);
  part_ = name;
  fchmod(descriptor_, creation_mode());
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!part_.empty()) unlink(part_.c_str());
}

void OutputFile::fail(int error) const {
  throw std::runtime_error(path_.string() + ": cannot be written: " + std::strerror(error));
}

void OutputFile::write(std::string_view bytes) {
  if (const int error = write_all(descriptor_, bytes.data(), bytes.size())) fail(error);
}

void OutputFile::commit() {
  if (regular_) put_in_place();
  else copy_into_place();
}

void OutputFile::put_in_place() {
  struct stat existing;
  if (stat(target_.c_str(), &existing) == 0) fchmod(descriptor_, existing.st_mode & 07777);
  const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
  while (part_.empty()) {
    std::string name = unused_name(target_);
    const int taken = mkstemp(name.data());  // finds a free name, which the link below then needs
    if (taken < 0) fail(errno);
    close(taken);
    unlink(name.c_str());
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) part_ = name;
    else if (errno != EEXIST) fail(errno);
  }
  if (rename(part_.c_str(), target_.c_str()) != 0) fail(errno);
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
    error = got < 0 ? errno : write_all(out, block, static_cast<size_t>(got));
  }
  if (close(out) != 0 && error == 0) error = errno;
  if (error != 0) fail(error);
}

}  // namespace xfm::tool
