// Planning: a length becomes a tree of objects. A plan sets its rule, then constructs, attaches and plans its children,
// and stops at the first test that fails with all that stands so far still attached.
//
// Within an object's construction the arena is asked in this order: the object, the function object that goes with it,
// its stage lists, its list of children.
#pragma once

#include "dct4/tables.h"
#include "dct4/teardown.h"

extern "C" {
XFM_INTERNAL XfmStatus XFM_DCT4(env1_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env2_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env3_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env4_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env5_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env7_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env8_plan)(void* object);
XFM_INTERNAL XfmStatus XFM_DCT4(env9_plan)(void* object);
XFM_INTERNAL int32_t XFM_DCT4(env8__chooseRule)(int32_t radix, int32_t length, int32_t stride, int32_t doubleSpan, int32_t chunks,
                                           int32_t lengthAgain, int32_t halfLength, int32_t wrap, int32_t strideAgain,
                                           int32_t cols);
}

namespace xfm::dct4 {
namespace {

template <class Env>
Env* make_env(Arena* arena, void (*del)(void*), XfmStatus (*plan)(void*)) {
  Env* const env = static_cast<Env*>(xfmgArenaMalloc(arena, sizeof(Env)));
  env->head.object.__del__ = del;
  env->head.object.size = sizeof(Env);
  env->head.plan = plan;
  env->head.arena = arena;
  env->head.children = nullptr;
  env->rule = 0;
  return env;
}

template <class Function>
Function* make_function(Arena* arena, Real (*at)(const void*, int32_t, int32_t, int32_t)) {
  Function* const function = static_cast<Function*>(xfmgArenaMalloc(arena, sizeof(Function)));
  function->head.object.__del__ = XFM_DCT4(envfunction___del__);
  function->head.object.size = sizeof(Function);
  function->head.at = at;
  function->head.arena = arena;
  return function;
}

inline EnvList* make_list(Arena* arena) {
  return EnvList___init__(static_cast<EnvList*>(xfmgArenaMalloc(arena, sizeof(EnvList))), arena);
}

inline XfmStatus plan_first(const EnvList* stage) {
  void* const env = EnvList_get(stage, 0);
  return static_cast<EnvHead*>(env)->plan(env) == xfmStatusOk ? xfmStatusOk : xfmStatusSizeError;
}

inline void attach(EnvList* children, EnvList* stage, void* env) { EnvList_add(stage, EnvList_add(children, env)); }

inline void construct_env2(Env1* root) {
  Arena* const arena = root->head.arena;
  const int32_t n = root->length, d = root->radix;
  Env2* const env = make_env<Env2>(arena, XFM_DCT4(env2___del__), XFM_DCT4(env2_plan));
  auto* const compose = make_function<FCompose<Real>>(arena, XFM_DCT4(envfCompose_at));
  compose->span = 2 * d;
  compose->angleDiv = product(8, n);
  compose->rows = n / (2 * d);
  compose->radix = d;
  compose->spanAgain = 2 * d;
  env->buffer = nullptr;
  env->radix = d;
  env->length = n;
  env->span = 2 * d;
  env->rows = n / (2 * d);
  env->lengthAgain = n;
  env->wrap = reflection(n);
  env->cols = n / d;
  env->twiddle = compose;
  env->stageOne = make_list(arena);
  env->head.children = make_list(arena);
  EnvList_add(root->head.children, compose);
  attach(root->head.children, root->stageOne, env);
}

inline void construct_env3(Env1* root) {
  Arena* const arena = root->head.arena;
  const int32_t n = root->length, d = root->radix;
  Env3* const env = make_env<Env3>(arena, XFM_DCT4(env3___del__), XFM_DCT4(env3_plan));
  env->buffer = nullptr;
  env->cols = n / d;
  env->length = n;
  env->wrap = reflection(n);
  env->span = 2 * d;
  env->radix = d;
  env->lengthAgain = n;
  env->radixAgain = d;
  env->stageOne = make_list(arena);
  env->head.children = make_list(arena);
  attach(root->head.children, root->stageTwo, env);
}

inline void construct_env4(Env2* parent) {
  Arena* const arena = parent->head.arena;
  Env4* const env = make_env<Env4>(arena, XFM_DCT4(env4___del__), XFM_DCT4(env4_plan));
  auto* const split = make_function<FSplit<Real>>(arena, XFM_DCT4(envfsplit_at));
  split->span = parent->span;
  split->chunks = parent->rows / Precision::kLanes;
  split->inner = static_cast<FCompose<Real>*>(parent->twiddle);
  env->table = nullptr;
  env->radix = parent->radix;
  env->length = parent->length;
  env->span = parent->span;
  env->vecSpan = parent->span * Precision::kLanes;
  env->chunks = parent->rows / Precision::kLanes;
  env->lengthAgain = parent->length;
  env->wrap = parent->wrap;
  env->cols = parent->cols;
  env->twiddle = split;
  env->head.children = make_list(arena);
  EnvList_add(parent->head.children, split);
  attach(parent->head.children, parent->stageOne, env);
}

inline void construct_env5(Env3* parent) {
  Arena* const arena = parent->head.arena;
  Env5* const env = make_env<Env5>(arena, XFM_DCT4(env5___del__), XFM_DCT4(env5_plan));
  env->buffer = nullptr;
  env->cols = parent->cols;
  env->length = parent->length;
  env->wrap = parent->wrap;
  env->span = parent->span;
  env->vecRadix = parent->radix / Precision::kLanes;
  env->lengthAgain = parent->lengthAgain;
  env->radix = parent->radix;
  env->stageOne = make_list(arena);
  env->head.children = make_list(arena);
  attach(parent->head.children, parent->stageOne, env);
}

// What an env7 learns from its parent, an env5 or an env9.
struct Outer {
  int32_t a, b, span, length, stride;
};

template <class Env>
XfmStatus plan_split(Env* parent, const Outer& outer) {
  Arena* const arena = parent->head.arena;
  Env7* const env = make_env<Env7>(arena, XFM_DCT4(env7___del__), XFM_DCT4(env7_plan));
  env->scratch = nullptr;
  env->localLength = parent->cols;
  env->radix = 0;
  env->outerA = outer.a;
  env->outerB = outer.b;
  env->outerSpan = outer.span;
  env->outerLength = outer.length;
  env->outerStride = outer.stride;
  env->stageOne = make_list(arena);
  env->stageTwo = make_list(arena);
  env->head.children = make_list(arena);
  attach(parent->head.children, parent->stageOne, env);
  return plan_first(parent->stageOne);
}

inline void construct_env8(Env7* parent) {
  Arena* const arena = parent->head.arena;
  const int32_t m = parent->localLength, d = parent->radix;
  Env8* const env = make_env<Env8>(arena, XFM_DCT4(env8___del__), XFM_DCT4(env8_plan));
  auto* const lambda = make_function<Lambda<Real>>(arena, XFM_DCT4(envlambda_at));
  lambda->localLength = m;
  lambda->radix = d;
  env->table = nullptr;
  env->radix = d;
  env->length = parent->outerLength;
  env->stride = parent->outerStride;
  env->doubleSpan = product(2 * d, parent->outerStride);
  env->chunks = m / (2 * d);
  env->lengthAgain = parent->outerLength;
  env->halfLength = m / 2;
  env->wrap = m - 1;
  env->strideAgain = parent->outerStride;
  env->cols = m / d;
  env->twiddle = lambda;
  env->head.children = make_list(arena);
  EnvList_add(parent->head.children, lambda);
  attach(parent->head.children, parent->stageOne, env);
}

inline void construct_env9(Env7* parent) {
  Arena* const arena = parent->head.arena;
  const int32_t d = parent->radix;
  Env9* const env = make_env<Env9>(arena, XFM_DCT4(env9___del__), XFM_DCT4(env9_plan));
  env->buffer = nullptr;
  env->cols = parent->localLength / d;
  env->outerA = parent->outerA;
  env->outerB = parent->outerB;
  env->span = product(d, parent->outerSpan);
  env->outerSpan = parent->outerSpan;
  env->radix = d;
  env->outerLength = parent->outerLength;
  env->stride = product(d, parent->outerStride);
  env->outerStride = parent->outerStride;
  env->stageOne = make_list(arena);
  env->head.children = make_list(arena);
  attach(parent->head.children, parent->stageTwo, env);
}

}  // namespace
}  // namespace xfm::dct4

