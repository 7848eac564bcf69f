// The records of a planned transform, as they lie in the caller's block.
//
// A length n is split as n = d*m: env5 (below env3) transforms the d columns of m, env4 (below env2) twiddles and
// synthesises m/2 groups of 2d. A column too long for one kernel is split once more, m = d'*m2, by an env7: its env9 does
// the d' transforms of m2, its env8 combines them.
//
//   env1   the root: a kernel of its own (a direct rule), or env3 and then env2
//   env2   groups, with env4                        env3   columns, with env5
//   env4   twiddles and syntheses of the groups     env5   transforms of the columns
//   env7   a split of the columns: env9, then env8
//   env8   combines the parts of a split            env9   transforms the parts of a split
//
// The names of classes and members, their order, sizes and meaning, and the names and arguments of the functions in
// entries_*.h are the library's binary interface: hence members that repeat another one (..Again), that no function reads
// after the planning, and arguments without use.
#pragma once

#include <stdint.h>

#include "src/owngenautolib.h"
#include "xfm.h"

namespace xfm::dct4 {

struct EnvHead {
  ObjectHead object;
  XfmStatus (*plan)(void* self);
  Arena* arena;
  EnvList* children;  // owns them
};

struct Env1 {
  EnvHead head;
  EnvList* stageOne;  // env2
  EnvList* stageTwo;  // env3, which runs first
  void* scratch;      // n elements: bins of the columns; null for a direct rule
  int32_t rule;
  int32_t radix;      // d; not set for a direct rule
  int32_t length;     // n
};

struct Env2 {
  EnvHead head;
  EnvList* stageOne;    // env4
  void* buffer;         // null: no bytes
  int32_t rule;
  int32_t radix;        // d
  int32_t length;       // n
  int32_t span;         // 2d
  int32_t rows;         // n / 2d: groups
  int32_t lengthAgain;
  int32_t wrap;         // 2n - 1: a position k from n on stands for wrap - k
  int32_t cols;         // m = n/d
  void* twiddle;        // fCompose
};

struct Env3 {
  EnvHead head;
  EnvList* stageOne;    // env5
  void* buffer;         // null
  int32_t rule;
  int32_t cols;         // m
  int32_t length;       // n
  int32_t wrap;         // 2n - 1
  int32_t span;         // 2d
  int32_t radix;        // d
  int32_t lengthAgain;
  int32_t radixAgain;
};

struct Env4 {
  EnvHead head;
  void* table;
  int32_t rule;
  int32_t radix;        // d
  int32_t length;       // n
  int32_t span;         // 2d
  int32_t vecSpan;      // 2dV
  int32_t chunks;       // vectors of groups
  int32_t lengthAgain;
  int32_t wrap;         // 2n - 1
  int32_t cols;         // m
  void* twiddle;        // fsplit
};

struct Env5 {
  EnvHead head;
  EnvList* stageOne;    // env7 for the general rule, else empty
  void* buffer;         // null
  int32_t rule;
  int32_t cols;         // m
  int32_t length;       // n
  int32_t wrap;         // 2n - 1
  int32_t span;         // 2d: from one sample of a column to the next but one
  int32_t vecRadix;     // d/V: vectors of columns
  int32_t lengthAgain;
  int32_t radix;        // d
};

struct Env7 {
  EnvHead head;
  EnvList* stageOne;    // env8
  EnvList* stageTwo;    // env9, which runs first
  void* scratch;        // n elements, whatever the local length
  int32_t rule;
  int32_t localLength;  // m at this level
  int32_t radix;        // d'
  int32_t outerA;       // n
  int32_t outerB;       // n
  int32_t outerSpan;    // between samples of a column at this level
  int32_t outerLength;  // n
  int32_t outerStride;  // between rows at this level: d times the radices above
};

struct Env8 {
  EnvHead head;
  void* table;
  int32_t rule;
  int32_t radix;        // d'
  int32_t length;       // n
  int32_t stride;       // between rows
  int32_t doubleSpan;   // 2d' rows
  int32_t chunks;       // values of h: m / 2d'
  int32_t lengthAgain;
  int32_t halfLength;   // m/2
  int32_t wrap;         // m - 1
  int32_t strideAgain;
  int32_t cols;         // m2 = m/d'
  void* twiddle;        // lambda
};

struct Env9 {
  EnvHead head;
  EnvList* stageOne;    // a further env7 for the general rule, else empty
  void* buffer;         // null
  int32_t rule;
  int32_t cols;         // m2
  int32_t outerA;       // n
  int32_t outerB;       // n
  int32_t span;         // between samples of a part
  int32_t outerSpan;    // from one part to the next
  int32_t radix;        // d'
  int32_t outerLength;  // n
  int32_t stride;       // between rows of a part
  int32_t outerStride;
};

// A function object has `at` where an env object has its plan.
template <class Real>
struct FunctionHead {
  ObjectHead object;
  Real (*at)(const void* self, int32_t i, int32_t j, int32_t k);
  Arena* arena;
};

// The twiddle between columns and groups, by group and column.
template <class Real>
struct FCompose {
  FunctionHead<Real> head;
  int32_t span;        // 2d
  int32_t angleDiv;    // 8n
  int32_t rows;        // n / 2d
  int32_t radix;       // d
  int32_t spanAgain;
};

// The same by chunk, lane and row of the table.
template <class Real>
struct FSplit {
  FunctionHead<Real> head;
  int32_t span;        // 2d
  int32_t chunks;
  FCompose<Real>* inner;
};

// The angle of a combining step, by h.
template <class Real>
struct Lambda {
  FunctionHead<Real> head;
  int32_t localLength;  // m
  int32_t radix;        // d'
};

static_assert(sizeof(EnvList) == 24);
static_assert(sizeof(Env1) == 80 && sizeof(Env2) == 96 && sizeof(Env3) == 88 && sizeof(Env4) == 96);
static_assert(sizeof(Env5) == 88 && sizeof(Env7) == 96 && sizeof(Env8) == 104 && sizeof(Env9) == 96);
static_assert(sizeof(FCompose<float>) == 56 && sizeof(FSplit<float>) == 48 && sizeof(Lambda<float>) == 40);

}  // namespace xfm::dct4
