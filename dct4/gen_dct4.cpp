// Writes a unit of the DCT-IV, or the counts of its functions:
//   gen_dct4 32f|64f <kernels.tsv> <target> <unit.cpp>
//   gen_dct4 report <kernels.tsv> <target> <report.tsv>    every kernel and its form
//   gen_dct4 functions <kernels.tsv> <target> <report.tsv> the functions that hold them, for the audit of the compiled code
//   gen_dct4 search <kernels.tsv> <target> <rows.tsv>      rows of pack_recipes.tsv for the straight lines
// Every kernel is first held to the operations that its row states.
#include "dct4/kernels.h"
#include "generator/pack_search.h"
#include "generator/program.h"
#include "generator/text.h"

namespace xfm::dct4 {
namespace {

const std::string kTypes[] = {"32f", "64f"};

std::string unit_text(const std::string& table, const std::string& type, const pack::Forms& forms) {
  std::string text = unit_head("pgendct4_" + type + "g9", "gen_dct4");
  text += "#include \"dct4/kernel_set.h\"\n\nnamespace xfm::dct4 {\n\n";
  text += std::string("using Precision = ") + (type == "32f" ? "Single" : "Double") + ";\nusing Real = Precision::Real;\n\n";
  for (const StageKernel& k : stage_kernels(table, type)) text += kernel_text(k, type, forms);
  return text + "}  // namespace xfm::dct4\n\n#include \"dct4/entries_" + type + ".h\"\n";
}

std::string form_name(const StageKernel& k, const std::string& type, const pack::Forms& forms) {
  if (!k.plan.whole()) return std::string(type == "32f" ? "8" : "4") + " lanes, a transform in each";
  const std::string name = whole_form(k, type, forms).name;
  return name.empty() ? "scalar" : name;
}

std::string report_text(const std::string& table, const pack::Forms& forms) {
  std::string text = "# made by gen_dct4 from the kernels as they are written; additions include changes of sign\n"
                     "precision\tkernel\tlength\tmultiplications\tadditions\tform\n";
  for (const std::string& type : kTypes)
    for (const StageKernel& k : stage_kernels(table, type))
      text += type + "\t" + k.plan.row["kernel"] + "\t" + std::to_string(k.plan.length) + "\t" +
              std::to_string(k.net.multiplications()) + "\t" + std::to_string(k.net.additions()) + "\t" + form_name(k, type, forms) + "\n";
  return text;
}

// A function holds each kernel of its kind once; the decimated columns are too long for the shortest.
struct Holder {
  std::string function;
  bool (*holds)(const KernelPlan&);
};

std::vector<Holder> holders(const std::string& type) {
  const std::string stage = "owngDCT4_" + type + "g9_env";
  return {{stage + "5_compute", [](const KernelPlan& k) { return k.kind == KernelKind::Forward; }},
          {stage + "9_direct_compute", [](const KernelPlan& k) { return k.kind == KernelKind::Forward && k.length >= 16; }},
          {stage + "4_compute", [](const KernelPlan& k) { return k.kind == KernelKind::Synthesis; }},
          {stage + "8_compute", [](const KernelPlan& k) { return k.kind == KernelKind::Combine; }},
          {type == "32f" ? stage + "1_compute" : "xfmgDCT4_64f", [](const KernelPlan& k) { return k.whole(); }}};
}

std::string functions_text(const std::string& table, const pack::Forms& forms) {
  std::string text = "function\tadds\tmuls\tpacked_mul\n";
  for (const std::string& type : kTypes) {
    const std::vector<StageKernel> kernels = stage_kernels(table, type);
    for (const Holder& h : holders(type)) {
      int sums = 0, products = 0, packed = 0;
      for (const StageKernel& k : kernels) {
        if (!h.holds(k.plan)) continue;
        const pack::Arithmetic made = k.plan.whole() ? pack::arithmetic(whole_form(k, type, forms).program)
                                                     : pack::Arithmetic{k.net.additions(), k.net.multiplications(), true};
        sums += made.sums;
        products += made.products;
        packed += made.packed ? made.products : 0;
      }
      text += h.function + "\t" + std::to_string(sums) + "\t" + std::to_string(products) + "\t" + std::to_string(packed) + "\n";
    }
  }
  return text;
}

std::string search_text(const std::string& table, const Target& target) {
  std::string text = pack::recipe_columns();
  for (const std::string& type : kTypes)
    for (const StageKernel& k : stage_kernels(table, type))
      if (k.plan.whole())
        text += pack::recipe_text(target.name, "dct4", k.plan.length, type, pack::search(k.net.program(), target, {}).front().rule);
  return text;
}

std::string text_of(const std::string& what, const std::string& table, const std::string& target) {
  const std::filesystem::path plans = std::filesystem::path(table).parent_path();
  if (what == "search") return search_text(table, read_target((plans / "targets.tsv").string(), target));
  if (what == "report") return report_text(table, pack::Forms::read(plans, target));
  if (what == "functions") return functions_text(table, pack::Forms::read(plans, target));
  for (const std::string& type : kTypes)
    if (what == type) return unit_text(table, type, pack::Forms::read(plans, target));
  throw InputError("gen_dct4: no such unit: " + what);
}

void run(int argc, char** argv) {
  if (argc != 5) throw InputError("usage: gen_dct4 32f|64f|report|functions|search kernels.tsv target output");
  write_file(argv[4], text_of(argv[1], argv[2], argv[3]));
}

}  // namespace
}  // namespace xfm::dct4

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::dct4::run); }
