#include "rdft/plan.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <numeric>

#include "flows/numbers.h"
#include "generator/check.h"

namespace xfm::rdft {

namespace {

PlanPtr make(int length, auto form) { return std::make_shared<const Plan>(Plan{length, std::move(form)}); }
OddPlanPtr make_odd(int length, auto form) { return std::make_shared<const OddPlan>(OddPlan{length, std::move(form)}); }

class Parser {
 public:
  Parser(std::string_view text, const Blocks& blocks) : text_(text), blocks_(blocks) {}

  PlanPtr whole() {
    PlanPtr plan = chain();
    if (peek() != '\0') fail("unexpected text behind the plan");
    return plan;
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw InputError("plan \"" + std::string(text_) + "\", position " + std::to_string(at_ + 1) + ": " + reason);
  }

  char peek() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    return at_ < text_.size() ? text_[at_] : '\0';
  }

  bool accept(char c) {
    if (peek() != c) return false;
    ++at_;
    return true;
  }

  void expect(char c) {
    if (!accept(c)) fail(std::string("expected '") + c + "'");
  }

  std::string word() {
    peek();
    const size_t start = at_;
    while (at_ < text_.size() && std::isalnum(static_cast<unsigned char>(text_[at_]))) ++at_;
    return std::string(text_.substr(start, at_ - start));
  }

  int number() {
    if (!std::isdigit(static_cast<unsigned char>(peek()))) fail("expected a length");
    const std::string digits = word();
    if (digits.size() > 3 || !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); }))
      fail("no length: " + digits);
    return std::stoi(digits);
  }

  PlanPtr chain() {
    const PlanPtr first = atom();
    if (!std::isalpha(static_cast<unsigned char>(peek()))) return first;
    const std::string link = word();
    const PlanPtr second = atom();
    const int length = first->length * second->length;
    if (link == "tw") return make(length, Twiddled{first, second});
    if (link != "gt") fail("unknown link: " + link);
    if (std::gcd(first->length, second->length) != 1) fail("the parts of a Good-Thomas link are not coprime");
    const PlanPtr complex_second = accept('/') ? atom() : second;
    if (complex_second->length != second->length) fail("the plans of real and complex bins differ in length");
    return make(length, GoodThomas{first, second, complex_second});
  }

  PlanPtr atom() {
    if (accept('(')) {
      const PlanPtr plan = chain();
      expect(')');
      return plan;
    }
    if (accept('[')) {
      const PlanPtr plan = chain();
      expect(']');
      return make(plan->length, Lanes{plan});
    }
    if (peek() == '{') return halves();
    if (const PlanPtr block = named_block()) return block;
    const int n = number();
    if (peek() == '{') return rader(n);
    if (n >= 2 && std::has_single_bit(static_cast<unsigned>(n)))
      return make(n, PowerOfTwo{accept('*') ? Split::Mixed : Split::Fours});
    if (n < 3 || !is_prime(n)) fail(std::to_string(n) + " is neither a power of two nor an odd prime");
    return make(n, Direct{});
  }

  PlanPtr named_block() {
    peek();
    const size_t start = at_;
    const std::string name = word();
    if (!name.empty() && std::isalpha(static_cast<unsigned char>(name.back()))) {
      const auto block = blocks_.find(name);
      if (block == blocks_.end()) fail("no block is named " + name);
      return block->second;
    }
    at_ = start;
    return nullptr;
  }

  PlanPtr halves() {
    expect('{');
    const PlanPtr even = chain();
    expect('|');
    const OddPlanPtr odd = odd_chain();
    expect('}');
    if (odd->length != 2 * even->length) fail("the odd plan is not for twice the length of the even one");
    return make(odd->length, Halves{even, odd});
  }

  PlanPtr rader(int p) {
    if (p < 5 || !is_prime(p)) fail("Rader's method needs an odd prime from 5");
    expect('{');
    const PlanPtr first = chain();
    expect('|');
    const PlanPtr even = chain();
    expect('|');
    const OddPlanPtr odd = odd_chain();
    expect('}');
    if (first->length != p - 1) fail("the first transform has not length p-1");
    if (even->length != (p - 1) / 2) fail("the plan of the even bins has not length (p-1)/2");
    if (odd->length != p - 1) fail("the plan of the odd bins is not for length p-1");
    return make(p, Rader{first, even, odd, 0, 1});
  }

  OddPlanPtr odd_chain() {
    if (peek() == '(') {
      const OddPlanPtr classes = odd_atom();
      if (word() != "tw") fail("expected 'tw'");
      const PlanPtr second = atom();
      const OddPlanPtr middle = accept('/') ? odd_atom() : default_middle(second->length);
      if (middle->length != 2 * second->length) fail("the plan of the middle bin is not for twice the classes");
      return make_odd(classes->length * second->length, OddTwiddled{classes, second, middle});
    }
    const int n = odd_power();
    if (!std::isalpha(static_cast<unsigned char>(peek()))) return make_odd(n, OddPower{});
    if (word() != "gt") fail("expected 'gt'");
    const PlanPtr second = atom();
    if (second->length % 2 == 0) fail("the second part of an odd Good-Thomas link is even");
    return make_odd(n * second->length, OddGoodThomas{n, second});
  }

  OddPlanPtr odd_atom() {
    if (peek() != '(') return make_odd(odd_power(), OddPower{});
    expect('(');
    const OddPlanPtr plan = odd_chain();
    expect(')');
    return plan;
  }

  // The middle bin is a real value of each class. Without a plan of its own it needs a power of two.
  OddPlanPtr default_middle(int classes) {
    if (!std::has_single_bit(static_cast<unsigned>(classes))) fail("the middle bin of the classes needs a plan ('/')");
    return make_odd(2 * classes, OddPower{});
  }

  int odd_power() {
    const int n = number();
    if (n < 2 || !std::has_single_bit(static_cast<unsigned>(n))) fail("an odd plan begins with a power of two");
    return n;
  }

  std::string_view text_;
  const Blocks& blocks_;
  size_t at_ = 0;
};

