// Calls every public function of two builds of the library with the same arguments and compares what they do, bit for bit:
//
//   compare_libraries REFERENCE OTHER [--only REGEX] [--dct4 LOG2] [--rounds N] [--seed N]
//
// Each build is loaded into a name space of its own. Results, statuses and the bytes around the results must be the same for
// all lengths, flags, offsets from a multiple of 64 bytes, in place or not, over inputs of several kinds: values of one and of
// many magnitudes, zeros of both signs, subnormals, infinities. Of NaNs only the place counts. The DCT-IV is compared up to
// 2^LOG2 points (20). Prints the functions that differ, each with its first difference; exits 1 if there are any.
#include <dlfcn.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <string>

#include "generator/functions.h"
#include "generator/program.h"
#include "xfm.h"

namespace {

using xfm::Function;
using xfm::FunctionKind;
using xfm::InputError;

struct Options {
  std::string reference, other;
  std::regex only{""};
  int dct4 = 20, rounds = 2;
  unsigned seed = 1;
};

int whole_number(const std::string& option, const std::string& text) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != 0 || value < 0 || value > 1'000'000) throw InputError(option + ": not a number: '" + text + "'");
  return static_cast<int>(value);
}

Options options_of(int argc, char** argv) {
  Options options;
  std::vector<std::string> paths;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (!word.starts_with("--")) {
      paths.push_back(word);
      continue;
    }
    if (i + 1 == argc) throw InputError(word + " takes a value");
    const std::string value = argv[++i];
    if (word == "--only") options.only = value;
    else if (word == "--dct4") options.dct4 = whole_number(word, value);
    else if (word == "--rounds") options.rounds = whole_number(word, value);
    else if (word == "--seed") options.seed = whole_number(word, value);
    else throw InputError("unknown option " + word);
  }
  if (paths.size() != 2) throw InputError("usage: compare_libraries REFERENCE OTHER [--only REGEX] [--dct4 LOG2] [--rounds N] [--seed N]");
  options.reference = paths[0];
  options.other = paths[1];
  return options;
}

class Library {
 public:
  explicit Library(const std::string& path) : path_(path), handle_(dlmopen(LM_ID_NEWLM, path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw InputError(dlerror());
  }

  template <class F>
  F* find(const std::string& name) const {
    void* const address = dlsym(handle_, name.c_str());
    if (address == nullptr) throw InputError(path_ + ": no function " + name);
    return reinterpret_cast<F*>(address);
  }

 private:
  std::string path_;
  void* handle_;
};

// What inputs are made of.
enum class Data { Plain, Magnitudes, Zeros, Subnormals, Infinities, Constant };
constexpr Data kData[] = {Data::Plain, Data::Magnitudes, Data::Zeros, Data::Subnormals, Data::Infinities, Data::Constant};

template <class T>
T value_of(Data data, std::mt19937& engine) {
  const T plain = static_cast<T>(static_cast<double>(engine()) / 2147483648.0 - 1.0);
  const unsigned die = engine() % 8;
  switch (data) {
    case Data::Plain: return plain;
    case Data::Magnitudes: return std::ldexp(plain, static_cast<int>(engine() % 60) - 30);
    case Data::Zeros: return die < 3 ? T(0) : die < 6 ? -T(0) : plain;
    case Data::Subnormals: return die < 6 ? plain * std::numeric_limits<T>::min() : plain * std::numeric_limits<T>::min() * 64;
    case Data::Infinities: return die == 0 ? std::copysign(std::numeric_limits<T>::infinity(), plain) : die == 1 ? -T(0) : plain;
    case Data::Constant: return T(-0.75);
  }
  return plain;
}

// Elements with room around them, all of it compared.
template <class T>
class Array {
 public:
  static constexpr int kMargin = 16;
  Array(int count, int offset)
      : size_(count + offset + 2 * kMargin),
        memory_(static_cast<T*>(std::aligned_alloc(64, (size_ * sizeof(T) + 63) / 64 * 64))),
        data_(memory_.get() + kMargin + offset) {
    for (int i = 0; i < size_; ++i) memory_.get()[i] = T(1234 + i);
  }

  T* data() { return data_; }
  // The first element, counted from data(), in which two arrays differ, or none.
  bool differs_from(const Array& other, int& at) const {
    for (int i = 0; i < size_; ++i) {
      const T &a = memory_.get()[i], &b = other.memory_.get()[i];
      if (std::memcmp(&a, &b, sizeof(T)) == 0 || (std::isnan(a) && std::isnan(b))) continue;
      at = i - static_cast<int>(data_ - memory_.get());
      return true;
    }
    return false;
  }
  T operator[](int i) const { return data_[i]; }

