// Writes one unit of complex kernels by the tables of a directory: gen_dft PLANS REPORT DISPATCHER OUTPUT
// For comparing them DISPATCHER:split takes the split form wherever a row has it, DISPATCHER:complex-bins no half spectra
// between stages.
#include <algorithm>
#include <filesystem>
#include <string>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/core.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/table.h"
#include "generator/text.h"

namespace xfm::dft {

namespace {

std::string plan_of(const ComplexRow& row) {
  Plan run = row.plan.plan;
  run.name.clear();
  const std::string by = to_text(run) != row.text ? " by " + to_text(run) : "";
  const char* const spectra[] = {"", " in blocks of half spectra", " in half spectra"};
  return row.text + by + spectra[static_cast<int>(row.plan.flow)];
}

Choice choice_named(const std::string& name) {
  if (name == "split") return {.form = name};
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
  return line + "\t" + cycles + "\t" + row.reason + "\n";
}

void generate(int argc, char** argv) {
  if (argc != 5) throw InputError("usage: gen_dft PLANS REPORT DISPATCHER[:CHOICE] OUTPUT");
  const std::filesystem::path plans = argv[1], output = argv[4];
  const std::vector<std::string> asked = split(argv[3], ':');
  const Choice choice = asked.size() > 1 ? choice_named(asked[1]) : Choice{};
  const FunctionList list = FunctionList::read(plans / "functions.tsv");
  const std::vector<const Function*> kernels = list.kernels(asked[0]);
  if (kernels.empty() || kernels[0]->part != "dft") throw InputError("no complex kernels under '" + asked[0] + "'");
  const ComplexTables tables = ComplexTables::read(plans);

  std::string text = unit_head(output.stem(), "gen_dft");
  std::string report = "name\tplan\tform\tA\tM\ttable A\ttable M\tadds\tmuls\tshuffles\tloads\tstores\tport cycles\treason\n";
  for (const Function* f : kernels) {
    const ComplexRow& row = tables.row(precision_of(*f), f->size);
    const ComplexBody body = complex_body(row, f->scale == ScaleRule::Forward ? -1 : +1, choice);
    if (std::ranges::count(body.form->gates, f->gate) == 0) throw InputError(row.where + ": " + f->name + " has a gate that its form has not");
    Kernel kernel = Kernel::of(*f);
    kernel.scale_lanes = body.form->type == Type::F64x2 ? 2 : 1;
    kernel.note = plan_of(row) + "; " + describe(body) + "; " + std::to_string(body.counts.additions) + " additions, " +
                  std::to_string(body.counts.multiplications) + " multiplications";
    kernel.body = scheduled(body.program);
    text += kernel_text(kernel);
    report += report_line(*f, row, body);
  }
  write_file(argv[2], report);
  write_file(output, text);
}

}  // namespace

}  // namespace xfm::dft

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::dft::generate); }
