#include "flows/plan.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <optional>

#include "flows/numbers.h"
#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

namespace {

constexpr int kLongest = 1024, kDeepest = 16;  // of a block and of parentheses; far above all tables

// A word with plans in parentheses behind it: one of n points, one of `second` * n, one of 2n; all of them have the length of
// the second. Rader's method has n + 1 points, and with one plan inside runs on complex data.
struct Form {
  const char* word;
  Plan::Kind kind;
  size_t least, most;
  int second;
};
constexpr Form kForms[] = {{"halves", Plan::Kind::Halves, 2, 2, 2},
                           {"rows", Plan::Kind::Rows, 2, 3, 1},
                           {"rader", Plan::Kind::Rader, 1, 2, 1},
                           {"apart", Plan::Kind::Apart, 1, 1, 1}};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

class Parser {
 public:
  Parser(const std::string& text, const PlanBlocks& blocks) : text_(text), blocks_(blocks) {}

  Plan whole() {
    Plan plan = chain();
    if (!peek().empty()) fail("text behind the plan");
    return plan;
  }

 private:
  [[noreturn]] void fail(const std::string& why) const { throw InputError("plan '" + text_.substr(0, 80) + "': " + why); }

  std::string peek() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
    size_t end = at_;
    while (end < text_.size() && std::isalnum(static_cast<unsigned char>(text_[end]))) ++end;
    if (end == at_ && at_ < text_.size()) ++end;
    return text_.substr(at_, end - at_);
  }

  std::string take() {
    std::string token = peek();
    at_ += token.size();
    return token;
  }

  bool accept(const std::string& token) {
    if (peek() != token) return false;
    take();
    return true;
  }

  void expect(const std::string& token) {
    if (!accept(token)) fail("expected '" + token + "'");
  }

  int number(const std::string& token) const {
    if (!std::ranges::all_of(token, is_digit)) fail("no block is named '" + token + "'");
    const int value = decimal(token).value_or(0);
    if (value < 2 || value > kLongest) fail("no length of a block in '" + token + "'");
    return value;
  }

  Plan chain() {
    if (++depth_ > kDeepest) fail("too many parentheses");
    Plan plan = stage();
    while (peek() == "ct" || peek() == "pf") {
      const Plan::Kind kind = take() == "pf" ? Plan::Kind::GoodThomas : Plan::Kind::CooleyTukey;
      Plan right = stage();
      if (right.length > kLongest * kLongest / plan.length) fail("too long");
      if (kind == Plan::Kind::GoodThomas && std::gcd(plan.length, right.length) != 1) fail("the parts of 'pf' must be coprime");
      const int length = plan.length * right.length;
      plan = {kind, length, {std::move(plan), std::move(right)}};
    }
    --depth_;
    return plan;
  }

  // The plans in parentheses behind a word; the last may be `turned`.
  std::vector<Plan> parts(size_t least, size_t most) {
    std::vector<Plan> all;
    expect("(");
    do {
      if (all.size() == 2 && accept("turned")) {
        all.push_back({Plan::Kind::Turned, 2 * all[0].length});
      } else {
        all.push_back(chain());
      }
    } while (all.size() < most && accept(";"));
    if (all.size() < least) fail("expected ';'");
    expect(")");
    return all;
  }

  Plan made(const Form& form) {
    std::vector<Plan> all = parts(form.least, form.most);
    const int n = all[0].length;
    const bool rader = form.kind == Plan::Kind::Rader;
    if (rader && (n < 4 || !is_prime(n + 1))) fail("Rader's method at " + std::to_string(n + 1) + ", which is no prime from 5");
    const bool fits = (all.size() < 2 || all[1].length == form.second * n) && (all.size() < 3 || all[2].length == 2 * n);
    if (!fits) fail("the parts do not fit together");
    const Plan::Kind kind = rader && all.size() == 1 ? Plan::Kind::ComplexRader : form.kind;
    return {kind, rader ? n + 1 : form.second * n, std::move(all)};
  }

  Plan chirp() {
    expect("(");
    const int length = number(take());
    expect(";");
    Plan convolution = chain();
    expect(")");
    if (convolution.length < 2 * length - 1) fail("the convolution is too short");
    return {Plan::Kind::Chirp, length, {std::move(convolution)}};
  }

