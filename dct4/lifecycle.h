// The life of a state: where it stands in its block, how it comes and goes.
#pragma once

#include "core/xfmcore.h"
#include "dct4/planner.h"
#include "dct4/size.h"

namespace xfm::dct4 {
namespace {

// Where the first object of a block goes: on the next 32-byte boundary that leaves the block's first word free. The
// remainder is that of a signed division.
inline Arena* set_up_arena(void* block) {
  const intptr_t start = reinterpret_cast<intptr_t>(block);
  const intptr_t step = static_cast<intptr_t>(xfmgAlignSize32Bytes(1));
  Arena* const arena = static_cast<Arena*>(block);
  arena->head = static_cast<uintptr_t>(start + 2 * step - start % step);
  return arena;
}

template <class P>
void delete_root(Env1* root) {
  delete_root_parts<P>(root);
  xfmgArenaFree(root->head.arena, root, static_cast<uint64_t>(int64_t{root->head.object.size}));
}

template <class P>
[[gnu::always_inline]] inline XfmStatus get_size(int32_t length, int32_t* size) {
  const int32_t bytes = block_size<P>(length);
  if (bytes < 0) return xfmStatusSizeError;
  *size = bytes;
  return xfmStatusOk;
}

template <class P>
[[gnu::always_inline]] inline XfmStatus init(typename P::State** state, int32_t length, void* block) {
  if (state == nullptr || block == nullptr) return xfmStatusNullPointer;
  Env1* const root = construct_root<P>(set_up_arena(block), length);
  const XfmStatus status = root->head.plan(root);
  if (status != xfmStatusOk) {
    delete_root<P>(root);
    return status;
  }
  *state = reinterpret_cast<typename P::State*>(root);
  return xfmStatusOk;
}

template <class P>
[[gnu::always_inline]] inline XfmStatus init_alloc(typename P::State** state, int32_t length) {
  if (state == nullptr) return xfmStatusNullPointer;
  int32_t size = 0;
  const XfmStatus sized = Entries<P>::get_size(length, &size);
  if (sized != xfmStatusOk) return sized;
  void* const block = xfmMalloc(size);  // Init tests it
  const XfmStatus status = Entries<P>::init(state, length, block);
  if (status != xfmStatusOk) xfmFree(block);
  return status;
}

template <class P>
[[gnu::always_inline]] inline XfmStatus release(typename P::State* state) {
  if (state == nullptr) return xfmStatusNullPointer;
  Env1* const root = reinterpret_cast<Env1*>(state);
  Arena* const arena = root->head.arena;
  delete_root<P>(root);
  xfmFree(arena);
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4
