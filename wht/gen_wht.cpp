// Writes the units of the Walsh-Hadamard transform.
//   gen_wht UNIT TARGET PLANS OUTPUT     a unit, pgenwht32fw7 or pgenwht64fw7, for a target
//   gen_wht counts TARGET PLANS OUTPUT   instructions of every kernel's code: each pass once, however often it runs
// PLANS is the directory of the plan tables. Nothing is written unless every kernel costs what its plan says.
#include "generator/check.h"
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/text.h"
#include "wht/passes.h"

namespace xfm::wht {
namespace {

const std::vector<std::string> kTypes = {"32f", "64f"};

std::string symbol(int order, const std::string& type) { return "xfmgWHT_" + std::to_string(order) + "_" + type; }

std::string kernel_of(const Plan& plan, const std::string& type, const FunctionList& functions) {
  const Function* function = functions.find(symbol(plan.order, type));
  check(function != nullptr, "a public function " + symbol(plan.order, type));
  check(function->scale == ScaleRule::SelfInverse, function->name + " divides by N for either flag");
  Kernel kernel = Kernel::of(*function);
  check(kernel.work_buffer == (plan.main_bytes > 0), kernel.symbol + " takes a work buffer where its plan has one");
  std::vector<Pass> passes = passes_of(plan);
  const Counts made = check_counts(plan, passes);
  kernel.note = plan.note() + ", " + std::to_string(made.shuffles) + " shuffles";
  if (passes.size() == 1 && !plan.wide()) {
    kernel.body = scheduled(std::move(passes[0].program));
    return kernel_text(kernel);
  }
  const Program& first = passes[0].program;
  const std::string pool = kernel.symbol.substr(4) + "_signs";
  kernel.body = pass_statements(plan, passes, "owngPool_" + pool);
  return (first.pool().empty() ? "" : pool_text(first, pool, kernel.single, {}, 1)) + kernel_text(kernel);
}

std::string size_query(const std::vector<Plan>& plans, const std::string& type) {
  std::string sizes;
  for (const Plan& plan : plans) sizes += (sizes.empty() ? "" : ", ") + std::to_string(plan.main_bytes + plan.staging_bytes);
  const std::string orders = std::to_string(plans.size());
  return "// Bytes of work buffer by order, from 1 on.\nextern \"C\" XfmStatus xfmgWHTGetBufferSize_" + type +
         "(int order, int* size) {\n  static const int sizes[" + orders + "] = {" + sizes + "};\n  if (order < 1 || order > " +
         orders + ") return xfmStatusSizeError;\n  *size = sizes[order - 1];\n  return xfmStatusOk;\n}\n";
}

std::string unit_text(const std::string& unit, const std::string& type, const std::string& target, const std::string& plans) {
  const FunctionList functions = FunctionList::read(plans + "/functions.tsv");
  const std::vector<Plan> rows = read_plans(plans + "/wht_plans.tsv", target, type);
  std::string text = unit_head(unit, "gen_wht") + "#include \"wht/pass_support.h\"\n\n";
  for (const Plan& plan : rows) text += kernel_of(plan, type, functions);
  return text + size_query(rows, type);
}

std::string counts_text(const std::string& target, const std::string& plans) {
  std::string text = "function\tadds\tmuls\tshuffles\tform\n";
  for (const std::string& type : kTypes)
    for (const Plan& plan : read_plans(plans + "/wht_plans.tsv", target, type)) {
      const std::vector<Pass> passes = passes_of(plan);
      check_counts(plan, passes);
      Counts code;
      for (const Pass& pass : passes) code += count(pass.program);
      const int shuffles = passes.size() == 1 ? plan.limit.shuffles : code.shuffles;
      text += symbol(plan.order, type) + "\t" + std::to_string(code.additions) + "\t" + std::to_string(code.multiplications) +
              "\t<=" + std::to_string(shuffles) + "\t" + plan.form() + "\n";
    }
  return text;
}

std::string text_of(const std::string& what, const std::string& target, const std::string& plans) {
  if (what == "counts") return counts_text(target, plans);
  for (const std::string& type : kTypes)
    if (what == "pgenwht" + type + "w7") return unit_text(what, type, target, plans);
  throw InputError("no unit or report is named " + what);
}

void program(int argc, char** argv) {
  if (argc != 5) throw InputError("usage: gen_wht UNIT|counts TARGET PLANS OUTPUT");
  write_file(argv[4], text_of(argv[1], argv[2], argv[3]));
}

}  // namespace
}  // namespace xfm::wht

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::wht::program); }