extern "C" {

XfmStatus XFM_DCT4(env1_plan)(void* object) {
  using namespace xfm::dct4;
  Env1* const self = static_cast<Env1*>(object);
  self->rule = root_rule<Precision>(self->length);
  if (self->rule != kRootGeneral<Precision>) {
    self->scratch = nullptr;
    return xfmStatusOk;
  }
  if (divisorsIntNonTriv(&self->radix, self->length / 2) != xfmStatusOk) return xfmStatusSizeError;
  construct_env2(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  construct_env3(self);
  if (plan_first(self->stageTwo) != xfmStatusOk) return xfmStatusSizeError;
  self->scratch = xfmgArenaMalloc(self->head.arena, element_bytes<Precision>(self->length));
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env2_plan)(void* object) {
  using namespace xfm::dct4;
  Env2* const self = static_cast<Env2*>(object);
  self->rule = self->rows % Precision::kLanes == 0 ? 1 : 0;
  if (self->rule == 0) return xfmStatusSizeError;
  construct_env4(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  self->buffer = nullptr;
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env3_plan)(void* object) {
  using namespace xfm::dct4;
  Env3* const self = static_cast<Env3*>(object);
  self->rule = self->radix % Precision::kLanes == 0 ? 1 : 0;
  if (self->rule == 0) return xfmStatusSizeError;
  construct_env5(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  self->buffer = nullptr;
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env4_plan)(void* object) {
  using namespace xfm::dct4;
  Env4* const self = static_cast<Env4*>(object);
  self->rule = synthesis_rule(self->radix);
  if (self->rule == 0) return xfmStatusSizeError;
  self->table = xfmgArenaMalloc(self->head.arena, synthesis_table_bytes(self->rule, self->chunks));
  fill_synthesis_table(self);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env5_plan)(void* object) {
  using namespace xfm::dct4;
  Env5* const self = static_cast<Env5*>(object);
  self->rule = part_rule(self->cols);
  if (self->rule == kPartGeneral) {
    const Outer outer = {self->length, self->length, self->span, self->length, self->radix};
    if (plan_split(self, outer) != xfmStatusOk) return xfmStatusSizeError;
  }
  self->buffer = nullptr;
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env7_plan)(void* object) {
  using namespace xfm::dct4;
  Env7* const self = static_cast<Env7*>(object);
  self->rule = 1;
  if (divisorsIntNonTriv(&self->radix, self->localLength / 2) != xfmStatusOk) return xfmStatusSizeError;
  construct_env8(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  construct_env9(self);
  if (plan_first(self->stageTwo) != xfmStatusOk) return xfmStatusSizeError;
  self->scratch = xfmgArenaMalloc(self->head.arena, element_bytes<Precision>(self->outerLength));
  return xfmStatusOk;
}

int32_t XFM_DCT4(env8__chooseRule)(int32_t radix, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                   int32_t) {
  return xfm::dct4::combine_rule(radix);
}

XfmStatus XFM_DCT4(env8_plan)(void* object) {
  using namespace xfm::dct4;
  Env8* const self = static_cast<Env8*>(object);
  self->rule = XFM_DCT4(env8__chooseRule)(self->radix, self->length, self->stride, self->doubleSpan, self->chunks,
                                          self->lengthAgain, self->halfLength, self->wrap, self->strideAgain, self->cols);
  if (self->rule == 0) return xfmStatusSizeError;
  self->table = xfmgArenaMalloc(self->head.arena, combine_table_bytes(self->radix, self->chunks));
  fill_combine_table(self);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env9_plan)(void* object) {
  using namespace xfm::dct4;
  Env9* const self = static_cast<Env9*>(object);
  self->rule = part_rule(self->cols);
  if (self->rule == kPartGeneral) {
    const Outer outer = {self->outerA, self->outerB, self->span, self->outerLength, self->stride};
    if (plan_split(self, outer) != xfmStatusOk) return xfmStatusSizeError;
  }
  self->buffer = nullptr;
  return xfmStatusOk;
}
}
