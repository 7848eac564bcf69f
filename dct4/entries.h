// The public functions of a unit.
#pragma once

#include "dct4/compute.h"
#include "dct4/planner.h"
#include "dct4/size.h"
#include "core/xfmcore.h"

namespace xfm::dct4 {
namespace {

// Where the first object of a block goes: on the next 32-byte boundary that leaves the block's first word free.
inline Arena* set_up_arena(void* block) {
  const uintptr_t start = reinterpret_cast<uintptr_t>(block);
  const uintptr_t step = xfmgAlignSize32Bytes(1);
  Arena* const arena = static_cast<Arena*>(block);
  arena->head = start + 2 * step - start % step;
  return arena;
}

inline Env1* construct_root(Arena* arena, int32_t length) {
  Env1* const root = make_env<Env1>(arena, XFM_DCT4(env1___del__), XFM_DCT4(env1_plan));
  root->scratch = nullptr;
  root->length = length;
  root->stageOne = make_list(arena);
  root->stageTwo = make_list(arena);
  root->head.children = make_list(arena);
  return root;
}

inline void delete_root(Env1* root) {
  delete_root_parts(root);
  xfmgArenaFree(root->head.arena, root, static_cast<uint64_t>(int64_t{root->head.object.size}));
}

}  // namespace
}  // namespace xfm::dct4

extern "C" {

XfmStatus XFM_DCT4_PUBLIC(GetSize)(int length, int* pSize) {
  const int32_t size = xfm::dct4::block_size(length);
  if (size < 0) return xfmStatusSizeError;
  *pSize = size;
  return xfmStatusOk;
}

XfmStatus XFM_DCT4_PUBLIC(Init)(Precision::State** pState, int length, void* block) {
  using namespace xfm::dct4;
  if (pState == nullptr || block == nullptr) return xfmStatusNullPointer;
  Env1* const root = construct_root(set_up_arena(block), length);
  const XfmStatus status = root->head.plan(root);
  if (status != xfmStatusOk) {
    delete_root(root);
    return status;
  }
  *pState = reinterpret_cast<Precision::State*>(root);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4_PUBLIC(InitAlloc)(Precision::State** pState, int length) {
  if (pState == nullptr) return xfmStatusNullPointer;
  int size = 0;
  const XfmStatus sized = XFM_DCT4_PUBLIC(GetSize)(length, &size);
  if (sized != xfmStatusOk) return sized;
  void* const block = xfmMalloc(size);  // Init tests it
  const XfmStatus status = XFM_DCT4_PUBLIC(Init)(pState, length, block);
  if (status != xfmStatusOk) xfmFree(block);
  return status;
}

XfmStatus XFM_DCT4_PUBLIC(Free)(Precision::State* state) {
  using namespace xfm::dct4;
  if (state == nullptr) return xfmStatusNullPointer;
  Env1* const root = reinterpret_cast<Env1*>(state);
  Arena* const arena = root->head.arena;
  delete_root(root);
  xfmFree(arena);
  return xfmStatusOk;
}
}
