// Plans: how a length is divided into blocks, read from the notation of the tables.
//
//   8                 a block of that length
//   A ct B            Cooley-Tukey link: B blocks of length A, twiddles, A blocks of length B
//   A pf B            Good-Thomas link (A and B coprime): the same without twiddles
//   R11               a real Rader block by its name in the table of blocks (real flows only)
//   halves(E; O)      sums and differences of the halves first; even bins by the plan E of half the length, odd bins as in
//                     the plan O of the whole length (real flows only)
//   rows(P; Q)        P where a row is real, Q where it is complex (real flows only)
//
// Chains read from the left; parentheses group.
#pragma once

#include <string>
#include <vector>

namespace xfm {

struct Plan {
  enum class Kind { Block, CooleyTukey, GoodThomas, NamedRader, Halves, Rows };
  Kind kind = Kind::Block;
  int length = 1;
  std::string name;          // NamedRader
  std::vector<Plan> parts;   // the two parts of a link, of halves and of rows

  bool link() const { return kind == Kind::CooleyTukey || kind == Kind::GoodThomas; }
  const Plan& first() const { return parts[0]; }
  const Plan& second() const { return parts[1]; }
};

// Throws InputError with the text and the reason.
Plan parse_plan(const std::string& text);
std::string to_text(const Plan& plan);
// The same stages read backwards: the plan of the transposed network.
Plan mirrored(const Plan& plan);

}  // namespace xfm
