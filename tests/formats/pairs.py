#!/usr/bin/env python3
"""Has the program write every encoder's pictures and sound into every container, and another program read them.

pairs.py PROGRAM [--sample] [--full] [--table FILE] [--results FILE]
--sample: one pair of each kind that ever went wrong; --full: also several rates, layouts, sizes and formats of what is
held, so that each encoder and each container meets each of them. --table: rewrites the tables of that file between its
marks. --results: file of all results, as JSON; what stands in it already is not run again.
"""
import argparse
import collections
import concurrent.futures
import functools
import hashlib
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
# What some take: a size, a rate, sound beside the pictures.
PAL = ("pal.mkv", [])
SPECIAL = {"dvvideo": PAL, "dv": PAL, "gxf": PAL, "dnxhd": ("hd.mkv", ["--bitrate", "120M"]), "roqvideo": ("square.mkv", []),
           "mxf_d10": ("pal.mkv", ["--bitrate", "30M"]), "filmstrip": ("rgba.mkv", ["--output-format", "rgba"]), "psp": ("both.mkv", ["--sound"]),
           "amv": ("both.mkv", ["--sound"])}
# Formats of sums and times instead of pictures; readers that must be told what they read, some when it is this short, or that tell no times.
SUMS = "crc framecrc framehash framemd5 hash md5 streamhash mkvtimestamp_v2 uncodedframecrc chromaprint".split()
TOLD = {"rawvideo": "-f rawvideo -pixel_format yuv420p -video_size 176x144", "codec2raw": "-f codec2raw -mode 1300"}
TOLD |= {f"{kind}{bits}{end}": f"-f {kind}{bits}{end} -ar 48000 -ac 2"
         for kind in "fsu" for bits in (16, 24, 32, 64) for end in ("le", "be") if f"{kind}{bits}{end}" not in ("s16le", "u16le")}
