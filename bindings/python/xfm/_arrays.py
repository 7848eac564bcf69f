"""What the functions accept: types, axes, lengths and norms, refused in the words of NumPy and SciPy."""

import operator

import numpy as np

try:
    from numpy.exceptions import AxisError
except ImportError:  # before NumPy 1.25
    from numpy import AxisError

from ._native import longest_dft, shortest_dft

# The flags of the library that say where the division by N happens.
BY_N_FORWARD, BY_N_INVERSE, BY_SQRT_N, UNSCALED = 1, 2, 4, 8


class UnsupportedLength(ValueError):
    """A length that the library has no transform for."""


class UnsupportedType(TypeError):
    """An element type that the library has no transform for."""


def _widened(x):
    """The array in native byte order and in a precision that the library works in."""
    if x.dtype.kind not in "biufc":
        raise UnsupportedType(f"arrays of type {x.dtype} cannot be transformed")
    if x.dtype.kind in "fc" and x.dtype.itemsize > (16 if x.dtype.kind == "c" else 8):
        raise UnsupportedType(f"there are no transforms in the precision of {x.dtype}")
    if x.dtype.kind in "biu":
        return x.astype(np.float64)
    if x.dtype == np.float16:
        return x.astype(np.float32)
    return x if x.dtype.isnative else x.astype(x.dtype.newbyteorder("="))


def real_array(x):
    x = np.asarray(x)
    if x.dtype.kind == "c":
        raise TypeError("x must be a real sequence")
    return _widened(x)


def complex_array(x):
    x = _widened(np.asarray(x))
    return x if x.dtype.kind == "c" else x.astype(np.complex64 if x.dtype == np.float32 else np.complex128)


def single(x):
    return x.dtype == np.float32 or x.dtype == np.complex64


def normal_axis(x, axis):
    axis = operator.index(axis)
    if not -x.ndim <= axis < x.ndim:
        raise AxisError(axis, x.ndim)
    return axis % x.ndim


def points(n, default):
    """A given length, or the array's own."""
    n = default if n is None else operator.index(n)
    if n < 1:
        raise ValueError(f"invalid number of data points ({n}) specified")
    return n


def dft_points(n, default):
    n = points(n, default)
    if not shortest_dft <= n <= longest_dft:
        raise UnsupportedLength(f"Xfm transforms {shortest_dft} to {longest_dft} points, not {n}")
    return n


def power_of_two(n, least, most, what):
    if n & (n - 1) or not least <= n <= most:
        raise UnsupportedLength(f"the {what} takes a power of two from {least} to {most} points, not {n}")
    return n


def flag(norm, forward):
    """The scaling flag of a word of `norm`."""
    if norm is None or norm == "backward":
        return UNSCALED if forward else BY_N_INVERSE
    if norm == "ortho":
        return BY_SQRT_N
    if norm == "forward":
        return BY_N_FORWARD if forward else UNSCALED
    raise ValueError(f"Invalid norm value {norm!r}; should be \"backward\", \"ortho\" or \"forward\".")
