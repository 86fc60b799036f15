"""What effects make of the ledger's pictures is what stands there."""
import hashlib
import os
import pathlib
import re
import subprocess

import numpy as np
import pytest

import aveffect

LEDGER = pathlib.Path(__file__).parent.parent / "ledger/ledger.txt"
LINE = re.compile(r"(?P<what>[^@#+ ]+)(@(?P<ms>\d+)ms)?(?P<again>#2)?(?P<right>\+right)? (?P<format>\S+) (?P<width>\d+)x(?P<height>\d+) (?P<hash>\S+)")
SHIFTS = {"yuv420p": (1, 1), "yuv422p": (1, 0), "yuv411p": (2, 0), "yuv410p": (2, 2), "yuva420p": (1, 1), "yuva444p": (0, 0)}
KINDS = {effect.name: effect for effect in aveffect.effects()}


@pytest.fixture(scope="module")
def inputs(tmp_path_factory):
    folder = tmp_path_factory.mktemp("inputs")
    subprocess.run([os.environ["AVEFFECT_LEDGER"], "inputs", folder], check=True)
    return folder


def picture(inputs, line, second=False):
    width, height, kind = int(line["width"]), int(line["height"]), line["format"]
    raw = np.fromfile(inputs / f"{kind}-{width}x{height}{'-second' if second else ''}.raw", np.uint8)
    if kind == "bgra":
        return raw.reshape(height, width, 4)
    across, down = SHIFTS[kind]
    chroma = height >> down, width >> across
    planes, at = [], 0
    for shape in [(height, width), chroma, chroma] + [(height, width)] * kind.startswith("yuva"):
        planes.append(raw[at:at + shape[0] * shape[1]].reshape(shape))
        at += planes[-1].size
    return tuple(planes)


def effect_of(line):
    return KINDS[re.split("[/:]", line["what"])[0]]


def is_reached(line):
    """Full range and planes of transitions are not told to this package; progress comes in other steps than milliseconds, which a mix of two pictures shows."""
    transition = effect_of(line).kind == "transition"
    return line["format"] == "bgra" and (line["what"] != "crossfade" or line["ms"] == "0") or line["format"] in SHIFTS and not transition


def made(inputs, line):
    effect, time = effect_of(line), int(line["ms"] or 0) / 1000
    if effect.kind == "transition":
        return aveffect.Transition(effect.name, picture(inputs, line), picture(inputs, line, second=True))(time)
    chain = aveffect.Chain([line["what"]], duration=1)
    right = picture(inputs, line, second=True) if line["right"] else None
    for _ in range(2 if line["again"] else 1):
        result = chain(picture(inputs, line), time, right=right)
    return result


def test_every_line_of_pictures(inputs):
    lines = [line for line in map(LINE.fullmatch, LEDGER.read_text().splitlines()) if line and is_reached(line)]
    wrong = []
    for line in lines:
        result = made(inputs, line)
        raw = b"".join(plane.tobytes() for plane in (result if isinstance(result, tuple) else (result,)))
        if hashlib.md5(raw).hexdigest() != line["hash"]:
            wrong.append(line.string)
    assert len(lines) > 3000 and not wrong, wrong
