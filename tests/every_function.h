// Every public function with arguments that fit it, for tests that speak of all of them alike. The library is the one
// linked, or that of the path in XFM_LIBRARY (another build, or the copy for another processor).
#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "generator/functions.h"
#include "xfm.h"

namespace every_function {

inline void* library() {
  static void* const handle = [] {
    const char* const path = std::getenv("XFM_LIBRARY");
    void* const loaded = path == nullptr ? RTLD_DEFAULT : dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (path != nullptr && loaded == nullptr) throw std::runtime_error(dlerror());
    return loaded;
  }();
  return handle;
}

inline void* address(const std::string& name) {
  void* const found = dlsym(library(), name.c_str());
  if (found == nullptr) throw std::runtime_error("no function " + name);
  return found;
}

// Arguments in the order of the integer registers; `valid` calls return xfmStatusOk.
struct Call {
  const xfm::Function* function;
  void* address;
  std::uint64_t arguments[6];
  XfmStatus due;
  std::string what;
};

// Memory that all calls share: enough for the longest transform here and 64 bytes of offset.
class Arena {
 public:
  static constexpr int kBytes = 1 << 17, kDct4 = 4096;
  Arena() : memory_(4 * kBytes + 64) {
    base_ = memory_.data() + (64 - reinterpret_cast<std::uintptr_t>(memory_.data()) % 64) % 64;
    fill(0);
  }
  // Uniform in [-1, 1]; scaled by 2^exponent. As singles, then (in another half) as doubles.
  void fill(int exponent) {
    std::mt19937 engine(7);
    for (int i = 0; i < kBytes / 4; ++i) singles()[i] = static_cast<float>(std::ldexp(value(engine), exponent));
    for (int i = 0; i < kBytes / 8; ++i) doubles()[i] = std::ldexp(value(engine), exponent);
  }
  float* singles() { return reinterpret_cast<float*>(base_); }
  double* doubles() { return reinterpret_cast<double*>(base_ + kBytes); }
  void* source(const std::string& type) { return type.starts_with("64") ? static_cast<void*>(doubles()) : singles(); }
  unsigned char* target() { return base_ + 2 * kBytes; }
  unsigned char* buffer() { return base_ + 3 * kBytes; }

 private:
  static double value(std::mt19937& engine) { return engine() / 2147483648.0 - 1.0; }
  std::vector<unsigned char> memory_;
  unsigned char* base_;
};

inline std::uint64_t bits(const void* pointer) { return reinterpret_cast<std::uint64_t>(pointer); }
// An int argument as a caller may leave it: the upper half of the register means nothing.
inline std::uint64_t as_int(int value) { return 0xdeadbeef00000000u | static_cast<std::uint32_t>(value); }

// Calls of a kernel or a dispatcher: every flag, bad flags, null pointers, sources off their alignment, a bad length.
inline void transform_calls(Arena& arena, const xfm::Function& f, void* at, const std::function<void(const Call&)>& visit) {
  const bool by_length = f.kind == xfm::FunctionKind::Dispatcher;
  const int component = f.type.starts_with("64") ? 8 : 4;
  auto* const src = static_cast<char*>(arena.source(f.type));
  const auto call = [&](const void* from, const void* to, int size, int flag, XfmStatus due, const std::string& what) {
    Call c{&f, at, {bits(from), bits(to), as_int(flag), bits(arena.buffer()), 0, 0}, due, what};
    if (by_length) c = {&f, at, {bits(from), bits(to), as_int(size), as_int(flag), bits(arena.buffer()), 0}, due, what};
    visit(c);
  };
  for (const int size : by_length ? std::vector<int>{2, 7, 12} : std::vector<int>{f.size}) {
    for (const int offset : {0, component, 16, 32})
      for (const int flag : {1, 2, 4, 8})
        call(src + offset, arena.target() + offset, size, flag, xfmStatusOk, "flag " + std::to_string(flag) + " offset " + std::to_string(offset));
    for (const int flag : {0, 3, 16, -1}) call(src, arena.target(), size, flag, xfmStatusFlagError, "bad flag");
    call(nullptr, arena.target(), size, 8, xfmStatusNullPointer, "null src");
    call(src, nullptr, size, 8, xfmStatusNullPointer, "null dst");
    call(src + component, nullptr, size, 8, xfmStatusNullPointer, "null dst, misaligned src");
  }
  if (by_length)
    for (const int size : {-3, 0, 65}) call(src, arena.target(), size, 8, xfmStatusSizeError, "bad length");
}

// A life of a DCT-IV state through its five functions, or the calls of one of them.
inline void dct4_calls(Arena& arena, const xfm::FunctionList& list, const std::string& type, const std::function<void(const Call&)>& visit) {
  const auto entry = [&](const std::string& name) { return list.find("xfmgDCT4" + name + "_" + type); };
  const auto call = [&](const std::string& name, std::vector<std::uint64_t> arguments, XfmStatus due, const std::string& what) {
    const auto* f = entry(name);
    arguments.resize(6);
    Call c{f, address(f->name), {}, due, what};
    std::copy(arguments.begin(), arguments.end(), c.arguments);
    visit(c);
  };
  for (int length = 2; length <= Arena::kDct4; length *= 2) {
    const std::string what = std::to_string(length) + " points";
    int size = 0;
    void* state = nullptr;
    call("GetSize", {as_int(length), bits(&size)}, xfmStatusOk, what);
    std::vector<char> block(static_cast<std::size_t>(size) + 64);
    call("Init", {bits(&state), as_int(length), bits(block.data())}, xfmStatusOk, what);
    call("", {bits(arena.source(type)), bits(arena.target()), bits(state)}, xfmStatusOk, what);
    call("InitAlloc", {bits(&state), as_int(length)}, xfmStatusOk, what);
    call("", {bits(arena.source(type)), bits(arena.target()), bits(state)}, xfmStatusOk, what + ", own block");
    call("Free", {bits(state)}, xfmStatusOk, what);
    call("", {0, bits(arena.target()), bits(state)}, xfmStatusNullPointer, "null src");
    call("Init", {bits(&state), as_int(length), 0}, xfmStatusNullPointer, "null block");
    call("Init", {bits(&state), as_int(0), bits(block.data())}, xfmStatusSizeError, "no length");
    call("GetSize", {as_int(-1), bits(&size)}, xfmStatusSizeError, "negative length");
    call("Free", {0}, xfmStatusNullPointer, "null");
  }
}

// Visits calls of every function of the list; returns how many functions were called.
inline int for_every_call(Arena& arena, const xfm::FunctionList& list, const std::function<void(const Call&)>& visit) {
  std::vector<std::string> called;
  const auto counting = [&](const Call& call) {
    if (called.empty() || called.back() != call.function->name) called.push_back(call.function->name);
    visit(call);
  };
  int size = 0;
  for (const auto& f : list.functions()) {
    if (f.kind != xfm::FunctionKind::Entry) transform_calls(arena, f, address(f.name), counting);
    else if (f.name == "xfmgenGetLibVersion") counting({&f, address(f.name), {}, 0, "record"});
    else if (f.family == "xfmgWHTGetBufferSize")
      for (const int order : {0, 1, 8, 13, 14})
        counting({&f, address(f.name), {as_int(order), bits(&size)}, order % 14 == 0 ? xfmStatusSizeError : xfmStatusOk, "order"});
  }
  for (const auto* type : {"32f", "64f"}) dct4_calls(arena, list, type, counting);
  std::sort(called.begin(), called.end());
  return static_cast<int>(std::unique(called.begin(), called.end()) - called.begin());
}

}  // namespace every_function