TOLD |= {name: f"-f {name}" for name in "dts mlp truehd alaw mulaw s8 u8 s16le u16le g726 g726le".split()} | {"vidc": "-f vidc -ar 48000 -ac 2"}
TIMELESS = ["dirac", "fits"]
PACKETS = {"gxf": 0.7, "adpcm_swf": 4096 / 11025}  # seconds that the longest packet of a container or an encoder lasts
MEDIA = """
-f lavfi -i testsrc2=s=176x144:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv420p p.mkv
-f lavfi -i testsrc2=s=99x75:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv444p odd.mkv
-f lavfi -i testsrc2=s=64x64:r=25 -frames:v 10 -c:v ffv1 -pix_fmt bgra rgba.mkv
-f lavfi -i testsrc2=s=128x96:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv422p10 deep.mkv
-f lavfi -i testsrc2=s=720x576:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv420p pal.mkv
-f lavfi -i testsrc2=s=1920x1080:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv422p hd.mkv
-f lavfi -i testsrc2=s=128x128:r=25 -frames:v 10 -c:v ffv1 -pix_fmt yuv420p square.mkv
-f lavfi -i testsrc2=s=176x144:r=25 -f lavfi -i sine=r=44100 -t 0.4 -c:v ffv1 -pix_fmt yuv420p -c:a flac both.mkv
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
          ("v", "mjpeg", "avi"), ("v", "prores_ks", "mxf"), ("v", "cinepak", "film_cpk"),
          ("v", "rv10", "rm"), ("v", "roqvideo", "roq"), ("v", "ffv1", "wtv"), ("v", "libx264", "mpeg"), ("a", "flac", "mpegts"), ("a", "g723_1", "wav"), ("a", "sonic", "matroska"),
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


@functools.cache
def extension(muxer):
    told = subprocess.run(["ffmpeg", "-v", "error", "-h", f"muxer={muxer}"], capture_output=True, text=True).stdout
    found = re.search(r"extensions: ([^,.\s]+)", told)
    return found[1] if found else "file"


class Trial:
    def __init__(self, program, folder):
        self.program, self.folder = os.path.abspath(program), folder
        self.codecs = {kind: encoders(kind) for kind in "va"}
        self.settled = {}  # what was refused for all pairs of a kind
        for line in MEDIA.strip().splitlines():
            subprocess.run(["ffmpeg", "-v", "error", *line.split()], cwd=folder, check=True)

    def read(self, path, kind, muxer):
        """(frames, seconds) as another program decodes them; None where it can't."""
        try:
            told = subprocess.run(["ffmpeg", "-v", "error", *TOLD.get(muxer, "").split(), "-i", path, "-map", f"0:{kind}", "-fps_mode", "passthrough",
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
                "can't start": device, "takes no pictures": device}
        if muxer in SUMS:
            return "holds sums or times"
        for key in keys.values():
            if key in self.settled:
                return self.settled[key]
        result = self.write(task)
        self.settled |= {key: result for words, key in keys.items() if key and f" {words} " in result}
        return result

    def write(self, task):
        kind, encoder, muxer, source, options = task
        target = self.folder / f"{kind}-{encoder}-{muxer}-{source}-{len(options)}.{extension(muxer)}"
        choice = ["--codec", encoder, "--no-sound"] if kind == "v" else ["--audio-codec", encoder]
        if "--sound" in options:
            choice, options = choice[:2], []
        words = [self.program, "render", self.folder / source, target, "--format", muxer, *choice, *options]
        words += ["-e", "invert"] if kind == "v" else ["-a", "volume/half"]
        try:
            done = subprocess.run(words, capture_output=True, text=True, errors="replace", timeout=SECONDS)
        except subprocess.TimeoutExpired:
            return "WRONG: no end"
        finally:
            exists = target.exists()
        said = [line for line in done.stderr.splitlines() if not line.startswith("aveffect: warning: ")]
        if done.returncode not in (0, 1, 2, 3, 4, 5):
            return f"WRONG: ends with {done.returncode}"
        if done.returncode != 0:
            if exists or len(said) != 1:
                return f"WRONG: {'left behind' if exists else said}"
            return said[0]
        try:
            return self.judge(target, *task[:3], options)
        finally:
            target.unlink()

    def judge(self, target, kind, encoder, muxer, options):
        found = self.read(target, kind, muxer)
        if found is None:
            return "WRONG: does not decode"
        frames, length = found
        if kind == "a":
            most = max(SECONDS_OF_SOUND + 0.25, PACKETS.get(muxer, 0), SECONDS_OF_SOUND + PACKETS.get(encoder, 0))
            return "good" if SECONDS_OF_SOUND - 0.03 <= length <= most else f"WRONG: {length:.3f} s of sound"
        wanted = round(PICTURES * Fraction(options[1]) / 25) if "--fps" in options else PICTURES
        if abs(frames - wanted) > 2:
            return f"WRONG: {frames} pictures"
        # What tells no rate is read at 25 a second.
        right = abs(length - PICTURES / 25) < 0.1 or "--fps" in options and abs(length - frames / 25) < 0.02 or muxer in TIMELESS
        return "good" if right else f"WRONG: {frames} pictures in {length:.3f} s"


def names(them):
    return ", ".join(f"`{name}`" for name in sorted(them))


def reason(result):
    """A refusal without the names of one run."""
    text = re.sub(r"^aveffect: |/\S+: |/\S+ (?=can't|holds)|; (known|valid) ones are.*|(?<=; )these can:.*", "", result)
    text = re.sub(r"\S+ files|/\S+", lambda found: "files" if found[0][0] != "/" else "it", re.sub(r"called '.*'", "called so", text))
    return re.sub(r"(the encoder|pictures of|sound of|no encoder for) \S+", r"\1 …", text)


def rows(held, working):
    """A container a line, the encoders it holds; those that hold the same stand in one line."""
    alike = collections.defaultdict(list)
    for muxer, encoders_held in held.items():
        alike[frozenset(encoders_held)].append(muxer)
    for encoders_held, muxers_alike in sorted(alike.items(), key=lambda each: sorted(each[1])):
        missing = working - encoders_held
        told = names(encoders_held)
        if len(missing) < len(encoders_held) / 2:
            told = "all that work here but " + names(missing) if missing else "all that work here"
        yield f"| {names(muxers_alike)} | {told} |\n"


def table(kind, results):
    pairs = {(encoder, muxer): result for (each, encoder, muxer, *_), result in results.items() if each == kind}
    held, refused = collections.defaultdict(set), collections.defaultdict(lambda: collections.defaultdict(set))
    for (encoder, muxer), result in pairs.items():
        if result == "good":
            held[muxer].add(encoder)
        elif "can't hold" not in result:
            refused[reason(result)][encoder].add(muxer)
    working = set().union(*held.values())
    idle = {encoder for encoder, _ in pairs} - working
    title = {"v": "Pictures", "a": "Sound"}[kind]
    text = f"## {title}\n\nEncoders that work here: {names(working)}.\n\n| Containers | Encoders |\n|---|---|\n"
    text += "".join(rows(held, working)) + f"\nIn no container: {names(idle)}.\n\nRefused, for other "
    text += "reasons than that a container does not hold the codec:\n\n| What is said | Of |\n|---|---|\n"
    for said, them in sorted(refused.items()):
        if any(len(where) > 20 for where in them.values()) or len(them) > 20:  # it is the container that can't
            of = names(set().union(*them.values()))
        else:
            of = "; ".join(f"{names([encoder])} in {names(where) if len(where) < 6 else 'many'}" for encoder, where in sorted(them.items()))
        text += f"| {said} | {of} |\n"
    return text + "\n"


def write_tables(path, results):
    """What the plain pairs gave."""
    version = subprocess.run(["ffmpeg", "-version"], capture_output=True, text=True, check=True).stdout.split()[2]
    plain = {pair: result for pair, result in results.items() if len(pair) == 3}
    text = f"With FFmpeg {version}; {len(plain)} pairs, {sum(result == 'good' for result in plain.values())} of them good.\n\n"
    text += "".join(table(kind, plain) for kind in "va")
    page = pathlib.Path(path).read_text(encoding="utf-8")
    begin, end = "<!-- tables: made by tests/formats/pairs.py -->\n", "<!-- end of tables -->"
    head, rest = page.split(begin)
    pathlib.Path(path).write_text(head + begin + "\n" + text + end + rest.split(end)[1], encoding="utf-8")


def grid(good, kinds):
    """Each kind for each encoder and each container that holds anything, in as few runs as are easily found."""
    for number, kind in enumerate(kinds):
        encoders_met, muxers_met = set(), set()
        for pair in sorted(good, key=lambda each: hash_of(each, number)):
            if pair[1] in encoders_met and pair[2] in muxers_met:
                continue
            encoders_met.add(pair[1])
            muxers_met.add(pair[2])
            yield (*pair, *kind)


def hash_of(pair, number):  # an order that is the same every time, and another one for each kind
    return hashlib.md5(repr((pair, number)).encode()).hexdigest()


def plain(pair):
    """Input and options of a pair's first run."""
    kind, encoder, muxer = pair
    if kind == "a":
        return SOUND_KINDS[0], []
    return SPECIAL.get(encoder) or SPECIAL.get(muxer) or PICTURE_KINDS[0]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--sample", action="store_true")
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--table")
    parser.add_argument("--results")
    parser.add_argument("--muxer", action="append", help="this one alone")
    parser.add_argument("--kind", default="va", help="v or a alone")
    options = parser.parse_args()
    pairs = SAMPLE if options.sample else [(kind, encoder, muxer) for kind in options.kind
                                           for encoder in encoders(kind) for muxer in options.muxer or muxers()]
    known = pathlib.Path(options.results) if options.results else None
    results = {tuple(pair): result for *pair, result in json.loads(known.read_text())} if known and known.exists() else {}
    with tempfile.TemporaryDirectory() as folder:
        trial = Trial(options.program, pathlib.Path(folder))

        def run(tasks):
            tasks = {key: task for key, task in tasks.items() if key not in results}
            with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
                results.update(zip(tasks, pool.map(trial.run, tasks.values())))
            if known:
                known.write_text(json.dumps([[*key, result] for key, result in results.items()]))

        run({pair: (*pair, *plain(pair)) for pair in pairs})
        if options.full:
            for kind, kinds in (("v", PICTURE_KINDS[1:]), ("a", [(name, []) for name in SOUND_KINDS[1:]])):
                good = [pair for pair in pairs if pair[0] == kind and results[pair] == "good" and not (SPECIAL | TOLD).keys() & pair]
                run({(*task[:4], " ".join(task[4])): task for task in grid(good, kinds)})
    wrong = {pair: result for pair, result in results.items() if result.startswith("WRONG")}
    for pair, result in wrong.items():
        print(*pair, result)
    good = sum(result == "good" for result in results.values())
    print(f"{len(results)} runs: {good} good, {len(results) - good - len(wrong)} refused, {len(wrong)} wrong")
    if options.table:
        write_tables(options.table, results)
    sys.exit(bool(wrong))


main()
