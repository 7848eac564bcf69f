// Ways to bring wanted lanes of one or two registers into one, by their price.
//
// A want names for every lane of a register type which lane it is to have: 0..w-1 of the register a, w..2w-1 of b, or
// kNone. Blends are the cheapest, then what moves within 128 bits, then what crosses them; where no instruction does it,
// two or three do.
#pragma once

#include <array>
#include <map>
#include <vector>

#include "generator/machine.h"
#include "generator/pack_network.h"
#include "generator/target.h"

namespace xfm::pack {

using Want = Lanes;

struct Step {
  Op op;
  int a, b;  // 0: the register a, 1: b, 2 and on: results of the steps before; b is kNone where there is one operand
  int imm = 0;
  Want lanes = {};  // as the result has them, in the numbers of a and b of the whole
  Want pick = {};   // Op::Pick: its pattern, in the numbers of its own operands
};

struct Way {
  double price = 0;  // in shuffles within 128 bits
  std::vector<Step> steps;  // empty: a as it stands
};

class Moves {
 public:
  explicit Moves(const Target& target) : target_(target), two_source_picks_(target.admits("AVX512F_128")) {}

  const Way& way(Type type, const Want& want);

 private:
  struct Basic {
    Op op;
    bool exchanged;  // operands b, a
    int imm;
    double price;
    Want lanes;
  };
  // By type: single instructions, those with one operand first.
  struct Basics {
    std::vector<Basic> one, two;
  };
  const Basics& basics(Type type);
  Way find(Type type, const Want& want);
  const Basic* cheapest(const std::vector<Basic>& among, Type type, const Want& want) const;
  Way direct(Type type, const Want& want);

  const Target target_;
  const bool two_source_picks_;  // one instruction picks any lanes of two registers
  std::map<Type, Basics> basics_;
  std::map<std::pair<Type, Want>, Way> known_;
};

// Emits the steps; the value of the last one.
int emit(Program& program, Type type, const Way& way, int a, int b);

}  // namespace xfm::pack
