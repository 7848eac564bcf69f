#include "tool/processor.h"

#include <cpuid.h>
#include <sys/platform/x86.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace xfm::tool {

namespace {

// What the loader asks of a processor before it looks into the folder of a level.
#define LEVEL(ASKED)                                                                                              \
  (!(ASKED(CMPXCHG16B) && ASKED(LAHF64_SAHF64) && ASKED(POPCNT) && ASKED(SSE3) && ASKED(SSE4_1) &&                \
     ASKED(SSE4_2) && ASKED(SSSE3))                                                                          ? 1  \
   : !(ASKED(AVX) && ASKED(AVX2) && ASKED(BMI1) && ASKED(BMI2) && ASKED(F16C) && ASKED(FMA) && ASKED(LZCNT) &&    \
       ASKED(MOVBE))                                                                                         ? 2  \
   : !(ASKED(AVX512F) && ASKED(AVX512BW) && ASKED(AVX512CD) && ASKED(AVX512DQ) && ASKED(AVX512VL))           ? 3  \
                                                                                                             : 4)

}  // namespace

bool has_avx() { return __builtin_cpu_supports("avx") != 0; }

void require_avx() {
  if (!has_avx()) throw std::runtime_error("this processor has no AVX, which the transforms of the library need");
}

std::string processor_name() {
  std::array<unsigned, 12> words{};
  for (unsigned part = 0; part < 3; ++part) {
    unsigned* const w = &words[4 * part];
    if (__get_cpuid(0x80000002 + part, &w[0], &w[1], &w[2], &w[3]) == 0) return "unknown";
  }
  char text[sizeof words + 1] = {};
  std::memcpy(text, words.data(), sizeof words);
  std::string name = text;
  name.erase(0, name.find_first_not_of(' '));
  return name.substr(0, name.find_last_not_of(' ') + 1);
}

int processor_level() { return LEVEL(CPU_FEATURE_PRESENT); }
int loader_level() { return LEVEL(CPU_FEATURE_ACTIVE); }

std::string level_name(int level) { return level <= 1 ? "x86-64" : "x86-64-v" + std::to_string(level); }

}  // namespace xfm::tool
