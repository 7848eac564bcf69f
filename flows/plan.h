// Plans: how a length is divided into blocks, read from the notation of the tables.
//
//   7                 a block of that length: a butterfly of 2, 4 or 8 points, or an odd prime by its definition
//   A ct B            Cooley-Tukey link: B blocks of length A, twiddles, A blocks of length B
//   A pf B            Good-Thomas link (A and B coprime): the same without twiddles
//   rader(A; B)       Rader's method on half spectra at the prime length A + 1: A first, B read as a forward plan and run
//                     transposed
//   rader(A)          Rader's method on complex data: A first, A read backwards on the way back
//   chirp(N; A)       the chirp convolution for N points, by A on at least 2N - 1 points and back
//   R13a              a plan of the table of blocks by its name: a letter, its length, small letters
//
// Plans of half spectra have in addition
//
//   halves(E; O)      sums and differences of the halves first; even bins by the plan E of half the length, odd bins as in
//                     the plan O of the whole length
//   rows(P; Q; M)     second stage of a link: P where a row is real, Q where it is complex. The row at half the sampling
//                     rate of a ct is real times exp(-i*pi*j/b); its bins are the odd ones of M on twice the length. For
//                     M = turned it runs like a complex row; without M so does a row of even length, and one of odd length
//                     is a real row with alternating signs
//   apart(P)          where complex data meet it, P on real and imaginary parts apart, as all but links are worked
//
// Chains read from the left; parentheses group.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace xfm {

// Numbering that a transform leaves open: it changes neither additions nor multiplications, but the order of some sums and
// which values end negated. The elements of a Good-Thomas class are taken in steps of `element`, its classes in steps of
// `row`, and rows of half spectra may be worked as their conjugates. Rader's sequence is x[start * root^j], with the
// smallest primitive root where `root` is 0.
struct Numbering {
  int element = 1, row = 1;
  bool conjugate = false;
  int root = 0, start = 1;
};

struct Plan {
  enum class Kind { Block, CooleyTukey, GoodThomas, Rader, ComplexRader, Chirp, Halves, Rows, Apart, Turned };
  Kind kind = Kind::Block;
  int length = 1;
  std::vector<Plan> parts = {};
  std::string name = {};  // of a plan from the table of blocks
  Numbering numbering = {};

  bool link() const { return kind == Kind::CooleyTukey || kind == Kind::GoodThomas; }
  const Plan& first() const { return parts[0]; }
  const Plan& second() const { return parts[1]; }
  // What stands for a second stage in rows of either kind.
  const Plan& in_real_rows() const { return kind == Kind::Rows ? parts[0] : *this; }
  const Plan& in_complex_rows() const { return kind == Kind::Rows ? parts[1] : *this; }
};

using PlanBlocks = std::map<std::string, Plan, std::less<>>;

// Throws InputError with the text and the reason.
Plan parse_plan(const std::string& text, const PlanBlocks& blocks = {});
std::string to_text(const Plan& plan);
// The same stages read backwards: the plan of the transposed network.
Plan mirrored(const Plan& plan);
// The parts of a plan that have none themselves, from the left; those of a named block stay inside.
std::vector<const Plan*> leaves(const Plan& plan);
// With the numbering of its outermost stage: "element,row,conjugate" for a Good-Thomas link, "root,start" for Rader's
// method, "-" for the plain one. Throws InputError.
Plan numbered(Plan plan, const std::string& text);
// "1,2,3" as numbers; throws InputError, which names what they are.
std::vector<int> integers(const std::string& what, const std::string& text);

}  // namespace xfm
