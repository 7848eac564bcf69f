#include "bench/fftw_rivals.h"

#include <fftw3.h>

#include "generator/check.h"

namespace xfm::bench {

namespace {

template <class T>
struct Api;

template <>
struct Api<float> {
  using Plan = fftwf_plan;
  using Complex = fftwf_complex;
  static constexpr auto c2c = fftwf_plan_dft_1d;
  static constexpr auto r2c = fftwf_plan_dft_r2c_1d;
  static constexpr auto c2r = fftwf_plan_dft_c2r_1d;
  static constexpr auto r2r = fftwf_plan_r2r_1d;
  static constexpr auto execute = fftwf_execute;
  static constexpr auto destroy = fftwf_destroy_plan;
  static constexpr auto forget = fftwf_forget_wisdom;
};

template <>
struct Api<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto c2c = fftw_plan_dft_1d;
  static constexpr auto r2c = fftw_plan_dft_r2c_1d;
  static constexpr auto c2r = fftw_plan_dft_c2r_1d;
  static constexpr auto r2r = fftw_plan_r2r_1d;
  static constexpr auto execute = fftw_execute;
  static constexpr auto destroy = fftw_destroy_plan;
  static constexpr auto forget = fftw_forget_wisdom;
};

template <class T>
typename Api<T>::Plan make_plan(Transform transform, int kind, int n, T* in, T* out, unsigned flags) {
  using A = Api<T>;
  auto* const complex_in = reinterpret_cast<typename A::Complex*>(in);
  auto* const complex_out = reinterpret_cast<typename A::Complex*>(out);
  switch (transform) {
    case Transform::ComplexForward: return A::c2c(n, complex_in, complex_out, FFTW_FORWARD, flags);
    case Transform::ComplexInverse: return A::c2c(n, complex_in, complex_out, FFTW_BACKWARD, flags);
    case Transform::RealForward: return kind == 0 ? A::r2c(n, in, complex_out, flags) : A::r2r(n, in, out, FFTW_R2HC, flags);
    case Transform::RealInverse:  // may destroy its input, which is quicker; what it then computes from takes the same time
      return kind == 0 ? A::c2r(n, complex_in, out, flags | FFTW_DESTROY_INPUT) : A::r2r(n, in, out, FFTW_HC2R, flags | FFTW_DESTROY_INPUT);
    case Transform::Hartley: return A::r2r(n, in, out, FFTW_DHT, flags);
  }
  return nullptr;
}

std::string kind_name(Transform transform, int kind) {
  switch (transform) {
    case Transform::RealForward: return kind == 0 ? "r2c" : "R2HC";
    case Transform::RealInverse: return kind == 0 ? "c2r" : "HC2R";
    case Transform::Hartley: return "DHT";
    default: return "c2c";
  }
}

}  // namespace

template <class T>
struct FftwPlan<T>::Handle {
  typename Api<T>::Plan plan;
  ~Handle() { Api<T>::destroy(plan); }
};

template <class T>
FftwPlan<T>::FftwPlan(Transform transform, int kind, int n, T* in, T* out, Effort effort)
    : name_(kind_name(transform, kind) + (effort == Effort::Patient ? " PATIENT" : " MEASURE")) {
  Api<T>::forget();  // what another plan has learnt
  const auto plan = make_plan(transform, kind, n, in, out, effort == Effort::Patient ? FFTW_PATIENT : FFTW_MEASURE);
  check(plan != nullptr, "FFTW makes no plan " + name_ + " of length " + std::to_string(n));
  handle_.reset(new Handle{plan});
}

template <class T>
FftwPlan<T>::~FftwPlan() = default;
template <class T>
FftwPlan<T>::FftwPlan(FftwPlan&&) noexcept = default;

template <class T>
void FftwPlan<T>::run(long count) const {
  for (const auto plan = handle_->plan; count > 0; --count) Api<T>::execute(plan);
}

template class FftwPlan<float>;
template class FftwPlan<double>;

}  // namespace xfm::bench
