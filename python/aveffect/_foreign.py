"""Pictures of other packages, which need not be there."""

from __future__ import annotations

from typing import Any, Optional

import numpy

from ._errors import UsageError

# Planes alone don't say that their samples take all values, so that the "yuvj" ones go by way of pixels.
_PLANAR = {"yuv420p", "yuv422p", "yuv411p", "yuv410p", "yuva420p", "yuva444p"}


def arrays(picture: Any) -> Any:
    """An array, or planes, of what knows how to be one."""
    if isinstance(picture, (numpy.ndarray, tuple, list)):
        return picture
    if hasattr(picture, "__dlpack__"):
        return numpy.from_dlpack(picture)
    if hasattr(picture, "__array_interface__") or hasattr(picture, "__array__"):
        return numpy.asarray(picture)
    try:
        return numpy.asarray(memoryview(picture))
    except TypeError:
        raise TypeError(f"a picture is an array of uint8 or planes of them, not {type(picture).__name__}") from None


def process(chain: Any, frame: Any, time: Optional[float], order: str, out: Any, inplace: bool, right: Any) -> Any:
    module = type(frame).__module__.split(".")[0]
    if module in ("av", "PIL"):
        if out is not None or inplace or order:
            raise UsageError("of pictures of PyAV and Pillow new ones are made: order, out and inplace are of arrays")
        return (_of_pyav if module == "av" else _of_pillow)(chain, frame, time, right)
    right = None if right is None else arrays(right)
    return chain._core.process(arrays(frame), time or 0.0, order, out, inplace, right)


def _planes(frame: Any) -> tuple:
    """In the frame's own memory."""
    rows = []
    for plane in frame.planes:
        samples = numpy.frombuffer(plane, numpy.uint8).reshape(plane.height, plane.line_size)
        rows.append(samples[:, :plane.width])
    return tuple(rows)


def _of_pyav(chain: Any, frame: Any, time: Optional[float], right: Any) -> Any:
    """A new frame in the format of the old one, or of its pixels where effects do not know that."""
    if time is None:
        time = frame.time or 0.0
    planar = frame.format.name in _PLANAR

    def seen(picture: Any) -> Any:
        if planar:
            return _planes(picture if picture.format.name == frame.format.name else picture.reformat(format=frame.format.name))
        return picture.to_ndarray(format="bgra")

    result = chain._core.process(seen(frame), time, "", None, False, None if right is None else seen(right))
    if planar:
        made = type(frame)(frame.width, frame.height, frame.format.name)
        for plane, samples in zip(_planes(made), result):
            plane[:] = samples
    else:
        made = type(frame).from_ndarray(result, format="bgra")
    made.pts, made.time_base = frame.pts, frame.time_base
    return made


def _of_pillow(chain: Any, image: Any, time: Optional[float], right: Any) -> Any:
    """A new image in the mode of the old one, which others are brought to: L, RGB or RGBA."""
    from PIL import Image

    mode = image.mode if image.mode in ("L", "RGB", "RGBA") else "RGBA" if "A" in image.mode or "transparency" in image.info else "RGB"

    def seen(picture: Any) -> Any:
        return numpy.asarray(picture.convert(mode))

    order = "" if mode == "L" else mode
    result = chain._core.process(seen(image), time or 0.0, order, None, False, None if right is None else seen(right))
    return Image.fromarray(result, mode)