std::vector<int> joined(std::vector<int> a, const std::vector<int>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::vector<int> integers(const std::string& text) {
  std::vector<int> values;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find(',', at), text.size());
    const std::string digits = text.substr(at, end - at);
    if (digits.empty() || digits.size() > 4 || digits.find_first_not_of("0123456789") != std::string::npos)
      throw InputError("orientation \"" + text + "\": \"" + digits + "\" is not a number");
    values.push_back(std::stoi(digits));
    at = end + 1;
  }
  return values;
}

}  // namespace

PlanPtr parse_plan(std::string_view text, const Blocks& blocks) { return Parser(text, blocks).whole(); }

PlanPtr oriented(const PlanPtr& plan, const std::string& orientation) {
  if (orientation == "-") return plan;
  const std::vector<int> v = integers(orientation);
  const auto refuse = [&](const char* reason) { throw InputError("orientation \"" + orientation + "\": " + reason); };
  Plan changed = *plan;
  if (auto* link = std::get_if<GoodThomas>(&changed.form)) {
    if (v.size() != 3 || v[2] > 1) refuse("a Good-Thomas plan takes w,u,conjugate");
    if (std::gcd(v[0], link->first->length) != 1) refuse("w and the first length are not coprime");
    if (std::gcd(v[1], link->second->length) != 1) refuse("u and the second length are not coprime");
    link->w = v[0], link->u = v[1], link->conjugate = v[2] == 1;
  } else if (auto* block = std::get_if<Rader>(&changed.form)) {
    if (v.size() != 2) refuse("a Rader plan takes root,start");
    if (v[0] % plan->length == 0 || v[1] % plan->length == 0) refuse("zero modulo the prime");
    if (!is_primitive_root(v[0], plan->length)) refuse("the root is not primitive");
    block->root = v[0], block->start = v[1];
  } else {
    refuse("only Good-Thomas and Rader plans have one");
  }
  return std::make_shared<const Plan>(std::move(changed));
}

std::string method(const Plan& plan) {
  return std::visit(Overloaded{[](const Direct&) { return "pairs"; },
                               [&](const PowerOfTwo&) { return plan.length == 2 ? "butterfly" : "radix-2"; },
                               [](const Twiddled&) { return "twiddled"; },
                               [](const GoodThomas&) { return "Good-Thomas"; },
                               [](const Halves&) { return "Good-Thomas"; },
                               [](const Lanes&) { return "lanes"; },
                               [](const Rader&) { return "Rader"; }},
                    plan.form);
}

std::vector<int> nested_stage_order(const Plan& plan) {
  return std::visit(
      Overloaded{[&](const Direct&) { return std::vector{plan.length}; },
                 [&](const PowerOfTwo&) { return std::vector<int>(std::countr_zero(unsigned(plan.length)), 2); },
                 [](const Twiddled& t) { return joined(nested_stage_order(*t.first), nested_stage_order(*t.second)); },
                 [](const GoodThomas& t) { return joined(nested_stage_order(*t.first), nested_stage_order(*t.second)); },
                 [](const Lanes& l) { return nested_stage_order(*l.plan); },
                 [](const Halves& h) { return joined({2}, nested_stage_order(*h.even)); },
                 [&](const Rader&) { return std::vector{plan.length}; }},
      plan.form);
}

std::vector<int> stage_order(const Plan& plan) {
  const Rader* block = std::get_if<Rader>(&plan.form);
  return nested_stage_order(block ? *block->first : plan);
}

}  // namespace xfm::rdft
