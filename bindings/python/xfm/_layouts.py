"""Half-spectra in real cells.

With R[k] and I[k] the real and imaginary parts of bin k, n samples have

    pack    R[0] R[1] I[1] R[2] I[2] ...  and for even n  R[n/2]
    perm    even n: R[0] R[n/2] R[1] I[1] R[2] I[2] ...; odd n: as pack

n cells both, where `rfft` gives n/2 + 1 complex bins.
"""

import numpy as np

from . import _arrays, _native
from ._transforms import real_forward

_LAYOUTS = ("pack", "perm")


def _checked(layout):
    if layout not in _LAYOUTS:
        raise ValueError(f"Invalid layout {layout!r}; should be \"pack\" or \"perm\".")
    return layout


def half_spectrum(x, n=None, axis=-1, norm=None, layout="pack"):
    """The DFT of n real samples, 2 to 64, as n real cells in the given layout."""
    return real_forward(x, n, axis, _checked(layout), _arrays.flag(norm, True))


def inverse_half_spectrum(x, axis=-1, norm=None, layout="pack"):
    """The real samples of a half-spectrum in the given layout; the inverse of `half_spectrum`."""
    _checked(layout)
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.dft_points(None, x.shape[axis])
    inverse = _native.inverse_real_dft32 if _arrays.single(x) else _native.inverse_real_dft64
    return inverse(x, axis, n, layout, _arrays.flag(norm, False))


def _order(n, layout):
    """Where the cells of a layout stand in the parts R[0] I[0] R[1] I[1] ... of the bins."""
    cells = [0, *range(2, n + 1)]
    if layout == "perm" and n % 2 == 0:
        cells.insert(1, cells.pop())
    return cells


def from_rfft(bins, n, axis=-1, layout="pack"):
    """The cells of a half-spectrum given as the n/2 + 1 bins that `numpy.fft.rfft` gives for n samples."""
    bins = np.moveaxis(_arrays.complex_array(bins), _arrays.normal_axis(np.asarray(bins), axis), -1)
    if bins.shape[-1] != n // 2 + 1:
        raise ValueError(f"{n} samples have {n // 2 + 1} bins, not {bins.shape[-1]}")
    parts = np.ascontiguousarray(bins).view(bins.real.dtype)
    return np.moveaxis(parts[..., _order(n, _checked(layout))], -1, axis)


def to_rfft(cells, axis=-1, layout="pack"):
    """The n/2 + 1 bins, as `numpy.fft.rfft` gives them, of a half-spectrum of n cells."""
    cells = np.moveaxis(_arrays.real_array(cells), _arrays.normal_axis(np.asarray(cells), axis), -1)
    n = cells.shape[-1]
    parts = np.zeros(cells.shape[:-1] + (n // 2 * 2 + 2,), cells.dtype)
    parts[..., _order(n, _checked(layout))] = cells
    return np.moveaxis(parts.view(np.complex64 if _arrays.single(cells) else np.complex128), -1, axis)
