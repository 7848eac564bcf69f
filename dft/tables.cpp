#include "dft/tables.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "flows/rows.h"
#include "generator/check.h"
#include "generator/functions.h"
#include "generator/table.h"

namespace xfm::dft {

namespace {

constexpr int kLargestButterfly = 4;

Flow flow_in(const TableRow& row) {
  if (row["flow"] == "complex") return Flow::Complex;
  if (row["flow"] == "half-blocks") return Flow::HalfBlocks;
  if (row["flow"] == "half") return Flow::Half;
  row.fail("unknown flow '" + row["flow"] + "'");
}

// The blocks between which there are links, from the left.
std::vector<int> block_lengths(const Plan& plan) {
  if (!plan.link()) return {plan.length};
  std::vector<int> lengths = block_lengths(plan.first());
  std::ranges::copy(block_lengths(plan.second().in_real_rows()), std::back_inserter(lengths));
  return lengths;
}

bool contains(const Plan& plan, Plan::Kind kind) {
  return plan.kind == kind || std::any_of(plan.parts.begin(), plan.parts.end(), [&](const Plan& part) { return contains(part, kind); });
}

// What complex data cannot run: sums and differences of halves or components apart on their own account, a chirp in a block.
void check_kinds(const TableRow& row, const Plan& plan) {
  using enum Plan::Kind;
  if (plan.kind == Rader) return;
  if (plan.kind != Block && !plan.link() && plan.kind != ComplexRader && plan.kind != Rows)
    row.fail("a complex plan cannot have the block " + to_text(plan));
  for (const Plan& part : plan.parts) check_kinds(row, part);
}

// Half spectra go from stage to stage of a link, in the blocks of a flow with half-blocks.
void check_flow(const TableRow& row, const ComplexPlan& made) {
  const bool around = made.plan.kind == Plan::Kind::ComplexRader || made.plan.kind == Plan::Kind::Chirp;
  const Plan& run = around ? made.plan.first() : made.plan;
  check_kinds(row, run);
  if (made.flow == Flow::Complex) return;
  const bool inner = std::any_of(run.parts.begin(), run.parts.end(), [](const Plan& part) { return part.link(); });
  const bool changes = made.flow == Flow::Half ? !around && run.link() : run.link() && inner;
  if (!changes || contains(run, Plan::Kind::ComplexRader))
    row.fail("the flow '" + row["flow"] + "' has nothing to change in this plan");
}

Plan plan_of(const TableRow& row, const PlanBlocks& blocks) {
  const int length = row.integer("N");
  Plan plan = plan_in(row, "plan", length, blocks);
  if (row["runs"] != "-") {
    Plan runs = plan_in(row, "runs", length, blocks);
    if (block_lengths(runs) != block_lengths(plan)) row.fail("plan and runs have different blocks");
    plan = std::move(runs);
  }
  check_blocks(row, plan, kLargestButterfly);
  return plan;
}

// "split, interleaved by 2"
std::vector<const WorkingForm*> forms_in(const TableRow& row) {
  std::vector<const WorkingForm*> forms;
  for (const std::string& name : split(row["forms"], ',')) {
    forms.push_back(working_form(row.integer("precision"), trim(name)));
    if (!forms.back()) row.fail("no working form '" + std::string(trim(name)) + "' in this precision");
    if (forms.back()->widens != forms[0]->widens) row.fail("forms of different precision of the products");
  }
  return forms;
}

// The reference, or what is built instead, with its reason and at most a hundredth above it.
Counts built_counts(const TableRow& row, const Counts& reference) {
  if (row["reason"].empty() || row["reason"] == "-") {
    if (row["built A"] != "-" || row["built M"] != "-") row.fail("a departure from the reference counts needs its reason");
    return reference;
  }
  const Counts built{row.integer("built A"), row.integer("built M")};
  const auto exceeds = [](int count, int stated) { return count > stated + stated / 100; };
  if (exceeds(built.additions, reference.additions) || exceeds(built.multiplications, reference.multiplications))
    row.fail("the built counts exceed the reference by more than a hundredth");
  return built;
}

ComplexRow read_row(const TableRow& row, const PlanBlocks& blocks) {
  const Counts reference{row.integer("A"), row.integer("M")}, built = built_counts(row, reference);
  ComplexRow made{{plan_of(row, blocks), flow_in(row)}, forms_in(row), row["plan"], reference, built, row["reason"], row.where()};
  check_flow(row, made.plan);
  return made;
}

}  // namespace

int precision_of(const Function& kernel) { return kernel.type == "32fc" ? 32 : 64; }

const ComplexRow& ComplexTables::row(int precision, int length) const {
  const auto found = rows.find({precision, length});
  if (found == rows.end()) throw InputError("no plan for length " + std::to_string(length) + " in precision " + std::to_string(precision));
  return found->second;
}

ComplexTables ComplexTables::read(const std::filesystem::path& plans) {
  const FunctionList functions = FunctionList::read(plans / "functions.tsv");
  std::set<std::pair<int, int>> wanted;
  for (const Function& f : functions.functions())
    if (f.part == "dft" && f.kind == FunctionKind::Kernel) wanted.emplace(precision_of(f), f.size);

  std::map<int, PlanBlocks> blocks;
  for (const int precision : {32, 64}) blocks[precision] = read_blocks(plans / "complex_blocks.tsv", kLargestButterfly, precision);
  const std::filesystem::path file = plans / "complex_plans.tsv";
  const Table table = Table::read(file, {"N", "precision", "plan", "runs", "flow", "forms", "A", "M", "built A", "built M", "reason"});
  ComplexTables tables;
  for (const TableRow& row : table.rows()) {
    const std::pair key(row.integer("precision"), row.integer("N"));
    if (!wanted.contains(key)) row.fail("no function has this length and precision");
    if (!tables.rows.emplace(key, read_row(row, blocks[key.first])).second) row.fail("a second row for this length");
  }
  for (const auto& [precision, length] : wanted)
    if (!tables.rows.contains({precision, length}))
      fail_input(file.string(), 0, "no row for length " + std::to_string(length) + ", precision " + std::to_string(precision));
  return tables;
}

}  // namespace xfm::dft
