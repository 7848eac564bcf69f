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

}  // namespace xfm::pack
