#!/usr/bin/env python3
"""Renders every effect and transition in chunks and whole, and holds the films against each other.

every_effect.py PROGRAM [--full]
Several effects share a render, unless --full: then each has its own, with each of its presets and with a setting that moves.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile

SECONDS = 120  # a command may take
CHUNKS = 3
TOGETHER = 4  # effects in a render
LOSSLESS = ["--codec", "ffv1", "--audio-codec", "flac"]
MEDIA = """
-f lavfi -i testsrc2=s=64x48:r=25:d=1 -f lavfi -i sine=d=1 -ac 2 -c:v ffv1 -c:a flac a.mkv
-f lavfi -i mandelbrot=s=64x48:r=25 -f lavfi -i sine=300 -ac 2 -t 1 -pix_fmt yuv420p -c:v ffv1 -c:a flac b.mkv
"""


def ran(folder, *words):
    done = subprocess.run([str(word) for word in words], cwd=folder, capture_output=True, text=True, timeout=SECONDS)
    if done.returncode:
        raise RuntimeError(f"{words[1]}: {done.returncode} {done.stderr.strip()}")
    return done.stdout


def moving(effect):
    """A number of the effect that moves through its range; nothing where it has none."""
    for prop in effect["properties"]:
        if prop["kind"] != "number" or prop["name"] == "duration":
            continue
        low, high = ("5%", "60%") if prop["percentOf"] else (prop["minimum"], min(prop["maximum"], prop["minimum"] + 50))
        return f"{effect['shortName']}:{prop['name']}=0={low};0.9={high}"
    return None


def settings(effect, full):
    """The effect as it is written on a command line, in a way that does something."""
    name, presets = effect["shortName"], [preset["name"] for preset in effect["presets"]]
    plain = f"{name}/{presets[0]}" if presets else name
    if effect["name"] == "addnoise":
        plain = f"{name}:addnoise_level=-10"
    if not full:
        return [plain]
    moved = moving(effect)
    return [plain, *(f"{name}/{preset}" for preset in presets[1:]), *([moved] if moved else [])]


def renders(effects, full):
    """The commands that are shared out, without their output."""
    step = 1 if full else TOGETHER
    video = [text for effect in effects if effect["kind"] not in ("transition", "stereo", "audio") for text in settings(effect, full)]
    sound = [text for effect in effects if effect["kind"] == "audio" and effect["name"] != "audio_replace" for text in settings(effect, full)]
    for at in range(0, len(video), step):
        yield ["render", "a.mkv", *(word for text in video[at:at + step] for word in ("-e", text)), *LOSSLESS]
    yield ["render", "b.mkv", "-e", "invert", *(word for text in sound for word in ("-a", text)), *LOSSLESS]
    yield ["render", "a.mkv", "-e", "invert", "-a", "replace-sound:audio_replace_path=b.mkv", *LOSSLESS]
    for effect in effects:
        if effect["kind"] == "transition":
            yield ["join", "a.mkv", "b.mkv", "-e", effect["shortName"], "--duration", "0.6", *LOSSLESS]
        if effect["kind"] == "stereo":
            for text in settings(effect, full):
                yield ["render", "a.mkv", "--right", "b.mkv", "-e", text, *LOSSLESS]


class Trial:
    def __init__(self, program, folder):
        self.program, self.folder = os.path.abspath(program), pathlib.Path(folder)
        for line in MEDIA.strip().splitlines():
            ran(folder, "ffmpeg", "-v", "error", *line.split())

    def contents(self, name):
        lines = ran(self.folder, "ffmpeg", "-v", "error", "-i", name, "-map", "0", "-f", "framemd5", "-").splitlines()
        return [line for line in lines if not line.startswith("#")]

    def differs(self, task):
        """What is wrong with a render in chunks; nothing when all is right."""
        number, words = task
        plan, part, whole = f"plan{number}", f"part{number}.mkv", f"whole{number}.mkv"
        inputs = 3 if words[0] == "join" else 2
        try:
            ran(self.folder, self.program, "plan", plan, "--chunks", CHUNKS, *words[:inputs], part, *words[inputs:])
            for chunk in range(CHUNKS + 1):
                ran(self.folder, self.program, "work", plan, chunk, "--progress", "none")
            ran(self.folder, self.program, "finish", plan)
            ran(self.folder, self.program, *words[:inputs], whole, *words[inputs:], "--progress", "none")
            same = self.contents(part) == self.contents(whole)
        except (RuntimeError, subprocess.TimeoutExpired) as error:
            return f"{' '.join(words)}: {error}"
        return "" if same else f"{' '.join(words)}: the films differ"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--full", action="store_true")
    options = parser.parse_args()
    effects = json.loads(ran(".", options.program, "list", "--json"))["effects"]
    tasks = list(enumerate(renders(effects, options.full)))
    with tempfile.TemporaryDirectory() as folder:
        trial = Trial(options.program, folder)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            wrong = [line for line in pool.map(trial.differs, tasks) if line]
    print(*wrong, sep="\n")
    print(f"{len(tasks)} runs of {len(effects)} effects, {len(wrong)} wrong")
    sys.exit(bool(wrong))


main()
