# The spectrum of ten_lines.c, through the Python module.
import numpy

import xfm

samples = numpy.array([0, 1, 0, -1, 0, 1, 0, -1], numpy.float32)
for k, bin in enumerate(xfm.rfft(samples)):
    print(f"bin {k}: {bin.real:g} {bin.imag:+g}i")
