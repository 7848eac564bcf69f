// What the tests of the real transforms share: the list of their kernels, the meaning of a cell by its definition, the
// transforms by their formulas, and arrays between unreadable pages.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "generator/functions.h"
#include "xfm.h"

namespace real_test {

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

inline constexpr int kFlags[] = {xfmScaleFwdByN, xfmScaleInvByN, xfmScaleBySqrtN, xfmScaleNone};

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

// The factor that a flag puts on every output.
inline long double scale_of(Kind kind, int flag, int n) {
  if (flag == xfmScaleBySqrtN) return 1 / sqrtl(n);
  const bool divides = (flag == xfmScaleFwdByN && kind != Kind::Inverse) || (flag == xfmScaleInvByN && kind != Kind::Forward);
  return divides ? 1.0L / n : 1.0L;
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

// Uniform in [-1, 1], the same for the same seed.
template <class T>
std::vector<T> random_values(int count, unsigned seed) {
  std::mt19937 engine(seed);
  std::vector<T> values(count);
  for (T& v : values) v = static_cast<T>(static_cast<double>(engine()) / 2147483648.0 - 1.0);
  return values;
}

template <class T>
auto bits(T value) {
  if constexpr (sizeof(T) == 4) return std::bit_cast<uint32_t>(value);
  else return std::bit_cast<uint64_t>(value);
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

template <class T>
std::vector<T> run(const Kernel<T>& k, const std::vector<T>& src, int flag) {
  std::vector<T> dst(k.target_length(), T(-7));
  EXPECT_EQ(k.run(src.data(), dst.data(), flag), xfmStatusOk) << k.name << " flag " << flag;
  return dst;
}

// An array that ends, or begins, at an unreadable page; the rest of its own page is filled and can be checked.
template <class T>
class Guarded {
 public:
  enum class At { Begin, End };

  Guarded(int count, At at, int shift = 0) : count_(count), page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    base_ = static_cast<unsigned char*>(mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (base_ == MAP_FAILED) throw std::runtime_error("mmap");
    if (mprotect(base_ + page_, page_, PROT_READ | PROT_WRITE) != 0) throw std::runtime_error("mprotect");
    std::memset(base_ + page_, kFill, page_);
    data_ = reinterpret_cast<T*>(at == At::Begin ? base_ + page_ : base_ + 2 * page_ - count * sizeof(T)) +
            (at == At::Begin ? shift : -shift);
  }
  ~Guarded() { munmap(base_, 3 * page_); }
  Guarded(const Guarded&) = delete;

  T* data() { return data_; }
  std::vector<T> values() const { return {data_, data_ + count_}; }
  void fill(const std::vector<T>& values) { std::copy(values.begin(), values.end(), data_); }
  void protect() { mprotect(base_ + page_, page_, PROT_READ); }
  // The page around the array is as it was.
  bool clean_around() const {
    for (const unsigned char* p = base_ + page_; p < base_ + 2 * page_; ++p)
      if ((p < reinterpret_cast<unsigned char*>(data_) || p >= reinterpret_cast<unsigned char*>(data_ + count_)) && *p != kFill)
        return false;
    return true;
  }

 private:
  static constexpr unsigned char kFill = 0x5a;
  int count_;
  size_t page_;
  unsigned char* base_;
  T* data_;
};

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
