/* The version record: a constant. */
#include "xfm.h"

static const XfmLibraryVersion s_libVer = {
    6, 1, 137, 336, {'e', '9', 0, 0}, "libxfmgene9.so.6.1", "6.1 build 137.56", "Mar 17 2010"};

const XfmLibraryVersion* xfmgenGetLibVersion(void) { return &s_libVer; }
