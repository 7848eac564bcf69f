// What a target makes of scalar programs: the base leaves them as they are, others pack them by their rows of
// plans/pack_recipes.tsv.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "generator/pack.h"
#include "generator/pack_recipes.h"
#include "generator/target.h"

namespace xfm::pack {

class Forms {
 public:
  // From the tables of a folder; `target` is a name of targets.tsv.
  static Forms read(const std::filesystem::path& plans, const std::string& target);

  struct Form {
    Program program;
    std::string name;  // empty for the base
  };
  Form of(Program scalar, const std::string& kernels, int size, const std::string& type, Grid grid) const;

  int registers() const;

 private:
  std::optional<Target> target_;  // none: the base
  std::optional<Recipes> recipes_;
};

// Instructions of a program that compute, each of as many lanes as there are.
struct Arithmetic {
  int sums = 0, products = 0;
  bool packed = false;  // of more than one lane
};
Arithmetic arithmetic(const Program& program);

}  // namespace xfm::pack
