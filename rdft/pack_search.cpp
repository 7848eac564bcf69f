// Searches for the packed forms of the real and Hartley kernels and writes their rows of plans/pack_recipes.tsv.
//   xfm_pack_search PLANS TARGET OUTPUT [KERNELS [N]]
// OUTPUT.2, OUTPUT.3 and so on hold the next best forms, for measurements to choose from.
#include <algorithm>
#include <iostream>

#include "generator/check.h"
#include "generator/pack_recipes.h"
#include "generator/pack_search.h"
#include "generator/program.h"
#include "generator/text.h"
#include "rdft/lower.h"
#include "rdft/packing.h"
#include "rdft/rows.h"

namespace xfm::rdft {
namespace {

constexpr size_t kRanks = 6;

void program(int argc, char** argv) {
  if (argc < 4) throw InputError("usage: xfm_pack_search PLANS TARGET OUTPUT [KERNELS [N]]");
  const Target target = read_target(std::string(argv[1]) + "/targets.tsv", argv[2]);
  std::vector<std::string> texts(kRanks, pack::recipe_columns());
  for (const Family family : {Family::Forward, Family::Inverse, Family::Hartley}) {
    if (argc > 4 && kernels_name(family) != argv[4]) continue;
    const Layout source = family == Family::Inverse ? Layout::Ccs : Layout::Samples;
    const Layout result = family == Family::Forward ? Layout::Ccs : Layout::Samples;
    for (const Row& row : read_rows(argv[1], family)) {
      if (argc > 5 && row.length != std::stoi(argv[5])) continue;
      for (const Precision precision : {Precision::Single, Precision::Double}) {
        const Program scalar = lower(row.flow, source, result, precision);
        const std::vector<pack::Form> forms = pack::search(scalar, target, grid(source, result, row.length));
        const std::string type = precision == Precision::Single ? "32f" : "64f";
        for (size_t k = 0; k < kRanks; ++k)
          texts[k] += pack::recipe_text(target.name, kernels_name(family), row.length, type, forms[std::min(k, forms.size() - 1)].rule);
        std::cout << kernels_name(family) << ' ' << row.length << ' ' << type << ": " << pack::form_text(forms[0].rule) << ", "
                  << forms[0].cycles << " cycles" << std::endl;
      }
    }
  }
  for (size_t k = 0; k < kRanks; ++k) write_file(argv[3] + (k == 0 ? "" : "." + std::to_string(k + 1)), texts[k]);
}

}  // namespace
}  // namespace xfm::rdft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::rdft::program); }
