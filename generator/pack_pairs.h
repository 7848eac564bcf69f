// Pairs of operations that stand side by side because of what they work on and what becomes of it, whatever loops of the
// flow they come from: real and imaginary parts of a spectrum, or two halves of a network that are built alike.
//
// Two operations of one kind whose operands are pairs are a pair; where there is a choice, those are that are used most
// alike. So pairs go on from neighbouring elements of the source to the results, until elements of one lane meet. From the
// results back to the source it is the same with users and operands exchanged.
#pragma once

#include <vector>

#include "generator/pack_network.h"

namespace xfm::pack {

enum class PairsFrom {
  Anywhere,  // two operations that are used alike
  Source,    // neighbouring elements of the source
  Results,   // neighbouring results
};
inline constexpr PairsFrom kPairsFrom[] = {PairsFrom::Anywhere, PairsFrom::Source, PairsFrom::Results};

// `parity`: whether the first of two neighbours has an even or an odd cell.
std::vector<std::vector<int>> find_pairs(const Network& network, PairsFrom from, int parity);

}  // namespace xfm::pack
