// A call of any function through an assembly routine that sees what the calling convention promises (probe.S).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace convention {

struct Probe {
  const void* function = nullptr;
  char* stack = nullptr;  // rsp before the call
  std::uint64_t arguments[6]{};
  std::uint64_t reserved = 0;
  std::uint32_t mxcsr = 0x1f80, mxcsr_after = 0;
  // What is found after the call.
  std::int64_t result = 0;
  std::uint64_t rbx = 0, rbp = 0, r12 = 0, r13 = 0, r14 = 0, r15 = 0, rsp = 0, flags = 0;
  std::uint16_t x87[16]{};  // fnstenv: control word first, tag word in place 4
  std::uint64_t upper[16][2]{};
  std::uint64_t wide = __builtin_cpu_supports("avx512f") != 0;  // whether the registers have 512 bits
  std::uint64_t upper_wide[16][4]{};
};
static_assert(sizeof(Probe) == 960 && offsetof(Probe, mxcsr) == 72 && offsetof(Probe, x87) == 152 && offsetof(Probe, upper) == 184 && offsetof(Probe, wide) == 440);

extern "C" void convention_probe(Probe*);

inline constexpr std::uint32_t kStickyBits = 0x3f;  // of MXCSR: the exception flags

// What a function did not give back, in words; empty if all is well.
inline std::string departures(const Probe& probe) {
  std::string out;
  const auto due = [&out](bool holds, const std::string& what) {
    if (!holds) out += (out.empty() ? "" : ", ") + what;
  };
  const std::uint64_t kept[] = {probe.rbx, probe.rbp, probe.r12, probe.r13, probe.r14, probe.r15};
  constexpr const char* kNames[] = {"rbx", "rbp", "r12", "r13", "r14", "r15"};
  for (std::uint64_t i = 0; i < 6; ++i) due(kept[i] == 0x1111111111111111u * (i + 1), kNames[i]);
  due(probe.rsp == reinterpret_cast<std::uint64_t>(probe.stack), "rsp");
  due((probe.flags & 0x400) == 0, "direction flag");
  due((probe.mxcsr_after & ~kStickyBits) == (probe.mxcsr & ~kStickyBits), "MXCSR control");
  due(probe.x87[0] == 0x37f, "x87 control word");
  due(probe.x87[4] == 0xffff, "x87 stack");
  for (int i = 0; i < 16; ++i) {
    due(probe.upper[i][0] == 0 && probe.upper[i][1] == 0, "upper half of ymm" + std::to_string(i));
    due(std::ranges::all_of(probe.upper_wide[i], [](std::uint64_t x) { return x == 0; }), "upper half of zmm" + std::to_string(i));
  }
  return out;
}

}  // namespace convention
