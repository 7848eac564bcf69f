// One transform along one axis of an array of any shape: the loop over all its lines.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

namespace xfm_python {

namespace py = pybind11;

// The lines of an array along one axis: for every combination of the other indices the byte offset of the first element.
class Lines {
 public:
  Lines(const py::array& array, int axis) : stride_(array.strides(axis)) {
    for (int d = 0; d < array.ndim(); ++d) {
      if (d == axis) continue;
      shape_.push_back(array.shape(d));
      strides_.push_back(array.strides(d));
      count_ *= array.shape(d);
    }
    index_.resize(shape_.size());
  }

  py::ssize_t count() const { return count_; }
  py::ssize_t stride() const { return stride_; }  // between elements of a line, in bytes
  py::ssize_t offset() const { return offset_; }
  void next() {
    for (size_t d = shape_.size(); d-- > 0;) {
      offset_ += strides_[d];
      if (++index_[d] < shape_[d]) return;
      offset_ -= shape_[d] * strides_[d];
      index_[d] = 0;
    }
  }

 private:
  py::ssize_t stride_, count_ = 1, offset_ = 0;
  std::vector<py::ssize_t> shape_, strides_, index_;
};

// One line as a contiguous, aligned array of `n` elements: itself where it is one, else a copy, cut or filled up with zeros.
template <class T>
class Source {
 public:
  Source(const py::array& array, const Lines& lines, py::ssize_t length, py::ssize_t n)
      : base_(static_cast<const char*>(array.data())), stride_(lines.stride()), taken_(std::min(length, n)), buffer_(n) {
    // A line is read where it stands only if all lines are aligned.
    direct_ = length >= n && (stride_ == sizeof(T) || n == 1) && reinterpret_cast<std::uintptr_t>(base_) % alignof(T) == 0;
    for (int d = 0; d < array.ndim(); ++d) direct_ = direct_ && array.strides(d) % py::ssize_t{alignof(T)} == 0;
  }
  const T* at(py::ssize_t offset) {
    if (direct_) return reinterpret_cast<const T*>(base_ + offset);
    for (py::ssize_t i = 0; i < taken_; ++i) std::memcpy(&buffer_[i], base_ + offset + i * stride_, sizeof(T));
    return buffer_.data();
  }

 private:
  const char* base_;
  py::ssize_t stride_, taken_;
  bool direct_;
  std::vector<T> buffer_;
};

// transform(src, dst) on every line of x along the axis, of which `n_in` elements are taken; gives an array with lines of
// `n_out` elements, each times `factor`. The interpreter's lock is released meanwhile. The first status that is not 0 ends it.
template <class In, class Out, class Real, class Transform>
py::array batch(const py::array& x, int axis, py::ssize_t n_in, py::ssize_t n_out, Real factor, int& status, const Transform& transform) {
  std::vector<py::ssize_t> shape(x.shape(), x.shape() + x.ndim());
  const py::ssize_t length = shape[axis];
  shape[axis] = n_out;
  py::array_t<Out> y(shape);
  Lines from(x, axis), to(y, axis);
  Source<In> source(x, from, length, n_in);
  std::vector<Out> buffer(n_out);
  char* const base = reinterpret_cast<char*>(y.mutable_data());
  py::gil_scoped_release unlocked;
  const bool in_place = to.stride() == sizeof(Out);
  for (py::ssize_t i = 0; i < to.count(); ++i, from.next(), to.next()) {
    Out* const dst = in_place ? reinterpret_cast<Out*>(base + to.offset()) : buffer.data();
    if ((status = transform(source.at(from.offset()), dst)) != 0) break;
    if (factor != Real(1))
      for (py::ssize_t k = 0; k < n_out; ++k) dst[k] *= factor;
    if (!in_place)
      for (py::ssize_t k = 0; k < n_out; ++k) std::memcpy(base + to.offset() + k * to.stride(), &buffer[k], sizeof(Out));
  }
  return std::move(y);
}

}  // namespace xfm_python
