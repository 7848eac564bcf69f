// Always-on checks of the generator: a broken invariant stops it with the family, size and stage in the message.
#pragma once

#include <stdexcept>
#include <string>

namespace xfm {

class InternalError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline void check(bool holds, const std::string& what) {
  if (!holds) throw InternalError("internal error: " + what);
}

}  // namespace xfm