  Plan stage() {
    if (accept("(")) {
      Plan plan = chain();
      expect(")");
      return plan;
    }
    if (accept("chirp")) return chirp();
    for (const Form& form : kForms)
      if (accept(form.word)) return made(form);
    const std::string token = take();
    if (const auto block = blocks_.find(token); block != blocks_.end()) return block->second;
    if (token.size() > 1 && std::isupper(static_cast<unsigned char>(token[0]))) fail("no block is named '" + token + "'");
    if (token.empty() || !is_digit(token[0])) fail("expected a block, found '" + token + "'");
    return {Plan::Kind::Block, number(token)};
  }

  const std::string& text_;
  const PlanBlocks& blocks_;
  size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

Plan parse_plan(const std::string& text, const PlanBlocks& blocks) { return Parser(text, blocks).whole(); }

std::string to_text(const Plan& plan) {
  if (!plan.name.empty()) return plan.name;
  const auto part = [](const Plan& p) { return p.link() && p.name.empty() ? "(" + to_text(p) + ")" : to_text(p); };
  switch (plan.kind) {
    case Plan::Kind::Block: return std::to_string(plan.length);
    case Plan::Kind::Turned: return "turned";
    case Plan::Kind::CooleyTukey: return part(plan.first()) + " ct " + part(plan.second());
    case Plan::Kind::GoodThomas: return part(plan.first()) + " pf " + part(plan.second());
    case Plan::Kind::Chirp: return "chirp(" + std::to_string(plan.length) + "; " + to_text(plan.first()) + ")";
    default: break;
  }
  const Plan::Kind kind = plan.kind == Plan::Kind::ComplexRader ? Plan::Kind::Rader : plan.kind;
  std::string text = std::ranges::find(kForms, kind, &Form::kind)->word;
  for (const Plan& p : plan.parts) text += (&p == &plan.first() ? "(" : "; ") + to_text(p);
  return text + ")";
}

Plan mirrored(const Plan& plan) {
  if (!plan.link()) return plan;
  return {plan.kind, plan.length, {mirrored(plan.second()), mirrored(plan.first())}};
}

std::vector<const Plan*> leaves(const Plan& plan) {
  if (plan.parts.empty() || !plan.name.empty()) return {&plan};
  std::vector<const Plan*> all;
  for (const Plan& part : plan.parts)
    for (const Plan* leaf : leaves(part)) all.push_back(leaf);
  return all;
}

std::vector<int> integers(const std::string& what, const std::string& text) {
  std::vector<int> values;
  for (const std::string& digits : split(text, ',')) {
    const std::optional<int> value = decimal(digits);
    if (!value || *value < 0) throw InputError(what + " '" + text + "': '" + digits + "' is not a number");
    values.push_back(*value);
  }
  return values;
}

Plan numbered(Plan plan, const std::string& text) {
  if (text == "-") return plan;
  const std::vector<int> v = integers("numbering", text);
  const auto refuse = [&](const char* reason) { throw InputError("numbering '" + text + "': " + reason); };
  if (plan.kind == Plan::Kind::GoodThomas) {
    if (v.size() != 3 || v[2] > 1) refuse("a Good-Thomas link takes element,row,conjugate");
    if (std::gcd(v[0], plan.first().length) != 1) refuse("the step of elements and the first length are not coprime");
    if (std::gcd(v[1], plan.second().length) != 1) refuse("the step of rows and the second length are not coprime");
    plan.numbering = {.element = v[0], .row = v[1], .conjugate = v[2] == 1};
  } else if (plan.kind == Plan::Kind::Rader) {
    if (v.size() != 2) refuse("Rader's method takes root,start");
    if (v[1] % plan.length == 0) refuse("a start that is zero modulo the prime");
    if (!is_primitive_root(v[0], plan.length)) refuse("the root is not primitive");
    plan.numbering = {.root = v[0], .start = v[1]};
  } else {
    refuse("only a Good-Thomas link and Rader's method have one");
  }
  return plan;
}

}  // namespace xfm
