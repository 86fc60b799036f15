"""Makes a notebook that shows every effect: make_gallery.py NOTEBOOK

Run it with Jupyter, or with `jupyter nbconvert --execute`.
"""
import json
import sys

import aveffect

PICTURE = """\
import numpy as np
from IPython.display import display
from PIL import Image

import aveffect

# A picture of one's own: np.asarray(Image.open("photo.jpg").convert("RGB"))
y, x = np.mgrid[0:160, 0:240]
picture = np.dstack([x, (x ^ y) & 255, 255 - y, np.full_like(x, 255)]).astype(np.uint8)
picture[40:120, 80:160, :3] = 255 - picture[40:120, 80:160, :3]
other = picture[::-1].copy()


def show(*pictures):
    display(Image.fromarray(np.hstack(pictures)[..., :3]))


show(picture, other)
"""


def text(*lines):
    return {"cell_type": "markdown", "metadata": {}, "source": "\n".join(lines)}


def code(source):
    return {"cell_type": "code", "execution_count": None, "metadata": {}, "outputs": [], "source": source}


def cells():
    yield text("# The effects", "", "Every effect with its presets, and every transition half way.")
    yield code(PICTURE)
    for effect in aveffect.effects():
        if effect.kind == "audio":
            continue
        yield text(f"## {effect.title}", "", effect.help + (f" {effect.note}" if effect.note else ""))
        if effect.kind == "transition":
            yield code(f'show(*(aveffect.Transition("{effect.name}", picture, other, order="RGBA")(at) for at in (0.25, 0.5, 0.75)))')
            continue
        names = [f"{effect.name}/{preset.name}" for preset in effect.presets] or [effect.name]
        made = ",\n     ".join(f'aveffect.Effect("{name}", duration=1)(picture, 0.4, order="RGBA")' for name in names)
        yield code(f"show({made})")


notebook = {"cells": list(cells()), "metadata": {"kernelspec": {"display_name": "Python 3", "language": "python", "name": "python3"}},
            "nbformat": 4, "nbformat_minor": 4}
with open(sys.argv[1], "w", encoding="utf-8") as file:
    json.dump(notebook, file, indent=1)
