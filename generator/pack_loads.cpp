#include "generator/pack_loads.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm::pack {

namespace {

constexpr double kLoad = 0.15, kBlend = 0.5, kUpperHalf = 1;

bool needed(int operation) { return operation != kNone; }

// The want in the lanes of two sources; false if they have not all of it.
bool lanes_from(const Lanes& want, const Lanes& a, const Lanes& b, int w, Want& out) {
  out = kEmpty;
  for (int l = 0; l < w; ++l) {
    if (!needed(want[l])) continue;
    if (a[l] == want[l]) out[l] = l;
    else if (b[l] == want[l]) out[l] = w + l;
    for (int from = 0; from < 2 * w && out[l] == kNone; ++from)
      if ((from < w ? a : b)[from % w] == want[l]) out[l] = from;
    if (out[l] == kNone) return false;
  }
  return true;
}

}  // namespace

Loads::Loads(const Network& network, Program& program, Moves& moves, int lanes, LoadGrid grid)
    : network_(network), program_(program), moves_(moves), lanes_(lanes), grid_(grid) {
  for (size_t i = 0; i < network.operations.size(); ++i) {
    const Operation& o = network.operations[i];
    if (o.kind == Kind::Input) inputs_[{o.source, o.cell}] = static_cast<int>(i);
  }
}

int Loads::input_at(int source, int cell) const {
  const auto found = inputs_.find({source, cell});
  return found == inputs_.end() ? kNone : found->second;
}

bool Loads::read(int source, int cell, int count) const {
  for (int i = 0; i < count; ++i)
    if (input_at(source, cell + i) == kNone) return false;
  return true;
}

// As many cells as there are lanes.
Loads::Source Loads::window(bool single, int source, int cell) const {
  const Type type = register_type(single, lanes_);
  const Op op = width(type) == lanes_ ? Op::Load : Op::LoadPair;
  Source out{{{.op = op, .type = type, .source = source, .cell = cell}}, kEmpty};
  for (int l = 0; l < lanes_; ++l) out.lanes[l] = input_at(source, cell + l);
  return out;
}

Loads::Source Loads::broadcast(int operation) const {
  const Operation& o = network_.operations[operation];
  const Type type = register_type(o.single, lanes_);
  Source out{{{.op = Op::Broadcast, .type = type, .source = o.source, .cell = o.cell}}, kEmpty};
  std::fill_n(out.lanes.begin(), width(type), operation);
  return out;
}

// All windows that have one of the wanted cells.
std::vector<Loads::Source> Loads::windows(const Lanes& want) const {
  std::map<std::pair<int, int>, Source> found;
  for (int operation : want) {
    if (!needed(operation)) continue;
    const Operation& o = network_.operations[operation];
    const int first = std::max(0, o.cell - lanes_ + 1), last = std::min(o.cell, network_.cells - lanes_);
    for (int cell = first; cell <= last; ++cell)
      if (read(o.source, cell, lanes_) && (grid_.parity < 0 || (lanes_ == 2 && cell % 2 == grid_.parity)))
        found.try_emplace({o.source, cell}, window(o.single, o.source, cell));
  }
  std::vector<Source> out;
  for (auto& [place, source] : found) out.push_back(std::move(source));
  return out;
}

// Two pairs of cells of the grid in one register.
std::vector<Loads::Source> Loads::pairs(const Lanes& want) const {
  std::vector<std::pair<int, int>> starts;
  bool single = false;
  for (int operation : want) {
    if (!needed(operation)) continue;
    const Operation& o = network_.operations[operation];
    const int start = (o.cell - grid_.parity) / 2 * 2 + grid_.parity;
    if (o.cell < grid_.parity || !read(o.source, start, 2)) continue;
    single = o.single;
    if (std::ranges::find(starts, std::pair(o.source, start)) == starts.end()) starts.emplace_back(o.source, start);
  }
  std::vector<Source> out;
  if (lanes_ != 4) return out;
  for (const auto& [source, low] : starts)
    for (const auto& [other, high] : starts) {
      if (source != other) continue;
      Source s;
      if (single) {
        s.loads = {{.op = Op::LoadPair, .type = Type::F32x4, .source = source, .cell = low},
                   {.op = Op::LoadHigh, .type = Type::F32x4, .source = source, .cell = high}};
      } else {
        s.loads = {{.op = Op::Load, .type = Type::F64x2, .source = source, .cell = low},
                   {.op = Op::Load, .type = Type::F64x2, .source = source, .cell = high}};
      }
      for (int l = 0; l < 4; ++l) s.lanes[l] = input_at(source, (l < 2 ? low : high - 2) + l);
      out.push_back(std::move(s));
    }
  return out;
}

