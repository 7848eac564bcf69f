/*
 * Sixty-four stations share one radio channel, each with a Walsh function of 64 chips as its code (the forward channel
 * of a CDMA telephone network is built this way). The sum of what all stations send is one Walsh-Hadamard transform of
 * their symbols; another one of the received chips separates the stations again, noise and unequal powers or not.
 *
 *   xfm_cdma [noise, standard deviation per chip, 2.0]
 *
 * Exit status 0 if every message arrives whole.
 */
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xfm.h"

enum { kOrder = 6, kStations = 1 << kOrder, kLetters = 24 };

/* The row of the transform (natural order) whose signs change `sequency` times: the bits of the Gray code, reversed. */
static int natural_index(int sequency, int order) {
  const int gray = sequency ^ (sequency >> 1);
  int index = 0;
  for (int bit = 0; bit < order; ++bit) index |= (gray >> bit & 1) << (order - 1 - bit);
  return index;
}

static int sign_changes_of_row(int row) {
  float impulse[kStations] = {0}, code[kStations];
  impulse[row] = 1;
  xfmgWHT_6_32f(impulse, code, xfmScaleNone);
  int changes = 0;
  for (int chip = 1; chip < kStations; ++chip) changes += code[chip] != code[chip - 1];
  return changes;
}

static double uniform(void) {
  static uint64_t state = 2026;
  state = state * 6364136223846793005u + 1442695040888963407u;
  return ((double)(state >> 11) + 0.5) / 9007199254740992.0;
}

static double gaussian(void) { return sqrt(-2 * log(uniform())) * cos(6.283185307179586 * uniform()); }

/* The nearest station is received four times as strong as the farthest. */
static float amplitude(int station) { return 4.0f / (1.0f + 3.0f * (float)station / (kStations - 1)); }

/* One bit of every station through the channel. */
static void exchange(const int sent[kStations], int received[kStations], double noise) {
  float symbols[kStations], chips[kStations];
  for (int s = 0; s < kStations; ++s) symbols[natural_index(s, kOrder)] = (sent[s] ? 1.0f : -1.0f) * amplitude(s);
  xfmgWHT_6_32f(symbols, chips, xfmScaleNone);
  for (int chip = 0; chip < kStations; ++chip) chips[chip] += (float)(noise * gaussian());
  xfmgWHT_6_32f(chips, symbols, xfmScaleFwdByN);
  for (int s = 0; s < kStations; ++s) received[s] = symbols[natural_index(s, kOrder)] > 0;
}

int main(int argc, char** argv) {
  char* end = "";
  const double noise = argc > 1 ? strtod(argv[1], &end) : 2.0;
  if (argc > 2 || *end != '\0' || !(noise >= 0 && noise <= 1e6)) {
    fprintf(stderr, "usage: xfm_cdma [noise, a number from 0 to 1e6]\n");
    return 2;
  }
  if (!__builtin_cpu_supports("avx")) {
    fprintf(stderr, "this processor has no AVX\n");
    return 1;
  }
  for (int s = 0; s < kStations; ++s) {
    if (sign_changes_of_row(natural_index(s, kOrder)) == s) continue;
    fprintf(stderr, "the code of station %d has another number of sign changes\n", s);
    return 1;
  }

  static char sent[kStations][kLetters], received[kStations][kLetters];
  for (int s = 0; s < kStations; ++s) snprintf(sent[s], kLetters, "station %02d, all is well", s);
  int errors = 0;
  for (int bit = 0; bit < 8 * kLetters; ++bit) {
    int out[kStations], in[kStations];
    for (int s = 0; s < kStations; ++s) out[s] = sent[s][bit / 8] >> bit % 8 & 1;
    exchange(out, in, noise);
    for (int s = 0; s < kStations; ++s) {
      received[s][bit / 8] |= (char)(in[s] << bit % 8);
      errors += in[s] != out[s];
    }
  }

  for (int s = 0; s < kStations; s += 9) printf("code with %2d sign changes: %.*s\n", s, kLetters, received[s]);
  printf("%d stations, %d bits each at once, %d bits wrong\n", kStations, 8 * kLetters, errors);
  return memcmp(sent, received, sizeof sent) == 0 ? 0 : 1;
}
