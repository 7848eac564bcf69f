// The C functions of a precision, by which objects and stages call each other. entries_32f.h and entries_64f.h define
// the functions and name them here.
#pragma once

#include "dct4/precision.h"

namespace xfm::dct4 {

template <class P>
struct Entries;

}  // namespace xfm::dct4
