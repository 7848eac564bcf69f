// Planning: a length becomes a tree of objects. A plan sets its rule, then constructs, attaches and plans its children,
// and stops at the first test that fails with all that stands so far still attached.
//
// An object is constructed in this order: its memory, then that of the function object that goes with it; its pointers
// null, so that it can be torn down at any time; its numbers; no rule; its stage lists and its list of children; its
// methods.
#pragma once

#include "dct4/tables.h"
#include "dct4/teardown.h"

namespace xfm::dct4 {
namespace {

template <class Env>
Env* make_env(Arena* arena) {
  Env* const env = static_cast<Env*>(xfmgArenaMalloc(arena, sizeof(Env)));
  env->head.object.size = sizeof(Env);
  env->head.arena = arena;
  env->head.children = nullptr;
  env->rule = kNoRule;
  return env;
}

template <class Env>
void set_methods(Env* env, void (*del)(void*), XfmStatus (*plan)(void*)) {
  env->head.object.__del__ = del;
  env->head.plan = plan;
}

template <class Function, class At>
Function* make_function(Arena* arena, void (*del)(void*), At at) {
  Function* const function = static_cast<Function*>(xfmgArenaMalloc(arena, sizeof(Function)));
  function->head.object.__del__ = del;
  function->head.object.size = sizeof(Function);
  function->head.at = at;
  function->head.arena = arena;
  return function;
}

inline EnvList* make_list(Arena* arena) {
  return EnvList___init__(static_cast<EnvList*>(xfmgArenaMalloc(arena, sizeof(EnvList))), arena);
}

// An object with one stage list and a work area of no bytes: env2, env3, env5, env9.
template <class Env>
Env* make_stage(Arena* arena) {
  Env* const env = make_env<Env>(arena);
  env->stageOne = nullptr;
  env->buffer = nullptr;
  return env;
}

// The lists that end the construction of an object with one stage.
template <class Env>
void make_stage_lists(Env* env) {
  env->stageOne = make_list(env->head.arena);
  env->head.children = make_list(env->head.arena);
}

inline XfmStatus plan_first(const EnvList* stage) {
  void* const env = EnvList_get(stage, 0);
  return static_cast<EnvHead*>(env)->plan(env) == xfmStatusOk ? xfmStatusOk : xfmStatusSizeError;
}

inline void attach(EnvList* children, EnvList* stage, void* env) { EnvList_add(stage, EnvList_add(children, env)); }

template <class P>
Env1* construct_root(Arena* arena, int32_t length) {
  Env1* const root = make_env<Env1>(arena);
  root->stageOne = nullptr;
  root->stageTwo = nullptr;
  root->scratch = nullptr;
  root->length = length;
  root->stageOne = make_list(arena);
  root->stageTwo = make_list(arena);
  root->head.children = make_list(arena);
  set_methods(root, Entries<P>::env1_del, Entries<P>::env1_plan);
  return root;
}

template <class P>
void construct_env2(Env1* root) {
  using Compose = FCompose<typename P::Real>;
  Arena* const arena = root->head.arena;
  const int32_t n = root->length, d = root->radix;
  Env2* const env = make_stage<Env2>(arena);
  auto* const compose = make_function<Compose>(arena, Entries<P>::compose_del, Entries<P>::compose_at);
  compose->span = 2 * d;
  compose->angleDiv = product(8, n);
  compose->rows = n / (2 * d);
  compose->radix = d;
  compose->spanAgain = 2 * d;
  env->radix = d;
  env->length = n;
  env->span = 2 * d;
  env->rows = n / (2 * d);
  env->lengthAgain = n;
  env->wrap = reflection(n);
  env->cols = n / d;
  env->twiddle = compose;
  make_stage_lists(env);
  set_methods(env, Entries<P>::env2_del, Entries<P>::env2_plan);
  EnvList_add(root->head.children, compose);
  attach(root->head.children, root->stageOne, env);
}

template <class P>
void construct_env3(Env1* root) {
  const int32_t n = root->length, d = root->radix;
  Env3* const env = make_stage<Env3>(root->head.arena);
  env->cols = n / d;
  env->length = n;
  env->wrap = reflection(n);
  env->span = 2 * d;
  env->radix = d;
  env->lengthAgain = n;
  env->radixAgain = d;
  make_stage_lists(env);
  set_methods(env, Entries<P>::env3_del, Entries<P>::env3_plan);
  attach(root->head.children, root->stageTwo, env);
}

template <class P>
void construct_env4(Env2* parent) {
  using Compose = FCompose<typename P::Real>;
  using Split = FSplit<typename P::Real>;
  Arena* const arena = parent->head.arena;
  Env4* const env = make_env<Env4>(arena);
  env->table = nullptr;
  auto* const split = make_function<Split>(arena, Entries<P>::split_del, Entries<P>::split_at);
  split->span = parent->span;
  split->chunks = parent->rows / P::kLanes;
  split->inner = static_cast<Compose*>(parent->twiddle);
  env->radix = parent->radix;
  env->length = parent->length;
  env->span = parent->span;
  env->vecSpan = parent->span * P::kLanes;
  env->chunks = parent->rows / P::kLanes;
  env->lengthAgain = parent->lengthAgain;
  env->wrap = parent->wrap;
  env->cols = parent->cols;
  env->twiddle = split;
  env->head.children = make_list(arena);
  set_methods(env, Entries<P>::env4_del, Entries<P>::env4_plan);
  EnvList_add(parent->head.children, split);
  attach(parent->head.children, parent->stageOne, env);
}

template <class P>
void construct_env5(Env3* parent) {
  Env5* const env = make_stage<Env5>(parent->head.arena);
  env->cols = parent->cols;
  env->length = parent->length;
  env->wrap = parent->wrap;
  env->span = parent->span;
  env->vecRadix = parent->radix / P::kLanes;
  env->lengthAgain = parent->lengthAgain;
  env->radix = parent->radix;
  make_stage_lists(env);
  set_methods(env, Entries<P>::env5_del, Entries<P>::env5_plan);
  attach(parent->head.children, parent->stageOne, env);
}

// What an env7 learns from its parent, an env5 or an env9.
struct Outer {
  int32_t a, b, span, length, stride;
};

// The env7 of a column too long for a kernel.
template <class P, class Env>
XfmStatus plan_split_of(Env* parent, const Outer& outer) {
  Arena* const arena = parent->head.arena;
  Env7* const env = make_env<Env7>(arena);
  env->stageOne = nullptr;
  env->stageTwo = nullptr;
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
  set_methods(env, Entries<P>::env7_del, Entries<P>::env7_plan);
  attach(parent->head.children, parent->stageOne, env);
  return plan_first(parent->stageOne);
}

template <class P>
void construct_env8(Env7* parent) {
  using Angle = Lambda<typename P::Real>;
  Arena* const arena = parent->head.arena;
  const int32_t m = parent->localLength, d = parent->radix;
  Env8* const env = make_env<Env8>(arena);
  env->table = nullptr;
  auto* const lambda = make_function<Angle>(arena, Entries<P>::lambda_del, Entries<P>::lambda_at);
  lambda->localLength = m;
  lambda->radix = d;
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
  set_methods(env, Entries<P>::env8_del, Entries<P>::env8_plan);
  EnvList_add(parent->head.children, lambda);
  attach(parent->head.children, parent->stageOne, env);
}

template <class P>
void construct_env9(Env7* parent) {
  const int32_t d = parent->radix;
  Env9* const env = make_stage<Env9>(parent->head.arena);
  env->cols = parent->localLength / d;
  env->outerA = parent->outerA;
  env->outerB = parent->outerB;
  env->span = product(d, parent->outerSpan);
  env->outerSpan = parent->outerSpan;
  env->radix = d;
  env->outerLength = parent->outerLength;
  env->stride = product(d, parent->outerStride);
  env->outerStride = parent->outerStride;
  make_stage_lists(env);
  set_methods(env, Entries<P>::env9_del, Entries<P>::env9_plan);
  attach(parent->head.children, parent->stageTwo, env);
}

template <class P>
XfmStatus plan_root(Env1* self) {
  self->rule = root_rule<P>(self->length);
  if (self->rule != kRootGeneral<P>) {
    self->scratch = nullptr;
    return xfmStatusOk;
  }
  if (divisorsIntNonTriv(&self->radix, self->length / 2) != xfmStatusOk) return xfmStatusSizeError;
  construct_env2<P>(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  construct_env3<P>(self);
  if (plan_first(self->stageTwo) != xfmStatusOk) return xfmStatusSizeError;
  self->scratch = xfmgArenaMalloc(self->head.arena, element_bytes<P>(self->length));
  return xfmStatusOk;
}

// env2 and env3: whole vectors of what they hand down, else no rule.
template <class P, class Env>
XfmStatus plan_whole_vectors(Env* self, int32_t count, void (*construct)(Env*)) {
  self->rule = count % P::kLanes == 0 ? kPlanned : kNoRule;
  if (self->rule == kNoRule) return xfmStatusSizeError;
  construct(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  self->buffer = nullptr;
  return xfmStatusOk;
}

template <class P>
XfmStatus plan_groups(Env2* self) {
  return plan_whole_vectors<P>(self, self->rows, construct_env4<P>);
}

template <class P>
XfmStatus plan_stage_one(Env3* self) {
  return plan_whole_vectors<P>(self, self->radix, construct_env5<P>);
}

template <class P>
XfmStatus plan_synthesis(Env4* self) {
  self->rule = synthesis_rule(self->radix);
  if (self->rule == kNoRule) return xfmStatusSizeError;
  self->table = xfmgArenaMalloc(self->head.arena, synthesis_table_bytes(self->rule, self->chunks));
  fill_synthesis_table<P>(self);
  return xfmStatusOk;
}

// env5 and env9.
template <class P, class Env>
XfmStatus plan_part(Env* self, const Outer& outer) {
  self->rule = part_rule(self->cols);
  if (self->rule == kPartGeneral && plan_split_of<P>(self, outer) != xfmStatusOk) return xfmStatusSizeError;
  self->buffer = nullptr;
  return xfmStatusOk;
}

template <class P>
XfmStatus plan_columns(Env5* self) {
  return plan_part<P>(self, {self->length, self->length, self->span, self->length, self->radix});
}

template <class P>
XfmStatus plan_parts(Env9* self) {
  return plan_part<P>(self, {self->outerA, self->outerB, self->span, self->outerLength, self->stride});
}

template <class P>
XfmStatus plan_split(Env7* self) {
  self->rule = kPlanned;
  if (divisorsIntNonTriv(&self->radix, self->localLength / 2) != xfmStatusOk) return xfmStatusSizeError;
  construct_env8<P>(self);
  if (plan_first(self->stageOne) != xfmStatusOk) return xfmStatusSizeError;
  construct_env9<P>(self);
  if (plan_first(self->stageTwo) != xfmStatusOk) return xfmStatusSizeError;
  self->scratch = xfmgArenaMalloc(self->head.arena, element_bytes<P>(self->outerLength));
  return xfmStatusOk;
}

template <class P>
XfmStatus plan_combination(Env8* self) {
  self->rule = Entries<P>::env8_choose_rule(self->radix, self->length, self->stride, self->doubleSpan, self->chunks,
                                            self->lengthAgain, self->halfLength, self->wrap, self->strideAgain, self->cols);
  if (self->rule == kNoRule) return xfmStatusSizeError;
  self->table = xfmgArenaMalloc(self->head.arena, combine_table_bytes(self->radix, self->chunks));
  fill_combine_table<P>(self);
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4