 private:
  struct Free {
    void operator()(T* p) const { std::free(p); }
  };
  int size_;
  std::unique_ptr<T, Free> memory_;
  T* data_;
};

class Comparison {
 public:
  explicit Comparison(const Options& options) : options_(options), reference_(options.reference), other_(options.other) {}

  void run() {
    const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
    for (const Function& f : list.functions()) {
      if (!std::regex_search(f.name, options_.only)) continue;
      ++functions_;
      engine_.seed(options_.seed);
      if (f.family == "xfmgWHTGetBufferSize") sizes(f, 0, 15);
      else if (f.part == "dct4") dct4(f);
      else if (f.part == "frame") version(f);
      else if (f.type.starts_with("32")) transform<float>(f);
      else transform<double>(f);
    }
  }

  int report() const {
    for (const auto& [name, text] : differences_) std::printf("%s: %s\n", name.c_str(), text.c_str());
    std::printf("%d functions, %ld calls, %zu functions differ\n", functions_, calls_, differences_.size());
    return differences_.empty() ? 0 : 1;
  }

 private:
  void differ(const Function& f, const std::string& how) { differences_.try_emplace(f.name, how); }

  void same_status(const Function& f, XfmStatus a, XfmStatus b, const std::string& call) {
    ++calls_;
    if (a != b) differ(f, call + ": status " + std::to_string(a) + " and " + std::to_string(b));
  }

  template <class T>
  void same_array(const Function& f, const Array<T>& a, const Array<T>& b, const std::string& call) {
    int at = 0;
    if (!a.differs_from(b, at)) return;
    char text[120];
    std::snprintf(text, sizeof text, ": element %d is %a and %a", at, double(a[at]), double(b[at]));
    differ(f, call + text);
  }

  // One call of both builds, out of place and in place; `call(library, src, dst)` gives the status.
  template <class T>
  void both(const Function& f, Data data, int room, int src_offset, int dst_offset, const std::string& text,
            const std::function<XfmStatus(const Library&, const T*, T*)>& call) {
    for (const bool in_place : {false, true}) {
      Array<T> src(room, src_offset), a(room, in_place ? src_offset : dst_offset), b(room, in_place ? src_offset : dst_offset);
      for (int i = 0; i < room; ++i) src.data()[i] = value_of<T>(data, engine_);
      if (in_place)
        for (int i = 0; i < room; ++i) a.data()[i] = b.data()[i] = src[i];
      const XfmStatus first = call(reference_, in_place ? a.data() : src.data(), a.data());
      const XfmStatus second = call(other_, in_place ? b.data() : src.data(), b.data());
      const std::string words = text + ", data " + std::to_string(static_cast<int>(data)) + ", offsets " + std::to_string(src_offset) + " " +
                                std::to_string(dst_offset) + (in_place ? ", in place" : "");
      same_status(f, first, second, words);
      same_array(f, a, b, words);
    }
  }

  template <class T>
  void transform(const Function& f) {
    const bool dispatcher = f.kind == FunctionKind::Dispatcher, order = f.part == "wht", buffer = f.takes_buffer();
    const int least = dispatcher ? 0 : f.size, most = dispatcher ? (order ? 14 : 66) : f.size;
    for (int n = least; n <= most; ++n) {
      const int room = order ? 1 << std::min(n, 13) : 2 * n + 2;
      const auto call = [&](const Library& library, const T* src, T* dst, int flag, void* work) -> XfmStatus {
        if (dispatcher && buffer) return library.find<XfmStatus(const T*, T*, int, int, void*)>(f.name)(src, dst, n, flag, work);
        if (dispatcher) return library.find<XfmStatus(const T*, T*, int, int)>(f.name)(src, dst, n, flag);
        if (buffer) return library.find<XfmStatus(const T*, T*, int, void*)>(f.name)(src, dst, flag, work);
        return library.find<XfmStatus(const T*, T*, int)>(f.name)(src, dst, flag);
      };
      alignas(64) static char work[1 << 18];
      for (const int flag : {8, 4, 1, 2, 0, 3, 16, -1}) {
        const bool good = flag > 0 && flag <= 8 && flag != 3;
        const std::string text = std::to_string(n) + " points or order, flag " + std::to_string(flag);
        for (int round = 0; round < (good && !dispatcher ? options_.rounds : 1); ++round)
          for (const Data data : kData) {
            const int src_offset = round % 2 * static_cast<int>(engine_() % 16), dst_offset = round % 2 * static_cast<int>(engine_() % 16);
            both<T>(f, data, room, src_offset, dst_offset, text, [&](const Library& library, const T* src, T* dst) {
              return call(library, src, dst, flag, buffer && round % 2 ? nullptr : work);
            });
            if (!good) break;
          }
      }
      Array<T> array(room, 0);
      for (const int flag : {8, 0}) {
        same_status(f, call(reference_, nullptr, array.data(), flag, work), call(other_, nullptr, array.data(), flag, work), "no src");
        same_status(f, call(reference_, array.data(), nullptr, flag, work), call(other_, array.data(), nullptr, flag, work), "no dst");
      }
    }
  }

