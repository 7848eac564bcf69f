// The interfaces of the Fortran module, from the list of public functions.
#pragma once

#include <string>

#include "generator/functions.h"

namespace xfm {

// One interface block with every function under its own name.
std::string fortran_interfaces(const FunctionList& list);

}  // namespace xfm
