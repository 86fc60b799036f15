"""Video and audio effects on arrays, clips and films.

Effects work on numpy arrays of uint8, in place where that is asked for:

>>> import numpy as np
>>> import aveffect
>>> picture = np.full((90, 160, 4), 200, np.uint8)          # B, G, R, A
>>> aveffect.Effect("invert")(picture)[0, 0].tolist()
[55, 55, 55, 200]
>>> aveffect.Effect("spherize/bulge", spherize_x="30%")
Effect('spherize/bulge:spherize_x=30%')

`effects()` lists them all, and `print(describe("spherize"))` tells what one of them does and what can be set. `Chain`
puts several together, `Transition` leads from one picture to another, `Sound` works on samples. `render`, `frame`,
`transition`, `join`, `sheet` and `timeline.render` work on files as the program `aveffect` does, by the same options.

Failures are exceptions whose text is one line: `UsageError` (a `ValueError`), `InputError`, `OutputError` and
`EffectError`, all of them `Error`.
"""

from ._catalogue import Choice, EffectInfo, Preset, Property, describe, effects
from ._errors import Cancelled, EffectError, Error, InputError, OutputError, UsageError
from ._jobs import Result, frame, join, render, sheet, transition
from ._pictures import Chain, Effect, Transition
from ._sound import Sound
from . import timeline

__all__ = [
    "Cancelled", "Chain", "Choice", "Effect", "EffectError", "EffectInfo", "Error", "InputError", "OutputError",
    "Preset", "Property", "Result", "Sound", "Transition", "UsageError", "describe", "effects", "frame", "join",
    "render", "sheet", "timeline", "transition",
]
