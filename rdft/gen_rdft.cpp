// Writes the units of the real transforms.
//   gen_rdft UNIT PLANS REPORT TARGET OUTPUT     a unit, pgenrdftfwdccs32f and its like, with a line for each kernel in REPORT:
//                                                additions and multiplications, each of as many lanes as there are, and the form
//   gen_rdft forms PLANS TARGET OUTPUT           forms of the kernels, their operations and what these ask of the ports
//   gen_rdft counts-FAMILY PLANS TARGET OUTPUT   counts of the forward, inverse or hartley kernels, a line for each
// The kernels of the target `base` are scalar; those of others are packed by the rows of pack_recipes.tsv.
// PLANS is the directory of the plan tables. Nothing is written unless every row's flow costs what the row says.
#include <cmath>
#include <map>

#include "generator/check.h"
#include "generator/functions.h"
#include "generator/pack_forms.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/text.h"
#include "rdft/lower.h"
#include "rdft/packing.h"
#include "rdft/rows.h"
#include "rdft/transforms.h"

namespace xfm::rdft {
namespace {

const std::map<std::string, Precision> kTypes = {{"32f", Precision::Single}, {"64f", Precision::Double}};

std::string symbol(const Transform& t, int n, const std::string& type) {
  return t.name + "_" + std::to_string(n) + "_" + type;
}

Program program_of(const Transform& t, const Row& row, Precision precision) {
  Program program = lower(row.flow, t.source, t.target, precision);
  check_lowered(program, row.flow, row.counts, precision);
  return program;
}

pack::Forms::Form form_of(const Transform& t, const Row& row, const std::string& type, const pack::Forms& forms) {
  return forms.of(program_of(t, row, kTypes.at(type)), kernels_name(t.family), row.length, type,
                  grid(t.source, t.target, row.length));
}

struct Unit {
  std::string text, report = "name\tadds\tmuls\tform\n";
};

Unit unit_of(const Transform& t, const std::string& type, const std::string& plans, const pack::Forms& forms) {
  const FunctionList functions = FunctionList::read(plans + "/functions.tsv");
  Unit unit{unit_head(t.unit + type, "gen_rdft")};
  for (const Row& row : read_rows(plans, t.family)) {
    const Function* function = functions.find(symbol(t, row.length, type));
    check(function != nullptr, "a public function " + symbol(t, row.length, type));
    Kernel kernel = Kernel::of(*function);
    kernel.note = row.plan + "; " + std::to_string(row.counts.additions) + " additions, " +
                  std::to_string(row.counts.multiplications) + " multiplications";
    pack::Forms::Form form = form_of(t, row, type, forms);
    if (!form.name.empty()) kernel.note += "; " + form.name;
    const pack::Arithmetic made = pack::arithmetic(form.program);
    unit.report += function->name + "\t" + std::to_string(made.sums) + "\t" + std::to_string(made.products) + "\t" +
                   (form.name.empty() ? "scalar" : form.name) + "\n";
    kernel.body = scheduled(std::move(form.program), forms.registers());
    unit.text += kernel_text(kernel);
  }
  return unit;
}

std::string forms_text(const std::string& plans, const pack::Forms& forms) {
  std::string text = "name\tform\tadditions\tmultiplications\tconversions\tmoves\tblends\tloads\tstores\testimate\tscalar estimate\n";
  for (const Transform& t : transforms())
    for (const Row& row : read_rows(plans, t.family))
      for (const auto& [type, precision] : kTypes) {
        const Program scalar = program_of(t, row, precision);
        const pack::Forms::Form form = form_of(t, row, type, forms);
        const PortUse use = port_use(form.program);
        text += symbol(t, row.length, type) + "\t" + form.name;
        for (int count : {use.adds, use.muls, use.converts, use.moves(), use.others, use.loads, use.stores})
          text += "\t" + std::to_string(count);
        for (const Program* p : {&form.program, &scalar}) text += "\t" + std::to_string(std::lround(port_use(*p).estimate()));
        text += "\n";
      }
  return text;
}

std::string counts_text(Family family, const std::string& plans) {
  std::string text =
      "name\tadditions\tmultiplications\tdoublings\tfolded doublings\tnon-root\tvaddss\tvsubss\tvmulss\tvaddsd\tvsubsd\t"
      "vmulsd\tvcvtss2sd\tvcvtsd2ss\tsrc_loads\tdst_stores\n";
  const std::vector<Row> rows = read_rows(plans, family);
  for (const Transform& t : transforms()) {
    if (t.family != family) continue;
    for (const auto& [type, precision] : kTypes)
      for (const Row& row : rows) {
        const FlowCounts& f = row.counts;
        const Program program = program_of(t, row, precision);
        text += symbol(t, row.length, type);
        for (int n : {f.additions, f.multiplications, f.doublings, f.folded_doublings, f.non_root}) text += "\t" + std::to_string(n);
        for (const Type in : {Type::F32, Type::F64})
          for (const Op op : {Op::Add, Op::Sub, Op::Mul}) text += "\t" + std::to_string(count(program, op, in));
        text += "\t" + std::to_string(count(program, Op::Widen, Type::F64)) + "\t" + std::to_string(count(program, Op::Narrow, Type::F32));
        const Type element = precision == Precision::Single ? Type::F32 : Type::F64;
        text += "\t" + std::to_string(count(program, Op::Load, element)) + "\t" + std::to_string(program.stores().size()) + "\n";
      }
  }
  return text;
}

std::string report_text(const std::string& what, const std::string& plans, const pack::Forms& forms) {
  if (what == "forms") return forms_text(plans, forms);
  if (what == "counts-forward") return counts_text(Family::Forward, plans);
  if (what == "counts-inverse") return counts_text(Family::Inverse, plans);
  if (what == "counts-hartley") return counts_text(Family::Hartley, plans);
  throw InputError("no report is named " + what);
}

Unit unit_named(const std::string& name, const std::string& plans, const pack::Forms& forms) {
  for (const Transform& t : transforms())
    for (const auto& [type, precision] : kTypes)
      if (name == t.unit + type) return unit_of(t, type, plans, forms);
  throw InputError("no unit is named " + name);
}

void program(int argc, char** argv) {
  if (argc != 5 && argc != 6) throw InputError("usage: gen_rdft UNIT PLANS REPORT TARGET OUTPUT | forms|counts-FAMILY PLANS TARGET OUTPUT");
  const std::string plans = argv[2];
  const pack::Forms forms = pack::Forms::read(plans, argv[argc - 2]);
  if (argc == 5) return write_file(argv[4], report_text(argv[1], plans, forms));
  const Unit unit = unit_named(argv[1], plans, forms);
  write_file(argv[3], unit.report);
  write_file(argv[5], unit.text);
}

}  // namespace
}  // namespace xfm::rdft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::rdft::program); }
