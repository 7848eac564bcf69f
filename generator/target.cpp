#include "generator/target.h"

#include <algorithm>
#include <cstdlib>

#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

namespace {

double decimal(const TableRow& row, const char* column) {
  const std::string& text = row[column];
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != 0 || !(value > 0)) row.fail(std::string(column) + ": not a price: '" + text + "'");
  return value;
}

int one_of(const TableRow& row, const char* column, const std::vector<int>& values) {
  const int value = row.integer(column);
  if (std::ranges::find(values, value) == values.end()) row.fail(std::string(column) + ": there is no such processor");
  return value;
}

}  // namespace

bool Target::admits(const std::string& set) const { return std::ranges::find(sets, set) != sets.end(); }

std::vector<Target> read_targets(const std::string& path) {
  const Table table = Table::read(path, {"name", "level", "mask", "flags", "sets", "registers", "widest", "blend", "shuffle",
                                         "permute", "permute2", "as_base"});
  std::vector<Target> targets;
  for (const TableRow& row : table.rows()) {
    if (std::ranges::any_of(targets, [&](const Target& t) { return t.name == row["name"]; })) row.fail("this target has a row already");
    targets.push_back({.name = row["name"],
                       .sets = split(row["sets"], ' '),
                       .registers = one_of(row, "registers", {16, 32}),
                       .widest = one_of(row, "widest", {256, 512}),
                       .price = {decimal(row, "blend"), decimal(row, "shuffle"), decimal(row, "permute"), decimal(row, "permute2")}});
  }
  return targets;
}

Target read_target(const std::string& path, const std::string& name) {
  for (const Target& target : read_targets(path))
    if (target.name == name) return target;
  throw InputError(path + ": no target " + name);
}

std::string instruction_set(const Program& program, const Inst& inst) {
  if (bits(inst.type) == 512) return "AVX512F_512";
  switch (inst.op) {
    case Op::SignedAdd: return "FMA";
    case Op::LoadPart: {
      const bool plain = bits(inst.type) == 128 && (inst.imm == 1 || (inst.imm == 2 && inst.type == Type::F32x4));
      return plain ? "AVX" : "AVX512F_128";
    }
    case Op::Pick: {
      if (inst.b >= 0) return "AVX512F_128";
      return bits(program.type(inst.a)) == 128 ? "AVX" : "AVX2";
    }
    default: return "AVX";
  }
}

void check_admitted(const Program& program, const Target& target) {
  const auto admitted = [&](bool holds, const std::string& what) { check(holds, "target " + target.name + " has no " + what); };
  for (const Inst& inst : program.insts()) {
    admitted(target.has_register(inst.type), type_name(inst.type));
    const std::string set = instruction_set(program, inst);
    admitted(target.admits(set), set);
  }
  for (const Store& s : program.stores())
    admitted(s.kind != StoreKind::Part || (s.imm == 1 && bits(program.type(s.value)) == 128) || target.admits("AVX512F_128"),
             "masked store");
}

}  // namespace xfm
