"""Masks that are arrays: files in memory, which effects read as they read others."""

from __future__ import annotations

import os
import re
import weakref
from typing import Any

import numpy

from . import _foreign
from ._errors import UsageError


class Mask:
    """A picture in memory with a path, for as long as the object is there and in this process alone."""

    def __init__(self, data: bytes):
        self.data = data
        file = os.memfd_create("aveffect-mask")
        weakref.finalize(self, os.close, file)
        with open(file, "wb", closefd=False) as stream:
            stream.write(data)
        self.path = f"/proc/self/fd/{file}"

    def __reduce__(self):
        return Mask, (self.data,)


def mask_of(picture: Any) -> Mask:
    """Of shape (H, W): bool, numbers of uint8 or uint16, or floats from 0 to 1; of uint8 also BGR and BGRA, whose alpha counts where it isn't full."""
    if type(picture).__module__.split(".")[0] == "PIL":
        samples = numpy.asarray(picture.convert("RGBA"))[..., [2, 1, 0, 3]]
    else:
        samples = numpy.asarray(_foreign.arrays(picture))
    pixels = samples.ndim == 3 and samples.shape[2] in (3, 4) and samples.dtype == numpy.uint8
    if not (pixels or samples.ndim == 2) or not samples.size:
        raise UsageError(f"a mask has the shape (H, W), or of uint8 (H, W, 3) or (H, W, 4), not {samples.shape} of {samples.dtype}")
    if samples.dtype == bool:
        samples = samples * numpy.uint8(255)
    elif samples.dtype.kind == "f":
        if not ((samples >= 0) & (samples <= 1)).all():
            raise UsageError("a mask of floats has values from 0 to 1")
        samples = numpy.rint(samples * 65535).astype(numpy.uint16)
    if samples.dtype not in (numpy.uint8, numpy.uint16):
        raise UsageError(f"a mask is of bool, uint8, uint16 or floats, not of {samples.dtype}")
    return Mask(_file(samples))


def _file(samples: numpy.ndarray) -> bytes:
    """A portable map, of grey or of pixels."""
    if samples.ndim == 3 and samples.shape[2] == 4:
        opaque = (samples[..., 3] == 255).all()
        samples = samples[..., :3] if opaque else samples[..., 3]
    height, width = samples.shape[:2]
    kind, samples = ("P5", samples) if samples.ndim == 2 else ("P6", samples[..., ::-1])
    head = f"{kind}\n{width} {height}\n{numpy.iinfo(samples.dtype).max}\n"
    return head.encode() + samples.astype(samples.dtype.newbyteorder(">")).tobytes()


def renamed(texts: list[str], paths: list[str], masks: list[Mask]) -> list[str]:
    """Effects' texts with the paths that masks have now."""
    now = {old: mask.path for old, mask in zip(paths, masks)}

    def path_of(found: re.Match[str]) -> str:
        return now.get(found.group(), found.group())
    return [re.sub(r"(?<==)/proc/self/fd/\d+(?=$|:)", path_of, text) for text in texts]
