// Flows of the Hadamard transform H(2^order), natural order, in machine form.
//
// y[i] = sum of (-1)^popcount(i & j) * x[j]. Each level replaces a pair of values at a distance 2^k by its sum and its
// difference, a + b and a - b; the levels run from k = 0 upwards. Rounding makes that order part of the result, so every
// flow keeps it and none shares or regroups a level.
#pragma once

#include "generator/machine.h"

namespace xfm::wht {

enum class Scaling { None, Last };  // whether outputs are multiplied by the scale before they are stored

// How the levels inside a register run: between the registers of square groups, transposed and transposed back; or as the
// sum of the register and itself in another order, with a sign by lane: a + b in the lanes of a, a - b in those of b.
enum class Inside { Transpose, Permute };

// Contiguous elements, from source cell 0 on to target cell 0 on.
Program block_flow(int order, Type type, Inside inside, Scaling scaling);
// Elements at a stride, one register of neighbouring columns wide.
Program column_flow(int order, int stride, Type type, Scaling scaling);

struct Counts {
  int additions = 0, multiplications = 0, shuffles = 0;

  Counts& operator+=(const Counts& other);
  friend Counts operator*(int times, const Counts& counts);
};

// Instructions of a program.
Counts count(const Program& program);

}  // namespace xfm::wht
