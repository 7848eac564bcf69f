"""The transforms along one axis, and along several one after the other."""

import operator

import numpy as np

from . import _arrays, _native
from ._arrays import UnsupportedLength

_LONGEST_WHT = 8192
_LONGEST_DCT4 = {True: 2**26, False: 2**25}  # in single precision or not


def _complex(x, n, axis, norm, forward):
    x = _arrays.complex_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.dft_points(n, x.shape[axis])
    return (_native.dft32 if _arrays.single(x) else _native.dft64)(x, axis, n, forward, _arrays.flag(norm, forward))


def _no_plan(plan):
    if plan is not None:
        raise NotImplementedError("Passing a precomputed plan is not supported")


def fft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """Discrete Fourier transform of 2 to 64 points along an axis.

    y[k] = sum over j of x[j] * exp(-2*pi*i*j*k/n). `n` crops the axis or fills it up with zeros. `norm` is "backward" (no
    division, the default), "ortho" (by sqrt(n)) or "forward" (by n). `overwrite_x` and `workers` are accepted and change
    nothing. Raises ValueError for other lengths, TypeError for types without a transform.
    """
    if n is None and norm is None and plan is None and (y := _native.plain_dft(x, axis)) is not None:
        return y
    _no_plan(plan)
    return _complex(x, n, axis, norm, True)


def ifft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The inverse of `fft`: exp(+2*pi*i*j*k/n), and by default divided by n."""
    _no_plan(plan)
    return _complex(x, n, axis, norm, False)


def real_forward(x, n, axis, layout, flag):
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.dft_points(n, x.shape[axis])
    return (_native.real_dft32 if _arrays.single(x) else _native.real_dft64)(x, axis, n, layout, flag)


def rfft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The bins 0 to n/2 of the DFT of n real samples, 2 to 64."""
    if n is None and norm is None and plan is None and (y := _native.plain_real_dft(x, axis)) is not None:
        return y
    _no_plan(plan)
    return real_forward(x, n, axis, "ccs", _arrays.flag(norm, True))


def real_inverse(x, n, axis, flag):
    x = _arrays.complex_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.dft_points(n, 2 * (x.shape[axis] - 1))
    return (_native.inverse_real_dft32 if _arrays.single(x) else _native.inverse_real_dft64)(x, axis, n, "ccs", flag)


def irfft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The n real samples (by default 2*(m-1)) of a half-spectrum of m bins; the inverse of `rfft`."""
    _no_plan(plan)
    return real_inverse(x, n, axis, _arrays.flag(norm, False))


def hfft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The real DFT of a signal that is Hermitian and given by its first half."""
    _no_plan(plan)
    # The sum of an inverse with the scale of a forward transform: its two flags change places.
    scale = {_arrays.UNSCALED: _arrays.UNSCALED, _arrays.BY_N_FORWARD: _arrays.BY_N_INVERSE}
    flag = _arrays.flag(norm, True)
    return real_inverse(np.conj(x), n, axis, scale.get(flag, flag))


