#include "generator/label.h"

#include <algorithm>

namespace xfm {

void OperandLabel::taken_by(const Label& user, int place) {
  constexpr int kSeveral = -1;
  if (label_.empty()) label_ = user, place_ = place;
  for (size_t i = 0; i < std::min(label_.size(), user.size()) && label_[i].loop == user[i].loop; ++i)
    if (label_[i].iteration != user[i].iteration) label_[i].iteration = kSeveral;
}

Label OperandLabel::label() const {
  Label label = label_;
  label.push_back({"operand", place_});
  return label;
}

}  // namespace xfm
