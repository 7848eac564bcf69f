# How generated bodies are compiled: the arithmetic of a kernel is fixed by its graph, so nothing may
# contract, reassociate, vectorise, share or repeat it, the two bodies of one function stay two, and flags are
# compared in their order. These flags stand behind those of the user and of the distribution and take back what
# would change a kernel: other instruction sets, relaxed arithmetic, optimisation when linking, probes of the stack.
set(XFM_KERNEL_FLAGS
    -O2 -march=x86-64 -mtune=generic -mavx -mno-fma -mno-avx2 -mno-f16c -mno-bmi -mno-bmi2 -mno-lzcnt
    -fno-fast-math -fno-unsafe-math-optimizations -fno-associative-math -fno-reciprocal-math -fsigned-zeros
    -ftrapping-math -fno-finite-math-only -fno-rounding-math -ffp-contract=off -fno-lto
    -fno-tree-vectorize -fno-tree-slp-vectorize -fno-unroll-loops -fno-stack-clash-protection
    -fno-ipa-icf -fno-tree-tail-merge -fno-crossjumping -fno-code-hoisting
    -fno-thread-jumps -fno-bit-tests -fno-lra-remat -fno-exceptions -fno-rtti -fno-asynchronous-unwind-tables
    -fno-stack-protector -fomit-frame-pointer -fvisibility=hidden -fPIC)
if(NOT BUILD_SHARED_LIBS)
  list(APPEND XFM_KERNEL_FLAGS -ffunction-sections -fdata-sections)  # a program carries the kernels it calls
endif()
