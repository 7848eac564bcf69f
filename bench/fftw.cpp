#include "bench/fftw.h"

#include <dlfcn.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "generator/check.h"

namespace xfm::bench {

namespace {

template <class T>
std::unique_ptr<Fftw<T>> load() {
  constexpr bool kSingle = std::is_same_v<T, float>;
  void* const library = dlopen(kSingle ? "libfftw3f.so.3" : "libfftw3.so.3", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return nullptr;
  auto fftw = std::make_unique<Fftw<T>>();
  bool complete = true;
  const auto find = [&](auto& function, const char* name) {
    void* const address = dlsym(library, (std::string(kSingle ? "fftwf_" : "fftw_") + name).c_str());
    complete = complete && address != nullptr;
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(address);
  };
  find(fftw->plan_dft_1d, "plan_dft_1d");
  find(fftw->plan_dft_r2c_1d, "plan_dft_r2c_1d");
  find(fftw->plan_dft_c2r_1d, "plan_dft_c2r_1d");
  find(fftw->plan_r2r_1d, "plan_r2r_1d");
  find(fftw->plan_r2r, "plan_r2r");
  find(fftw->execute, "execute");
  find(fftw->destroy_plan, "destroy_plan");
  find(fftw->forget_wisdom, "forget_wisdom");
  find(fftw->set_timelimit, "set_timelimit");
  return complete ? std::move(fftw) : nullptr;
}

}  // namespace

template <class T>
const Fftw<T>* Fftw<T>::find() {
  static const std::unique_ptr<Fftw> fftw = load<T>();
  return fftw.get();
}

template <class T>
const Fftw<T>& Fftw<T>::get() {
  check(find() != nullptr, "FFTW is used where it was not found");
  return *find();
}

template <class T>
FftwPlan<T>::FftwPlan(typename Fftw<T>::Plan plan) : plan_(plan), execute_(Fftw<T>::get().execute) {
  check(plan != nullptr, "FFTW makes no plan");
}

template <class T>
FftwPlan<T>::~FftwPlan() {
  if (plan_ != nullptr) Fftw<T>::get().destroy_plan(plan_);
}

template <class T>
FftwPlan<T>::FftwPlan(FftwPlan&& other) noexcept : plan_(std::exchange(other.plan_, nullptr)), execute_(other.execute_) {}

template struct Fftw<float>;
template struct Fftw<double>;
template class FftwPlan<float>;
template class FftwPlan<double>;

}  // namespace xfm::bench
