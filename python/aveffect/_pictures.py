"""Effects and transitions on pictures."""

from __future__ import annotations

import os
from typing import Any, Iterable, Optional, Union

import numpy

from . import _core, _foreign
from ._catalogue import effects
from ._masks import Mask, mask_of, renamed
from ._settings import Value, effect_text, lacks_duration, milliseconds

_WIDE = {numpy.ndarray, tuple, list}


class Chain:
    """Effects that pictures pass in order.

    >>> import numpy
    >>> chain = Chain(["gray", Effect("blur", blur_count=4)])
    >>> chain(numpy.zeros((32, 32, 3), numpy.uint8)).shape
    (32, 32, 3)

    effects: Effect objects, or texts as the command line takes them. duration: seconds that the whole lasts that the
    pictures are from; some effects, such as fades, want it.
    """

    def __init__(self, effects: Iterable[Union["Effect", str]], *, duration: Optional[float] = None):
        if isinstance(effects, str):
            raise TypeError("a chain is made of a list of effects, not of one text")
        effects = list(effects)
        texts = [text for each in effects for text in (each.texts if isinstance(each, Chain) else [each])]
        for text in texts:
            if not isinstance(text, str):
                raise TypeError(f"an effect is an Effect or a text, not {text!r}")
        self._duration = duration
        self._masks: list[Mask] = [mask for each in effects if isinstance(each, Chain) for mask in each._masks]
        self._core = _core.Chain(texts, milliseconds(duration), lacks_duration(texts, duration))

    @property
    def texts(self) -> list[str]:
        """The effects as the command line takes them."""
        return self._core.texts

    @property
    def duration(self) -> Optional[float]:
        """Seconds that the whole lasts; None where nobody knows."""
        return self._duration

    def __call__(self, frame: Any, time: Optional[float] = None, *, order: str = "", out: Any = None,
                 inplace: bool = False, right: Any = None) -> Any:
        """Works on a picture and returns the result.

        frame: an array of uint8 of shape (H, W, 4), (H, W, 3) or (H, W), with any strides; a tuple of planes (Y, U, V)
        or (Y, U, V, alpha) of 4:2:0, 4:2:2, 4:1:1 or 4:1:0, with alpha 4:2:0 or 4:4:4; or a picture of PyAV or Pillow,
        or anything with the buffer protocol, the array interface or DLPack. order: of a pixel's bytes, "BGRA",
        "RGBA", "BGR" or "RGB"; BGRA and BGR if not given.
        time: seconds from the begin of the whole, which settings that move, fades and the like go by.
        out: where the result is to be, of the frame's shape. inplace: the frame itself is changed, without a copy
        where its rows have no gaps and its pixels are BGRA, or planes.
        right: a second view, for stereo effects, frame being the left one.

        Pixels without alpha are shown over black by effects that change alpha; grey ones come back as the brightness
        of what was made of them. Other threads of Python's run meanwhile, but no two may use one object.
        """
        if type(frame) in _WIDE:
            return self._core.process(frame, 0.0 if time is None else time, order, out, inplace, right)
        return _foreign.process(self, frame, time, order, out, inplace, right)

    def __repr__(self) -> str:
        return f"Chain({self.texts!r})"

    def __reduce__(self):
        return _chain, (self.texts, self._duration, [mask.path for mask in self._masks], self._masks)


def _chain(texts: list[str], duration: Optional[float], paths: list[str], masks: list[Mask]) -> Chain:
    chain = Chain(renamed(texts, paths, masks), duration=duration)
    chain._masks = masks
    return chain


class Effect(Chain):
    """An effect on pictures, with its settings.

    >>> import numpy
    >>> invert = Effect("invert")
    >>> picture = numpy.zeros((2, 2, 4), numpy.uint8)
    >>> invert(picture, inplace=True) is picture
    True
    >>> picture[0, 0].tolist()
    [255, 255, 255, 0]

    name: an effect, or one of its presets: "spherize", "spherize/bulge". Its properties are keywords: numbers; texts
    such as "30%"; True and False for switches; (R, G, B) or "#ff8800" for colours; paths for files; and mappings of
    times to values for what moves:

    >>> swell = Effect("blur", blur_count={0: 0, 2: 20})

    begin, end, fade_in, fade_out (seconds), mix ("50%"), mask (a picture's or clip's file, or an array, which is stretched over
    the picture: of shape (H, W) bool, uint8, uint16 or floats from 0 to 1, or pixels), area (("ellipse", 30, 20, 40, 60) in
    percent), mask_invert and mask_feather say when, where and how strongly it works. duration: as in Chain.
    Wrong names and values raise UsageError, which names what would be right.
    """

    def __init__(self, name: str, /, *, duration: Optional[float] = None, **settings: Any):
        mask = settings.get("mask")
        masks = [] if mask is None or isinstance(mask, (str, os.PathLike)) else [mask_of(mask)]
        if masks:
            settings["mask"] = masks[0].path
        text = effect_text(name, settings)
        super().__init__([text], duration=duration)
        self._masks = masks

    @property
    def text(self) -> str:
        """The effect as the command line takes it."""
        return self.texts[0]

    def __repr__(self) -> str:
        return f"Effect({self.text!r})"


class Transition:
    """A transition from one picture to another.

    >>> import numpy
    >>> black, white = numpy.zeros((8, 8, 3), numpy.uint8), numpy.full((8, 8, 3), 255, numpy.uint8)
    >>> Transition("crossfade", black, white)(0.4)[0, 0].tolist()
    [101, 101, 101]

    first, second: pictures as effects take them, of one shape, which are copied. Any threads may use it.
    """

    def __init__(self, name: str, first: Any, second: Any, *, order: str = ""):
        self._name = name
        self._core = _core.Transition(name, _foreign.arrays(first), _foreign.arrays(second), order)

    def __call__(self, progress: float, *, out: Any = None) -> Any:
        """What is seen when it has come that far, from 0 to 1; in out, or in new arrays."""
        return self._core.draw(progress, out)

    def __repr__(self) -> str:
        return f"Transition({self._name!r})"


Chain.__module__ = Effect.__module__ = Transition.__module__ = "aveffect"
_NAMES = "\n".join(f"    {each.name:<18} {each.title}" for each in effects() if each.kind not in ("transition", "audio"))
Effect.__doc__ = f"{Effect.__doc__}\n    There are:\n\n{_NAMES}\n"
_ENDS = "\n".join(f"    {each.name:<18} {each.title}" for each in effects() if each.kind == "transition")
Transition.__doc__ = f"{Transition.__doc__}\n    There are:\n\n{_ENDS}\n"
