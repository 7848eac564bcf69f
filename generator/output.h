// Files that a program leaves behind.
#pragma once

#include <string>

namespace xfm {

// Writes `text` as the file `path`, whole or not at all: under a name of its own beside it, then put in place by renaming, so
// that nobody sees half a file and two programs at once do not disturb each other. A link stays a link: the file it
// names is replaced. What is no regular file (a device, a pipe) is written to as it is. An error is thrown as InputError and
// leaves no part of a file behind.
void write_file(const std::string& path, const std::string& text);

}  // namespace xfm
