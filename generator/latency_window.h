// Moves operations of an order forward past others that would have to wait for their operands.
#pragma once

#include <vector>

#include "generator/machine.h"

namespace xfm {

struct Window {
  int operations;  // among how many of the next ones the choice is made
  int live;        // values held at once beyond which nothing is taken early that adds to them
};

std::vector<int> fill_latencies(const Program& program, const std::vector<int>& order, Window window);

}  // namespace xfm
