#include "src/owngenautolib.h"

#include <math.h>

#include "xfm.h"

using xfm::dct4::Arena;
using xfm::dct4::EnvList;
using xfm::dct4::ObjectHead;

extern "C" {

uint64_t xfmgAlignSize32Bytes(uint64_t size) { return (size + 31) & ~uint64_t{31}; }

void* xfmgArenaMalloc(Arena* arena, uint64_t size) {
  const uintptr_t free = arena->head;
  arena->head = free + xfmgAlignSize32Bytes(size);
  return reinterpret_cast<void*>(free);
}

void xfmgArenaFree(Arena* arena, void*, uint64_t size) { arena->head -= xfmgAlignSize32Bytes(size); }

EnvList* EnvList___init__(EnvList* record, Arena* arena) {
  record->item = nullptr;
  record->next = nullptr;
  record->arena = arena;
  return record;
}

void* EnvList_add(EnvList* list, void* element) {
  while (list->next != nullptr) list = list->next;
  if (list->item != nullptr) {
    list->next = EnvList___init__(static_cast<EnvList*>(xfmgArenaMalloc(list->arena, sizeof(EnvList))), list->arena);
    list = list->next;
  }
  list->item = element;
  return element;
}

// One record for every element: the first one, which lands in the list's head, is counted all the same.
uint64_t EnvList_add_mem(int32_t count) {
  return static_cast<uint64_t>(int64_t{count}) * xfmgAlignSize32Bytes(sizeof(EnvList));
}

void* EnvList_get(const EnvList* list, int32_t index) {
  if (index < 0) return nullptr;
  for (; index > 0 && list != nullptr; --index) list = list->next;
  return list == nullptr ? nullptr : list->item;
}

void EnvList___del__(EnvList* list) {
  for (EnvList* record = list->next; record != nullptr;) {
    EnvList* const next = record->next;
    xfmgArenaFree(list->arena, record, sizeof(EnvList));
    record = next;
  }
}

void EnvList_freeChildren(EnvList* list) {
  for (EnvList* record = list; record != nullptr; record = record->next) {
    if (record->item == nullptr) continue;
    ObjectHead* const child = static_cast<ObjectHead*>(record->item);
    child->__del__(child);
    xfmgArenaFree(list->arena, child, static_cast<uint64_t>(int64_t{child->size}));
  }
}

int32_t divisorsIntNonTriv(int32_t* divisor, int32_t x) {
  struct Step {
    int32_t from;  // numbers of this size and above try the radix
    int32_t radix;
  };
  static const Step cascade[] = {{512, 32}, {128, 16}, {32, 8}, {16, 4}, {4, 2}};
  for (const Step& step : cascade) {
    if (x >= step.from && x % step.radix == 0) {
      *divisor = step.radix;
      return xfmStatusOk;
    }
  }
  return xfmStatusSizeError;
}

#define XFM_PI 3.141592653589793

float xfmgCosPi_32f(float x) { return cosf(static_cast<float>(static_cast<double>(x) * XFM_PI)); }
float xfmgSinPi_32f(float x) { return sinf(static_cast<float>(static_cast<double>(x) * XFM_PI)); }
double xfmgCosPi_64f(double x) { return cos(x * XFM_PI); }
double xfmgSinPi_64f(double x) { return sin(x * XFM_PI); }
}
