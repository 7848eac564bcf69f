// The functions of Xfm on NumPy arrays. Types, lengths and axes have been looked at by the Python side.
#include <algorithm>
#include <complex>
#include <memory>

#include "batch.h"
#include "xfm.hpp"

namespace xfm_python {
namespace {

[[noreturn]] void fail(int status) { throw py::value_error(std::string("Xfm: ") + xfm::status_text(status)); }

py::array finished(py::array y, int status) {
  if (status != xfmStatusOk) fail(status);
  return y;
}

// Complex to complex; `n` points.
template <class T>
py::array dft(const py::array& x, int axis, int n, bool forward, int flag) {
  using C = std::complex<T>;
  int status = 0;
  py::array y = batch<C, C, T>(x, axis, n, n, T(1), status, [=](const C* src, C* dst) {
    const auto scale = static_cast<xfm::Scale>(flag);
    return forward ? xfm::dft(src, dst, n, scale, xfm::as_status) : xfm::inverse_dft(src, dst, n, scale, xfm::as_status);
  });
  return finished(std::move(y), status);
}

template <class T, class Layout>
py::array real_dft_as(const py::array& x, int axis, int n, int flag) {
  int status = 0;
  const auto run = [=](const T* src, auto* dst) {
    return xfm::real_dft<Layout>(src, dst, n, static_cast<xfm::Scale>(flag), xfm::as_status);
  };
  if constexpr (std::same_as<Layout, xfm::Ccs>) {
    py::array y = batch<T, std::complex<T>, T>(x, axis, n, n / 2 + 1, T(1), status, run);
    return finished(std::move(y), status);
  } else {
    py::array y = batch<T, T, T>(x, axis, n, n, T(1), status, run);
    return finished(std::move(y), status);
  }
}

template <class T, class Layout>
py::array inverse_real_dft_as(const py::array& x, int axis, int n, int flag) {
  using X = std::conditional_t<std::same_as<Layout, xfm::Ccs>, std::complex<T>, T>;
  int status = 0;
  py::array y = batch<X, T, T>(x, axis, std::same_as<Layout, xfm::Ccs> ? n / 2 + 1 : n, n, T(1), status, [=](const X* src, T* dst) {
    return xfm::inverse_real_dft<Layout>(src, dst, n, static_cast<xfm::Scale>(flag), xfm::as_status);
  });
  return finished(std::move(y), status);
}

template <class T>
py::array real_dft(const py::array& x, int axis, int n, const std::string& layout, int flag) {
  if (layout == "pack") return real_dft_as<T, xfm::Pack>(x, axis, n, flag);
  if (layout == "perm") return real_dft_as<T, xfm::Perm>(x, axis, n, flag);
  return real_dft_as<T, xfm::Ccs>(x, axis, n, flag);
}
template <class T>
py::array inverse_real_dft(const py::array& x, int axis, int n, const std::string& layout, int flag) {
  if (layout == "pack") return inverse_real_dft_as<T, xfm::Pack>(x, axis, n, flag);
  if (layout == "perm") return inverse_real_dft_as<T, xfm::Perm>(x, axis, n, flag);
  return inverse_real_dft_as<T, xfm::Ccs>(x, axis, n, flag);
}

template <class T>
py::array hartley(const py::array& x, int axis, int n, int flag) {
  int status = 0;
  py::array y = batch<T, T, T>(x, axis, n, n, T(1), status, [=](const T* src, T* dst) {
    return xfm::hartley(src, dst, n, static_cast<xfm::Scale>(flag), xfm::as_status);
  });
  return finished(std::move(y), status);
}

template <class T>
py::array walsh_hadamard(const py::array& x, int axis, int order, int flag) {
  int status = 0;
  std::vector<T> buffer(xfm::walsh_hadamard_buffer_size<T>(order) / sizeof(T));  // operator new aligns to 16 bytes
  void* const work = buffer.data();
  py::array y = batch<T, T, T>(x, axis, 1 << order, 1 << order, T(1), status, [=](const T* src, T* dst) {
    return xfm::walsh_hadamard(src, dst, order, static_cast<xfm::Scale>(flag), work, xfm::as_status);
  });
  return finished(std::move(y), status);
}

// The DCT-IV times `factor`. The state of the last length is kept for the thread.
template <class T>
py::array dct4(const py::array& x, int axis, int n, double factor) {
  thread_local std::unique_ptr<xfm::Dct4<T>> kept;
  if (!kept || kept->length() != n) {
    XfmStatus status = xfmStatusOk;
    auto made = xfm::Dct4<T>::make(n, status);
    if (status == xfmStatusNullPointer) throw std::bad_alloc();
    if (status != xfmStatusOk) fail(status);
    kept = std::make_unique<xfm::Dct4<T>>(std::move(made));
  }
  int status = 0;
  py::array y = batch<T, T, T>(x, axis, n, n, static_cast<T>(factor), status,
                               [&transform = *kept](const T* src, T* dst) { return transform(src, dst, xfm::as_status); });
  return finished(std::move(y), status);
}

// The axis counted from 0, or -1 unless x is an array of T with as many points along it as a transform has.
template <class T>
int plain_axis(const py::handle& x, const py::handle& axis) {
  if (!py::isinstance<py::array_t<T>>(x) || !PyLong_CheckExact(axis.ptr())) return -1;
  const auto array = py::reinterpret_borrow<py::array>(x);
  long a = PyLong_AsLong(axis.ptr());
  if (a < 0) a += array.ndim();
  if (a < 0 || a >= array.ndim()) return -1;
  return array.shape(a) >= xfm::shortest_dft && array.shape(a) <= xfm::longest_dft ? static_cast<int>(a) : -1;
}

// Calls with an array that needs no conversion and the unscaled transform of its own length; None where it is not so, and the
// Python side goes the long way. Most of the time of a short transform is the way to it.
py::object plain_dft(const py::object& x, const py::object& axis) {
  const auto run = [&]<class T>(int a) { return dft<T>(x, a, static_cast<int>(py::array(x).shape(a)), true, xfmScaleNone); };
  if (const int a = plain_axis<std::complex<float>>(x, axis); a >= 0) return run.operator()<float>(a);
  if (const int a = plain_axis<std::complex<double>>(x, axis); a >= 0) return run.operator()<double>(a);
  return py::none();
}
py::object plain_real_dft(const py::object& x, const py::object& axis) {
  const auto run = [&]<class T>(int a) {
    return real_dft_as<T, xfm::Ccs>(x, a, static_cast<int>(py::array(x).shape(a)), xfmScaleNone);
  };
  if (const int a = plain_axis<float>(x, axis); a >= 0) return run.operator()<float>(a);
  if (const int a = plain_axis<double>(x, axis); a >= 0) return run.operator()<double>(a);
  return py::none();
}

// Each function for single and double precision, under one name with 32 or 64 behind it.
template <class T>
void define(py::module_& m, const std::string& bits) {
  m.def(("dft" + bits).c_str(), &dft<T>);
  m.def(("real_dft" + bits).c_str(), &real_dft<T>);
  m.def(("inverse_real_dft" + bits).c_str(), &inverse_real_dft<T>);
  m.def(("hartley" + bits).c_str(), &hartley<T>);
  m.def(("walsh_hadamard" + bits).c_str(), &walsh_hadamard<T>);
  m.def(("dct4" + bits).c_str(), &dct4<T>);
}

}  // namespace
}  // namespace xfm_python

PYBIND11_MODULE(_native, m) {
  xfm_python::define<float>(m, "32");
  xfm_python::define<double>(m, "64");
  m.def("plain_dft", &xfm_python::plain_dft);
  m.def("plain_real_dft", &xfm_python::plain_real_dft);
  m.attr("shortest_dft") = xfm::shortest_dft;
  m.attr("longest_dft") = xfm::longest_dft;
  m.def("version", [] { return std::string(xfm::library_version().version); });
}
