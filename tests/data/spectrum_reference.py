"""Prints spectrum.csv: lines of the spectra of a signal of whole numbers, by NumPy."""
import numpy as np

WINDOWS = {"": np.ones, "Hann": np.hanning, "Hamming": np.hamming}
print("points,dt,window,bin,frequency,amplitude,cosine")
for points, dt, window in [(1000, 0.001, ""), (1024, 0.01, "Hann"), (1024, 0.01, "Hamming"), (9, 0.5, ""),
                           (20000, 0.0001, "Hamming"), (40000, 2, "")]:
    n = np.arange(points)
    signal = (n * n * 79 + n * 1047) % 2001 / 500 + 3
    size = 2 ** int(np.log2(points))
    samples = signal[(points - size) // 2:][:size]
    factors = WINDOWS[window](size)
    bins = np.fft.rfft((samples - samples.mean()) * factors)
    for k in sorted({1, 2, 3, size // 5, size // 4 + 1, size // 2 - 1}):
        print(points, dt, window, k, repr(float(k / (size * dt))), repr(float(2 * abs(bins[k]) / factors.sum())),
              repr(float(abs(bins[k].real) / size)), sep=",")
