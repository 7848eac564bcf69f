// Writes one unit of complex kernels: gen_dft functions.tsv complex_plans.tsv lane_blocks.tsv report.tsv DISPATCHER output.cpp
// DISPATCHER:split and DISPATCHER:interleaved take that form wherever a size has a choice, DISPATCHER:complex-bins no half spectra
// between stages, for comparing them.
#include <filesystem>
#include <string>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/core.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/table.h"
#include "generator/text.h"

namespace xfm {

namespace {

std::string plan_of(const ComplexRow& row) {
  const std::string by = row.plan.plan.length > 1 && to_text(row.plan.plan) != row.text ? " by " + to_text(row.plan.plan) : "";
  const char* const spectra[] = {"", " in blocks of half spectra", " in half spectra"};
  return row.text + by + spectra[static_cast<int>(row.plan.flow)];
}

Choice choice_named(const std::string& name) {
  if (name == "split") return {.form = Form::Split};
  if (name == "interleaved") return {.form = Form::Interleaved};
  if (name == "complex-bins") return {.flow = Flow::Complex};
  throw InputError("unknown choice '" + name + "'");
}

std::string report_line(const Function& f, const ComplexRow& row, const ComplexBody& body) {
  const PortUse use = port_use(body.program);
  char cycles[32];
  std::snprintf(cycles, sizeof cycles, "%.1f", use.cycles());
  std::string line = f.name + "\t" + plan_of(row) + "\t" + describe(body);
  for (int n : {body.counts.additions, body.counts.multiplications, row.reference.additions, row.reference.multiplications, use.adds,
                use.muls, use.moves(), use.loads, use.stores})
    line += "\t" + std::to_string(n);
  return line + "\t" + cycles + "\t" + (row.reason.empty() ? "-" : row.reason) + "\n";
}

void generate(int argc, char** argv) {
  if (argc != 7) throw InputError("usage: gen_dft functions.tsv complex_plans.tsv lane_blocks.tsv report.tsv DISPATCHER[:CHOICE] output.cpp");
  const std::vector<std::string> asked = split(argv[5], ':');
  const Choice choice = asked.size() > 1 ? choice_named(asked[1]) : Choice{};
  const FunctionList list = FunctionList::read(argv[1]);
  const std::vector<const Function*> kernels = list.kernels(asked[0]);
  if (kernels.empty() || kernels[0]->part != "dft") throw InputError("no complex kernels under '" + asked[0] + "'");
  const ComplexTables tables = ComplexTables::read(argv[2], argv[3]);
  const std::filesystem::path output = argv[6];

  std::string text = unit_head(output.stem(), "gen_dft");
  std::string report = "name\tplan\tform\tA\tM\ttable A\ttable M\tadds\tmuls\tshuffles\tloads\tstores\tport cycles\treason\n";
  for (const Function* f : kernels) {
    const int precision = f->type == "32fc" ? 32 : 64;
    const ComplexRow& row = tables.row(precision, f->size);
    const ComplexBody body = complex_body(tables, precision, f->size, f->scale == ScaleRule::Forward ? -1 : +1, choice);
    Kernel kernel;
    kernel.symbol = f->name;
    kernel.element = "Xfm" + f->type;
    kernel.single = precision == 32;
    kernel.gate = f->gate;
    kernel.length = f->size;
    kernel.scale_by_1 = f->scale == ScaleRule::Inverse ? 0 : 2;
    kernel.scale_by_2 = f->scale == ScaleRule::Forward ? 0 : 2;
    kernel.scale_lanes = body.type == Type::F64x2 ? 2 : 1;
    kernel.note = plan_of(row) + "; " + describe(body) + "; " + std::to_string(body.counts.additions) + " additions, " +
                  std::to_string(body.counts.multiplications) + " multiplications";
    kernel.program = body.program;
    text += kernel_text(kernel);
    report += report_line(*f, row, body);
  }
  write_file(argv[4], report);
  write_file(output, text);
}

}  // namespace

}  // namespace xfm

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::generate); }
