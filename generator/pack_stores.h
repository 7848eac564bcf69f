// From results to array cells: which cells are stored together, and from which vectors.
#pragma once

#include "generator/pack_network.h"
#include "generator/pack_registers.h"

namespace xfm::pack {

// `parity`: 0 or 1 where no store may split a pair of cells that begins at an even or odd one, else -1.
void store_outputs(const Network& network, Registers& registers, Program& program, int lanes, int parity);

}  // namespace xfm::pack
