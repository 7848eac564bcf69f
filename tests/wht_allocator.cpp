// Stands in for the core library in the test program: the library's calls are bound to these.
#include "tests/wht_model.h"

namespace xfm::test {

AllocatorLog allocator_log;

namespace {
std::vector<std::pair<void*, GuardedPages*>> live;
}

}  // namespace xfm::test

using namespace xfm::test;

extern "C" void* xfmMalloc(int size) {
  if (allocator_log.no_memory) return nullptr;
  const size_t bytes = static_cast<size_t>(size);
  auto* pages = new GuardedPages(bytes);
  void* block = pages->at_end(bytes);
  std::memset(block, 0xff, bytes);
  allocator_log.sizes.push_back(size);
  allocator_log.blocks.push_back(block);
  live.emplace_back(block, pages);
  return block;
}

// What is not a live block ends the program: a second release, or one of the caller's memory.
extern "C" void xfmFree(void* block) {
  allocator_log.freed.push_back(block);
  for (auto i = live.begin(); i != live.end(); ++i) {
    if (i->first != block) continue;
    delete i->second;
    live.erase(i);
    return;
  }
  std::fprintf(stderr, "xfmFree of %p, which is no live block\n", block);
  std::abort();
}