  void sizes(const Function& f, int least, int most) {
    for (int n = least; n <= most; ++n) {
      int a = -1, b = -1;
      same_status(f, reference_.find<XfmStatus(int, int*)>(f.name)(n, &a), other_.find<XfmStatus(int, int*)>(f.name)(n, &b), std::to_string(n));
      if (a != b) differ(f, std::to_string(n) + ": " + std::to_string(a) + " and " + std::to_string(b) + " bytes");
    }
  }

  void dct4(const Function& f) {
    if (f.family == "xfmgDCT4GetSize") {
      sizes(f, -1, 70000);
      for (int k = 16; k < 31; ++k) sizes(f, (1 << k) - 1, (1 << k) + 1);
    } else if (f.family == "xfmgDCT4") {
      if (f.type == "32f") dct4_transform<float, XfmDCT4State_32f>(f);
      else dct4_transform<double, XfmDCT4State_64f>(f);
    } else if (f.family == "xfmgDCT4Init" || f.family == "xfmgDCT4InitAlloc") {
      const bool alloc = f.family == "xfmgDCT4InitAlloc";
      std::vector<char> block(1 << 20);
      for (const int n : {-8, 0, 1, 3, 6, 96, 4096}) {
        const auto call = [&](const Library& library, bool with_pointer) -> XfmStatus {
          void* state = nullptr;
          void** const pointer = with_pointer ? &state : nullptr;
          const XfmStatus status = alloc ? library.find<XfmStatus(void**, int)>(f.name)(pointer, n)
                                         : library.find<XfmStatus(void**, int, void*)>(f.name)(pointer, n, n % 16 ? block.data() : nullptr);
          if (alloc && status == xfmStatusOk) library.find<XfmStatus(void*)>("xfmgDCT4Free_" + f.type)(state);
          return status;
        };
        for (const bool with_pointer : {true, false})
          same_status(f, call(reference_, with_pointer), call(other_, with_pointer), std::to_string(n) + " points");
      }
    } else {
      same_status(f, reference_.find<XfmStatus(void*)>(f.name)(nullptr), other_.find<XfmStatus(void*)>(f.name)(nullptr), "no state");
    }
  }

  template <class T, class State>
  void dct4_transform(const Function& f) {
    for (int k = 1; k <= options_.dct4; ++k) {
      const int n = 1 << k;
      std::map<const Library*, State*> states;
      for (const Library* library : {&reference_, &other_})
        if (library->find<XfmStatus(State**, int)>("xfmgDCT4InitAlloc_" + f.type)(&states[library], n) != xfmStatusOk)
          throw InputError("no state for " + std::to_string(n) + " points");
      for (const Data data : kData)
        for (const int offset : {0, 1 + static_cast<int>(engine_() % 15)})
          both<T>(f, data, n, offset, static_cast<int>(engine_() % 16), std::to_string(n) + " points",
                  [&](const Library& library, const T* src, T* dst) {
                    return library.find<XfmStatus(const T*, T*, State*)>(f.name)(src, dst, states[&library]);
                  });
      for (const Library* library : {&reference_, &other_}) library->find<XfmStatus(State*)>("xfmgDCT4Free_" + f.type)(states[library]);
    }
  }

  void version(const Function& f) {
    ++calls_;
    const auto *a = reference_.find<const XfmLibraryVersion*()>(f.name)(), *b = other_.find<const XfmLibraryVersion*()>(f.name)();
    const auto numbers = [](const XfmLibraryVersion& v) { return std::tuple(v.major, v.minor, v.majorBuild, v.build); };
    if (numbers(*a) != numbers(*b) || std::memcmp(a->targetCpu, b->targetCpu, 4) != 0 || std::strcmp(a->name, b->name) != 0 ||
        std::strcmp(a->version, b->version) != 0 || std::strcmp(a->buildDate, b->buildDate) != 0)
      differ(f, "the version record");
  }

  Options options_;
  Library reference_, other_;
  std::mt19937 engine_;
  int functions_ = 0;
  long calls_ = 0;
  std::map<std::string, std::string> differences_;
};

void program(int argc, char** argv) {
  Comparison comparison(options_of(argc, argv));
  comparison.run();
  if (comparison.report() != 0) std::exit(1);
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
