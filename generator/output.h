// Files that a program leaves behind: whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace xfm {

// A file in the making. What is written stands in a file of its own until commit() gives it its name, so that nobody sees
// half a file and two programs at once do not disturb each other; an existing file stays as it was until then, and for good
// if anything fails. A link stays a link: the file that it names is replaced. What is no regular file (a device, a pipe) gets
// the bytes at the end. Every failure is an InputError of one line that names the file, and leaves no part of a file behind.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // For those who write by themselves, also back and forth.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  void write(std::string_view bytes);
  void commit();

 private:
  [[noreturn]] void fail(int error) const;
  void open_in(const std::filesystem::path& folder);
  void put_in_place();
  void copy_into_place();

  std::filesystem::path path_;    // as it was given, for messages
  std::filesystem::path target_;  // behind links, of a regular file
  std::filesystem::path part_;    // the unfinished file's name where it has one
  bool regular_ = true;
  int descriptor_ = -1;
};

void write_file(const std::filesystem::path& path, std::string_view text);

}  // namespace xfm
