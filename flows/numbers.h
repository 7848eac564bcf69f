// Arithmetic of the index maps: residues, primes and their roots.
#pragma once

namespace xfm {

bool is_prime(int n);
// base^exponent modulo a modulus, for an exponent from 0.
int power_mod(int base, int exponent, int modulus);
// x with x*a = 1 modulo a modulus that a is coprime to.
int inverse_mod(int a, int modulus);
// Whether the powers of g are all residues modulo a prime but 0, and the smallest such g.
bool is_primitive_root(int g, int prime);
int primitive_root(int prime);
// The number below a*b that is k1 modulo a and k2 modulo b.
int chinese_remainder(int k1, int a, int k2, int b);

// k modulo n, from 0 to n-1 for negative k too.
inline int residue(long long k, int n) { return static_cast<int>(((k % n) + n) % n); }

}  // namespace xfm
