/* The core library's allocator: what the transform library imports. */
#ifndef XFMCORE_H
#define XFMCORE_H

#ifdef __cplusplus
extern "C" {
#endif

/* A block of at least `size` bytes, or null. The block is aligned to at least 16 bytes (here 64, a cache line). */
void* xfmMalloc(int size);

/* Releases a block of xfmMalloc; null is accepted. */
void xfmFree(void* block);

#ifdef __cplusplus
}
#endif

#endif
