"""What effects there are, and what can be set."""

from __future__ import annotations

import dataclasses
import functools
import json
from typing import Optional, Union

from . import _core


@dataclasses.dataclass(frozen=True)
class Choice:
    """One of the values of a property that has a few."""

    name: str
    value: int
    help: str


@dataclasses.dataclass(frozen=True)
class Property:
    """What can be set of an effect.

    kind is "number", "switch", "choice", "colour", "path" or "text"; default is the text that it is registered with.
    minimum and maximum bound what makes sense, both included, and neutral is where it changes nothing; None where
    there is no such number. pixels names the side of the picture that a percentage is of ("width", "height",
    "smaller"), None where it counts no pixels.
    """

    name: str
    title: str
    help: str
    kind: str
    type: str
    unit: str
    default: str
    minimum: Optional[float]
    maximum: Optional[float]
    neutral: Optional[float]
    pixels: Optional[str]
    choices: tuple[Choice, ...]


@dataclasses.dataclass(frozen=True)
class Preset:
    """Settings with a name: Effect("NAME/PRESET"). text has them as the command line takes them."""

    name: str
    help: str
    text: str


@dataclasses.dataclass(frozen=True)
class EffectInfo:
    """An effect.

    name is the short name that people use, long_name the one by which hosts ask for it. kind is "filter", "fade",
    "distortion", "look", "transition", "stereo" or "audio".
    """

    name: str
    long_name: str
    kind: str
    title: str
    help: str
    note: str
    synonyms: tuple[str, ...]
    properties: tuple[Property, ...]
    presets: tuple[Preset, ...]

    def property(self, name: str) -> Property:
        """The property of that name; KeyError where there is none."""
        for each in self.properties:
            if each.name == name:
                return each
        raise KeyError(name)

    def __str__(self) -> str:
        return _core.describe_text(self.name)


def _property(told: dict) -> Property:
    return Property(
        name=told["name"], title=told["title"], help=told["help"], kind=told["kind"], type=told["type"],
        unit=told["unit"], default=told["defaultText"], minimum=told["minimum"], maximum=told["maximum"],
        neutral=told["neutral"], pixels=told["percentOf"],
        choices=tuple(Choice(each["name"], each["value"], each["help"]) for each in told["choices"]))


def _effect(told: dict) -> EffectInfo:
    return EffectInfo(
        name=told["shortName"], long_name=told["name"], kind=told["kind"], title=told["title"], help=told["help"],
        note=told["note"], synonyms=tuple(told["synonyms"]),
        properties=tuple(_property(each) for each in told["properties"]),
        presets=tuple(Preset(each["name"], each["help"], each["text"]) for each in told["presets"]))


@functools.lru_cache(maxsize=None)
def effects() -> tuple[EffectInfo, ...]:
    """All effects, those on pictures first.

    >>> [effect.name for effect in effects() if effect.kind == "audio"]
    ['replace-sound', 'fade-sound', 'volume']
    """
    return tuple(_effect(each) for each in json.loads(_core.catalogue())["effects"])


def describe(name: Union[str, EffectInfo]) -> EffectInfo:
    """The effect of that name, short or long. Printed, it reads as `aveffect describe` shows it.

    >>> describe("blur").property("blur_count").minimum
    0
    """
    if isinstance(name, EffectInfo):
        return name
    for effect in effects():
        if name in (effect.name, effect.long_name):
            return effect
    _core.describe_text(name)  # says which name is nearest
    raise KeyError(name)
