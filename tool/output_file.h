// A file that is put in place whole or not at all.
#pragma once

#include <filesystem>
#include <string_view>

namespace xfm::tool {

// What is written stands in a nameless file of the same folder until commit() gives it its name; an existing file stays as
// it was until then, and for good if anything fails. A link is followed; a device or a pipe gets the bytes at the end.
// Every failure is a std::runtime_error of one line that names the file.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  void write(std::string_view bytes);
  void commit();

 private:
  [[noreturn]] void fail(int error) const;
  void put_in_place();
  void copy_into_place();

  std::filesystem::path path_;    // as it was given, for messages
  std::filesystem::path target_;  // behind links
  std::filesystem::path part_;    // the unfinished file's name where the file system wants one
  bool regular_ = true;
  int descriptor_ = -1;
};

}  // namespace xfm::tool
