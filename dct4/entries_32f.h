// The C functions of the DCT-IV in single precision. Names and arguments are the library's binary interface; the
// bodies are the templates of the other headers. The transform is three tests in front of the root's compute.
#pragma once

#include "dct4/compute.h"
#include "dct4/lifecycle.h"

namespace xfm::dct4 {

extern "C" {

XFM_INTERNAL void owngDCT4_32fg9_env1___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env2___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env3___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env4___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env5___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env7___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env8___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_env9___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_envfCompose___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_envfsplit___del__(void* self);
XFM_INTERNAL void owngDCT4_32fg9_envlambda___del__(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env1_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env2_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env3_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env4_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env5_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env7_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env8_plan(void* self);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env9_plan(void* self);
XFM_INTERNAL int32_t owngDCT4_32fg9_env8__chooseRule(int32_t radix, int32_t length, int32_t stride, int32_t doubleSpan,
                                                    int32_t chunks, int32_t lengthAgain, int32_t halfLength,
                                                    int32_t wrap, int32_t strideAgain, int32_t cols);
XFM_INTERNAL float owngDCT4_32fg9_envfCompose_at(const void* self, int32_t i, int32_t j, int32_t k);
XFM_INTERNAL float owngDCT4_32fg9_envfsplit_at(const void* self, int32_t i, int32_t j, int32_t k);
XFM_INTERNAL float owngDCT4_32fg9_envlambda_at(const void* self, int32_t i, int32_t j, int32_t k);

// The generic call of a function object; integers that its `at` has no use for are ignored there. All are handed on,
// whatever the compiler knows of their values.
[[gnu::noipa]] static float owng_TFunc_IIIR_at(const void* function, int32_t i, int32_t j, int32_t k) {
  return static_cast<const FunctionHead<float>*>(function)->at(function, i, j, k);
}

XFM_INTERNAL int32_t owngDCT4_32fg9_env5_mem(int32_t cols, int32_t length, int32_t wrap, int32_t span, int32_t vecRadix,
                                         int32_t lengthAgain, int32_t radix);
XFM_INTERNAL int32_t owngDCT4_32fg9_env9_mem(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t outerSpan,
                                         int32_t radix, int32_t outerLength, int32_t stride, int32_t outerStride);

XFM_INTERNAL XfmStatus owngDCT4_32fg9_env1_compute(const Env1* self, float* dst, const float* src);
}

template <>
struct Entries<Single> : StageFunctions<float> {
  static constexpr auto env1_del = owngDCT4_32fg9_env1___del__;
  static constexpr auto env2_del = owngDCT4_32fg9_env2___del__;
  static constexpr auto env3_del = owngDCT4_32fg9_env3___del__;
  static constexpr auto env4_del = owngDCT4_32fg9_env4___del__;
  static constexpr auto env5_del = owngDCT4_32fg9_env5___del__;
  static constexpr auto env7_del = owngDCT4_32fg9_env7___del__;
  static constexpr auto env8_del = owngDCT4_32fg9_env8___del__;
  static constexpr auto env9_del = owngDCT4_32fg9_env9___del__;
  static constexpr auto compose_del = owngDCT4_32fg9_envfCompose___del__;
  static constexpr auto split_del = owngDCT4_32fg9_envfsplit___del__;
  static constexpr auto lambda_del = owngDCT4_32fg9_envlambda___del__;
  static constexpr auto env1_plan = owngDCT4_32fg9_env1_plan;
  static constexpr auto env2_plan = owngDCT4_32fg9_env2_plan;
  static constexpr auto env3_plan = owngDCT4_32fg9_env3_plan;
  static constexpr auto env4_plan = owngDCT4_32fg9_env4_plan;
  static constexpr auto env5_plan = owngDCT4_32fg9_env5_plan;
  static constexpr auto env7_plan = owngDCT4_32fg9_env7_plan;
  static constexpr auto env8_plan = owngDCT4_32fg9_env8_plan;
  static constexpr auto env9_plan = owngDCT4_32fg9_env9_plan;
  static constexpr auto env8_choose_rule = owngDCT4_32fg9_env8__chooseRule;
  static constexpr auto compose_at = owngDCT4_32fg9_envfCompose_at;
  static constexpr auto split_at = owngDCT4_32fg9_envfsplit_at;
  static constexpr auto lambda_at = owngDCT4_32fg9_envlambda_at;
  static constexpr auto function_at = owng_TFunc_IIIR_at;
  static constexpr auto env5_mem = owngDCT4_32fg9_env5_mem;
  static constexpr auto env9_mem = owngDCT4_32fg9_env9_mem;
  static constexpr auto get_size = xfmgDCT4GetSize_32f;
  static constexpr auto init = xfmgDCT4Init_32f;
};

extern "C" {

void owngDCT4_32fg9_env1___del__(void* self) { delete_root_parts<Single>(static_cast<Env1*>(self)); }
void owngDCT4_32fg9_env2___del__(void* self) { delete_stage(static_cast<Env2*>(self), kPlanned); }
void owngDCT4_32fg9_env3___del__(void* self) { delete_stage(static_cast<Env3*>(self), kPlanned); }
void owngDCT4_32fg9_env4___del__(void* self) { delete_synthesis(static_cast<Env4*>(self)); }
void owngDCT4_32fg9_env5___del__(void* self) { delete_stage(static_cast<Env5*>(self), kPartGeneral); }
void owngDCT4_32fg9_env7___del__(void* self) { delete_split<Single>(static_cast<Env7*>(self)); }
void owngDCT4_32fg9_env8___del__(void* self) { delete_combination(static_cast<Env8*>(self)); }
void owngDCT4_32fg9_env9___del__(void* self) { delete_stage(static_cast<Env9*>(self), kPartGeneral); }
void owngDCT4_32fg9_envfCompose___del__(void*) {}
void owngDCT4_32fg9_envfsplit___del__(void*) {}
void owngDCT4_32fg9_envlambda___del__(void*) {}

XfmStatus owngDCT4_32fg9_env1_plan(void* self) { return plan_root<Single>(static_cast<Env1*>(self)); }
XfmStatus owngDCT4_32fg9_env2_plan(void* self) { return plan_groups<Single>(static_cast<Env2*>(self)); }
XfmStatus owngDCT4_32fg9_env3_plan(void* self) { return plan_stage_one<Single>(static_cast<Env3*>(self)); }
XfmStatus owngDCT4_32fg9_env4_plan(void* self) { return plan_synthesis<Single>(static_cast<Env4*>(self)); }
XfmStatus owngDCT4_32fg9_env5_plan(void* self) { return plan_columns<Single>(static_cast<Env5*>(self)); }
XfmStatus owngDCT4_32fg9_env7_plan(void* self) { return plan_split<Single>(static_cast<Env7*>(self)); }
XfmStatus owngDCT4_32fg9_env8_plan(void* self) { return plan_combination<Single>(static_cast<Env8*>(self)); }
XfmStatus owngDCT4_32fg9_env9_plan(void* self) { return plan_parts<Single>(static_cast<Env9*>(self)); }

int32_t owngDCT4_32fg9_env8__chooseRule(int32_t radix, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                       int32_t, int32_t) {
  return combine_rule(radix);
}

float owngDCT4_32fg9_envfCompose_at(const void* self, int32_t i, int32_t j, int32_t) {
  return compose_at<Single>(static_cast<const FCompose<float>*>(self), i, j);
}
float owngDCT4_32fg9_envfsplit_at(const void* self, int32_t i, int32_t j, int32_t k) {
  return split_at<Single>(static_cast<const FSplit<float>*>(self), i, j, k);
}
float owngDCT4_32fg9_envlambda_at(const void* self, int32_t i, int32_t, int32_t) {
  return lambda_at(static_cast<const Lambda<float>*>(self), i);
}

int32_t owngDCT4_32fg9_env5_mem(int32_t cols, int32_t length, int32_t, int32_t span, int32_t, int32_t lengthAgain,
                            int32_t radix) {
  return part_size<Single, Env5>(cols, lengthAgain, lengthAgain, span, length, radix);
}
int32_t owngDCT4_32fg9_env9_mem(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t, int32_t,
                            int32_t outerLength, int32_t stride, int32_t) {
  return part_size<Single, Env9>(cols, outerA, outerB, span, outerLength, stride);
}

XfmStatus owngDCT4_32fg9_env4_compute(const Env4* self, float* dst, const float* t, const Range& groups) {
  switch (self->rule) {  // groups fill whole vectors
    case rule_of(16): return synthesise_groups<16, float, Kernels<Single>::synthesis16>(self, dst, t, groups);
    case rule_of(32): return synthesise_groups<32, float, Kernels<Single>::synthesis32>(self, dst, t, groups);
    case rule_of(64): return synthesise_groups<64, float, Kernels<Single>::synthesis64>(self, dst, t, groups);
    default: return kNoSuchRule;
  }
}
XfmStatus owngDCT4_32fg9_env5_compute(const Env5* self, float* t, const float* src) {
  return transform_columns<Single>(self, t, src);
}
XfmStatus owngDCT4_32fg9_env7_compute(const Env7* self, float* t, const float* src, ptrdiff_t start, ptrdiff_t mirror,
                                  ptrdiff_t stride) {
  return transform_split<Single>(self, t, src, start, mirror, stride);
}
XfmStatus owngDCT4_32fg9_env8_compute(const Env8* self, float* t, const float* w, ptrdiff_t stride, ptrdiff_t half_step,
                                  const Range& bins) {
  return combine<Single>(self, t, w, stride, half_step, bins);
}
XfmStatus owngDCT4_32fg9_env9_compute(const Env9* self, float* w, const float* src, ptrdiff_t start, ptrdiff_t mirror) {
  return transform_parts<Single>(self, w, src, start, mirror);
}
XfmStatus owngDCT4_32fg9_env9_direct_compute(const Env9* self, float* w, const float* src, ptrdiff_t start,
                                         ptrdiff_t mirror) {
  return transform_parts_directly<Single>(self, w, src, start, mirror);
}

XfmStatus owngDCT4_32fg9_env1_compute(const Env1* self, float* dst, const float* src) {
  switch (self->rule) {
    case rule_of(2): Kernels<Single>::straight2(src, dst); break;
    case rule_of(4): Kernels<Single>::straight4(src, dst); break;
    case rule_of(8): Kernels<Single>::straight8(src, dst); break;
    case rule_of(16): Kernels<Single>::straight16(src, dst); break;
    case rule_of(32): Kernels<Single>::straight32(src, dst); break;
    case rule_of(64): Kernels<Single>::straight64(src, dst); break;
    case kRootGeneral<Single>: return transform_general<Single>(self, dst, src);
    default: return kNoSuchRule;
  }
  return xfmStatusOk;
}
}

}  // namespace xfm::dct4

extern "C" {

XfmStatus xfmgDCT4_32f(const Xfm32f* src, Xfm32f* dst, XfmDCT4State_32f* state) {
  if (state == nullptr || src == nullptr || dst == nullptr) return xfmStatusNullPointer;
  return owngDCT4_32fg9_env1_compute(reinterpret_cast<const xfm::dct4::Env1*>(state), dst, src);
}

XfmStatus xfmgDCT4GetSize_32f(int length, int* pSize) { return xfm::dct4::get_size<xfm::dct4::Single>(length, pSize); }
XfmStatus xfmgDCT4Init_32f(XfmDCT4State_32f** pState, int length, void* block) {
  return xfm::dct4::init<xfm::dct4::Single>(pState, length, block);
}
XfmStatus xfmgDCT4InitAlloc_32f(XfmDCT4State_32f** pState, int length) {
  return xfm::dct4::init_alloc<xfm::dct4::Single>(pState, length);
}
XfmStatus xfmgDCT4Free_32f(XfmDCT4State_32f* state) { return xfm::dct4::release<xfm::dct4::Single>(state); }
}
