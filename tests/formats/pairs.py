#!/usr/bin/env python3
"""Has the program write every encoder's pictures and sound into every container, and another program read them.

pairs.py PROGRAM [--sample] [--full] [--table FILE]
--sample: one pair of each kind that ever went wrong; --full: several rates, layouts, sizes and formats of each pair.
--table: rewrites the tables of that file between its marks.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from fractions import Fraction

SECONDS = 20  # a run may take
PICTURES, SECONDS_OF_SOUND = 10, 0.4  # at 25 a second
DEVICES = "_(amf|cuvid|mf|nvenc|omx|qsv|v4l2m2m|vaapi)$"  # encoders that want one
# More of each pair, in the full run: inputs and options.
PICTURE_KINDS = [("p.mkv", []), ("odd.mkv", []), ("p.mkv", ["--fps", "30000/1001"]), ("rgba.mkv", []), ("deep.mkv", [])]
SOUND_KINDS = ["s.wav", "mono.wav", "six.wav", "low.wav", "deep.wav"]
MEDIA = """
-f lavfi -i testsrc2=s=176x144:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv420p p.mkv
-f lavfi -i testsrc2=s=99x75:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv444p odd.mkv
-f lavfi -i testsrc2=s=64x64:r=25 -frames:v 10 -c:v ffv1 -pix_fmt bgra rgba.mkv
-f lavfi -i testsrc2=s=128x96:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv422p10 deep.mkv
-f lavfi -i sine=r=48000:d=0.4 -ac 2 s.wav
-f lavfi -i sine=r=44100:d=0.4 -ac 1 mono.wav
-f lavfi -i sine=r=48000:d=0.4 -ac 6 six.wav
-f lavfi -i sine=r=11025:d=0.4 -ac 1 low.wav
-f lavfi -i sine=r=96000:d=0.4 -ac 2 -c:a pcm_s24le deep.wav
"""
# Kinds of pairs that went wrong once: encoders that fail to open and are freed, codecs that a container calls
# private data, headers that are refused when the encoder's threads run already, and some that are good.
SAMPLE = [("v", "snow", "matroska"), ("v", "ffv1", "mpegts"), ("v", "png", "mpeg"), ("v", "libsvtav1", "mov"),
          ("v", "libsvtav1", "gif"), ("v", "vp8", "vob"), ("v", "mpeg4", "mp4"), ("v", "libx264", "mpegts"),
          ("v", "mjpeg", "avi"), ("a", "flac", "mpegts"), ("a", "g723_1", "wav"), ("a", "sonic", "matroska"),
          ("a", "aac", "mp4"), ("a", "libmp3lame", "vob"), ("a", "pcm_s16le", "mpeg"), ("a", "ac3", "matroska")]


def listed(what, pattern):
    text = subprocess.run(["ffmpeg", "-hide_banner", "-v", "error", what], capture_output=True, text=True, check=True).stdout
    return re.findall(pattern, text, re.M)


def encoders(kind):
    """Their names, and each one's codec."""
    rows = listed("-encoders", r"^ (\S{6}) ([^\s=]+) +(.*)")
    codecs = {name: re.search(r"\(codec (\S+)\)", about) for flags, name, about in rows if flags[0] == kind.upper()}
    return {name: codec[1] if codec else name for name, codec in codecs.items()}


def muxers():
    return sorted({name.split(",")[0] for name in listed("-muxers", r"^ +D?E (\S+) ")})


