#include "generator/pack_forms.h"

#include "generator/core_model.h"

namespace xfm::pack {

Forms Forms::read(const std::filesystem::path& plans, const std::string& target) {
  Forms forms;
  if (target == "base") return forms;
  forms.target_ = read_target((plans / "targets.tsv").string(), target);
  forms.recipes_ = Recipes::read(plans / "pack_recipes.tsv");
  return forms;
}

Forms::Form Forms::of(Program scalar, const std::string& kernels, int size, const std::string& type, Grid grid) const {
  if (!target_) return {std::move(scalar), {}};
  const Rule& rule = recipes_->find(target_->name, kernels, size, type);
  if (rule.lanes == 1) return {std::move(scalar), form_text(rule)};
  const Network network = read_network(scalar);
  Program packed = pack(network, find_families(network), rule, *target_, grid);
  check_admitted(packed, *target_);
  return {std::move(packed), form_text(rule)};
}

int Forms::registers() const { return target_ ? target_->registers : kRegisters; }

Arithmetic arithmetic(const Program& program) {
  Arithmetic found;
  for (const Inst& inst : program.insts()) {
    found.sums += inst.op == Op::Add || inst.op == Op::Sub || inst.op == Op::AddSub || inst.op == Op::SignedAdd;
    found.products += inst.op == Op::Mul;
    found.packed = found.packed || width(inst.type) > 1;
  }
  return found;
}

}  // namespace xfm::pack
