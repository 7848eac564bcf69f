// Destruction: what every __del__ of a unit releases, in its order. What there is to release is read from `rule` alone,
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

inline void delete_root_parts(Env1* self) {
  Arena* const arena = self->head.arena;
  const bool general = self->rule == kRootGeneral<Precision>;
  if (self->rule >= 1 && self->rule <= kRootGeneral<Precision>)
    xfmgArenaFree(arena, self->scratch, general ? element_bytes<Precision>(self->length) : 0);
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

}  // namespace
}  // namespace xfm::dct4

extern "C" {

XFM_INTERNAL void XFM_DCT4(env1___del__)(void* object) { xfm::dct4::delete_root_parts(static_cast<xfm::dct4::Env1*>(object)); }
XFM_INTERNAL void XFM_DCT4(env2___del__)(void* object) { xfm::dct4::delete_stage(static_cast<xfm::dct4::Env2*>(object), 1); }
XFM_INTERNAL void XFM_DCT4(env3___del__)(void* object) { xfm::dct4::delete_stage(static_cast<xfm::dct4::Env3*>(object), 1); }
XFM_INTERNAL void XFM_DCT4(env5___del__)(void* object) {
  xfm::dct4::delete_stage(static_cast<xfm::dct4::Env5*>(object), xfm::dct4::kPartGeneral);
}
XFM_INTERNAL void XFM_DCT4(env9___del__)(void* object) {
  xfm::dct4::delete_stage(static_cast<xfm::dct4::Env9*>(object), xfm::dct4::kPartGeneral);
}

XFM_INTERNAL void XFM_DCT4(env4___del__)(void* object) {
  const auto* self = static_cast<xfm::dct4::Env4*>(object);
  if (self->rule >= 1 && self->rule <= 6)
    xfmgArenaFree(self->head.arena, self->table, xfm::dct4::synthesis_table_bytes(self->rule, self->chunks));
  xfm::dct4::delete_children(self->head);
}

XFM_INTERNAL void XFM_DCT4(env7___del__)(void* object) {
  const auto* self = static_cast<xfm::dct4::Env7*>(object);
  if (self->rule == 1)
    xfmgArenaFree(self->head.arena, self->scratch, xfm::dct4::element_bytes<Precision>(self->outerLength));
  xfm::dct4::delete_list(self->stageOne, self->head.arena);
  xfm::dct4::delete_list(self->stageTwo, self->head.arena);
  xfm::dct4::delete_children(self->head);
}

XFM_INTERNAL void XFM_DCT4(env8___del__)(void* object) {
  const auto* self = static_cast<xfm::dct4::Env8*>(object);
  if (self->rule >= 1 && self->rule <= 5)
    xfmgArenaFree(self->head.arena, self->table, xfm::dct4::combine_table_bytes(self->radix, self->chunks));
  xfm::dct4::delete_children(self->head);
}
}
