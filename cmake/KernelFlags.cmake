# How generated bodies are compiled: the arithmetic of a kernel is fixed by its graph, so nothing may
# contract, reassociate, vectorise, share or repeat it, the two bodies of one function stay two, and flags are
# compared in their order.
set(XFM_KERNEL_FLAGS
    -O2 -mavx -mno-fma -mno-avx2 -ffp-contract=off
    -fno-tree-vectorize -fno-tree-slp-vectorize
    -fno-ipa-icf -fno-tree-tail-merge -fno-crossjumping -fno-code-hoisting
    -fno-thread-jumps -fno-bit-tests -fno-lra-remat -fno-exceptions -fno-rtti -fno-asynchronous-unwind-tables
    -fno-stack-protector -fomit-frame-pointer -fvisibility=hidden -fPIC)
