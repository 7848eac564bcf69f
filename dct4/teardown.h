// Destruction: what every __del__ releases, in its order. What there is to release is read from `rule` alone,
// so a half-built tree comes down by the same steps; an arena never looks at what it takes back.
#pragma once

#include "dct4/precision.h"

namespace xfm::dct4 {
namespace {

inline void delete_list(EnvList* list, Arena* arena) {
  EnvList___del__(list);
  xfmgArenaFree(arena, list, sizeof(EnvList));
}

inline void delete_children(const EnvHead& head) {
  EnvList_freeChildren(head.children);
  delete_list(head.children, head.arena);
}

template <class P>
void delete_root_parts(Env1* self) {
  Arena* const arena = self->head.arena;
  const bool general = self->rule == kRootGeneral<P>;
  if (self->rule >= 1 && self->rule <= kRootGeneral<P>)
    xfmgArenaFree(arena, self->scratch, general ? element_bytes<P>(self->length) : 0);
  delete_list(self->stageOne, arena);
  delete_list(self->stageTwo, arena);
  delete_children(self->head);
}

// env2, env3, env5 and env9: a work area of no bytes when the rule says so, one stage list, the children.
template <class Env>
void delete_stage(Env* self, int32_t last_rule) {
  if (self->rule >= 1 && self->rule <= last_rule) xfmgArenaFree(self->head.arena, self->buffer, 0);
  delete_list(self->stageOne, self->head.arena);
  delete_children(self->head);
}

inline void delete_synthesis(Env4* self) {
  if (self->rule >= 1 && self->rule <= synthesis_rule(kLastRadix))
    xfmgArenaFree(self->head.arena, self->table, synthesis_table_bytes(self->rule, self->chunks));
  delete_children(self->head);
}

template <class P>
void delete_split(Env7* self) {
  Arena* const arena = self->head.arena;
  if (self->rule == kPlanned) xfmgArenaFree(arena, self->scratch, element_bytes<P>(self->outerLength));
  delete_list(self->stageOne, arena);
  delete_list(self->stageTwo, arena);
  delete_children(self->head);
}

inline void delete_combination(Env8* self) {
  if (self->rule >= 1 && self->rule <= combine_rule(kLastRadix))
    xfmgArenaFree(self->head.arena, self->table, combine_table_bytes(self->radix, self->chunks));
  delete_children(self->head);
}

}  // namespace
}  // namespace xfm::dct4
