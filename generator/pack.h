// The packer: from a scalar program to one on wide registers that does the same operations on the same operands, a lane
// each, and so gives the same bits.
//
// Lanes run over one loop of the flow (pack_families.h). Runs of a register each are placed first; operations that are
// left over are packed round by round, always the one that costs least in moves. Lanes that are left empty compute on
// what stands there. A sum that adds in some lanes and subtracts in others multiplies one operand by 1 and -1 in the
// multiply-add that adds it, which rounds once.
#pragma once

#include "generator/machine.h"
#include "generator/pack_families.h"
#include "generator/pack_loads.h"
#include "generator/pack_network.h"
#include "generator/target.h"

namespace xfm::pack {

// Parity of the pairs in which a half spectrum is stored and loaded, for lengths at which a transform and its inverse on
// the result at once would else wait for stores that a load does not lie within; -1 where any place will do.
struct Grid {
  int loads = -1, stores = -1;
  int pairs = 0;  // of the cells at which pairs begin, whether loads and stores keep to them or not
};

Program pack(const Network& network, const std::vector<Family>& families, const Rule& rule, const Target& target, Grid grid);

}  // namespace xfm::pack
