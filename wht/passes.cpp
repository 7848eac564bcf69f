#include "wht/passes.h"

#include "generator/schedule.h"
#include "generator/text.h"

namespace xfm::wht {

namespace {

using Lines = std::vector<std::string>;

Lines indented(const Lines& lines) {
  Lines result;
  for (const std::string& line : lines) result.push_back("  " + line);
  return result;
}

// for (index = 0; index < limit; index += step) { body }
Lines loop(const std::string& index, int limit, int step, const Lines& body) {
  Lines lines = {"for (int " + index + " = 0; " + index + " < " + std::to_string(limit) + "; " + index +
                 " += " + std::to_string(step) + ") {"};
  for (const std::string& line : indented(body)) lines.push_back(line);
  lines.push_back("}");
  return lines;
}

void append(Lines& lines, const Lines& more) { lines.insert(lines.end(), more.begin(), more.end()); }

// How src and dst are accessed is the kernel's parameter; the regions of the buffer are aligned to 16 bytes, and wider
// registers are moved as if nothing were.
enum class Move { FromSrc, InBuffer, ToDst };

std::string access(const Plan& plan, Move move) {
  if (plan.wide()) return "Unaligned";
  return move == Move::FromSrc ? "Through<Access, Aligned>" : move == Move::InBuffer ? "Aligned" : "Through<Aligned, Access>";
}

Lines body(const Pass& pass, const std::string& from, const std::string& to, const std::string& access, const std::string& pool = {}) {
  return body_text(scheduled(pass.program), {.sources = {from}, .targets = {to}, .pool = pool, .access = access, .scale_lanes = 1});
}

// Two passes have no use for a staging region, but all bytes of a buffer are written: zeros, some behind each block.
Lines idle_staging(const Plan& plan) {
  const int cells = plan.staging_bytes / plan.element_bytes(), lanes = width(plan.type);
  const int share = cells / (plan.length() / plan.block());
  Program zeros;
  for (int cell = 0; cell < share; cell += lanes)
    zeros.store(StoreKind::Full, zeros.emit({.op = Op::Zero, .type = plan.type}), cell);
  Lines lines = {"auto* rest = staging + block / " + std::to_string(plan.length() / cells) + ";"};
  append(lines, body({zeros, 1}, "from", "rest", access(plan, Move::InBuffer)));
  return lines;
}

Lines blocks(const Plan& plan, const std::vector<Pass>& passes, const std::string& pool) {
  Lines block = {"const auto* from = x + block;", "auto* to = main_region + block;"};
  append(block, body(passes[0], "from", "to", access(plan, Move::FromSrc), pool));
  if (plan.staging_bytes > 0) append(block, idle_staging(plan));
  return loop("block", plan.length(), plan.block(), block);
}

Lines chunks(const Plan& plan, const std::vector<Pass>& passes, const std::string& pool) {
  Lines block = {"const auto* from = x + chunk + block;", "auto* to = staging + block;"};
  append(block, body(passes[0], "from", "to", access(plan, Move::FromSrc), pool));
  Lines column = {"const auto* from = staging + column;", "auto* to = main_region + chunk + column;"};
  append(column, body(passes[1], "from", "to", access(plan, Move::InBuffer)));
  Lines chunk = loop("block", plan.chunk(), plan.block(), block);
  append(chunk, loop("column", plan.block(), width(plan.type), column));
  return loop("chunk", plan.length(), plan.chunk(), chunk);
}

}  // namespace

std::vector<Pass> passes_of(const Plan& plan) {
  const int lanes = width(plan.type), last = static_cast<int>(plan.passes.size()) - 1;
  const auto scaling = [&](int k) { return k == last ? Scaling::Last : Scaling::None; };
  std::vector<Pass> passes = {{block_flow(plan.passes[0], plan.type, plan.inside, scaling(0)), plan.length() / plan.block()}};
  for (int k = 1, stride = plan.block(); k <= last; stride <<= plan.passes[k++]) {
    const int columns = plan.length() >> plan.passes[k];
    passes.push_back({column_flow(plan.passes[k], stride, plan.type, scaling(k)), columns / lanes});
  }
  return passes;
}

Counts check_counts(const Plan& plan, const std::vector<Pass>& passes) {
  Counts made;
  for (const Pass& pass : passes) made += pass.runs * count(pass.program);
  const auto compare = [&](const char* what, int number, bool holds) {
    if (!holds) plan.row.fail(std::string(what) + ": the passes have " + std::to_string(number));
  };
  compare("additions", made.additions, made.additions == plan.limit.additions);
  compare("multiplications", made.multiplications, made.multiplications == plan.limit.multiplications);
  compare("shuffles", made.shuffles, made.shuffles <= plan.limit.shuffles);
  return made;
}

Lines pass_statements(const Plan& plan, const std::vector<Pass>& passes, const std::string& pool) {
  if (passes.size() == 1) return body(passes[0], "x", "y", plan.wide() ? "Unaligned" : "Access", pool);
  const std::string element = single_precision(plan.type) ? "float" : "double";
  const std::string bytes = std::to_string(plan.main_bytes + plan.staging_bytes);
  Lines lines = {"void* own = nullptr;", "if (buffer == nullptr) own = buffer = xfmMalloc(" + bytes + ");",
                 element + "* const main_region = static_cast<" + element + "*>(buffer);"};
  if (plan.staging_bytes > 0) lines.push_back(element + "* const staging = main_region + " + std::to_string(plan.length()) + ";");
  append(lines, passes.size() == 3 ? chunks(plan, passes, pool) : blocks(plan, passes, pool));
  Lines column = {"const auto* from = main_region + column;", "auto* to = y + column;"};
  append(column, body(passes.back(), "from", "to", access(plan, Move::ToDst)));
  append(lines, loop("column", plan.chunk(), width(plan.type), column));
  lines.push_back("if (own != nullptr) xfmFree(own);");
  return lines;
}

}  // namespace xfm::wht
