"""The lapped transform of audio codecs: windowed blocks of 2*n samples, n apart, n coefficients each.

    X[t, k] = sqrt(2/n) * sum over j of w[j] * x[t*n + j] * cos(pi/n * (j + 1/2 + n/2) * (k + 1/2)),  j = 0 .. 2n-1

Each block is folded to n values whose DCT-IV is X (Princen and Bradley, IEEE Trans. ASSP-34, 1986). With a window of
w[j]**2 + w[j+n]**2 = 1 and w[j] = w[2n-1-j], overlapping and adding gives the signal back.
"""

import numpy as np

from . import _arrays
from ._transforms import dct4_with_factor


def _window(window, n, dtype):
    if isinstance(window, str):
        if window != "sine":
            raise ValueError(f"Invalid window {window!r}; should be \"sine\" or an array of {2 * n} values.")
        return np.sin(np.pi / (2 * n) * (np.arange(2 * n) + 0.5)).astype(dtype)
    window = np.asarray(window, dtype)
    if window.shape != (2 * n,):
        raise ValueError(f"the window of blocks of {n} coefficients has {2 * n} values, not the shape {window.shape}")
    return window


def mdct(x, n, axis=-1, window="sine"):
    """The coefficients of a signal in blocks of `n`, a power of two from 2.

    The axis of m samples becomes two: ceil(m/n) + 1 blocks, and the n coefficients of each. The signal counts as zero before
    its start and behind its end.
    """
    x = _arrays.real_array(x)
    axis = _arrays.normal_axis(x, axis)
    n = _arrays.power_of_two(_arrays.points(n, n), 2, 2**25, "MDCT")
    x = np.moveaxis(x, axis, -1)
    blocks = -(-x.shape[-1] // n) + 1
    padded = np.zeros(x.shape[:-1] + ((blocks + 1) * n,), x.dtype)
    padded[..., n:n + x.shape[-1]] = x
    halves = padded.reshape(x.shape[:-1] + (blocks + 1, n))
    w = _window(window, n, x.dtype)
    first, second = halves[..., :-1, :] * w[:n], halves[..., 1:, :] * w[n:]
    # The four quarters a b c d of a block are folded to (-c reversed - d, a - b reversed).
    h = n // 2
    folded = np.concatenate([-second[..., h - 1::-1] - second[..., h:], first[..., :h] - first[..., :h - 1:-1]], axis=-1)
    coefficients = dct4_with_factor(folded, n, -1, lambda n: np.sqrt(2 / n))
    return np.moveaxis(coefficients, (-2, -1), (axis, axis + 1))


def imdct(coefficients, axis=-2, window="sine"):
    """The signal of blocks of coefficients; the inverse of `mdct` up to zeros at the end.

    `axis` counts the blocks and the next axis the n coefficients; both become one of (blocks - 1) * n samples.
    """
    c = _arrays.real_array(coefficients)
    axis = _arrays.normal_axis(c, axis)
    if axis + 1 >= c.ndim:
        raise ValueError("the axis behind that of the blocks holds the coefficients")
    c = np.moveaxis(c, (axis, axis + 1), (-2, -1))
    n = c.shape[-1]
    w = _window(window, n, c.dtype)
    folded = dct4_with_factor(c, None, -1, lambda n: np.sqrt(2 / n))
    h = n // 2
    first = np.concatenate([folded[..., h:], -folded[..., :h - 1:-1]], axis=-1) * w[:n]
    second = np.concatenate([-folded[..., h - 1::-1], -folded[..., :h]], axis=-1) * w[n:]
    signal = first[..., 1:, :] + second[..., :-1, :]
    return np.moveaxis(signal.reshape(signal.shape[:-2] + (-1,)), -1, axis)
