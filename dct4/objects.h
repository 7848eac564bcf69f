// The records of a planned transform, as they lie in the caller's block.
//
// A length n is split as n = d*m: env5 (below env3) transforms the d columns of m, env4 (below env2) twiddles and
// synthesises m/2 groups of 2d. A column too long for one kernel is split once more, m = d'*m2, by an env7: its env9 does
// the d' transforms of m2, its env8 combines them. A member whose name ends in Again repeats another one.
//
// Everything an object reads while transforming stands in it; what it needs only to build its children stands there too.
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
  EnvList* stageOne;
  EnvList* stageTwo;
  void* scratch;  // n elements; null for a direct rule
  int32_t rule;
  int32_t radix;
  int32_t length;
};

struct Env2 {
  EnvHead head;
  EnvList* stageOne;
  void* buffer;
  int32_t rule;
  int32_t radix;
  int32_t length;
  int32_t span;
  int32_t rows;
  int32_t lengthAgain;
  int32_t wrap;
  int32_t cols;
  void* twiddle;
};

struct Env3 {
  EnvHead head;
  EnvList* stageOne;
  void* buffer;
  int32_t rule;
  int32_t cols;
  int32_t length;
  int32_t wrap;
  int32_t span;
  int32_t radix;
  int32_t lengthAgain;
  int32_t radixAgain;
};

struct Env4 {
  EnvHead head;
  void* table;
  int32_t rule;
  int32_t radix;
  int32_t length;
  int32_t span;
  int32_t vecSpan;
  int32_t chunks;
  int32_t lengthAgain;
  int32_t wrap;
  int32_t cols;
  void* twiddle;
};

struct Env5 {
  EnvHead head;
  EnvList* stageOne;
  void* buffer;
  int32_t rule;
  int32_t cols;
  int32_t length;
  int32_t wrap;
  int32_t span;
  int32_t vecRadix;
  int32_t lengthAgain;
  int32_t radix;
};

struct Env7 {
  EnvHead head;
  EnvList* stageOne;
  EnvList* stageTwo;
  void* scratch;  // n elements, whatever the local length
  int32_t rule;
  int32_t localLength;
  int32_t radix;
  int32_t outerA;
  int32_t outerB;
  int32_t outerSpan;
  int32_t outerLength;
  int32_t outerStride;
};

struct Env8 {
  EnvHead head;
  void* table;
  int32_t rule;
  int32_t radix;
  int32_t length;
  int32_t stride;
  int32_t doubleSpan;
  int32_t chunks;
  int32_t lengthAgain;
  int32_t halfLength;
  int32_t wrap;
  int32_t strideAgain;
  int32_t cols;
  void* twiddle;
};

struct Env9 {
  EnvHead head;
  EnvList* stageOne;
  void* buffer;
  int32_t rule;
  int32_t cols;
  int32_t outerA;
  int32_t outerB;
  int32_t span;
  int32_t outerSpan;
  int32_t radix;
  int32_t outerLength;
  int32_t stride;
  int32_t outerStride;
};

// A function object has `at` where an env object has its plan.
template <class Real>
struct FunctionHead {
  ObjectHead object;
  Real (*at)(const void* self, int32_t i, int32_t j, int32_t k);
  Arena* arena;
};

template <class Real>
struct FCompose {
  FunctionHead<Real> head;
  int32_t span;
  int32_t angleDiv;
  int32_t rows;
  int32_t radix;
  int32_t spanAgain;
};

template <class Real>
struct FSplit {
  FunctionHead<Real> head;
  int32_t span;
  int32_t chunks;
  FCompose<Real>* inner;
};

template <class Real>
struct Lambda {
  FunctionHead<Real> head;
  int32_t localLength;
  int32_t radix;
};

static_assert(sizeof(EnvList) == 24);
static_assert(sizeof(Env1) == 80 && sizeof(Env2) == 96 && sizeof(Env3) == 88 && sizeof(Env4) == 96);
static_assert(sizeof(Env5) == 88 && sizeof(Env7) == 96 && sizeof(Env8) == 104 && sizeof(Env9) == 96);
static_assert(sizeof(FCompose<float>) == 56 && sizeof(FSplit<float>) == 48 && sizeof(Lambda<float>) == 40);

}  // namespace xfm::dct4
