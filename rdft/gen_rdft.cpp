// Writes the units of the real transforms.
//   gen_rdft UNIT PLANS OUTPUT              a unit, pgenrdftfwdccs32f and its like
//   gen_rdft counts-FAMILY PLANS OUTPUT     counts of the forward, inverse or hartley kernels, a line for each
// PLANS is the directory of the plan tables. Nothing is written unless every row's flow costs what the row says.
#include <map>

#include "generator/check.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/text.h"
#include "rdft/lower.h"
#include "rdft/rows.h"

namespace xfm::rdft {
namespace {

struct Transform {
  std::string unit;  // without the type
  std::string name;  // of the functions, without length and type
  Family family;
  Layout source, target;
};

const std::vector<Transform> kTransforms = {
    {"pgenrdftfwdccs", "xfmgDFTFwd_RToCCS", Family::Forward, Layout::Samples, Layout::Ccs},
    {"pgenrdftfwdpack", "xfmgDFTFwd_RToPack", Family::Forward, Layout::Samples, Layout::Pack},
    {"pgenrdftfwdperm", "xfmgDFTFwd_RToPerm", Family::Forward, Layout::Samples, Layout::Perm},
    {"pgenrdftinvccs", "xfmgDFTInv_CCSToR", Family::Inverse, Layout::Ccs, Layout::Samples},
    {"pgenrdftinvpack", "xfmgDFTInv_PackToR", Family::Inverse, Layout::Pack, Layout::Samples},
    {"pgenrdftinvperm", "xfmgDFTInv_PermToR", Family::Inverse, Layout::Perm, Layout::Samples},
    {"pgenhartley", "xfmgHartley", Family::Hartley, Layout::Samples, Layout::Samples},
};

const std::map<std::string, Precision> kTypes = {{"32f", Precision::Single}, {"64f", Precision::Double}};

std::string symbol(const Transform& t, int n, const std::string& type) {
  return t.name + "_" + std::to_string(n) + "_" + type;
}

Program program_of(const Transform& t, const Row& row, Precision precision) {
  Program program = lower(row.flow, t.source, t.target, precision);
  check_lowered(program, row.flow, row.counts, precision);
  return program;
}

std::string unit_text(const Transform& t, const std::string& type, const std::string& plans) {
  const FunctionList functions = FunctionList::read(plans + "/functions.tsv");
  const Precision precision = kTypes.at(type);
  std::string text = unit_head(t.unit + type, "gen_rdft");
  for (const Row& row : read_rows(plans, t.family)) {
    const Function* function = functions.find(symbol(t, row.length, type));
    check(function != nullptr, "a public function " + symbol(t, row.length, type));
    Kernel kernel = Kernel::of(*function);
    kernel.note = row.plan + "; " + std::to_string(row.counts.additions) + " additions, " +
                  std::to_string(row.counts.multiplications) + " multiplications";
    kernel.body = scheduled(program_of(t, row, precision));
    text += kernel_text(kernel);
  }
  return text;
}

std::string counts_text(const Transform& first, const std::string& plans) {
  std::string text =
      "name\tadditions\tmultiplications\tdoublings\tfolded doublings\tnon-root\tvaddss\tvsubss\tvmulss\tvaddsd\tvsubsd\t"
      "vmulsd\tvcvtss2sd\tvcvtsd2ss\tsrc_loads\tdst_stores\n";
  const std::vector<Row> rows = read_rows(plans, first.family);
  for (const Transform& t : kTransforms) {
    if (t.family != first.family) continue;
    for (const auto& [type, precision] : kTypes)
      for (const Row& row : rows) {
        const FlowCounts& f = row.counts;
        const ScalarCounts c = scalar_counts(program_of(t, row, precision));
        text += symbol(t, row.length, type);
        for (int count : {f.additions, f.multiplications, f.doublings, f.folded_doublings, f.non_root, c.add_single,
                          c.sub_single, c.mul_single, c.add_double, c.sub_double, c.mul_double, c.widen, c.narrow,
                          c.loads, c.stores})
          text += "\t" + std::to_string(count);
        text += "\n";
      }
  }
  return text;
}

std::string text_of(const std::string& what, const std::string& plans) {
  if (what == "counts-forward") return counts_text(kTransforms[0], plans);
  if (what == "counts-inverse") return counts_text(kTransforms[3], plans);
  if (what == "counts-hartley") return counts_text(kTransforms[6], plans);
  for (const Transform& t : kTransforms)
    for (const auto& [type, precision] : kTypes)
      if (what == t.unit + type) return unit_text(t, type, plans);
  throw InputError("no unit or report is named " + what);
}

void program(int argc, char** argv) {
  if (argc != 4) throw InputError("usage: gen_rdft UNIT|counts-FAMILY PLANS OUTPUT");
  write_file(argv[3], text_of(argv[1], argv[2]));
}

}  // namespace
}  // namespace xfm::rdft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::rdft::program); }
