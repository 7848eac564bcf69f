// Writes the units of the real transforms.
//   gen_rdft UNIT PLANS TARGET OUTPUT            a unit, pgenrdftfwdccs32f and its like
//   gen_rdft forms PLANS TARGET OUTPUT           forms of the packed kernels with their operations and modelled cycles
//   gen_rdft counts-FAMILY PLANS TARGET OUTPUT   counts of the forward, inverse or hartley kernels, a line for each
// The kernels of the target `base` are scalar; those of others are packed by the rows of pack_recipes.tsv.
// PLANS is the directory of the plan tables. Nothing is written unless every row's flow costs what the row says.
#include <cmath>
#include <map>
#include <optional>

#include "generator/check.h"
#include "generator/functions.h"
#include "generator/pack_recipes.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/text.h"
#include "rdft/lower.h"
#include "rdft/packing.h"
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

// The base target has no recipes.
struct Forms {
  std::string target;
  std::optional<pack::Recipes> recipes;
};

Program packed(const Program& scalar, const Transform& t, int n, const pack::Rule& rule, const Forms& forms) {
  if (rule.lanes == 1) return scalar;
  const pack::Network network = pack::read_network(scalar);
  return pack::pack(network, pack::find_families(network), rule, {forms.target == "v4"}, grid(t.source, t.target, n));
}

// Puts a kernel's program into the form of the target and says so in its note.
void take_form(Kernel& kernel, const Transform& t, const std::string& type, const Forms& forms) {
  if (!forms.recipes) return;
  const pack::Rule& rule = forms.recipes->find(forms.target, kernels_name(t.family), kernel.length, type);
  kernel.note += "; " + pack::form_text(rule);
  kernel.program = packed(kernel.program, t, kernel.length, rule, forms);
}

std::string unit_text(const Transform& t, const std::string& type, const std::string& plans, const Forms& forms) {
  const FunctionList functions = FunctionList::read(plans + "/functions.tsv");
  const Precision precision = kTypes.at(type);
  std::string text = unit_head(t.unit + type, "gen_rdft");
  for (const Row& row : read_rows(plans, t.family)) {
    Kernel kernel;
    kernel.symbol = symbol(t, row.length, type);
    const Function* function = functions.find(kernel.symbol);
    check(function != nullptr, "a public function " + kernel.symbol);
    kernel.element = "Xfm" + type;
    kernel.single = precision == Precision::Single;
    kernel.gate = function->gate;
    kernel.length = row.length;
    constexpr int kOne = 0, kByN = 2;
    kernel.scale_by_1 = function->scale == ScaleRule::Inverse ? kOne : kByN;
    kernel.scale_by_2 = function->scale == ScaleRule::Forward ? kOne : kByN;
    kernel.note = row.plan + "; " + std::to_string(row.counts.additions) + " additions, " +
                  std::to_string(row.counts.multiplications) + " multiplications";
    kernel.program = program_of(t, row, precision);
    take_form(kernel, t, type, forms);
    text += kernel_text(kernel);
  }
  return text;
}

std::string forms_text(const std::string& plans, const Forms& forms) {
  std::string text = "name\tform\tadditions\tmultiplications\tconversions\tmoves\tblends\tloads\tstores\tcycles\tscalar cycles\n";
  const int registers = forms.target == "v4" ? 32 : 16;
  const auto cycles = [&](const Program& p) { return cycles_per_call(p, schedule(p, registers), registers); };
  for (const Transform& t : kTransforms)
    for (const Row& row : read_rows(plans, t.family))
      for (const auto& [type, precision] : kTypes) {
        const pack::Rule& rule = forms.recipes->find(forms.target, kernels_name(t.family), row.length, type);
        const Program scalar = program_of(t, row, precision), program = packed(scalar, t, row.length, rule, forms);
        const PortUse use = port_use(program);
        text += symbol(t, row.length, type) + "\t" + pack::form_text(rule);
        for (int count : {use.adds, use.muls, use.converts, use.moves(), use.others, use.loads, use.stores})
          text += "\t" + std::to_string(count);
        for (const Program* p : {&program, &scalar}) text += "\t" + std::to_string(std::lround(cycles(*p)));
        text += "\n";
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

std::string text_of(const std::string& what, const std::string& plans, const Forms& forms) {
  if (what == "forms") return forms_text(plans, forms);
  if (what == "counts-forward") return counts_text(kTransforms[0], plans);
  if (what == "counts-inverse") return counts_text(kTransforms[3], plans);
  if (what == "counts-hartley") return counts_text(kTransforms[6], plans);
  for (const Transform& t : kTransforms)
    for (const auto& [type, precision] : kTypes)
      if (what == t.unit + type) return unit_text(t, type, plans, forms);
  throw InputError("no unit or report is named " + what);
}

void program(int argc, char** argv) {
  if (argc != 5) throw InputError("usage: gen_rdft UNIT|forms|counts-FAMILY PLANS TARGET OUTPUT");
  const std::string plans = argv[2], target = argv[3];
  Forms forms{target, {}};
  if (target != "base") forms.recipes = pack::Recipes::read(plans + "/pack_recipes.tsv");
  write_file(argv[4], text_of(argv[1], plans, forms));
}

}  // namespace
}  // namespace xfm::rdft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::rdft::program); }
