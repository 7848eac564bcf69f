// What stands in registers while a program is packed, and how a vector that is wanted comes about: it stands in a register
// as it is, or is loaded, or is moved together from registers.
#pragma once

#include <utility>
#include <vector>

#include "generator/pack_loads.h"
#include "generator/pack_moves.h"
#include "generator/pack_network.h"

namespace xfm::pack {

class Registers {
 public:
  Registers(const Network& network, Program& program, Moves& moves, int lanes, LoadGrid grid);

  Type type(bool single) const;
  // Takes up a value and what its lanes are; its number among those that are held.
  int hold(int value, Type type, const Lanes& lanes);
  // About what a vector will cost, in shuffles; nothing if it is there.
  double price(const Lanes& want);
  // Makes all of them; what serves several is made once.
  void supply(const std::vector<Lanes>& wants);
  // Of a vector that has been supplied.
  int value(const Lanes& want) const;

 private:
  struct Held {
    int value;
    Type type;
    Lanes lanes;
  };
  // A vector on its way, and the registers that its lanes are in.
  struct Open {
    Lanes want;
    std::vector<int> sources;
  };
  // A register made of two that serves several vectors on their way.
  struct Joint {
    int a = -1, b = -1;
    std::vector<int> served;
    Lanes lanes = kEmpty;
    double price = 0;
  };

  int find(const Lanes& want) const;
  bool single(const Lanes& want) const;
  std::pair<Lanes, Lanes> by_place(const Lanes& want) const;
  Want lanes_from(const Lanes& want, int a, int b) const;
  double move_price(const Lanes& want, int a, int b);
  double register_price(const Lanes& want);
  int move(const Lanes& want, int a, int b);
  int load(const Lanes& want);
  std::vector<int> cover(const Lanes& want);

  void combine(std::vector<Open> open);
  Joint best_joint(const std::vector<Open>& open);
  void extend(Joint joint, std::vector<int> elements, const std::vector<Open>& open, const std::vector<int>& list, size_t next,
              Joint& best);
  void place(Joint& joint, std::vector<int> elements, const std::vector<Open>& open, int w);

  const Network& network_;
  Program& program_;
  Moves& moves_;
  const int lanes_;
  Loads loads_;
  std::vector<Held> held_;
  std::vector<std::vector<int>> holders_;  // by operation, the register in which it was done first
};

}  // namespace xfm::pack
