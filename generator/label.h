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

// The label of a value that others take as an operand: what their labels begin with alike, the number of the first of
// them, and the place at which that one takes it, as one more loop.
class OperandLabel {
 public:
  void taken_by(const Label& user, int place);
  bool empty() const { return uses_ == 0; }
  Label label() const;

 private:
  Label common_, own_;  // own_: the last step of the first user
  int uses_ = 0, place_ = 0;
};

}  // namespace xfm
