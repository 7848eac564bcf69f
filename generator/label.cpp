#include "generator/label.h"

#include <algorithm>

namespace xfm {

Label LoopNest::label() const {
  Label label = loops_;
  label.push_back({"#" + std::to_string(made_.back())});
  return label;
}

Loop::Loop(LoopNest& nest, const Label& label) : nest_(nest), outer_(nest.loops_.size()) {
  nest_.loops_.insert(nest_.loops_.end(), label.begin(), label.end());
  nest_.made_.push_back(0);
}

Loop::~Loop() {
  nest_.loops_.resize(outer_);
  nest_.made_.pop_back();
}

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
