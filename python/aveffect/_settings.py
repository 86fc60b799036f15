"""Settings of Python's as the command line writes them."""

from __future__ import annotations

import os
import re
from typing import Any, Mapping, Optional, Union

from ._errors import UsageError

REACH = {"begin": "@from", "end": "@to", "fade_in": "@fade-in", "fade_out": "@fade-out", "mix": "@mix", "mask": "@mask",
         "mask_invert": "@mask-invert", "mask_feather": "@mask-feather", "area": "@area"}
FROM_THE_END = re.compile(r"(?:^|;)\s*(?:-[\d.:]+|[\d.]+%)\s*=")  # times that need to know where that is

Value = Union[bool, int, float, str, os.PathLike, tuple, Mapping[Union[float, str], Any]]


def value_text(value: Value, of_time: bool = False) -> str:
    """One value. Mappings are of times to values, and move; tuples are colours (R, G, B)."""
    if isinstance(value, bool):
        return "on" if value else "off"
    if isinstance(value, (int, float)) or hasattr(value, "__index__") or hasattr(value, "__float__"):
        return repr(value) if isinstance(value, (int, float)) else str(value)
    if isinstance(value, os.PathLike):
        return os.fspath(value)
    if isinstance(value, Mapping):
        if of_time or not value:
            raise UsageError("a setting that moves is a mapping of times to values, one of them at least")
        return ";".join(f"{value_text(time, True)}={value_text(each, True)}" for time, each in value.items())
    if isinstance(value, tuple) and len(value) == 3 and all(isinstance(each, int) and 0 <= each <= 255 for each in value):
        return "#%02x%02x%02x" % value
    if isinstance(value, str):
        return value
    raise TypeError(f"a setting is a number, text, switch, path, colour (R, G, B) or mapping of times, not {value!r}")


def area_text(area: Value) -> str:
    """("ellipse", 30, 20, 40, 60) as "ellipse,30,20,40,60"."""
    if isinstance(area, (tuple, list)):
        return ",".join(str(each) for each in area)
    return value_text(area)


def escaped(text: str) -> str:
    return text.replace("\\", "\\\\").replace(":", "\\:")


def effect_text(name: str, settings: Mapping[str, Value]) -> str:
    """NAME[/PRESET][:property=value...]; what is None is left out."""
    if not isinstance(name, str):
        raise TypeError(f"an effect is named by its name, not {name!r}")
    parts = [name]
    for key, value in settings.items():
        if value is None:
            continue
        text = area_text(value) if key == "area" else value_text(value)
        parts.append(f"{REACH.get(key, key)}={escaped(text)}")
    return ":".join(parts)


def milliseconds(duration: Optional[float]) -> Optional[int]:
    if duration is None:
        return None
    if not 0 < duration < 1e9:
        raise UsageError(f"duration must be a number of seconds above 0, not {duration!r}")
    return max(1, round(duration * 1000))


def lacks_duration(texts: list[str], duration: Optional[float]) -> str:
    """What means nothing as long as nobody knows the whole: times from its end, and shares of it; empty where nothing does."""
    if duration is not None:
        return ""
    for text in texts:
        for part in re.split(r"(?<!\\):(?!\d)", text)[1:]:
            name, _, value = part.partition("=")
            if FROM_THE_END.search(value) or name in ("@from", "@to") and value.startswith("-") or name == "@fade-out":
                return f"{part} counts from the end: give duration, the seconds that the whole lasts"
    return ""
