// Writes a unit of the real transforms: gen_rdft UNIT PLANS REPORT TARGET OUTPUT
// UNIT is pgenrdftfwdccs32f or its like, PLANS the directory of the plan tables. REPORT gets a line for each kernel: additions and
// multiplications as built, each of as many lanes as there are, the form, and the operations of the scalar form. The kernels
// of the target `base` are scalar; those of others are packed by the rows of pack_recipes.tsv. Nothing is written unless every
// row's flow costs what the row says.
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

struct Unit {
  std::string text, report;
};

constexpr const char* kReportHead =
    "name\tadds\tmuls\tform\tvaddss\tvsubss\tvmulss\tvaddsd\tvsubsd\tvmulsd\tvcvtss2sd\tvcvtsd2ss\tsrc_loads\tdst_stores\n";

std::string report_line(const std::string& name, const Program& scalar, const pack::Forms::Form& form) {
  const pack::Arithmetic made = pack::arithmetic(form.program);
  std::string line = name + "\t" + std::to_string(made.sums) + "\t" + std::to_string(made.products) + "\t" +
                     (form.name.empty() ? "scalar" : form.name);
  for (const Type in : {Type::F32, Type::F64})
    for (const Op op : {Op::Add, Op::Sub, Op::Mul}) line += "\t" + std::to_string(count(scalar, op, in));
  const int loads = count(scalar, Op::Load, Type::F32) + count(scalar, Op::Load, Type::F64);
  for (const int n : {count(scalar, Op::Widen, Type::F64), count(scalar, Op::Narrow, Type::F32), loads, static_cast<int>(scalar.stores().size())})
    line += "\t" + std::to_string(n);
  return line + "\n";
}

Unit unit_of(const Transform& t, const std::string& type, const std::string& plans, const pack::Forms& forms) {
  const FunctionList functions = FunctionList::read(plans + "/functions.tsv");
  const Precision precision = kTypes.at(type);
  Unit unit{unit_head(t.unit + type, "gen_rdft"), kReportHead};
  for (const Row& row : read_rows(plans, t.family)) {
    const Function* function = functions.find(symbol(t, row.length, type));
    check(function != nullptr, "a public function " + symbol(t, row.length, type));
    Kernel kernel = Kernel::of(*function);
    kernel.note = row.plan + "; " + std::to_string(row.counts.additions) + " additions, " +
                  std::to_string(row.counts.multiplications) + " multiplications";
    const Program scalar = lower(row.flow, t.source, t.target, precision);
    check_lowered(scalar, row.flow, row.counts, precision);
    pack::Forms::Form form = forms.of(scalar, kernels_name(t.family), row.length, type, grid(t.source, t.target, row.length));
    if (!form.name.empty()) kernel.note += "; " + form.name;
    unit.report += report_line(function->name, scalar, form);
    kernel.body = scheduled(std::move(form.program), forms.registers());
    unit.text += kernel_text(kernel);
  }
  return unit;
}

Unit unit_named(const std::string& name, const std::string& plans, const pack::Forms& forms) {
  for (const Transform& t : transforms())
    for (const auto& [type, precision] : kTypes)
      if (name == t.unit + type) return unit_of(t, type, plans, forms);
  throw InputError("no unit is named " + name);
}

void program(int argc, char** argv) {
  if (argc != 6) throw InputError("usage: gen_rdft UNIT PLANS REPORT TARGET OUTPUT");
  const Unit unit = unit_named(argv[1], argv[2], pack::Forms::read(argv[2], argv[4]));
  write_file(argv[3], unit.report);
  write_file(argv[5], unit.text);
}

}  // namespace
}  // namespace xfm::rdft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::rdft::program); }
