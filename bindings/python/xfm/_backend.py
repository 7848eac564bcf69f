"""The protocol by which `scipy.fft` hands its calls to a backend."""

from . import _arrays, _transforms

__ua_domain__ = "numpy.scipy.fft"

_ANSWERED = {name: getattr(_transforms, name) for name in (
    "fft", "ifft", "rfft", "irfft", "hfft", "ihfft", "fft2", "ifft2", "rfft2", "irfft2", "fftn", "ifftn", "rfftn", "irfftn")}


def __ua_function__(method, args, kwargs):
    """The result, or NotImplemented: then SciPy asks the next backend, in the end itself."""
    try:
        if method.__name__ in ("dct", "idct"):
            return _dct(method.__name__, *args, **kwargs)
        function = _ANSWERED.get(method.__name__)
        return NotImplemented if function is None else function(*args, **kwargs)
    except (_arrays.UnsupportedLength, _arrays.UnsupportedType, NotImplementedError):
        return NotImplemented


def _dct(name, x, type=2, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, orthogonalize=None):
    # SciPy transforms complex data part by part.
    if type != 4 or getattr(getattr(x, "dtype", None), "kind", "") == "c":
        return NotImplemented
    return getattr(_transforms, name)(x, type, n, axis, norm)
