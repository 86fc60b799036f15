#!/usr/bin/env python3
"""What a call of Python's takes beside the plug-in's own, in place on BGRA: python_calls.py BUILD [--size WxH] [--rounds N]

The plug-in is called through ctypes, which adds some tenths of a microsecond to it. Both take turns on one thread, so that what else the machine does befalls
both; printed are medians, and the median of the ratios of neighbouring calls.
"""
import argparse
import ctypes
import pathlib
import statistics
import sys
import time

options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
options.add_argument("build", type=pathlib.Path)
options.add_argument("--size", default="1920x1080")
options.add_argument("--rounds", type=int, default=300)
given = options.parse_args()
sys.path.insert(0, str(given.build / "python"))

import numpy  # noqa: E402

import aveffect  # noqa: E402

WIDTH, HEIGHT = map(int, given.size.split("x"))
CASES = [  # the effect, what the plug-in calls it, settings
    ("gray", "gray", {}),
    ("invert", "invert", {}),
    ("brightness-contrast", "brightness_contrast", {"brightness": 10, "contrast": 20}),
    ("blur", "simple_gauss_blur", {"blur_count": 1}),
    ("emboss", "emboss", {"emboss_level": 2}),
    ("edge-light", "edgelight", {"edgelight_level": 51}),
    ("spherize", "spherize", {"spherize_r": 400, "spherize_x": 960, "spherize_y": 540, "spherize_scale": 1.0}),
]
plain = ctypes.CDLL(str(given.build / "bench/libplain_calls.so"))
plain.PlainMake.restype = ctypes.c_void_p
plain.PlainSet.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p]
plain.PlainRun.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_uint, ctypes.c_uint]


def timed(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


print(f"{'effect':<22}{'Python':>10}{'plug-in':>10}   ratio   (microseconds, {given.size})")
for name, own, settings in CASES:
    pictures = [numpy.random.default_rng(1).integers(0, 256, (HEIGHT, WIDTH, 4), numpy.uint8) for _ in range(2)]
    effect = aveffect.Effect(name, **settings)
    proc = plain.PlainMake(own.encode())
    for key, value in settings.items():
        assert plain.PlainSet(proc, key.encode(), str(value).encode())
    effect(pictures[0], inplace=True)
    plain.PlainRun(proc, pictures[1].ctypes.data, WIDTH, HEIGHT)
    assert (pictures[0] == pictures[1]).all(), name
    # The same memory from here on: places of pages differ by more than the calls do.
    picture, address = pictures[0], pictures[0].ctypes.data
    calls = [lambda: effect(picture, inplace=True), lambda: plain.PlainRun(proc, address, WIDTH, HEIGHT)]
    both = []
    for turn in range(given.rounds):
        first = turn % 2
        spent = [0.0, 0.0]
        for which in (first, 1 - first):
            spent[which] = timed(calls[which])
        both.append(spent)
    ours, theirs = (statistics.median(column) * 1e6 for column in zip(*both))
    print(f"{name:<22}{ours:>10.1f}{theirs:>10.1f}{statistics.median(a / b for a, b in both):>8.3f}")
