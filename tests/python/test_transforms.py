"""The Python module against numpy.fft and scipy.fft."""

import sys
import threading
import time

import numpy as np
import pytest
import scipy.fft

import xfm

NORMS = [None, "backward", "ortho", "forward"]
LENGTHS = [2, 3, 5, 8, 13, 16, 27, 53, 64]


def noise(shape, dtype):
    generator = np.random.default_rng(sum(shape) + np.dtype(dtype).itemsize)
    x = generator.uniform(-1, 1, shape)
    if np.dtype(dtype).kind == "c":
        x = x + 1j * generator.uniform(-1, 1, shape)
    return x.astype(dtype)


def close(got, expected, dtype):
    __tracebackhide__ = True
    single = np.dtype(dtype) in (np.float32, np.complex64)
    assert got.shape == expected.shape
    largest = max(1, np.max(np.abs(expected), initial=0))
    assert np.max(np.abs(got - expected), initial=0) <= (1e-6 if single else 5e-15) * largest


@pytest.mark.parametrize("n", LENGTHS)
@pytest.mark.parametrize("norm", NORMS)
@pytest.mark.parametrize("precision", [np.float32, np.float64])
def test_transforms_of_one_axis(n, norm, precision):
    complex_type = np.complex64 if precision == np.float32 else np.complex128
    z, x, bins = noise((4, n), complex_type), noise((4, n), precision), noise((4, n // 2 + 1), complex_type)
    for name, argument, result in [("fft", z, complex_type), ("ifft", z, complex_type), ("rfft", x, complex_type),
                                   ("ihfft", x, complex_type)]:
        got = getattr(xfm, name)(argument, norm=norm)
        assert got.dtype == result
        close(got, getattr(scipy.fft, name)(argument.astype(argument.dtype.char.upper() if argument is z else "d"), norm=norm), precision)
    for name in ("irfft", "hfft"):
        got = getattr(xfm, name)(bins, n, norm=norm)
        assert got.dtype == precision
        close(got, getattr(scipy.fft, name)(bins, n, norm=norm), precision)
    matrix = np.outer(np.arange(n), np.arange(n)) % n * 2 * np.pi / n
    scale = {"ortho": n**-0.5, "forward": 1 / n}.get(norm, 1)
    close(xfm.hartley(x, norm=norm), x.astype(float) @ (np.cos(matrix) + np.sin(matrix)) * scale, precision)


@pytest.mark.parametrize("dtype", [np.float32, np.float64])
def test_axes_strides_and_lengths(dtype):
    x = noise((5, 12, 3, 7), dtype)
    views = [x, x[::2, ::-1], x.transpose(3, 1, 0, 2), np.asfortranarray(x), x[..., 1:6], np.broadcast_to(x[:1], (6, 12, 3, 7))]
    for view in views:
        for axis in range(-view.ndim, view.ndim):
            for n in (None, 2, 6, 15):
                close(xfm.rfft(view, n, axis), np.fft.rfft(view, n, axis), dtype)
                close(xfm.fft(view, n, axis), np.fft.fft(view, n, axis), dtype)
    close(xfm.fft(x[:0]), np.fft.fft(x[:0]), dtype)
    record = np.zeros(8, [("tag", "u1"), ("value", dtype)])
    record["value"] = noise((8,), dtype)
    close(xfm.fft(record["value"]), np.fft.fft(record["value"]), dtype)  # neither aligned nor contiguous


def test_several_axes():
    z, x = noise((6, 5, 8), np.complex128), noise((6, 5, 8), np.float64)
    for arguments in [{}, {"axes": (0, 2)}, {"s": (4, 9)}, {"s": (7, 3), "axes": (2, 0)}, {"axes": (-1,)}]:
        for name in ("fftn", "ifftn", "irfftn"):
            close(getattr(xfm, name)(z, **arguments), getattr(scipy.fft, name)(z, **arguments), np.float64)
        close(xfm.rfftn(x, **arguments), scipy.fft.rfftn(x, **arguments), np.float64)
    for name in ("fft2", "ifft2", "irfft2"):
        close(getattr(xfm, name)(z, norm="ortho"), getattr(scipy.fft, name)(z, norm="ortho"), np.float64)
    close(xfm.rfft2(x), scipy.fft.rfft2(x), np.float64)


@pytest.mark.parametrize("dtype", [np.float32, np.float64])
def test_walsh_hadamard_and_cosines(dtype):
    x = noise((3, 1024), dtype)
    matrix = np.array([[1 - 2 * (bin(i & j).count("1") & 1) for j in range(64)] for i in range(64)])
    close(xfm.wht(x[:, :64]), x[:, :64].astype(float) @ matrix, dtype)
    close(xfm.wht(xfm.wht(x), norm="forward"), x, dtype)
    for norm in NORMS:
        for n in (2, 64, 1024):
            got = xfm.dct(x[:, :n], 4, norm=norm)
            assert got.dtype == dtype
            close(got, scipy.fft.dct(x[:, :n].astype(float), 4, norm=norm), dtype)
            close(xfm.idct(got, 4, norm=norm), x[:, :n], dtype)


@pytest.mark.parametrize("layout", ["pack", "perm"])
def test_layouts(layout):
    for n in (2, 7, 8, 45, 64):
        x = noise((2, n, 3), np.float64)
        cells = xfm.half_spectrum(x, axis=1, layout=layout)
        np.testing.assert_array_equal(xfm.from_rfft(xfm.rfft(x, axis=1), n, axis=1, layout=layout), cells)
        close(xfm.to_rfft(cells, axis=1, layout=layout), np.fft.rfft(x, axis=1), np.float64)
        close(xfm.inverse_half_spectrum(cells, axis=1, layout=layout), x, np.float64)


@pytest.mark.parametrize("n", [2, 16, 256])
def test_mdct(n):
    x = noise((2, 5 * n - 1, 2), np.float64)
    c = xfm.mdct(x, n, axis=1)
    assert c.shape == (2, 6, n, 2)
    close(xfm.imdct(c, axis=1)[:, :x.shape[1]], x, np.float64)
    padded = np.zeros(7 * n)
    padded[n:n + x.shape[1]] = x[1, :, 0]
    j, k = np.arange(2 * n), np.arange(n)
    basis = np.cos(np.pi / n * (np.outer(k + 0.5, j + 0.5 + n / 2) % (2 * n))) * np.sin(np.pi / (2 * n) * (j + 0.5)) * np.sqrt(2 / n)
    close(c[1, 2, :, 0], basis @ padded[2 * n:4 * n], np.float64)


def test_precision_and_types():
    assert xfm.fft(np.ones(4, np.float16)).dtype == np.complex64
    assert xfm.rfft([1, 2, 3]).dtype == np.complex128
    close(xfm.fft(np.arange(8, dtype=">f4")), np.fft.fft(np.arange(8)), np.float32)
    close(xfm.rfft(np.arange(8, dtype=">f8")), np.fft.rfft(np.arange(8)), np.float64)
    x = np.arange(8.0)
    xfm.fft(x, overwrite_x=True, workers=2)
    np.testing.assert_array_equal(x, np.arange(8.0))


@pytest.mark.parametrize("call, error, words", [
    (lambda: xfm.fft(np.ones(65)), ValueError, "2 to 64 points, not 65"),
    (lambda: xfm.fft(np.ones(8), 0), ValueError, "invalid number of data points \\(0\\)"),
    (lambda: xfm.fft(np.ones(8), 2.5), TypeError, "integer"),
    (lambda: xfm.fft(np.ones(8), axis=1), np.AxisError, "axis 1 is out of bounds for array of dimension 1"),
    (lambda: xfm.fft(5.0), np.AxisError, "out of bounds for array of dimension 0"),
    (lambda: xfm.fft(np.ones(8), norm="full"), ValueError, "Invalid norm value 'full'"),
    (lambda: xfm.fft(["a", "b"]), TypeError, "cannot be transformed"),
    (lambda: xfm.fft(np.ones(8, np.longdouble)), TypeError, "precision of"),
    (lambda: xfm.fft(np.ones(8), plan=1), NotImplementedError, "precomputed plan"),
    (lambda: xfm.rfft(np.ones(8, complex)), TypeError, "x must be a real sequence"),
    (lambda: xfm.wht(np.ones(12)), ValueError, "power of two from 2 to 8192 points, not 12"),
    (lambda: xfm.dct(np.ones(8), 2), NotImplementedError, "type 4 only"),
    (lambda: xfm.fftn(np.ones((2, 2)), axes=(0, 0)), ValueError, "unique"),
    (lambda: xfm.half_spectrum(np.ones(8), layout="ccs"), ValueError, "Invalid layout"),
    (lambda: xfm.from_rfft(np.ones(5), 12), ValueError, "12 samples have 7 bins, not 5"),
    (lambda: xfm.mdct(np.ones(8), 4, window=np.ones(4)), ValueError, "has 8 values"),
])
def test_errors(call, error, words):
    with pytest.raises(error, match=words):
        call()


def test_the_lock_is_released():
    """While one thread transforms, this one goes on, though nobody asks the other to yield."""
    x, span, stamps = noise((100000, 60), np.complex64), [], []

    def work():
        span.append(time.monotonic())
        xfm.fft(x)
        span.append(time.monotonic())

    interval = sys.getswitchinterval()
    sys.setswitchinterval(60)
    try:
        worker = threading.Thread(target=work)
        worker.start()
        while worker.is_alive():
            stamps.append(time.monotonic())
            time.sleep(0.0001)
    finally:
        sys.setswitchinterval(interval)
    assert any(span[0] < t < span[1] for t in stamps)


def test_backend_answers_and_hands_back():
    z = noise((3, 30), np.complex64)
    with scipy.fft.set_backend(xfm):
        np.testing.assert_array_equal(scipy.fft.fft(z), xfm.fft(z))
        np.testing.assert_array_equal(scipy.fft.dct(z.real[:, :16], 4), xfm.dct(z.real[:, :16]))
        parts = scipy.fft.dct(z[:, :16], 4)
        close(parts.real, xfm.dct(z.real[:, :16], 4), np.float32)
        close(scipy.fft.fft(z, 100), np.fft.fft(z, 100), np.complex64)
        close(scipy.fft.dct(z.real, 2), scipy.fft.dct(z.real.astype(float), 2), np.float32)
    with scipy.fft.set_backend(xfm, only=True):
        with pytest.raises(scipy._lib.uarray.BackendNotImplementedError):
            scipy.fft.fft(z, 100)
