#include "dct4/kernels.h"

#include <algorithm>
#include <numeric>

#include "dct4/column_order.h"
#include "dct4/flows.h"
#include "generator/check.h"
#include "generator/schedule.h"
#include "generator/text.h"

namespace xfm::dct4 {

namespace {

Type vector_type(bool single) { return single ? Type::F32x8 : Type::F64x4; }
Type half_type(bool single) { return single ? Type::F32x4 : Type::F64x2; }
Type scalar_type(bool single) { return single ? Type::F32 : Type::F64; }

StageKernel vector_kernel(const KernelPlan& plan, bool single) { return {plan, Network(vector_type(single), Signs::Explicit)}; }

std::string number(int x) { return std::to_string(x); }

// An array of its own for every operand whose address is known at run time only.
int place(std::vector<std::string>& arrays, const std::string& expression) {
  arrays.push_back(expression);
  return static_cast<int>(arrays.size()) - 1;
}

// Bins of a forward transform in the order of their stores. Where the plan has them as the outermost split finishes them:
// for h = 0, 1, ... those of F(0) and F(d'/2), then of F(1) and F(d'/2 + 1) and so on, the second of each two conjugated.
std::vector<int> order_of_bins(const KernelPlan& plan) {
  std::vector<int> in_rows(plan.length / 2);
  std::iota(in_rows.begin(), in_rows.end(), 0);
  if (!plan.finished_order) return in_rows;
  const int m2 = plan.length / plan.splits[0], part = m2 / 2, parts = plan.splits[0] / 2;
  std::vector<int> bins;
  for (int h = 0; h < part; ++h)
    for (int f = 0; f < parts; ++f) bins.insert(bins.end(), {h + m2 * f, m2 * (parts - f) - 1 - h});
  return bins;
}

// Lines of a body with its stores moved back until they stand in the program's order.
std::vector<std::string> in_order_of_stores(const std::vector<std::string>& lines, const StageKernel& k) {
  std::vector<std::string> result, waiting(k.targets.size());
  size_t next = 0;
  for (const std::string& line : lines) {
    const auto at = std::ranges::find_if(k.targets, [&](const std::string& t) { return line.find("store(" + t) != std::string::npos; });
    if (at == k.targets.end()) {
      result.push_back(line);
      continue;
    }
    waiting[at - k.targets.begin()] = line;
    for (; next < waiting.size() && !waiting[next].empty(); ++next) result.push_back(waiting[next]);
  }
  check(next == waiting.size(), "every store is written");
  return result;
}

// Forward kernel on V columns: D[t] is read upward for t >= 0, downward for the others, the last one negated; bin g goes
// to the rows 2g and 2g+1.
StageKernel forward_kernel(const KernelPlan& plan, bool single) {
  const int length = plan.length;
  StageKernel k = vector_kernel(plan, single);
  k.parameters = "const Columns<Real>& x, ptrdiff_t step, Real* y, ptrdiff_t stride";
  k.prelude = {"const Upward<const Real> rising = x.rising();", "const Downward<const Real> falling = x.falling();"};
  std::vector<int> operand(length + 1, -1);
  const Sequence d = [&](int t) {
    int& known = operand[t + length / 2];
    if (known < 0) {
      const std::string at = t == length / 2 ? "x.last()"
                             : t >= 0        ? "(rising + " + number(t) + " * step)"
                                             : "(falling + " + number(-t) + " * step)";
      known = k.net.load(place(k.sources, at), 0).id;
      if (t == length / 2) known = k.net.negate({known}).id;
    }
    return Value{known};
  };
  const std::vector<Complex> z = forward(k.net, plan.splits, d, plan.fold_parts);
  for (const int g : order_of_bins(plan)) {
    k.net.store(z[g].re, place(k.targets, "(y + " + number(2 * g) + " * stride)"), 0);
    k.net.store(z[g].im, place(k.targets, "(y + " + number(2 * g + 1) + " * stride)"), 0);
  }
  return k;
}

// The columns first .. first+V/2-1 of V rows of `t`, as vectors of one column each: halves of rows, joined, then
// transposed within each 128-bit lane.
std::vector<Value> gathered(Network& net, bool single, int row_length, int first) {
  const int half = single ? 4 : 2;
  std::vector<int> rows;
  for (int l = 0; l < half; ++l) {
    const int low = net.load(half_type(single), 0, l * row_length + first).id;
    const int high = net.load(half_type(single), 0, (l + half) * row_length + first).id;
    rows.push_back(net.op(Op::Join, net.type(), low, high).id);
  }
  const auto shuffle = [&](int a, int b, int imm) { return net.op(Op::Shuffle, net.type(), a, b, imm).id; };
  if (!single) return {{shuffle(rows[0], rows[1], 0x0)}, {shuffle(rows[0], rows[1], 0xF)}};
  const int a = shuffle(rows[0], rows[1], 0x44), b = shuffle(rows[2], rows[3], 0x44);
  const int c = shuffle(rows[0], rows[1], 0xEE), d = shuffle(rows[2], rows[3], 0xEE);
  return {{shuffle(a, b, 0x88)}, {shuffle(a, b, 0xDD)}, {shuffle(c, d, 0x88)}, {shuffle(c, d, 0xDD)}};
}

// Twiddle and synthesis of V groups of 2d = length reals.
StageKernel synthesis_kernel(const KernelPlan& plan, bool single) {
  const int length = plan.length;
  StageKernel k = vector_kernel(plan, single);
  k.sources = {"t", "table"};
  k.parameters = "const Real* t, const Real* table, const Upward<Real>& rising, const Downward<Real>& falling, ptrdiff_t step";
  if ((plan.splits[0] == 4) != (length / 2 >= kJoinsFourFrom)) plan.row.fail("splits: the table of twiddles is not in this order");
  const int d = length / 2, lanes = width(k.net.type()), half = lanes / 2;
  std::vector<Value> re, im;
  for (int first = 0; first < d; first += half) {
    for (Value v : gathered(k.net, single, length, first)) re.push_back(v);
    for (Value v : gathered(k.net, single, length, d + first)) im.push_back(v);
  }
  std::vector<Complex> t(d);
  for (int p = 0; p < d; ++p) {
    const int column = synthesis_column(d, p);
    const Value c = k.net.load(1, 2 * p * lanes), s = k.net.load(1, (2 * p + 1) * lanes);
    t[column] = k.net.rotate({re[column], im[column]}, c, s);
  }
  const std::vector<Value> y = synthesis(k.net, plan.splits, t);
  for (int u = 0; u < d; ++u) k.net.store(y[u + d], place(k.targets, "(rising + " + number(u) + " * step)"), 0);
  for (int u = 1; u <= d; ++u) k.net.store(y[d - u], place(k.targets, "(falling + " + number(-(2 * d - u)) + " * step)"), 0);
  return k;
}

// One h of a combining step: S of V columns from the rows of w to the rows of Z.
StageKernel combine_kernel(const KernelPlan& plan, bool single) {
  const int radix = plan.length;
  StageKernel k = vector_kernel(plan, single);
  k.sources = {"inner", "outer"};
  k.parameters =
      "const Real* w, ptrdiff_t row, const Real* inner, const Real* outer, Real* rising, Real* falling, ptrdiff_t stride, "
      "ptrdiff_t step";
  if (plan.splits.size() == 1) k.prelude = {"(void)outer;"};
  const int lanes = width(k.net.type());
  const auto row = [&](int r) { return k.net.load(place(k.sources, "(w + " + number(r) + " * row)"), 0); };
  std::vector<Complex> s;
  for (int r = 0; r < radix; ++r) s.push_back({row(r), row(radix + r)});
  const Rotation rotation = [&](int section, int entry) {
    return Complex{k.net.load(section, 2 * entry * lanes), k.net.load(section, (2 * entry + 1) * lanes)};
  };
  const std::vector<Complex> f = combine(k.net, plan.splits, s, rotation);
  const auto store = [&](const Complex& z, const std::string& bin) {
    k.net.store(z.re, place(k.targets, "(" + bin + ")"), 0);
    k.net.store(z.im, place(k.targets, "(" + bin + " + stride)"), 0);
  };
  for (int i = 0; i < radix / 2; ++i) store(f[i], "rising + " + number(i) + " * step");
  for (int i = 1; i <= radix / 2; ++i) store(k.net.conjugate(f[radix - i]), "falling + " + number(i - 1) + " * step");
  return k;
}

void rotation(Network& net, const KernelPlan&) {
  const Real c = cos_turn(1, 16), s = sin_turn(1, 16);
  const Value a = net.load(0, 0), b = net.load(0, 1);
  net.store(net.add(net.mul(a, c), net.mul(b, s)), 0, 0);
  net.store(net.sub(net.mul(a, s), net.mul(b, c)), 0, 1);
}

// Rotations in lifting form: three products and three sums each.
void lifting(Network& net, const KernelPlan&) {
  const auto lift = [&](Value x, Value y, int odd) {  // by the angle odd*pi/16
    const Real tangent = sin_turn(odd, 64) / cos_turn(odd, 64), sine = sin_turn(odd, 32);
    const Value a = net.sub(x, net.mul(y, tangent));
    const Value b = net.add(y, net.mul(a, sine));
    return Complex{b, net.sub(a, net.mul(b, tangent))};
  };
  const Complex outer = lift(net.load(0, 0), net.load(0, 3), 7), inner = lift(net.load(0, 1), net.load(0, 2), 5);
  const Real root = cos_turn(1, 8);
  const Value b = net.mul(net.sub(outer.re, inner.re), root), c = net.mul(net.add(outer.im, inner.im), root);
  net.store(net.add(outer.re, inner.re), 0, 0);
  net.store(net.add(b, c), 0, 1);
  net.store(net.sub(b, c), 0, 2);
  net.store(net.sub(outer.im, inner.im), 0, 3);
}

// n = d*m: the d columns are read in a zigzag of period 2d, the groups written in one of period m.
void straight(Network& net, const KernelPlan& plan) {
  const int n = plan.length, d = plan.columns, m = n / d;
  std::vector<std::vector<Complex>> z;
  for (int b = 0; b < d; ++b) {
    const Network::Loop column(net, "column", b);
    z.push_back(forward(net, plan.splits, [&](int t) {
      if (t == m / 2) return net.negate(net.load(0, n - 1 - b));
      return net.load(0, t >= 0 ? 2 * d * t + b : -2 * d * t - 1 - b);
    }));
  }
  for (int g = 0; g < m / 2; ++g) {
    const Network::Loop group(net, "group", g);
    std::vector<Complex> t;
    for (int b = 0; b < d; ++b) {
      const Network::Loop rotation(net, "rotation", b);
      t.push_back(net.rotate(z[b][g], (2 * b + 1) * (2 * g + 1), 8 * n));
    }
    const std::vector<Value> y = synthesis(net, plan.group_splits, t);
    for (int u = 0; u < d; ++u) net.store(y[u + d], 0, m * u + g);
    for (int u = 1; u <= d; ++u) net.store(y[d - u], 0, m * u - 1 - g);
  }
}

StageKernel scalar_kernel(const KernelPlan& plan, bool single, void (*make)(Network&, const KernelPlan&)) {
  StageKernel k{plan, Network(scalar_type(single), Signs::Folded), {"x"}, {"y"}, "const Real* x, Real* y"};
  make(k.net, plan);
  return k;
}

StageKernel kernel_of(const KernelPlan& plan, bool single) {
  switch (plan.kind) {
    case KernelKind::Rotation: return scalar_kernel(plan, single, rotation);
    case KernelKind::Lifting: return scalar_kernel(plan, single, lifting);
    case KernelKind::Straight: return scalar_kernel(plan, single, straight);
    case KernelKind::Forward: return forward_kernel(plan, single);
    case KernelKind::Synthesis: return synthesis_kernel(plan, single);
    case KernelKind::Combine: return combine_kernel(plan, single);
  }
  throw std::logic_error("a kind of kernel");
}

}  // namespace

std::vector<StageKernel> stage_kernels(const std::filesystem::path& table, const std::string& type) {
  std::vector<StageKernel> kernels;
  for (const KernelPlan& plan : read_kernel_plans(table, type)) {
    const StageKernel& k = kernels.emplace_back(kernel_of(plan, type == "32f"));
    const int products = k.net.multiplications(), sums = k.net.additions();
    if (products != plan.multiplications || sums != plan.additions)
      plan.row.fail(plan.name() + " has " + number(products) + " multiplications and " + number(sums) + " additions");
  }
  return kernels;
}

pack::Forms::Form whole_form(const StageKernel& k, const std::string& type, const pack::Forms& forms) {
  return forms.of(k.net.program(), "dct4", k.plan.length, type, {});
}

std::string kernel_text(const StageKernel& k, const std::string& type, const pack::Forms& forms) {
  const std::string name = k.plan.name(), pool = "DCT4_" + name + "_" + type;
  BodyNames names;
  names.sources = k.sources;
  names.targets = k.targets;
  names.pool = "owngPool_" + pool;
  names.access = k.plan.whole() ? "Unaligned" : "StageAccess";
  names.loads_first = k.plan.whole();
  std::string text = "// " + name + ": " + number(k.plan.multiplications) + " multiplications, " + number(k.plan.additions) +
                     " additions";
  pack::Forms::Form form = k.plan.whole() ? whole_form(k, type, forms) : pack::Forms::Form{k.net.program(), {}};
  text += (form.name.empty() ? "" : "; " + form.name) + "\n";
  if (!form.program.pool().empty()) text += pool_text(form.program, pool, type == "32f", {}, 1);
  text += "template <>\n[[gnu::always_inline]] inline void Kernels<Precision>::" + name + "(" + k.parameters + ") {\n";
  for (const std::string& line : k.prelude) text += "  " + line + "\n";
  std::vector<std::string> body = body_text(scheduled(std::move(form.program), forms.registers()), names);
  if (k.plan.finished_order) body = in_order_of_stores(body, k);
  for (const std::string& line : body) text += "  " + line + "\n";
  return text + "}\n\n";
}

}  // namespace xfm::dct4
