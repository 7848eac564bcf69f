// Which operations stand side by side: lanes run over one loop of the flow, or are pairs without regard to loops.
//
// Operations whose labels differ in iterations only form a family. Its members are listed with one of their loops as the
// fastest, and cut into runs that fill a register.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "generator/pack_network.h"
#include "generator/pack_pairs.h"

namespace xfm::pack {

struct Rule {
  int lanes = 4;
  std::vector<std::string> loops = {};  // the first that a family has is its fastest
  bool outermost = false;          // of several by that name, or of a family that has none of them, the outermost
  bool across = false;             // runs go on from one iteration of the other loops to the next
  std::optional<PairsFrom> pairs = {};  // instead of loops

  friend bool operator==(const Rule&, const Rule&) = default;
};

struct Family {
  std::vector<std::string> loops;  // those whose iterations differ between members, outermost first
  struct Member {
    int operation;
    std::vector<int> iterations;
  };
  std::vector<Member> members;
};

std::vector<Family> find_families(const Network& network);
// Operations of one register each, two at least. `parity`: of the cell at which a pair of elements begins.
std::vector<std::vector<int>> runs(const Network& network, const std::vector<Family>& families, const Rule& rule, int parity);

}  // namespace xfm::pack
