// Which form the kernels of a target take: scalar, or packed with so many lanes over such a loop. The rows of
// plans/pack_recipes.tsv, found by a search that compares many forms in the model of the core (docs/wide.md).
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <tuple>

#include "generator/pack_families.h"

namespace xfm::pack {

class Recipes {
 public:
  // Throws InputError with file and line at a row that makes no sense.
  static Recipes read(const std::filesystem::path& path);

  // `kernels` names a group of kernels that share their flows; one lane is the scalar form. A kernel without a row is bad
  // input.
  const Rule& find(const std::string& target, const std::string& kernels, int size, const std::string& type) const;

 private:
  std::filesystem::path path_;
  std::map<std::tuple<std::string, std::string, int, std::string>, Rule> rules_;
};

// A row, with its line end; the line of column names.
std::string recipe_text(const std::string& target, const std::string& kernels, int size, const std::string& type, const Rule& rule);
std::string recipe_columns();
// For the reader of a unit: "4 lanes over class", "pairs from the source".
std::string form_text(const Rule& rule);

}  // namespace xfm::pack
