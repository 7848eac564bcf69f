#pragma once

namespace xfm {

// The alignment class of a kernel: what it tests about src and dst, and where the code for misaligned pointers stands.
// Plain: nothing to test; Gate16Twin: a function of its own takes them; Gate16Inline, Gate32Inline: a second body in the
// kernel, chosen by the low 4 or the low 5 address bits.
enum class Gate { Plain, Gate16Twin, Gate16Inline, Gate32Inline };

}  // namespace xfm
