// Writes a unit of the DCT-IV, or the report on the operations of its kernels:
//   gen_dct4 32f|64f <counts.tsv> <unit.cpp>
//   gen_dct4 report <counts.tsv> <report.tsv>
// The operations of every kernel are compared with the table of counts first.
#include <map>

#include "dct4/kernels.h"
#include "generator/program.h"
#include "generator/table.h"
#include "generator/text.h"

namespace xfm {
namespace {

void check_counts(const std::vector<StageKernel>& kernels, const std::string& path) {
  std::map<std::pair<std::string, int>, const TableRow*> rows;
  const Table table = Table::read(path, {"kernel", "length", "multiplications", "additions"});
  for (const TableRow& row : table.rows())
    if (!rows.emplace(std::pair(row["kernel"], row.integer("length")), &row).second) row.fail("this kernel has a row already");
  for (const StageKernel& k : kernels) {
    const auto found = rows.find({k.kind, k.length});
    const std::string name = k.kind + " " + std::to_string(k.length);
    if (found == rows.end()) fail_input(path, 0, "no row for " + name);
    const TableRow& row = *found->second;
    const int products = k.net.multiplications(), sums = k.net.additions();
    if (products != row.integer("multiplications") || sums != row.integer("additions"))
      row.fail(name + " has " + std::to_string(products) + " multiplications and " + std::to_string(sums) + " additions");
  }
}

std::string unit_text(const std::vector<StageKernel>& kernels, bool single) {
  const std::string tag = single ? "32f" : "64f";
  const std::string unit = "pgendct4_" + tag + "g9";
  std::string text = unit_head(unit, "gen_dct4");
  text += "#include \"dct4/precision.h\"\n\n";
  text += std::string("using Precision = xfm::dct4::") + (single ? "Single" : "Double") + ";\nusing Real = Precision::Real;\n";
  text += "#define XFM_DCT4(name) owngDCT4_" + tag + "g9_##name\n";
  text += "#define XFM_DCT4_PUBLIC(name) xfmgDCT4##name##_" + tag + "\n\n#include \"dct4/access.h\"\n\nnamespace {\n\n";
  for (const StageKernel& k : kernels) {
    text += kernel_text(k, single);
    if (k.kind == "synthesis" && k.length == 8) text += "#define XFM_DCT4_SYNTHESIS_8\n\n";
  }
  return text + "}  // namespace\n\n#include \"dct4/entries.h\"\n#include \"dct4/transform_" + tag + ".h\"\n";
}

std::string report_text(const std::string& path) {
  std::string text = "# made by gen_dct4 from the kernels as they are written; additions include changes of sign\n"
                     "precision\tkernel\tlength\tmultiplications\tadditions\n";
  for (const bool single : {true, false}) {
    const std::vector<StageKernel> kernels = stage_kernels(single);
    check_counts(kernels, path);
    for (const StageKernel& k : kernels)
      text += std::string(single ? "32f" : "64f") + "\t" + k.kind + "\t" + std::to_string(k.length) + "\t" +
              std::to_string(k.net.multiplications()) + "\t" + std::to_string(k.net.additions()) + "\n";
  }
  return text;
}

void run(int argc, char** argv) {
  if (argc != 4) throw InputError("usage: gen_dct4 32f|64f|report counts.tsv output");
  const std::string what = argv[1];
  if (what == "report") {
    write_file(argv[3], report_text(argv[2]));
  } else if (what == "32f" || what == "64f") {
    const std::vector<StageKernel> kernels = stage_kernels(what == "32f");
    check_counts(kernels, argv[2]);
    write_file(argv[3], unit_text(kernels, what == "32f"));
  } else {
    throw InputError("gen_dct4: no such unit: " + what);
  }
}

}  // namespace
}  // namespace xfm

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::run); }
