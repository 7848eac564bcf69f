// The C functions of the DCT-IV in double precision. Names and arguments are the library's binary interface; the
// bodies are the templates of the other headers. The transform holds tests, dispatch and straight-line lengths in one
// function.
#pragma once

#include "dct4/compute.h"
#include "dct4/lifecycle.h"

namespace xfm::dct4 {

extern "C" {

XFM_INTERNAL void owngDCT4_64fg9_env1___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env2___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env3___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env4___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env5___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env7___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env8___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_env9___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_envfCompose___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_envfsplit___del__(void* self);
XFM_INTERNAL void owngDCT4_64fg9_envlambda___del__(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env1_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env2_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env3_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env4_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env5_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env7_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env8_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env9_plan(void* self);
XFM_INTERNAL int32_t owngDCT4_64fg9_env8__chooseRule(int32_t radix, int32_t length, int32_t stride, int32_t doubleSpan,
                                                    int32_t chunks, int32_t lengthAgain, int32_t halfLength,
                                                    int32_t wrap, int32_t strideAgain, int32_t cols);
XFM_INTERNAL double owngDCT4_64fg9_envfCompose_at(const void* self, int32_t i, int32_t j, int32_t k);
XFM_INTERNAL double owngDCT4_64fg9_envfsplit_at(const void* self, int32_t i, int32_t j, int32_t k);
XFM_INTERNAL double owngDCT4_64fg9_envlambda_at(const void* self, int32_t i, int32_t j, int32_t k);

// The generic call of a function object; integers that its `at` has no use for are ignored there. All are handed on,
// whatever the compiler knows of their values.
[[gnu::noipa]] static double owng_TFunc_IIIR_at(const void* function, int32_t i, int32_t j, int32_t k) {
  return static_cast<const FunctionHead<double>*>(function)->at(function, i, j, k);
}

XFM_INTERNAL int32_t owngDCT4_64fg9_env5_mem(int32_t cols, int32_t length, int32_t wrap, int32_t span, int32_t vecRadix,
                                         int32_t lengthAgain, int32_t radix);
XFM_INTERNAL int32_t owngDCT4_64fg9_env9_mem(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t outerSpan,
                                         int32_t radix, int32_t outerLength, int32_t stride, int32_t outerStride);
}

template <>
struct Entries<Double> : StageFunctions<double> {
  static constexpr auto env1_del = owngDCT4_64fg9_env1___del__;
  static constexpr auto env2_del = owngDCT4_64fg9_env2___del__;
  static constexpr auto env3_del = owngDCT4_64fg9_env3___del__;
  static constexpr auto env4_del = owngDCT4_64fg9_env4___del__;
  static constexpr auto env5_del = owngDCT4_64fg9_env5___del__;
  static constexpr auto env7_del = owngDCT4_64fg9_env7___del__;
  static constexpr auto env8_del = owngDCT4_64fg9_env8___del__;
  static constexpr auto env9_del = owngDCT4_64fg9_env9___del__;
  static constexpr auto compose_del = owngDCT4_64fg9_envfCompose___del__;
  static constexpr auto split_del = owngDCT4_64fg9_envfsplit___del__;
  static constexpr auto lambda_del = owngDCT4_64fg9_envlambda___del__;
  static constexpr auto env1_plan = owngDCT4_64fg9_env1_plan;
  static constexpr auto env2_plan = owngDCT4_64fg9_env2_plan;
  static constexpr auto env3_plan = owngDCT4_64fg9_env3_plan;
  static constexpr auto env4_plan = owngDCT4_64fg9_env4_plan;
  static constexpr auto env5_plan = owngDCT4_64fg9_env5_plan;
  static constexpr auto env7_plan = owngDCT4_64fg9_env7_plan;
  static constexpr auto env8_plan = owngDCT4_64fg9_env8_plan;
  static constexpr auto env9_plan = owngDCT4_64fg9_env9_plan;
  static constexpr auto env8_choose_rule = owngDCT4_64fg9_env8__chooseRule;
  static constexpr auto compose_at = owngDCT4_64fg9_envfCompose_at;
  static constexpr auto split_at = owngDCT4_64fg9_envfsplit_at;
  static constexpr auto lambda_at = owngDCT4_64fg9_envlambda_at;
  static constexpr auto function_at = owng_TFunc_IIIR_at;
  static constexpr auto env5_mem = owngDCT4_64fg9_env5_mem;
  static constexpr auto env9_mem = owngDCT4_64fg9_env9_mem;
  static constexpr auto get_size = xfmgDCT4GetSize_64f;
  static constexpr auto init = xfmgDCT4Init_64f;
};

extern "C" {

void owngDCT4_64fg9_env1___del__(void* self) { delete_root_parts<Double>(static_cast<Env1*>(self)); }
void owngDCT4_64fg9_env2___del__(void* self) { delete_stage(static_cast<Env2*>(self), kPlanned); }
void owngDCT4_64fg9_env3___del__(void* self) { delete_stage(static_cast<Env3*>(self), kPlanned); }
void owngDCT4_64fg9_env4___del__(void* self) { delete_synthesis(static_cast<Env4*>(self)); }
void owngDCT4_64fg9_env5___del__(void* self) { delete_stage(static_cast<Env5*>(self), kPartGeneral); }
void owngDCT4_64fg9_env7___del__(void* self) { delete_split<Double>(static_cast<Env7*>(self)); }
void owngDCT4_64fg9_env8___del__(void* self) { delete_combination(static_cast<Env8*>(self)); }
void owngDCT4_64fg9_env9___del__(void* self) { delete_stage(static_cast<Env9*>(self), kPartGeneral); }
void owngDCT4_64fg9_envfCompose___del__(void*) {}
void owngDCT4_64fg9_envfsplit___del__(void*) {}
void owngDCT4_64fg9_envlambda___del__(void*) {}

XfmStatus owngDCT4_64fg9_env1_plan(void* self) { return plan_root<Double>(static_cast<Env1*>(self)); }
XfmStatus owngDCT4_64fg9_env2_plan(void* self) { return plan_groups<Double>(static_cast<Env2*>(self)); }
XfmStatus owngDCT4_64fg9_env3_plan(void* self) { return plan_stage_one<Double>(static_cast<Env3*>(self)); }
XfmStatus owngDCT4_64fg9_env4_plan(void* self) { return plan_synthesis<Double>(static_cast<Env4*>(self)); }
XfmStatus owngDCT4_64fg9_env5_plan(void* self) { return plan_columns<Double>(static_cast<Env5*>(self)); }
XfmStatus owngDCT4_64fg9_env7_plan(void* self) { return plan_split<Double>(static_cast<Env7*>(self)); }
XfmStatus owngDCT4_64fg9_env8_plan(void* self) { return plan_combination<Double>(static_cast<Env8*>(self)); }
XfmStatus owngDCT4_64fg9_env9_plan(void* self) { return plan_parts<Double>(static_cast<Env9*>(self)); }

int32_t owngDCT4_64fg9_env8__chooseRule(int32_t radix, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                       int32_t, int32_t) {
  return combine_rule(radix);
}

double owngDCT4_64fg9_envfCompose_at(const void* self, int32_t i, int32_t j, int32_t) {
  return compose_at<Double>(static_cast<const FCompose<double>*>(self), i, j);
}
double owngDCT4_64fg9_envfsplit_at(const void* self, int32_t i, int32_t j, int32_t k) {
  return split_at<Double>(static_cast<const FSplit<double>*>(self), i, j, k);
}
double owngDCT4_64fg9_envlambda_at(const void* self, int32_t i, int32_t, int32_t) {
  return lambda_at(static_cast<const Lambda<double>*>(self), i);
}

int32_t owngDCT4_64fg9_env5_mem(int32_t cols, int32_t length, int32_t, int32_t span, int32_t, int32_t lengthAgain,
                            int32_t radix) {
  return part_size<Double, Env5>(cols, lengthAgain, lengthAgain, span, length, radix);
}
int32_t owngDCT4_64fg9_env9_mem(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t, int32_t,
                            int32_t outerLength, int32_t stride, int32_t) {
  return part_size<Double, Env9>(cols, outerA, outerB, span, outerLength, stride);
}

XfmStatus owngDCT4_64fg9_env4_compute(const Env4* self, double* dst, const double* t, const Range& groups) {
  switch (self->rule) {  // groups fill whole vectors
    case rule_of(8): return synthesise_groups<8, double, Kernels<Double>::synthesis8>(self, dst, t, groups);
    case rule_of(16): return synthesise_groups<16, double, Kernels<Double>::synthesis16>(self, dst, t, groups);
    case rule_of(32): return synthesise_groups<32, double, Kernels<Double>::synthesis32>(self, dst, t, groups);
    case rule_of(64): return synthesise_groups<64, double, Kernels<Double>::synthesis64>(self, dst, t, groups);
    default: return kNoSuchRule;
  }
}
XfmStatus owngDCT4_64fg9_env5_compute(const Env5* self, double* t, const double* src) {
  return transform_columns<Double>(self, t, src);
}
XfmStatus owngDCT4_64fg9_env7_compute(const Env7* self, double* t, const double* src, ptrdiff_t start, ptrdiff_t mirror,
                                  ptrdiff_t stride) {
  return transform_split<Double>(self, t, src, start, mirror, stride);
}
XfmStatus owngDCT4_64fg9_env8_compute(const Env8* self, double* t, const double* w, ptrdiff_t stride, ptrdiff_t half_step,
                                  const Range& bins) {
  return combine<Double>(self, t, w, stride, half_step, bins);
}
XfmStatus owngDCT4_64fg9_env9_compute(const Env9* self, double* w, const double* src, ptrdiff_t start, ptrdiff_t mirror) {
  return transform_parts<Double>(self, w, src, start, mirror);
}
XfmStatus owngDCT4_64fg9_env9_direct_compute(const Env9* self, double* w, const double* src, ptrdiff_t start,
                                         ptrdiff_t mirror) {
  return transform_parts_directly<Double>(self, w, src, start, mirror);
}
}

}  // namespace xfm::dct4

extern "C" {

XfmStatus xfmgDCT4_64f(const Xfm64f* src, Xfm64f* dst, XfmDCT4State_64f* state) {
  using namespace xfm::dct4;
  if (state == nullptr || src == nullptr || dst == nullptr) return xfmStatusNullPointer;
  const auto* self = reinterpret_cast<const Env1*>(state);
  switch (self->rule) {
    case rule_of(2): Kernels<Double>::straight2(src, dst); break;
    case rule_of(4): Kernels<Double>::straight4(src, dst); break;
    case rule_of(8): Kernels<Double>::straight8(src, dst); break;
    case rule_of(16): Kernels<Double>::straight16(src, dst); break;
    case rule_of(32): Kernels<Double>::straight32(src, dst); break;
    case kRootGeneral<Double>: return transform_general<Double>(self, dst, src);
    default: return kNoSuchRule;
  }
  return xfmStatusOk;
}

XfmStatus xfmgDCT4GetSize_64f(int length, int* pSize) { return xfm::dct4::get_size<xfm::dct4::Double>(length, pSize); }
XfmStatus xfmgDCT4Init_64f(XfmDCT4State_64f** pState, int length, void* block) {
  return xfm::dct4::init<xfm::dct4::Double>(pState, length, block);
}
XfmStatus xfmgDCT4InitAlloc_64f(XfmDCT4State_64f** pState, int length) {
  return xfm::dct4::init_alloc<xfm::dct4::Double>(pState, length);
}
XfmStatus xfmgDCT4Free_64f(XfmDCT4State_64f* state) { return xfm::dct4::release<xfm::dct4::Double>(state); }
}
