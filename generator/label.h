// Where in its flow a value is made: the loops around it with their iterations, outermost first, and its number among the
// values made there. Values whose labels differ in iterations only do the same on different data, so a vector may hold them.
#pragma once

#include <string>
#include <vector>

namespace xfm {

struct LoopStep {
  std::string loop;
  int iteration = 0;

  friend bool operator==(const LoopStep&, const LoopStep&) = default;
};
using Label = std::vector<LoopStep>;

// The label of a value by those that take it as an operand: that of the first of them, without the iterations in which the
// others differ, and the place at which the first one takes it, as one more loop.
class OperandLabel {
 public:
  void taken_by(const Label& user, int place);
  bool empty() const { return label_.empty(); }
  Label label() const;

 private:
  Label label_;
  int place_ = 0;
};

}  // namespace xfm
