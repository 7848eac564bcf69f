// Writes what the list of public functions decides in a binding: the template with its line "@functions" replaced.
//   gen_bindings cpp|fortran FUNCTIONS.tsv TEMPLATE OUTPUT
#include <fstream>
#include <set>
#include <sstream>

#include "bindings/fortran_interface.h"
#include "generator/check.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/table.h"
#include "generator/text.h"

namespace xfm {
namespace {

// xfmgDFTFwd_CToC -> DFTFwd_CToC, the name of the family's type.
std::string family_type(const Function& f) { return f.family.substr(4); }

// Specialisations of detail::dispatcher, kernel, entry and, where a dispatcher takes a length, lengths. A family without an element type has none.
std::string cpp_functions(const FunctionList& list) {
  std::string types, text;
  std::set<std::string> named;
  for (const Function& f : list.functions()) {
    if (f.type.empty()) continue;
    if (named.insert(f.family).second) types += "struct " + family_type(f) + ";\n";
    const std::string key = family_type(f) + ", Xfm" + f.type;
    const std::string table = f.kind == FunctionKind::Kernel       ? "kernel<" + key + ", " + std::to_string(f.size) + ">"
                              : f.kind == FunctionKind::Dispatcher ? "dispatcher<" + key + ">"
                                                                   : "entry<" + key + ">";
    text += "template <> inline constexpr auto " + table + " = " + f.name + ";\n";
    if (f.kind != FunctionKind::Dispatcher || f.index != "len") continue;
    const std::vector<const Function*> kernels = list.kernels(f.name);
    text += "template <> inline constexpr Lengths lengths<" + key + ">{" + std::to_string(kernels.front()->size) + ", " +
            std::to_string(kernels.back()->size) + "};\n";
  }
  return types + "\n" + text;
}

std::string filled(const std::string& path, const std::string& functions) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fail_input(path, 0, "cannot be read");
  std::string text;
  int places = 0;
  for (std::string line; std::getline(in, line);) {
    const bool place = line == "@functions";
    places += place;
    text += place ? functions : line + "\n";
  }
  if (places != 1) fail_input(path, 0, "needs one line @functions");
  return text;
}

void program(int argc, char** argv) {
  const std::string what = argc == 5 ? argv[1] : "";
  if (what != "cpp" && what != "fortran") throw InputError("usage: gen_bindings cpp|fortran FUNCTIONS.tsv TEMPLATE OUTPUT");
  const FunctionList list = FunctionList::read(argv[2]);
  write_file(argv[4], filled(argv[3], what == "cpp" ? cpp_functions(list) : fortran_interfaces(list)));
}

}  // namespace
}  // namespace xfm

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::program); }
