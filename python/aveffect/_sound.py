"""Effects on sound."""

from __future__ import annotations

from typing import Any, Optional

from . import _core
from ._settings import Value, effect_text, milliseconds


class Sound:
    """An effect on sound, with its settings, which are written as those of Effect.

    >>> import numpy
    >>> quiet = Sound("volume", audio_volume="50%")
    >>> quiet(numpy.full(4, 1000, numpy.int16), rate=48000).tolist()
    [500, 500, 500, 500]

    duration: seconds that the whole lasts, which fades go by; that of the samples if not given. Any threads may use it.
    """

    def __init__(self, name: str, /, *, duration: Optional[float] = None, **settings: Value):
        self._duration = duration
        self._core = _core.Sound(effect_text(name, settings), milliseconds(duration))

    @property
    def text(self) -> str:
        """The effect as the command line takes it."""
        return self._core.text

    def __call__(self, samples: Any, rate: int, *, start: float = 0.0, inplace: bool = False) -> Any:
        """Works on samples, int16 or float32 (from -1 to 1), of shape (N) or (N, channels), rate of them a second.

        start: the second of the whole that they begin with; a part sounds as it does in the whole. Returns new
        samples, or the given ones with inplace.
        """
        return self._core.process(samples, rate, start, inplace)

    def __repr__(self) -> str:
        return f"Sound({self.text!r})"

    def __reduce__(self):
        return _sound, (self.text, self._duration)


def _sound(text: str, duration: Optional[float]) -> Sound:
    made = Sound.__new__(Sound)
    made._duration = duration
    made._core = _core.Sound(text, milliseconds(duration))
    return made


Sound.__module__ = "aveffect"
