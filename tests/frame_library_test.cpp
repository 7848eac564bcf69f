// The built library's frame: its names, its dispatchers against its kernels, its core library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <cstring>

#include "core/xfmcore.h"
#include "generator/functions.h"
#include "generator/table.h"
#include "xfm.h"

namespace {

void* symbol(const std::string& name) { return dlsym(RTLD_DEFAULT, name.c_str()); }

std::vector<std::string> names_built() {
  const xfm::Table table = xfm::Table::read(
      XFM_FUNCTIONS_BUILT, {"name", "kind", "part", "family", "type", "size", "scale", "class", "arguments"});
  std::vector<std::string> names;
  for (const xfm::TableRow& row : table.rows()) names.push_back(row["name"]);
  return names;
}

const xfm::FunctionList& list() {
  static const xfm::FunctionList all = xfm::FunctionList::read(XFM_FUNCTIONS);
  return all;
}

TEST(Names, EveryPublicFunctionIsFound) {
  EXPECT_EQ(names_built().size(), 1193u);
  for (const xfm::Function& function : list().functions())
    EXPECT_NE(symbol(function.name), nullptr) << function.name;
}

TEST(Names, HeaderAndLibraryAreOfOneVersion) {
  const XfmLibraryVersion* record = xfmgenGetLibVersion();
  EXPECT_EQ(record->major, XFM_VERSION_MAJOR);
  EXPECT_EQ(record->minor, XFM_VERSION_MINOR);
  EXPECT_TRUE(std::string(record->version).starts_with(XFM_VERSION_STRING " "));
  EXPECT_EQ(std::string("libxfmgene9.so." XFM_VERSION_STRING), record->name);
}

// A dispatcher and the kernel of the same size, on the same data and flag: the same status and the same bytes.
void expect_same(const xfm::Function& dispatcher, const xfm::Function& kernel, const void* src, int flag) {
  using Kernel = XfmStatus(const void*, void*, int, void*);
  using ByLength = XfmStatus(const void*, void*, int, int, void*);
  constexpr size_t kBytes = 8192 * sizeof(double) + 64;
  static std::array<unsigned char, kBytes> direct, dispatched;
  direct.fill(0x5a);
  dispatched.fill(0x5a);
  const XfmStatus expected = reinterpret_cast<Kernel*>(symbol(kernel.name))(src, direct.data(), flag, nullptr);
  const XfmStatus status = reinterpret_cast<ByLength*>(symbol(dispatcher.name))(src, dispatched.data(), kernel.size,
                                                                                flag, nullptr);
  EXPECT_EQ(status, expected) << kernel.name << " flag " << flag;
  EXPECT_EQ(direct, dispatched) << kernel.name << " flag " << flag;
  if (src == nullptr) {
    EXPECT_EQ(status, xfmStatusNullPointer) << kernel.name;
  }
}

TEST(Dispatchers, GiveTheKernelsResult) {
  alignas(32) static std::array<double, 8192> src;
  uint64_t state = 1;
  for (double& value : src) {  // small integers in both precisions: every bit pattern is a number
    state = state * 6364136223846793005u + 1442695040888963407u;
    const std::array<float, 2> pair = {float(int(state >> 60)), float(int(state >> 56 & 15))};
    std::memcpy(&value, &pair, sizeof value);
  }
  int dispatchers = 0;
  for (const std::string& name : names_built()) {
    const xfm::Function* dispatcher = list().find(name);
    ASSERT_NE(dispatcher, nullptr) << name;
    if (dispatcher->kind != xfm::FunctionKind::Dispatcher) continue;
    ++dispatchers;
    for (const xfm::Function* kernel : list().kernels(name)) {
      for (const int flag : {1, 2, 4, 8, 0, 3}) expect_same(*dispatcher, *kernel, src.data(), flag);
      expect_same(*dispatcher, *kernel, nullptr, 8);
      expect_same(*dispatcher, *kernel, nullptr, 3);
    }
  }
  EXPECT_EQ(dispatchers, 20);
}

TEST(Core, AllocatesAlignedBlocksAndRefusesNegativeSizes) {
  for (const int size : {0, 1, 15, 16, 64, 73728}) {
    void* block = xfmMalloc(size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << size;
    std::memset(block, 0xff, static_cast<size_t>(size));
    xfmFree(block);
  }
  EXPECT_EQ(xfmMalloc(-1), nullptr);
  EXPECT_EQ(xfmMalloc(INT_MIN), nullptr);
  xfmFree(nullptr);
}

}  // namespace
