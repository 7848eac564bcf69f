// What the DCT-IV planner shares between its two precisions: the arena in the caller's block, the singly linked EnvList,
// the choice of a radix, and the cosines and sines of its tables.
#pragma once

#include <stdint.h>

#ifndef XFM_INTERNAL
#define XFM_INTERNAL [[gnu::noinline, gnu::noclone, gnu::visibility("hidden")]]
#endif

namespace xfm::dct4 {

// The first word of the caller's block: the address of the next free byte, always a multiple of 32. The arena knows no
// limit; the size query and the plans must stay in step.
struct [[gnu::packed]] Arena {  // the block needs no alignment
  uintptr_t head;
};

struct EnvList {
  void* item;  // null while the list is empty
  EnvList* next;
  Arena* arena;
};

// How every object begins.
struct ObjectHead {
  void (*__del__)(void* self);  // destroys what the object owns, not the object itself
  int32_t size;                 // the object's own charge on the arena
};

}  // namespace xfm::dct4

extern "C" {

XFM_INTERNAL uint64_t xfmgAlignSize32Bytes(uint64_t size);
XFM_INTERNAL void* xfmgArenaMalloc(xfm::dct4::Arena* arena, uint64_t size);
XFM_INTERNAL void xfmgArenaFree(xfm::dct4::Arena* arena, void* pointer, uint64_t size);

XFM_INTERNAL xfm::dct4::EnvList* EnvList___init__(xfm::dct4::EnvList* record, xfm::dct4::Arena* arena);
// Gives the element back, so that one expression can put it into a second list.
XFM_INTERNAL void* EnvList_add(xfm::dct4::EnvList* list, void* element);
XFM_INTERNAL uint64_t EnvList_add_mem(int32_t count);
XFM_INTERNAL void* EnvList_get(const xfm::dct4::EnvList* list, int32_t index);
// Releases the records behind the first, which belongs to the list's owner.
XFM_INTERNAL void EnvList___del__(xfm::dct4::EnvList* list);
XFM_INTERNAL void EnvList_freeChildren(xfm::dct4::EnvList* list);

// The radix for x: a power of two up to 32 that grows with x. Gives xfmStatusSizeError and stores nothing if x has none.
XFM_INTERNAL int32_t divisorsIntNonTriv(int32_t* divisor, int32_t x);

// cos(pi x) and sin(pi x); the angle is rounded to the type before the function of that type is called.
XFM_INTERNAL float xfmgCosPi_32f(float x);
XFM_INTERNAL float xfmgSinPi_32f(float x);
XFM_INTERNAL double xfmgCosPi_64f(double x);
XFM_INTERNAL double xfmgSinPi_64f(double x);
}
