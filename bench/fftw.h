// FFTW, where it is installed: the few functions that the rivals need, found when the program runs.
#pragma once

namespace xfm::bench {

// Numbers of FFTW's interface.
enum FftwSign { kFftwForward = -1, kFftwBackward = 1 };
enum FftwFlag : unsigned { kFftwMeasure = 0, kFftwDestroyInput = 1u << 0, kFftwPreserveInput = 1u << 4, kFftwPatient = 1u << 5 };
enum FftwKind { kFftwR2hc = 0, kFftwHc2r = 1, kFftwDht = 2, kFftwRedft11 = 6 };

template <class T>
struct Fftw {
  using Plan = void*;
  using Complex = T[2];

  Plan (*plan_dft_1d)(int n, Complex* in, Complex* out, int sign, unsigned flags);
  Plan (*plan_dft_r2c_1d)(int n, T* in, Complex* out, unsigned flags);
  Plan (*plan_dft_c2r_1d)(int n, Complex* in, T* out, unsigned flags);
  Plan (*plan_r2r_1d)(int n, T* in, T* out, int kind, unsigned flags);
  Plan (*plan_r2r)(int rank, const int* sizes, T* in, T* out, const int* kinds, unsigned flags);
  void (*execute)(Plan plan);
  void (*destroy_plan)(Plan plan);
  void (*forget_wisdom)();
  void (*set_timelimit)(double seconds);

  // Null where it is not installed.
  static const Fftw* find();
  // For those who know that it is.
  static const Fftw& get();
};

inline bool fftw_installed() { return Fftw<float>::find() != nullptr && Fftw<double>::find() != nullptr; }

// A plan and its end.
template <class T>
class FftwPlan {
 public:
  explicit FftwPlan(typename Fftw<T>::Plan plan);
  ~FftwPlan();
  FftwPlan(FftwPlan&& other) noexcept;
  FftwPlan(const FftwPlan&) = delete;
  void run(long count = 1) const {
    for (; count > 0; --count) execute_(plan_);
  }

 private:
  typename Fftw<T>::Plan plan_;
  void (*execute_)(typename Fftw<T>::Plan);
};

}  // namespace xfm::bench
