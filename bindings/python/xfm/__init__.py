"""Short signal transforms on NumPy arrays, by the Xfm library.

Names, arguments and the words of ``norm`` are those of `scipy.fft`:

- `fft`, `ifft`, `rfft`, `irfft`, `hfft`, `ihfft` and their 2- and n-dimensional forms, each axis with 2 to 64 points;
- `dct`, `idct` of type 4, a power of two up to 2**26 points (2**25 in double precision);

and beside them

- `hartley` (2 to 64 points), `wht` (Walsh-Hadamard, a power of two up to 8192), `mdct` and `imdct`;
- `half_spectrum`, `inverse_half_spectrum`, `to_rfft`, `from_rfft`: the layouts of half-spectra in real cells.

All take arrays of any shape and transform along ``axis``. Single precision stays single precision (float16 becomes it); other
real types are worked in double. The loop over the lines of an array runs without the interpreter's lock.

The module is also a backend of `scipy.fft`: under ``scipy.fft.set_backend(xfm)`` that package's functions are answered from
here where the library has the transform, and by SciPy where not.
"""

from ._backend import __ua_domain__, __ua_function__
from ._layouts import from_rfft, half_spectrum, inverse_half_spectrum, to_rfft
from ._mdct import imdct, mdct
from ._native import version
from ._transforms import (dct, fft, fft2, fftn, hartley, hfft, idct, ifft, ifft2, ifftn, ihfft, irfft, irfft2, irfftn, rfft, rfft2,
                          rfftn, wht)

__version__ = "6.1"
__all__ = [
    "dct", "fft", "fft2", "fftn", "from_rfft", "half_spectrum", "hartley", "hfft", "idct", "ifft", "ifft2", "ifftn", "ihfft",
    "imdct", "inverse_half_spectrum", "irfft", "irfft2", "irfftn", "mdct", "rfft", "rfft2", "rfftn", "to_rfft", "version", "wht",
]
