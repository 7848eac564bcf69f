#include "generator/pack_moves.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm::pack {

namespace {

bool fits(const Want& want, const Want& lanes, int width) {
  for (int l = 0; l < width; ++l)
    if (want[l] != kNone && want[l] != lanes[l]) return false;
  return true;
}

bool contains(const Want& lanes, int lane, int width) {
  return std::find(lanes.begin(), lanes.begin() + width, lane) != lanes.begin() + width;
}

// The lanes of a result of one of the immediate forms.
Want result_of(Op op, Type type, int imm) {
  const int w = width(type), per_part = single_precision(type) ? 4 : 2;
  Want lanes = kEmpty;
  for (int l = 0; l < w; ++l) {
    const int part = l / per_part * per_part, at = l % per_part;
    const int two_bits = imm >> (2 * at) & 3, one_bit = imm >> l & 1;
    switch (op) {
      case Op::Blend: lanes[l] = one_bit ? w + l : l; break;
      case Op::Insert: lanes[l] = l == imm % 4 ? w + imm / 4 : l; break;
      case Op::Permute: lanes[l] = part + (per_part == 4 ? two_bits : one_bit); break;
      case Op::Shuffle: lanes[l] = (2 * at < per_part ? 0 : w) + part + (per_part == 4 ? two_bits : one_bit); break;
      case Op::UnpackLow: lanes[l] = (at % 2 ? w : 0) + part + at / 2; break;
      case Op::UnpackHigh: lanes[l] = (at % 2 ? w : 0) + part + per_part / 2 + at / 2; break;
      case Op::Halves: {
        if (bits(type) == 512) {  // two parts of each, two bits a part
          const int to = l / per_part;
          lanes[l] = (to < 2 ? 0 : w) + (imm >> (2 * to) & 3) * per_part + at;
        } else {
          lanes[l] = (imm >> (part ? 4 : 0) & 3) * per_part + at;
        }
        break;
      }
      default: check(false, "an operation with an immediate form");
    }
  }
  return lanes;
}

// The numbers of lanes with the two registers exchanged.
Want exchanged(const Want& lanes, int width) {
  Want out = lanes;
  for (int l = 0; l < width; ++l)
    if (out[l] != kNone) out[l] = out[l] < width ? out[l] + width : out[l] - width;
  return out;
}

// A way of one register, for the second of two.
Way of_second(Way way, Type type, double blend) {
  const int width = xfm::width(type), all = (1 << width) - 1;
  if (way.steps.empty()) return {blend, {{Op::Blend, 0, 1, all, result_of(Op::Blend, type, all)}}};
  for (Step& s : way.steps) s.a = 1, s.lanes = exchanged(s.lanes, width);
  return way;
}

}  // namespace

const Moves::Basics& Moves::basics(Type type) {
  const auto [place, fresh] = basics_.try_emplace(type);
  if (!fresh) return place->second;
  Basics& all = place->second;
  const auto& price = target_.price;
  const int w = width(type);
  const auto add = [&](Op op, int imms, double cost) {
    for (int imm = 0; imm < imms; ++imm) {
      const Want lanes = result_of(op, type, imm);
      if (op == Op::Permute) {
        all.one.push_back({op, false, imm, cost, lanes});
        continue;
      }
      all.two.push_back({op, false, imm, cost, lanes});
      if (op != Op::Blend) all.two.push_back({op, true, imm, cost, exchanged(lanes, w)});
    }
  };
  const int choices = single_precision(type) ? 256 : 1 << w;
  add(Op::Blend, 1 << w, price.blend);
  add(Op::UnpackLow, 1, price.shuffle);
  add(Op::UnpackHigh, 1, price.shuffle);
  add(Op::Shuffle, choices, price.shuffle);
  add(Op::Permute, choices, price.shuffle);
  if (type == Type::F32x4) add(Op::Insert, 16, price.shuffle);
  if (bits(type) == 256)
    for (int low = 0; low < 4; ++low)
      for (int high = 0; high < 4; ++high)
        all.two.push_back({Op::Halves, false, low | high << 4, price.permute, result_of(Op::Halves, type, low | high << 4)});
  if (bits(type) == 512) add(Op::Halves, 256, price.permute);
  return all;
}

const Moves::Basic* Moves::cheapest(const std::vector<Basic>& among, Type type, const Want& want) const {
  const Basic* best = nullptr;
  for (const Basic& b : among)
    if ((!best || b.price < best->price) && fits(want, b.lanes, width(type))) best = &b;
  return best;
}