// Every element from a load that has it in its lane.
Loads::Plan Loads::blended(const Lanes& want) const {
  Plan plan;
  plan.blended = true;
  for (int l = 0; l < lanes_; ++l) {
    if (!needed(want[l])) continue;
    const bool there = std::ranges::any_of(plan.sources, [&](const Source& s) { return s.lanes[l] == want[l]; });
    if (there) continue;
    const Operation& o = network_.operations[want[l]];
    const int cell = o.cell - l;
    const bool inside = read(o.source, cell, lanes_);
    const bool several = std::ranges::count(want, want[l]) > 1;
    const bool free = grid_.parity < 0 || (lanes_ == 2 && (cell % 2 == grid_.parity));
    plan.sources.push_back(inside && free && !several ? window(o.single, o.source, cell) : broadcast(want[l]));
  }
  const double count = static_cast<double>(plan.sources.size());
  plan.price = kLoad * count + kBlend * (count - 1);
  return plan;
}

Loads::Plan Loads::moved(const Lanes& want, const std::vector<Source>& sources) {
  Plan best;
  const int w = width(register_type(network_.operations[*std::ranges::find_if(want, needed)].single, lanes_));
  const Type type = register_type(network_.operations[*std::ranges::find_if(want, needed)].single, lanes_);
  const auto price_of = [](const Source& s) { return kLoad + (s.loads.size() > 1 ? kUpperHalf : 0); };
  for (size_t i = 0; i < sources.size(); ++i)
    for (size_t j = i; j < sources.size(); ++j) {
      Want lanes;
      if (!lanes_from(want, sources[i].lanes, sources[j].lanes, w, lanes)) continue;
      double price = price_of(sources[i]) + (i == j ? 0 : price_of(sources[j]));
      if (best.sources.empty() || price < best.price) price += moves_.way(type, lanes).price;
      if (!best.sources.empty() && price >= best.price) continue;
      best = {price, {sources[i]}, false};
      if (i != j) best.sources.push_back(sources[j]);
    }
  return best;
}

Loads::Plan Loads::find(const Lanes& want) {
  Plan best = blended(want);
  std::vector<Source> sources = windows(want);
  if (grid_.parity >= 0)
    for (Source& s : pairs(want)) sources.push_back(std::move(s));
  if (Plan other = moved(want, sources); !other.sources.empty() && other.price < best.price) best = std::move(other);
  return best;
}

const Loads::Plan& Loads::plan(const Lanes& want) {
  if (const auto known = plans_.find(want); known != plans_.end()) return known->second;
  return plans_.emplace(want, find(want)).first->second;
}

double Loads::price(const Lanes& want) { return plan(want).price; }

int Loads::emit_source(const Source& source) {
  const int low = program_.emit(source.loads[0]);
  if (source.loads.size() == 1) return low;
  Inst high = source.loads[1];
  if (high.type == Type::F64x2) return program_.emit({.op = Op::Join, .type = Type::F64x4, .a = low, .b = program_.emit(high)});
  high.a = low;
  return program_.emit(high);
}

Loaded Loads::make(const Lanes& want) {
  const Plan& p = plan(want);
  const Type type = register_type(network_.operations[*std::ranges::find_if(want, needed)].single, lanes_);
  Loaded out{emit_source(p.sources[0]), p.sources[0].lanes};
  if (!p.blended) {
    const int b = emit_source(p.sources.back());
    Want lanes;
    lanes_from(want, p.sources[0].lanes, p.sources.back().lanes, width(type), lanes);
    const Way& way = moves_.way(type, lanes);
    out.value = emit(program_, type, way, out.value, b);
    for (int l = 0, w = width(type); l < w && !way.steps.empty(); ++l) {
      const int from = way.steps.back().lanes[l];
      out.lanes[l] = from == kNone ? kNone : (from < w ? p.sources[0] : p.sources.back()).lanes[from % w];
    }
    return out;
  }
  for (size_t i = 1; i < p.sources.size(); ++i) {
    int mask = 0;
    for (int l = 0; l < lanes_; ++l)
      if (needed(want[l]) && out.lanes[l] != want[l] && p.sources[i].lanes[l] == want[l])
        mask |= 1 << l, out.lanes[l] = want[l];
    out.value = program_.emit({.op = Op::Blend, .type = type, .a = out.value, .b = emit_source(p.sources[i]), .imm = mask});
  }
  return out;
}

}  // namespace xfm::pack
