#include "tool/formulas.h"

#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

namespace xfm::tool {

namespace {

using Complex = std::complex<long double>;

constexpr long double kPi = std::numbers::pi_v<long double>;

// exp(2*pi*i*k/n) for k = 0 .. n-1.
std::vector<Complex> roots(size_t n) {
  std::vector<Complex> all;
  for (size_t k = 0; k < n; ++k) all.push_back(std::polar(1.0L, 2 * kPi * static_cast<long double>(k) / static_cast<long double>(n)));
  return all;
}

// sign -1 forward, +1 inverse.
std::vector<Complex> dft(const std::vector<Complex>& in, int sign) {
  const size_t n = in.size();
  const std::vector<Complex> root = roots(n);
  std::vector<Complex> out(n);
  for (size_t k = 0; k < n; ++k)
    for (size_t j = 0; j < n; ++j) out[k] += in[j] * (sign > 0 ? root[j * k % n] : std::conj(root[j * k % n]));
  return out;
}

// Where a half-spectrum keeps the real and the imaginary part of bin k, and -1 where a part that is 0 has no place.
enum class Layout { Ccs, Pack, Perm };
struct Place {
  long re, im;
};

Place place_of(Layout layout, size_t n, size_t k) {
  const long at = static_cast<long>(k);
  const bool real = k == 0 || 2 * k == n;
  if (layout == Layout::Ccs) return {2 * at, 2 * at + 1};
  if (k == 0) return {0, -1};
  if (layout == Layout::Perm && n % 2 == 0) return real ? Place{1, -1} : Place{2 * at, 2 * at + 1};
  return {2 * at - 1, real ? -1 : 2 * at};
}

Layout layout_of(const std::string& family) {
  if (family.find("CCS") != std::string::npos) return Layout::Ccs;
  return family.find("Pack") != std::string::npos ? Layout::Pack : Layout::Perm;
}

size_t cells(Layout layout, size_t n) { return layout == Layout::Ccs ? n / 2 * 2 + 2 : n; }

Numbers real_forward(Layout layout, size_t n, const Numbers& in) {
  const std::vector<Complex> bins = dft({in.begin(), in.end()}, -1);
  Numbers out(cells(layout, n));
  for (size_t k = 0; k <= n / 2; ++k) {
    const auto [re, im] = place_of(layout, n, k);
    out[static_cast<size_t>(re)] = bins[k].real();
    if (im >= 0) out[static_cast<size_t>(im)] = k == 0 || 2 * k == n ? 0 : bins[k].imag();
  }
  return out;
}

Numbers real_inverse(Layout layout, size_t n, const Numbers& in) {
  std::vector<Complex> bins(n);
  for (size_t k = 0; k <= n / 2; ++k) {
    const auto [re, im] = place_of(layout, n, k);
    const bool real = k == 0 || 2 * k == n;
    bins[k] = {in[static_cast<size_t>(re)], real ? 0 : in[static_cast<size_t>(im)]};
    if (!real) bins[n - k] = std::conj(bins[k]);
  }
  Numbers out;
  for (const Complex& value : dft(bins, +1)) out.push_back(value.real());
  return out;
}

Numbers complex_dft(int sign, const Numbers& in) {
  std::vector<Complex> points;
  for (size_t i = 0; i < in.size(); i += 2) points.emplace_back(in[i], in[i + 1]);
  Numbers out;
  for (const Complex& value : dft(points, sign)) out.insert(out.end(), {value.real(), value.imag()});
  return out;
}

Numbers hartley(const Numbers& in) {
  const size_t n = in.size();
  const std::vector<Complex> root = roots(n);
  Numbers out(n);
  for (size_t k = 0; k < n; ++k)
    for (size_t j = 0; j < n; ++j) out[k] += in[j] * (root[j * k % n].real() + root[j * k % n].imag());
  return out;
}

Numbers hadamard(const Numbers& in) {
  Numbers out(in.size());
  for (size_t i = 0; i < in.size(); ++i)
    for (size_t j = 0; j < in.size(); ++j) out[i] += std::popcount(i & j) % 2 == 0 ? in[j] : -in[j];
  return out;
}

}  // namespace

Extent extent(const std::string& family, size_t n) {
  if (family.find("CToC") != std::string::npos) return {2 * n, 2 * n};
  if (family.starts_with("xfmgDFTFwd")) return {n, cells(layout_of(family), n)};
  if (family.starts_with("xfmgDFTInv")) return {cells(layout_of(family), n), n};
  return {n, n};
}

Numbers by_formula(const std::string& family, size_t n, const Numbers& in) {
  if (family == "xfmgWHT") return hadamard(in);
  if (family == "xfmgHartley") return hartley(in);
  const bool forward = family.starts_with("xfmgDFTFwd");
  if (family.ends_with("CToC")) return complex_dft(forward ? -1 : 1, in);
  return forward ? real_forward(layout_of(family), n, in) : real_inverse(layout_of(family), n, in);
}

template <class T>
long double dct4_bin(const T* in, size_t n, size_t k) {
  const long double unit = kPi / (4 * static_cast<long double>(n));
  long double sum = 0;
  for (size_t j = 0; j < n; ++j) sum += in[j] * std::cos(unit * static_cast<long double>((2 * j + 1) * (2 * k + 1) % (8 * n)));
  return sum;
}

template long double dct4_bin(const float*, size_t, size_t);
template long double dct4_bin(const double*, size_t, size_t);

}  // namespace xfm::tool
