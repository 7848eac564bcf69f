#include "flows/plan.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <numeric>

#include "generator/check.h"

namespace xfm {

namespace {

constexpr int kLongest = 1024, kDeepest = 16;  // of a block and of parentheses; far above all tables

class Parser {
 public:
  explicit Parser(const std::string& text) : text_(text) {}

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

  // The number that begins at a position of a token.
  int number(const std::string& token, size_t start) const {
    int value = 0;
    const auto [end, error] = std::from_chars(token.data() + start, token.data() + token.size(), value);
    if (error != std::errc() || value < 2 || value > kLongest) fail("no length of a block in '" + token + "'");
    return value;
  }

  void expect(const std::string& token) {
    if (take() != token) fail("expected '" + token + "'");
  }

  Plan chain() {
    if (++depth_ > kDeepest) fail("too many parentheses");
    Plan plan = atom();
    for (std::string link = peek(); link == "ct" || link == "pf"; link = peek()) {
      take();
      Plan right = atom();
      if (right.length > kLongest * kLongest / plan.length) fail("too long");
      const bool pf = link == "pf";
      if (pf && std::gcd(plan.length, right.length) != 1) fail("the parts of 'pf' must be coprime");
      plan = {pf ? Plan::Kind::GoodThomas : Plan::Kind::CooleyTukey, plan.length * right.length, "", {plan, right}};
    }
    --depth_;
    return plan;
  }

  Plan pair(Plan::Kind kind) {
    expect("(");
    Plan a = chain();
    expect(";");
    Plan b = chain();
    expect(")");
    const int length = kind == Plan::Kind::Halves ? 2 * a.length : a.length;
    if (b.length != length) fail("the parts do not fit together");
    return {kind, length, "", {a, b}};
  }

  Plan atom() {
    const std::string token = take();
    if (token == "(") {
      Plan plan = chain();
      expect(")");
      return plan;
    }
    if (token == "halves") return pair(Plan::Kind::Halves);
    if (token == "rows") return pair(Plan::Kind::Rows);
    if (token.size() > 1 && token[0] == 'R' && std::isdigit(static_cast<unsigned char>(token[1])))
      return {Plan::Kind::NamedRader, number(token, 1), token, {}};
    if (token.empty() || !std::isdigit(static_cast<unsigned char>(token[0]))) fail("expected a block, found '" + token + "'");
    if (!std::all_of(token.begin(), token.end(), [](unsigned char c) { return std::isdigit(c); })) fail("no block is named '" + token + "'");
    return {Plan::Kind::Block, number(token, 0), "", {}};
  }

  const std::string& text_;
  size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

Plan parse_plan(const std::string& text) { return Parser(text).whole(); }

std::string to_text(const Plan& plan) {
  const auto part = [](const Plan& p) { return p.link() ? "(" + to_text(p) + ")" : to_text(p); };
  switch (plan.kind) {
    case Plan::Kind::Block: return std::to_string(plan.length);
    case Plan::Kind::NamedRader: return plan.name;
    case Plan::Kind::CooleyTukey: return part(plan.first()) + " ct " + part(plan.second());
    case Plan::Kind::GoodThomas: return part(plan.first()) + " pf " + part(plan.second());
    case Plan::Kind::Halves: return "halves(" + to_text(plan.first()) + "; " + to_text(plan.second()) + ")";
    case Plan::Kind::Rows: return "rows(" + to_text(plan.first()) + "; " + to_text(plan.second()) + ")";
  }
  return {};
}

Plan mirrored(const Plan& plan) {
  if (!plan.link()) return plan;
  return {plan.kind, plan.length, "", {mirrored(plan.second()), mirrored(plan.first())}};
}

}  // namespace xfm
