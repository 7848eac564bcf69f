#include "generator/label.h"

#include <algorithm>

namespace xfm {

void OperandLabel::taken_by(const Label& user, int place) {
  if (uses_++ == 0) {
    common_ = user;
    if (!user.empty()) common_.pop_back(), own_ = {user.back()};
    place_ = place;
    return;
  }
  const auto [end, unused] = std::mismatch(common_.begin(), common_.end(), user.begin(), user.end());
  common_.erase(end, common_.end());
}

Label OperandLabel::label() const {
  Label label = common_;
  label.insert(label.end(), own_.begin(), own_.end());
  label.push_back({"operand", place_});
  return label;
}

}  // namespace xfm