def ihfft(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The inverse of `hfft`."""
    _no_plan(plan)
    scale = {_arrays.BY_N_INVERSE: _arrays.BY_N_FORWARD}
    flag = _arrays.flag(norm, False)
    return np.conj(real_forward(x, n, axis, "ccs", scale.get(flag, flag)))


def _axes_and_shape(x, s, axes):
    """The axes of an n-dimensional transform and the length along each, as SciPy reads them."""
    if s is not None:
        s = [operator.index(n) for n in np.atleast_1d(s)]
    if axes is None:
        axes = range(x.ndim) if s is None else range(x.ndim - len(s), x.ndim)
        if s is not None and len(s) > x.ndim:
            raise ValueError("shape requires more axes than are present")
    axes = [_arrays.normal_axis(x, a) for a in np.atleast_1d(np.asarray(axes, dtype=int))] if not isinstance(axes, range) else list(axes)
    if len(set(axes)) != len(axes):
        raise ValueError("all axes must be unique")
    if s is not None and len(s) != len(axes):
        raise ValueError("when given, axes and shape arguments have to be of the same length")
    return axes, [x.shape[a] for a in axes] if s is None else [x.shape[a] if n == -1 else n for a, n in zip(axes, s)]


def _over_axes(transform, x, s, axes, norm):
    x = np.asarray(x)
    axes, lengths = _axes_and_shape(x, s, axes)
    if not axes:
        return _arrays.complex_array(x)
    for axis, n in zip(reversed(axes), reversed(lengths)):
        x = transform(x, n, axis, norm)
    return x


def fftn(x, s=None, axes=None, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`fft` along several axes (all by default), each of the length that `s` gives it."""
    _no_plan(plan)
    return _over_axes(fft, x, s, axes, norm)


def ifftn(x, s=None, axes=None, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The inverse of `fftn`."""
    _no_plan(plan)
    return _over_axes(ifft, x, s, axes, norm)


def rfftn(x, s=None, axes=None, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`rfft` along the last of several axes, `fft` along the others."""
    _no_plan(plan)
    x = np.asarray(x)
    axes, lengths = _axes_and_shape(x, s, axes)
    if not axes:
        raise ValueError("at least 1 axis must be transformed")
    x = rfft(x, lengths[-1], axes[-1], norm)
    return _over_axes(fft, x, lengths[:-1], axes[:-1], norm) if len(axes) > 1 else x


def irfftn(x, s=None, axes=None, norm=None, overwrite_x=False, workers=None, *, plan=None):
    """The inverse of `rfftn`."""
    _no_plan(plan)
    x = np.asarray(x)
    axes, lengths = _axes_and_shape(x, s, axes)
    if not axes:
        raise ValueError("at least 1 axis must be transformed")
    last = lengths[-1] if s is not None else 2 * (x.shape[axes[-1]] - 1)
    if len(axes) > 1:
        x = _over_axes(ifft, x, lengths[:-1], axes[:-1], norm)
    return irfft(x, last, axes[-1], norm)


def fft2(x, s=None, axes=(-2, -1), norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`fftn` along two axes."""
    return fftn(x, s, axes, norm, plan=plan)


def ifft2(x, s=None, axes=(-2, -1), norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`ifftn` along two axes."""
    return ifftn(x, s, axes, norm, plan=plan)


def rfft2(x, s=None, axes=(-2, -1), norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`rfftn` along two axes."""
    return rfftn(x, s, axes, norm, plan=plan)


def irfft2(x, s=None, axes=(-2, -1), norm=None, overwrite_x=False, workers=None, *, plan=None):
    """`irfftn` along two axes."""
    return irfftn(x, s, axes, norm, plan=plan)


def hartley(x, n=None, axis=-1, norm=None):
    """Hartley transform of 2 to 64 real points: y[k] = sum over j of x[j] * (cos(2*pi*j*k/n) + sin(2*pi*j*k/n)).

    Its own inverse, up to the scale: "backward" divides by nothing, "forward" by n, "ortho" by sqrt(n).
    """
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.dft_points(n, x.shape[axis])
    return (_native.hartley32 if _arrays.single(x) else _native.hartley64)(x, axis, n, _arrays.flag(norm, True))


def wht(x, n=None, axis=-1, norm=None):
    """Walsh-Hadamard transform in natural order: y[i] = sum over j of (-1)**popcount(i & j) * x[j].

    The length is a power of two from 2 to 8192. Its own inverse, up to the scale, as in `hartley`.
    """
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.power_of_two(_arrays.points(n, x.shape[axis]), 2, _LONGEST_WHT, "Walsh-Hadamard transform")
    order = n.bit_length() - 1
    return (_native.walsh_hadamard32 if _arrays.single(x) else _native.walsh_hadamard64)(x, axis, order, _arrays.flag(norm, True))


def dct4_with_factor(x, n, axis, factor):
    """The sum formula of the DCT-IV times factor(n)."""
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.power_of_two(_arrays.points(n, x.shape[axis]), 2, _LONGEST_DCT4[_arrays.single(x)], "DCT-IV")
    return (_native.dct432 if _arrays.single(x) else _native.dct464)(x, axis, n, factor(n))


def _dct(x, type, n, axis, norm, forward):
    if type != 4:
        raise NotImplementedError(f"Xfm has the DCT of type 4 only, not {type}")
    flag = _arrays.flag(norm, forward)
    if flag == _arrays.BY_SQRT_N:
        return dct4_with_factor(x, n, axis, lambda n: np.sqrt(2 / n))
    return dct4_with_factor(x, n, axis, (lambda n: 2.0) if flag == _arrays.UNSCALED else (lambda n: 1 / n))


def dct(x, type=4, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, orthogonalize=None):
    """Cosine transform of type 4: y[k] = 2 * sum over j of x[j] * cos(pi * (2*j + 1) * (2*k + 1) / (4*n)).

    The length is a power of two from 2 to 2**26 (2**25 in double precision). "ortho" divides by sqrt(2*n), "forward" by 2*n.
    """
    return _dct(x, type, n, axis, norm, True)


def idct(x, type=4, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, orthogonalize=None):
    """The inverse of `dct`, which is the same sum with the division on the other side."""
    return _dct(x, type, n, axis, norm, False)
