#include "bench/dft_rivals.h"

namespace xfm::bench {

namespace {

template <class T>
typename Fftw<T>::Plan make_plan(Transform transform, int kind, int n, T* in, T* out, unsigned flags) {
  const Fftw<T>& fftw = Fftw<T>::get();
  auto* const complex_in = reinterpret_cast<typename Fftw<T>::Complex*>(in);
  auto* const complex_out = reinterpret_cast<typename Fftw<T>::Complex*>(out);
  const unsigned destroy = flags | kFftwDestroyInput;  // quicker; what it then computes from takes the same time
  fftw.forget_wisdom();                                // what another plan has learnt
  switch (transform) {
    case Transform::ComplexForward: return fftw.plan_dft_1d(n, complex_in, complex_out, kFftwForward, flags);
    case Transform::ComplexInverse: return fftw.plan_dft_1d(n, complex_in, complex_out, kFftwBackward, flags);
    case Transform::RealForward:
      return kind == 0 ? fftw.plan_dft_r2c_1d(n, in, complex_out, flags) : fftw.plan_r2r_1d(n, in, out, kFftwR2hc, flags);
    case Transform::RealInverse:
      return kind == 0 ? fftw.plan_dft_c2r_1d(n, complex_in, out, destroy) : fftw.plan_r2r_1d(n, in, out, kFftwHc2r, destroy);
    case Transform::Hartley: return fftw.plan_r2r_1d(n, in, out, kFftwDht, flags);
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
DftRival<T>::DftRival(Transform transform, int kind, int n, T* in, T* out, Effort effort)
    : name_(kind_name(transform, kind) + (effort == Effort::Patient ? " PATIENT" : " MEASURE")),
      plan_(make_plan(transform, kind, n, in, out, effort == Effort::Patient ? kFftwPatient : kFftwMeasure)) {}

template class DftRival<float>;
template class DftRival<double>;

}  // namespace xfm::bench
