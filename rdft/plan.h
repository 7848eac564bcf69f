// Plans of the real transforms: which stages a length is broken into.
//
//   5            pairs, the direct form of an odd prime
//   8            radix-2 on real data; 32* splits its odd bins otherwise (see PowerOfTwo)
//   A tw B       A-point transforms, rotations, B-point transforms
//   A gt B       Good-Thomas, A and B coprime; `A gt B / C` works the complex bins of A by C instead of B
//   [A]          like A, but where complex data meet it, it works their real and imaginary parts apart
//   {E | O}      sums and differences of x[n], x[n+N/2]; even bins by the plan E, odd bins by the odd plan O
//   p{A | E | O} Rader over L = p-1: first transform A, second the transpose of E for even and of O for odd bins
//   13a          a named block of real_blocks.tsv
//
// An odd plan gives the odd bins of a length L = 2^k B from L/2 values d with d[n+L/2] = -d[n]:
//
//   16           the odd bins of a power of two
//   4 gt A       Good-Thomas of the odd bins of a power of two and a plan of odd length
//   O tw A       classes n mod A, each by the odd plan O, rotations, complex A-point transforms; `O tw A / M`
//                works the real middle bin of the classes by the odd plan M
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace xfm::rdft {

struct Plan;
struct OddPlan;
using PlanPtr = std::shared_ptr<const Plan>;
using OddPlanPtr = std::shared_ptr<const OddPlan>;

// How the odd bins of 32 and 64 points and complex 16 points are split: always into four classes, or 32 into eight
// classes, 64 into two, and complex 16 points into 2 by 8.
enum class Split { Fours, Mixed };

struct Direct {};
struct PowerOfTwo {
  Split split = Split::Fours;
};
struct Twiddled {
  PlanPtr first, second;
};
// The class elements are taken in the order w*n1, the classes in the order u*n2; with `conjugate` the bins -m of the
// first stage are carried instead of m. This settles which imaginary parts end negated, and in which order some sums are made.
struct GoodThomas {
  PlanPtr first, second, complex_second;
  int w = 1, u = 1;
  bool conjugate = false;
};
struct Lanes {
  PlanPtr plan;
};
struct Halves {
  PlanPtr even;
  OddPlanPtr odd;
};
// The sequence is x[start * root^j]; root 0 stands for the smallest primitive root.
struct Rader {
  PlanPtr first, even;
  OddPlanPtr odd;
  int root = 0, start = 1;
};

struct Plan {
  int length;
  std::variant<Direct, PowerOfTwo, Twiddled, GoodThomas, Lanes, Halves, Rader> form;
};

struct OddPower {};
struct OddGoodThomas {
  int power;
  PlanPtr second;
};
struct OddTwiddled {
  OddPlanPtr classes;
  PlanPtr second;
  OddPlanPtr middle;
};

struct OddPlan {
  int length;  // L; the plan takes L/2 values
  std::variant<OddPower, OddGoodThomas, OddTwiddled> form;
};

using Blocks = std::map<std::string, PlanPtr, std::less<>>;

// Reads a plan; throws InputError with the reason and the place in the text.
PlanPtr parse_plan(std::string_view text, const Blocks& blocks);
// "w,u,conjugate" for a Good-Thomas plan, "root,start" for a Rader plan, "-" for neither.
PlanPtr oriented(const PlanPtr& plan, const std::string& orientation);

// The name of the method of the outermost link, and the radices from the input side. Inside another plan a Rader block
// is its prime; at the root it is the order of its first transform.
std::string method(const Plan& plan);
std::vector<int> stage_order(const Plan& plan);
std::vector<int> nested_stage_order(const Plan& plan);

// Visits a variant with one function for each alternative.
template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};

}  // namespace xfm::rdft
