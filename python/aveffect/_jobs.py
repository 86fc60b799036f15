"""Jobs on files, by the program's own options."""

from __future__ import annotations

import dataclasses
import os
import warnings
from typing import Any, Callable, Iterable, Optional, Union

from . import _core
from ._pictures import Chain
from ._settings import value_text
from ._sound import Sound

Path = Union[str, os.PathLike]
Progress = Callable[[int, Optional[int], Optional[float]], Any]
Warn = Callable[[str], Any]


@dataclasses.dataclass(frozen=True)
class Result:
    """frames: pictures that were written, or of sound alone pieces of a fiftieth of a second. damage: what was wrong
    with the input, whose sound parts the output holds; None where nothing was."""

    frames: int
    damage: Optional[str] = None


def _warn(text: str) -> None:
    warnings.warn(text, RuntimeWarning, stacklevel=2)


def _texts(effects: Union[Chain, Sound, str, Iterable]) -> list[str]:
    if isinstance(effects, str):
        return [effects]
    if isinstance(effects, Chain):
        return effects.texts
    if isinstance(effects, Sound):
        return [effects.text]
    return [text for each in effects for text in _texts(each)]


def _options(options: dict) -> list[str]:
    """size="640x360" as --size=640x360, overwrite=True as --overwrite; what is None or False is left out."""
    words = []
    for name, value in options.items():
        option = "--" + name.replace("_", "-")
        if value is None or value is False:
            continue
        if value is True:
            words.append(option)
        elif isinstance(value, (list, tuple)):
            words += [f"{option}={value_text(each)}" for each in value]
        else:
            words.append(f"{option}={value_text(value)}")
    return words


def run(command: list[str], files: Iterable[Path], options: dict, progress: Optional[Progress], warning: Optional[Warn]) -> Result:
    arguments = ["aveffect", *command, *_options(options), "--", *(os.fspath(each) for each in files)]
    return Result(*_core.run(arguments, progress, warning or _warn))


def render(input: Path, output: Path, effects: Union[Chain, str, Iterable] = (), *, audio_effects: Union[Sound, str, Iterable] = (),
           progress: Optional[Progress] = None, warning: Optional[Warn] = None, **options: Any) -> Result:
    """Renders a clip, a photo or sound through effects, as `aveffect render` does.

    effects, audio_effects: Effect and Sound objects, or texts. Options are those of the command, with underscores:
    size="1280x720", codec="libx264", from_="0:05" and so on; those without a value are True. progress: called with
    the pictures done, those expected and the seconds left (None where nobody knows); what it raises ends the job, and
    nothing is written. warning: called with each warning's text; without it they are RuntimeWarnings.
    """
    options = {"effect": _texts(effects), "audio_effect": _texts(audio_effects)} | _plain(options)
    return run(["render"], [input, output], options, progress, warning)


def frame(input: Path, output: Path, effects: Union[Chain, str, Iterable] = (), *, at: Union[float, str] = 0,
          warning: Optional[Warn] = None, **options: Any) -> Result:
    """Renders the picture that a clip shows at a moment, as `aveffect frame` does."""
    return run(["frame"], [input, output], {"effect": _texts(effects), "at": at} | _plain(options), None, warning)


def transition(first: Path, second: Path, output: Path, effect: str, *, progress: Optional[Progress] = None,
               warning: Optional[Warn] = None, **options: Any) -> Result:
    """Renders a transition between two clips or photos, as `aveffect transition` does."""
    return run(["transition"], [first, second, output], {"effect": effect} | _plain(options), progress, warning)


def join(clips: Iterable[Path], output: Path, effect: Union[str, Iterable[str]] = (), *, progress: Optional[Progress] = None,
         warning: Optional[Warn] = None, **options: Any) -> Result:
    """Renders one film of several clips with transitions between them, as `aveffect join` does."""
    return run(["join"], [*clips, output], {"effect": _texts(effect)} | _plain(options), progress, warning)


def sheet(first: Path, second: Path, output: Path, *, warning: Optional[Warn] = None, **options: Any) -> Result:
    """Renders a picture of all transitions between two pictures, as `aveffect sheet` does."""
    return run(["sheet"], [first, second, output], _plain(options), None, warning)


def _plain(options: dict) -> dict:
    """from_ stands for the option that Python keeps the name of."""
    return {name.rstrip("_"): value for name, value in options.items()}
