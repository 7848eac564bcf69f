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

// The loops that a flow is in while it makes its values.
class LoopNest {
 public:
  // Numbers what an iteration makes.
  int next() { return ++made_.back(); }
  // Of the value numbered last.
  Label label() const;

 private:
  friend class Loop;
  Label loops_;
  std::vector<int> made_{0};  // by open loop
};

// An iteration of a loop, while it stands.
class Loop {
 public:
  Loop(LoopNest& nest, std::string name, int iteration = 0) : Loop(nest, Label{{std::move(name), iteration}}) {}
  // As if within the loops of a label.
  Loop(LoopNest& nest, const Label& label);
  ~Loop();
  Loop(const Loop&) = delete;

 private:
  LoopNest& nest_;
  size_t outer_;
};

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
