// What the tests of the real transforms share: the list of their kernels, the meaning of a cell by its definition, and
// the transforms by their formulas.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "generator/functions.h"
#include "tests/arrays.h"
#include "tests/scale.h"
#include "xfm.h"

namespace real_test {

using namespace test_arrays;  // NOLINT: the tests are one program each

enum class Kind { Forward, Inverse, Hartley };
enum class Format { Samples, Ccs, Pack, Perm };

struct Family {
  const char* name;
  Kind kind;
  Format source, target;
};

inline void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

inline constexpr Family kFamilies[] = {
    {"xfmgDFTFwd_RToCCS", Kind::Forward, Format::Samples, Format::Ccs},
    {"xfmgDFTFwd_RToPack", Kind::Forward, Format::Samples, Format::Pack},
    {"xfmgDFTFwd_RToPerm", Kind::Forward, Format::Samples, Format::Perm},
    {"xfmgDFTInv_CCSToR", Kind::Inverse, Format::Ccs, Format::Samples},
    {"xfmgDFTInv_PackToR", Kind::Inverse, Format::Pack, Format::Samples},
    {"xfmgDFTInv_PermToR", Kind::Inverse, Format::Perm, Format::Samples},
    {"xfmgHartley", Kind::Hartley, Format::Samples, Format::Samples},
};

using test_arrays::kFlags;

inline int length_of(Format format, int n) { return format == Format::Ccs ? n + 2 - n % 2 : n; }

// What stands at a position of a half-spectrum array.
struct Cell {
  int bin;
  bool imaginary;
};

inline Cell cell_at(Format format, int n, int j) {
  if (format == Format::Ccs) return {j / 2, j % 2 == 1};
  if (format == Format::Perm && n % 2 == 0) {
    if (j < 2) return {j == 0 ? 0 : n / 2, false};
    return {j / 2, j % 2 == 1};
  }
  return {(j + 1) / 2, j != 0 && j % 2 == 0};
}

inline bool is_zero_cell(Format format, int n, int j) {
  if (format != Format::Ccs) return false;
  const Cell cell = cell_at(format, n, j);
  return cell.imaginary && (cell.bin == 0 || 2 * cell.bin == n);
}

template <class T>
struct Kernel {
  using Function = XfmStatus(const T*, T*, int);

  const Family* family;
  int n;
  std::string name;
  Function* run;

  int source_length() const { return length_of(family->source, n); }
  int target_length() const { return length_of(family->target, n); }
};

template <class T>
Kernel<T> kernel(const Family& family, int n) {
  const std::string name =
      std::string(family.name) + "_" + std::to_string(n) + (sizeof(T) == 4 ? "_32f" : "_64f");
  void* const address = dlsym(RTLD_DEFAULT, name.c_str());
  if (address == nullptr) throw std::runtime_error("not in the library: " + name);
  return {&family, n, name, reinterpret_cast<typename Kernel<T>::Function*>(address)};
}

// Every kernel of a family and precision; the public list says that there are no others.
template <class T>
std::vector<Kernel<T>> kernels(const Family& family) {
  static const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
  std::vector<Kernel<T>> all;
  for (const xfm::Function* f : list.kernels(std::string(family.name) + (sizeof(T) == 4 ? "_32f" : "_64f")))
    all.push_back(kernel<T>(family, f->size));
  if (all.size() != 63) throw std::runtime_error(std::string(family.name) + ": 63 sizes expected");
  return all;
}

// Those of every family and precision.
inline std::vector<int> lengths() {
  std::vector<int> all;
  for (const Kernel<float>& k : kernels<float>(kFamilies[0])) all.push_back(k.n);
  return all;
}

// The factor that a flag puts on every output.
inline long double scale_of(Kind kind, int flag, int n) {
  using xfm::ScaleRule;
  const auto rule = kind == Kind::Forward ? ScaleRule::Forward : kind == Kind::Inverse ? ScaleRule::Inverse : ScaleRule::SelfInverse;
  return test_scale::scale_of<long double>(rule, flag, n);
}

inline long double cosine(long long num, int n) {
  return cosl(2 * acosl(-1) * static_cast<long double>(num % n) / n);
}
inline long double sine(long long num, int n) {
  return sinl(2 * acosl(-1) * static_cast<long double>(num % n) / n);
}

template <class T>
std::vector<long double> expected(const Kernel<T>& k, const std::vector<T>& src, int flag) {
  const int n = k.n;
  const long double scale = scale_of(k.family->kind, flag, n);
  std::vector<long double> c(n), s(n), out(k.target_length());
  for (int j = 0; j < n; ++j) c[j] = cosine(j, n), s[j] = sine(j, n);
  for (int j = 0; j < k.target_length(); ++j) {
    long double sum = 0;
    if (k.family->kind == Kind::Forward) {
      const Cell cell = cell_at(k.family->target, n, j);
      if (!is_zero_cell(k.family->target, n, j))
        for (int i = 0; i < n; ++i) sum += src[i] * (cell.imaginary ? -s[cell.bin * i % n] : c[cell.bin * i % n]);
    } else if (k.family->kind == Kind::Hartley) {
      for (int i = 0; i < n; ++i) sum += src[i] * (c[j * i % n] + s[j * i % n]);
    } else {
      for (int i = 0; i < k.source_length(); ++i) {
        if (is_zero_cell(k.family->source, n, i)) continue;
        const Cell cell = cell_at(k.family->source, n, i);
        const int weight = cell.bin == 0 || 2 * cell.bin == n ? 1 : 2;
        sum += weight * src[i] * (cell.imaginary ? -s[cell.bin * j % n] : c[cell.bin * j % n]);
      }
    }
    out[j] = scale * sum;
  }
  return out;
}

template <class T>
std::vector<T> run(const Kernel<T>& k, const std::vector<T>& src, int flag) {
  std::vector<T> dst(k.target_length(), T(-7));
  EXPECT_EQ(k.run(src.data(), dst.data(), flag), xfmStatusOk) << k.name << " flag " << flag;
  return dst;
}

// Test cases by family; each runs both precisions.
class ByFamily : public testing::TestWithParam<Family> {};

inline std::string family_name(const testing::TestParamInfo<Family>& info) {
  return std::string(info.param.name).substr(4);
}

template <class Check>
void for_both_precisions(const Family& family, Check check) {
  for (const Kernel<float>& k : kernels<float>(family)) check(k, float{});
  for (const Kernel<double>& k : kernels<double>(family)) check(k, double{});
}

}  // namespace real_test
