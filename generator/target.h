// Processors that the library is built for: the rows of plans/targets.tsv, whose head says what the columns are.
#pragma once

#include <string>
#include <vector>

#include "generator/machine.h"

namespace xfm {

struct Target {
  std::string name;
  std::vector<std::string> sets;  // instruction sets
  int registers = 0;
  int widest = 0;  // bits
  struct {
    double blend, shuffle, permute, permute2;
  } price{};

  bool admits(const std::string& set) const;
  bool has_register(Type type) const { return bits(type) <= widest; }
};

std::vector<Target> read_targets(const std::string& path);
Target read_target(const std::string& path, const std::string& name);

// The instruction set that an operation is from.
std::string instruction_set(const Program& program, const Inst& inst);
// Stops the generator where a program has an operation or a register that the target has not.
void check_admitted(const Program& program, const Target& target);

}  // namespace xfm