// One instruction, or nothing.
Way Moves::direct(Type type, const Want& want) {
  const int w = width(type);
  const bool from_b = std::any_of(want.begin(), want.begin() + w, [&](int l) { return l >= w; });
  const Basic* found = cheapest(from_b ? basics(type).two : basics(type).one, type, want);
  if (found) {
    const int first = found->exchanged ? 1 : 0;
    return {found->price, {{found->op, first, from_b ? 1 - first : kNone, found->imm, found->lanes}}};
  }
  if (bits(type) == 128 ? !from_b || !two_source_picks_ : from_b && !two_source_picks_) return {};
  Want lanes = want;
  for (int l = 0; l < w; ++l)
    if (lanes[l] == kNone) lanes[l] = l;
  const double price = from_b ? target_.price.permute2 : target_.price.permute;
  return {price, {{Op::Pick, 0, from_b ? 1 : kNone, 0, lanes, lanes}}};
}

Way Moves::find(Type type, const Want& want) {
  const int w = width(type);
  bool identity = true, from_a = false, from_b = false;
  for (int l = 0; l < w; ++l) {
    identity = identity && (want[l] == kNone || want[l] == l);
    from_a = from_a || (want[l] != kNone && want[l] < w);
    from_b = from_b || want[l] >= w;
  }
  if (identity) return {};
  if (!from_a) return of_second(way(type, exchanged(want, w)), type, target_.price.blend);
  Way best = direct(type, want);
  const auto consider = [&](Way way) {
    if (best.steps.empty() || way.price < best.price) best = std::move(way);
  };
  if (!from_b) {
    check(!best.steps.empty(), "lanes of one register come in any order");
    return best;
  }
  // Each operand into its lanes, where it is not there, then a blend.
  Want of_a = kEmpty, of_b = kEmpty;
  int mask = 0;
  for (int l = 0; l < w; ++l) {
    if (want[l] == kNone) continue;
    (want[l] < w ? of_a : of_b)[l] = want[l] % w;
    if (want[l] >= w) mask |= 1 << l;
  }
  Way blended;
  const auto in_place = [&](const Want& part, int operand) {
    const Way& one = way(type, part);
    if (one.steps.empty()) return operand;
    Step step = one.steps[0];
    step.a = operand;
    if (operand == 1) step.lanes = exchanged(step.lanes, w);
    blended.steps.push_back(step);
    blended.price += one.price;
    return 1 + static_cast<int>(blended.steps.size());
  };
  const int a = in_place(of_a, 0), b = in_place(of_b, 1);
  Want lanes = kEmpty;
  for (int l = 0; l < w; ++l) {
    const int from = mask >> l & 1 ? b : a;
    lanes[l] = from >= 2 ? blended.steps[from - 2].lanes[l] : from * w + l;
  }
  blended.steps.push_back({Op::Blend, a, b, mask, lanes});
  blended.price += target_.price.blend;
  consider(std::move(blended));
  // All of them into one register, then into their order.
  for (const Basic& first : basics(type).two) {
    if (!best.steps.empty() && first.price + target_.price.shuffle >= best.price) continue;
    Want order = kEmpty;
    bool all = true;
    for (int l = 0; l < w && all; ++l) {
      if (want[l] == kNone) continue;
      all = contains(first.lanes, want[l], w);
      order[l] = static_cast<int>(std::find(first.lanes.begin(), first.lanes.begin() + w, want[l]) - first.lanes.begin());
    }
    if (!all) continue;
    const Way& second = way(type, order);
    if (second.steps.empty()) continue;
    Step last = second.steps[0];
    last.a = 2;
    for (int l = 0; l < w; ++l) last.lanes[l] = first.lanes[last.lanes[l]];
    const int from = first.exchanged ? 1 : 0;
    consider({first.price + second.price, {{first.op, from, 1 - from, first.imm, first.lanes}, last}});
  }
  return best;
}

const Way& Moves::way(Type type, const Want& want) {
  if (const auto found = known_.find({type, want}); found != known_.end()) return found->second;
  Way way = find(type, want);
  return known_.emplace(std::pair(type, want), std::move(way)).first->second;
}

int emit(Program& program, Type type, const Way& way, int a, int b) {
  std::vector<int> values = {a, b};
  for (const Step& s : way.steps) {
    const int second = s.b == kNone ? -1 : values[s.b];
    if (s.op == Op::Pick) {
      values.push_back(program.pick(type, values[s.a], second, {s.pick.begin(), s.pick.begin() + width(type)}));
    } else {
      values.push_back(program.emit({.op = s.op, .type = type, .a = values[s.a], .b = second, .imm = s.imm}));
    }
  }
  return way.steps.empty() ? a : values.back();
}

}  // namespace xfm::pack
