#!/usr/bin/env python3
"""Times of the Python module beside numpy.fft and scipy.fft: python_calls.py OUTPUT.tsv [ROUNDS]

Single transforms and batches of 10,000, medians over interleaved rounds, in microseconds a call."""

import statistics
import sys
import time

import numpy as np
import scipy.fft

import xfm

RIVALS = {"xfm": xfm, "numpy": np.fft, "scipy": scipy.fft}


def cases():
    """Function, its input."""
    generator = np.random.default_rng(1)
    for batch in (1, 10000):
        for n in (8, 16, 32, 60, 64):
            shape = (batch, n) if batch > 1 else (n,)
            real = generator.uniform(-1, 1, shape)
            yield "fft", (real + 1j * real[..., ::-1]).astype(np.complex64)
            yield "fft", real + 1j * real[..., ::-1]
            yield "rfft", real.astype(np.float32)
            yield "rfft", real


def seconds(function, x, calls):
    start = time.perf_counter()
    for _ in range(calls):
        function(x)
    return (time.perf_counter() - start) / calls


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit("usage: python_calls.py OUTPUT.tsv [ROUNDS]")
    rounds = int(sys.argv[2]) if len(sys.argv) == 3 else 15
    lines = ["function\ttype\tpoints\tbatch\t" + "\t".join(RIVALS)]
    for name, x in cases():
        calls = 200 if x.ndim == 1 else 1
        taken = {rival: [] for rival in RIVALS}
        for _ in range(rounds):
            for rival, module in RIVALS.items():
                taken[rival].append(seconds(getattr(module, name), x, calls))
        batch = x.shape[0] if x.ndim == 2 else 1
        figures = "\t".join(f"{statistics.median(taken[r]) * 1e6:.2f}" for r in RIVALS)
        lines.append(f"{name}\t{x.dtype}\t{x.shape[-1]}\t{batch}\t{figures}")
        print(lines[-1], flush=True)
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        file.write("\n".join(lines) + "\n")


main()
