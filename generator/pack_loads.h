// Vectors of array elements: one load where they stand side by side, else loads that have them in their lanes, blended, or
// one or two loads and a move.
#pragma once

#include <map>
#include <vector>

#include "generator/pack_moves.h"
#include "generator/pack_network.h"

namespace xfm::pack {

// The register of so many lanes: single values of two lanes stand in the lower half of 128 bits.
inline Type register_type(bool single, int lanes) { return vector_type(single, single && lanes == 2 ? 4 : lanes); }

// Which loads a packed program may have.
struct LoadGrid {
  int parity = -1;  // 0 or 1: by pairs of cells that begin at even or odd ones, and by single cells; -1: anywhere
};

struct Loaded {
  int value;
  Lanes lanes;
};

class Loads {
 public:
  Loads(const Network& network, Program& program, Moves& moves, int lanes, LoadGrid grid);

  double price(const Lanes& want);
  Loaded make(const Lanes& want);

 private:
  // Loads of several elements each, and how their lanes become those that are wanted: where they are all in their places
  // by blends, else by a move of one or two.
  struct Source {
    std::vector<Inst> loads;  // one, or a pair of cells and the one for the upper half
    Lanes lanes = kEmpty;
  };
  struct Plan {
    double price = 0;
    std::vector<Source> sources;
    bool blended = false;
  };

  const Plan& plan(const Lanes& want);
  Plan find(const Lanes& want);
  Source window(bool single, int source, int cell) const;
  Source broadcast(int operation) const;
  std::vector<Source> windows(const Lanes& want) const;
  std::vector<Source> pairs(const Lanes& want) const;
  Plan blended(const Lanes& want) const;
  Plan moved(const Lanes& want, const std::vector<Source>& sources);
  int input_at(int source, int cell) const;
  // Whether the scalar program reads all of them: what it leaves alone, as the zeros of a half-spectrum, no load touches.
  bool read(int source, int cell, int count) const;
  int emit_source(const Source& source);

  const Network& network_;
  Program& program_;
  Moves& moves_;
  const int lanes_;
  const LoadGrid grid_;
  std::map<std::pair<int, int>, int> inputs_;  // by source and cell
  std::map<Lanes, Plan> plans_;
};

}  // namespace xfm::pack
