// What a program computes, operation by operation, to the last bit: lowerings are tested by it without a compiler.
#pragma once

#include <vector>

#include "generator/machine.h"

namespace xfm {

// Elements of an array, in either precision: a single is a double whose value a single can have.
using Elements = std::vector<double>;

// Runs the program over its source arrays; `targets` have their lengths and keep what is not stored. An access outside an
// array, or an operation on operands that it does not take, is a bug of who made the program.
void execute(const Program& program, const std::vector<Elements>& sources, double scale, std::vector<Elements>& targets);

}  // namespace xfm
