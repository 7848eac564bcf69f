#include "flows/numbers.h"

#include "generator/check.h"

namespace xfm {

bool is_prime(int n) {
  for (int d = 2; d * d <= n; ++d)
    if (n % d == 0) return false;
  return n > 1;
}

int power_mod(int base, int exponent, int modulus) {
  long long power = 1;
  for (int i = 0; i < exponent; ++i) power = power * base % modulus;
  return static_cast<int>(power);
}

int inverse_mod(int a, int modulus) {
  for (int x = 1; x <= modulus; ++x)
    if (residue(1LL * a * x, modulus) == 1 % modulus) return x;
  check(false, "an inverse of a number coprime to the modulus");
  return 0;
}

bool is_primitive_root(int g, int prime) {
  if (g % prime == 0) return false;
  int order = 1;
  for (long long power = g % prime; power != 1; power = power * g % prime) ++order;
  return order == prime - 1;
}

int primitive_root(int prime) {
  int g = 1;
  while (!is_primitive_root(g, prime)) check(++g < prime, "a prime has a primitive root");
  return g;
}

int chinese_remainder(int k1, int a, int k2, int b) {
  int k = k1;
  while (k % b != k2) k += a;
  return k;
}

}  // namespace xfm