class Trial:
    def __init__(self, program, folder):
        self.program, self.folder = os.path.abspath(program), folder
        self.codecs = {kind: encoders(kind) for kind in "va"}
        self.settled = {}  # what was refused for all pairs of a kind
        for line in MEDIA.strip().splitlines():
            subprocess.run(["ffmpeg", "-v", "error", *line.split()], cwd=folder, check=True)

    def read(self, path, kind):
        """(frames, seconds) as another program decodes them; None where it can't."""
        try:
            told = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-map", f"0:{kind}", "-fps_mode", "passthrough",
                                   "-f", "framehash", "-"], capture_output=True, text=True, timeout=SECONDS)
        except subprocess.TimeoutExpired:
            return None
        rows = [[int(field) for field in row.split(",")[1:4]] for row in told.stdout.splitlines() if row and row[0] != "#"]
        base = re.search(r"#tb 0: (\d+)/(\d+)", told.stdout)
        if told.returncode != 0 or not rows or not base:
            return None
        unit = int(base[1]) / int(base[2])
        heard = sum(duration for _, _, duration in rows)
        shown = max(time + duration for _, time, duration in rows) - min(time for _, time, _ in rows)
        return len(rows), (heard if kind == "a" else shown) * unit

    def run(self, task):
        """What comes of a pair: "good", a reason that the program gives, or "WRONG: ..."."""
        kind, encoder, muxer, *_ = task
        device = (kind, encoder) if re.search(DEVICES, encoder) else None
        keys = {"can't hold": (kind, self.codecs[kind].get(encoder, encoder), muxer), "hold no": (kind, muxer), "format is called": (kind, muxer),
                "can't start": device}
        for key in keys.values():
            if key in self.settled:
                return self.settled[key]
        result = self.write(task)
        self.settled |= {key: result for words, key in keys.items() if key and f" {words} " in result}
        return result

    def write(self, task):
        kind, encoder, muxer, source, options = task
        target = self.folder / f"{kind}-{encoder}-{muxer}-{source}-{len(options)}"
        choice = ["--codec", encoder, "--no-sound"] if kind == "v" else ["--audio-codec", encoder]
        words = [self.program, "render", self.folder / source, target, "--format", muxer, *choice, *options]
        words += ["-e", "invert"] if kind == "v" else ["-a", "volume/half"]
        try:
            done = subprocess.run(words, capture_output=True, text=True, errors="replace", timeout=SECONDS)
        except subprocess.TimeoutExpired:
            return "WRONG: no end"
        finally:
            exists = target.exists()
        said = done.stderr.splitlines()
        if done.returncode not in (0, 1, 2, 3, 4, 5):
            return f"WRONG: ends with {done.returncode}"
        if done.returncode != 0:
            if exists or len(said) != 1:
                return f"WRONG: {'left behind' if exists else said}"
            return said[0]
        try:
            return self.judge(target, kind, options)
        finally:
            target.unlink()

    def judge(self, target, kind, options):
        found = self.read(target, kind)
        if found is None:
            return "WRONG: does not decode"
        frames, length = found
        if kind == "a":
            return "good" if SECONDS_OF_SOUND - 0.03 <= length <= SECONDS_OF_SOUND + 0.25 else f"WRONG: {length:.3f} s of sound"
        wanted = round(PICTURES * Fraction(options[1]) / 25) if options else PICTURES
        if abs(frames - wanted) > 2:
            return f"WRONG: {frames} pictures"
        # What tells no rate is read at 25 a second.
        right = abs(length - PICTURES / 25) < 0.1 or options and abs(length - frames / 25) < 0.02
        return "good" if right else f"WRONG: {frames} pictures in {length:.3f} s"


def write_tables(path, results):
    """Which containers hold what each encoder gives, by the results of the plain pairs."""
    text = ""
    for kind, title in (("v", "Pictures"), ("a", "Sound")):
        held = collections.defaultdict(list)
        for (each, encoder, muxer, *_), result in results.items():
            if each == kind and result == "good":
                held[encoder].append(muxer)
        text += f"## {title}\n\n| Encoder | Containers |\n|---|---|\n"
        text += "".join(f"| `{encoder}` | {', '.join(sorted(set(names)))} |\n" for encoder, names in sorted(held.items())) + "\n"
    page = pathlib.Path(path).read_text(encoding="utf-8")
    begin, end = "<!-- tables: made by tests/formats/pairs.py -->\n", "<!-- end of tables -->"
    head, rest = page.split(begin)
    pathlib.Path(path).write_text(head + begin + "\n" + text + end + rest.split(end)[1], encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--sample", action="store_true")
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--table")
    parser.add_argument("--results", help="file for all results, as JSON")
    parser.add_argument("--muxer", action="append", help="this one alone")
    parser.add_argument("--kind", default="va", help="v or a alone")
    options = parser.parse_args()
    pairs = SAMPLE if options.sample else [(kind, encoder, muxer) for kind in options.kind
                                           for encoder in encoders(kind) for muxer in options.muxer or muxers()]
    kinds = {"v": PICTURE_KINDS, "a": [(name, []) for name in SOUND_KINDS]}
    with tempfile.TemporaryDirectory() as folder:
        trial = Trial(options.program, pathlib.Path(folder))
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            tasks = [(*pair, *kinds[pair[0]][0]) for pair in pairs]
            results = dict(zip([task[:4] for task in tasks], pool.map(trial.run, tasks)))
            if options.full:  # of those that are held
                more = [(*task[:3], *each) for task in tasks if results[task[:4]] == "good" for each in kinds[task[0]][1:]]
                results.update(zip([(*task[:4], *task[4]) for task in more], pool.map(trial.run, more)))
    wrong = {pair: result for pair, result in results.items() if result.startswith("WRONG")}
    for pair, result in wrong.items():
        print(*pair, result)
    good = sum(result == "good" for result in results.values())
    print(f"{len(results)} runs: {good} good, {len(results) - good - len(wrong)} refused, {len(wrong)} wrong")
    if options.results:
        pathlib.Path(options.results).write_text(json.dumps([[*pair, result] for pair, result in results.items()]))
    if options.table:
        write_tables(options.table, results)
    sys.exit(bool(wrong))


main()
