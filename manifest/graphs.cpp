// graphs PLANS OUTPUT: of every kernel with a graph its plan, what the graph counts, and the digest of all that the graph says:
// operations, operands, the order of sums, constants, roundings, and where results stand.
//   additions, multiplications   of real numbers, as in the plan tables: two values that differ in sign only are one
//   products                     the same, where a value and its quarter turn, each times one constant, are two
#include <filesystem>
#include <map>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/digest.h"
#include "generator/functions.h"
#include "generator/output.h"
#include "generator/program.h"
#include "rdft/rows.h"
#include "rdft/transforms.h"
#include "wht/levels.h"
#include "wht/plan.h"

namespace xfm {

namespace {

using namespace dft;

struct Line {
  std::string plan;
  int additions, multiplications, products;
  std::string digest;
};

// Of the flow of a real transform: also which sums stand in double, which bins count twice, and the layouts.
std::string flow_digest(const rdft::Flow& flow, const rdft::Transform& t, bool single) {
  const int n = static_cast<int>(flow.outputs.size());
  const auto narrow = [&](int i) { return single && !flow.is_wide(i); };
  const auto mark = [&](int i) -> std::uint64_t {
    const Node& node = flow.graph[i];
    if (node.kind != Node::Kind::Input) return flow.wide[i];
    return 2 * position(t.source, n, node.cells[0]) + (flow.doubled[node.cells[0]] ? 1 : 0);
  };
  const std::vector<std::uint64_t> of = node_digests(flow.graph, narrow, mark);
  Digest d;
  d.add(single);
  std::vector<std::uint64_t> cells(n + zero_positions(t.target, n).size());
  for (int place = 0; place < n; ++place) {
    const Ref r = flow.outputs[place];
    cells[position(t.target, n, place)] = Digest().add(static_cast<std::uint64_t>(r.turn)).add(of[r.node]).value();
  }
  for (const std::uint64_t cell : cells) d.add(cell);
  return hexadecimal(d.value());
}

class Graphs {
 public:
  explicit Graphs(const std::string& plans)
      : plans_(plans), complex_(ComplexTables::read(plans)) {}

  Line line(const Function& f) {
    const bool single = f.type.starts_with("32");
    return f.part == "dft" ? complex(f, single) : f.part == "wht" ? hadamard(f, single) : real(f, single);
  }

 private:
  Line complex(const Function& f, bool single) const {
    const int precision = single ? 32 : 64;
    const ComplexRow& row = complex_.row(precision, f.size);
    const LanedTransform t =
        laned_transform(row.plan, f.scale == ScaleRule::Forward ? -1 : +1, 1, Placement::Nested);
    const std::vector<Ref> outputs = refs_of(t.outputs);
    const Counts c = count(t.graph, outputs);
    return {row.text, 2 * c.additions, 2 * c.multiplications, 2 * products_with_turns(t.graph, outputs), digest(t.graph, t.outputs, single, row.widens_products())};
  }

  Line real(const Function& f, bool single) {
    const rdft::Transform& t = rdft::transform_of(f.family);
    if (!real_.contains(t.family)) real_[t.family] = rdft::read_rows(plans_, t.family);
    const rdft::Row& row = *std::ranges::find(real_[t.family], f.size, &rdft::Row::length);
    const int products = row.counts.multiplications;
    return {row.plan, row.counts.additions, products, products, flow_digest(row.flow, t, single)};
  }

  Line hadamard(const Function& f, bool single) {
    std::vector<wht::Plan>& plans = hadamard_[f.type];
    if (plans.empty()) plans = wht::read_plans(plans_ + "/wht_plans.tsv", "base", f.type);
    std::string passes;
    for (int order : plans[f.size - 1].passes) passes += (passes.empty() ? "" : ",") + std::to_string(order);
    const wht::Levels levels = wht::levels(f.size);
    return {passes, f.size << f.size, 0, 0, digest(levels.graph, levels.outputs, single, false)};
  }

  std::string plans_;
  ComplexTables complex_;
  std::map<rdft::Family, std::vector<rdft::Row>> real_;
  std::map<std::string, std::vector<wht::Plan>> hadamard_;
};

void program(int argc, char** argv) {
  if (argc != 3) throw InputError("usage: graphs PLANS OUTPUT");
  const std::string plans = argv[1];
  Graphs graphs(plans);
  std::string text = "function\tplan\tadditions\tmultiplications\tproducts\tdigest\n";
  const FunctionList list = FunctionList::read(plans + "/functions.tsv");
  for (const Function& f : list.functions()) {
    if (f.kind != FunctionKind::Kernel) continue;
    const Line line = graphs.line(f);
    text += f.name + "\t" + line.plan;
    for (int n : {line.additions, line.multiplications, line.products}) text += "\t" + std::to_string(n);
    text += "\t" + line.digest + "\n";
  }
  write_file(argv[2], text);
}

}  // namespace

}  // namespace xfm

int main(int argc, char** argv) { return xfm::run_program(argc, argv, xfm::program); }
