#!/usr/bin/env python3
"""Holds what other programs and the program itself make of the ledger's pictures against the ledger.

doors.py LEDGER BUILD [program] [ffmpeg] [melt] [gstreamer]
Clips are of ten equal pictures, ten a second: effects that follow time have every tenth of their second.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile

SIZE = "256x64"  # rows without padding, here as there: some effects read behind them
FRAMES = RATE = 10
FORMATS = ["bgra", "yuv420p", "yuv422p", "yuv410p", "yuv411p", "yuva420p"]
PARTED = 12  # of the program's renders each so-many-th is made in chunks, too
SECONDS = 120


def run(*words, env=None, **more):
    for _ in range(3):  # melt stands still for ever once in some hundred runs
        try:
            done = subprocess.run([str(word) for word in words], capture_output=True, env=env, timeout=SECONDS, **more)
        except subprocess.TimeoutExpired:
            continue
        # Adapters say there what is wrong; the program also warns of settings that change nothing.
        if done.returncode or (env and b"aveffect" in done.stderr):
            raise SystemExit(f"{' '.join(map(str, words))}: {done.returncode}\n{done.stderr.decode()}")
        return done.stdout
    raise SystemExit(f"{words[0]}: no end")


def hashes(raw, count=FRAMES):
    step = len(raw) // count
    return [hashlib.md5(raw[at:at + step]).hexdigest() for at in range(0, step * count, step)]


class Ledger:
    """What is made, and what should be."""

    def __init__(self, lines):
        self.hashes = dict(line.rsplit(" ", 1) for line in lines)
        self.checked, self.wrong = {}, []

    def wanted(self, what, pixel_format, frames):
        """Of each picture of a clip."""
        def of(suffix):
            return self.hashes.get(f"{what}{suffix} {pixel_format} {SIZE}")
        if of("@0ms"):
            return [of(f"@{1000 * at // RATE}ms") for at in range(frames)]
        return [of("")] + [of("#2") or of("")] * (frames - 1)

    def check(self, door, what, pixel_format, found):
        wanted = self.wanted(what, pixel_format, len(found))
        if not wanted[0]:
            raise SystemExit(f"{what} {pixel_format} is not in the ledger")
        known = [(is_, should) for is_, should in zip(found, wanted) if should]
        self.checked[door] = self.checked.get(door, 0) + len({should for _, should in known})
        if any(is_ != should for is_, should in known):
            self.wrong.append(f"{door}: {what} {pixel_format} {found}, not {wanted}")


class Doors:
    def __init__(self, ledger, build):
        self.ledger, self.build, self.program = ledger, build, build / "bin/aveffect"
        run(build / "tests/picture_ledger", "inputs", ".")
        self.picture_bytes = {}
        for name in FORMATS:
            for second in ("", "-second"):
                raw = pathlib.Path(f"{name}-{SIZE}{second}.raw").read_bytes()
                self.picture_bytes[name] = len(raw)
                pathlib.Path(f"{name}{second}.raw").write_bytes(raw * FRAMES)
                run("ffmpeg", "-v", "error", "-f", "rawvideo", "-pixel_format", name, "-video_size", SIZE, "-framerate", RATE, "-i", f"{name}{second}.raw",
                    "-c:v", "ffv1", f"{name}{second}.mkv")
        effects = json.loads(run(self.program, "list", "--json"))["effects"]
        self.effects = [effect for effect in effects if effect["kind"] not in ("transition", "audio", "stereo")]
        self.transitions = [effect["shortName"] for effect in effects if effect["kind"] == "transition"]

    def cases(self, each=1):
        """Effects as they start, with each of their presets."""
        all_cases = [(effect, preset) for effect in self.effects for preset in [None] + [preset["name"] for preset in effect["presets"]]]
        return all_cases[::each]

    def all_at_once(self, work, tasks):
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for task, found in zip(tasks, pool.map(work, tasks)):
                yield task, found


def spoken(effect, preset):
    return effect["shortName"] + ("/" + preset if preset else "")


def program(doors):
    """Every preset on pixels, and each second one on some kind of planes; on one thread and on four; whole and in chunks."""
    tasks = []
    for number, (effect, preset) in enumerate(doors.cases()):
        planar = "yuv420p" if effect["fewFormats"] else FORMATS[1 + number // 2 % (len(FORMATS) - 1)]
        tasks += [(number, spoken(effect, preset), kind) for kind in ("bgra", planar)[:1 + number % 2]]

    def render(task):
        number, what, kind = task
        name = f"made{number}{kind}.raw"
        words = ["-e", what, "--pixel-format", kind, "--output-format", kind, "--no-sound"]
        run(doors.program, "render", kind + ".mkv", name, "--format", "rawvideo", *words, "--threads", 1 + number // 2 % 2 * 3, "--progress", "none")
        made = [("program", hashes(pathlib.Path(name).read_bytes()))]
        if number % PARTED == 1:
            plan, film = f"plan{number}{kind}", f"film{number}{kind}.mkv"
            run(doors.program, "plan", plan, "--chunks", 3, "render", kind + ".mkv", film, *words, "--codec", "ffv1")
            for chunk in range(4):
                run(doors.program, "work", plan, chunk, "--progress", "none")
            run(doors.program, "finish", plan)
            made.append(("program, in chunks", hashes(run("ffmpeg", "-v", "error", "-i", film, "-pix_fmt", kind, "-f", "rawvideo", "-"))))
        return made

    for (_, what, kind), made in doors.all_at_once(render, tasks):
        for door, found in made:
            doors.ledger.check(door, what, kind, found)


def ffmpeg(doors):
    """As they start: a preset would need every value before it."""
    env = dict(os.environ, FREI0R_PATH=str(doors.build / "lib/frei0r-1"))

    def render(task):
        module = "aveffect_" + task["shortName"].replace("-", "_")
        return hashes(run("ffmpeg", "-v", "error", "-f", "rawvideo", "-pixel_format", "bgra", "-video_size", SIZE, "-framerate", RATE, "-i", "bgra.raw",
                          "-vf", f"frei0r={module}", "-pix_fmt", "bgra", "-f", "rawvideo", "-", env=env))

    tasks = [effect for effect in doors.effects if not effect["followsTime"]]
    for effect, found in doors.all_at_once(render, tasks):
        doors.ledger.check("ffmpeg", spoken(effect, None), "bgra", found)


def melt(doors):
    """Both of MLT's ways, its own module's and frei0r's, in one film."""
    repository = pathlib.Path("repository")
    repository.mkdir()
    module, tap = next((doors.build / "lib").rglob("libmltaveffect.so")), doors.build / "tests/tap/libmlttap.so"
    for path in [*next(pathlib.Path("/usr/lib").glob("*/mlt-7")).glob("*.so"), module, tap]:
        (repository / path.name).symlink_to(path)
    env = dict(os.environ, MLT_REPOSITORY=str(repository), FREI0R_PATH=str(doors.build / "lib/frei0r-1"), QT_QPA_PLATFORM="offscreen")
    # Frei0r's modules draw their random numbers from wherever the host has left the generator.
    tasks = [(door, effect, preset) for effect, preset in doors.cases() if not effect["followsTime"] and preset
             for door in ("aveffect.", "frei0r.aveffect_") if door == "aveffect." or not effect["drawsRandom"]]
    words = []
    for number, (door, effect, preset) in enumerate(tasks):
        service = door + (effect["shortName"].replace("-", "_") if "frei0r" in door else effect["shortName"])
        words += ["avformat:bgra.mkv", "in=0", "out=1", "-attach-cut", service, f"preset={preset}", "-attach-cut", "tap", "format=rgba", f"label=tapped{number}"]
    run("melt", "-silent", *words, "-consumer", "null", "real_time=-1", "terminate_on_pause=1", env=env)
    for number, (door, effect, preset) in enumerate(tasks):
        pictures = [bytearray(pathlib.Path(f"tapped{number}.{at}").read_bytes()) for at in range(2)]
        for picture in pictures:
            picture[0::4], picture[2::4] = picture[2::4], picture[0::4]
        doors.ledger.check(f"melt, {door.split('.')[0]}", spoken(effect, preset), "bgra", hashes(b"".join(pictures), 2))
    # Transitions of a second each, one behind the other.
    for kind, tapped in (("bgra", "rgba"), ("yuv420p", "yuv420p")):
        words = [word for name in doors.transitions for word in (f"{kind}.mkv", f"in=0 out={FRAMES - 1}", f"{kind}-second.mkv", f"in=0 out={FRAMES - 1}", f"-mix {FRAMES}", f"-mixer aveffect.{name}")]
        words = [part for word in words for part in word.split()]
        run("melt", "-silent", *words, "-filter", "tap", f"format={tapped}", "label=mixed", "-consumer", "null", "real_time=-1", "terminate_on_pause=1", env=env)
        for number, name in enumerate(doors.transitions):
            pictures = [bytearray(pathlib.Path(f"mixed.{number * FRAMES + at}").read_bytes()) for at in range(FRAMES)]
            for picture in pictures if kind == "bgra" else []:
                picture[0::4], picture[2::4] = picture[2::4], picture[0::4]
            doors.ledger.check("melt, aveffect", name, kind, hashes(b"".join(pictures)))


def gstreamer(doors):
    """All presets on pixels and on 4:2:0, an own pipeline for some at a time."""
    plugin = next((doors.build / "lib").rglob("libgstaveffect.so"))
    env = dict(os.environ, GST_PLUGIN_PATH=str(plugin.parent), GST_REGISTRY=os.path.abspath("registry"))
    width, height = SIZE.split("x")
    together = 12
    cases = doors.cases()
    names = {"bgra": "bgra", "yuv420p": "i420", "yuv422p": "y42b", "yuv411p": "y41b", "yuv410p": "yuv9"}

    def source(kind, second=""):
        return (f"filesrc location={kind}{second}.raw blocksize={doors.picture_bytes[kind]} ! "
                f"rawvideoparse format={names[kind]} framerate={RATE}/1 width={width} height={height}")

    def play(task):
        kind, number = task
        words = source(kind) + " ! tee name=all"
        some = cases[number::together]
        for at, (effect, preset) in enumerate(some):
            settings = f" preset={preset}" if preset else ""
            settings += " duration=1000000000" if effect["kind"] == "fade" else ""
            words += f" all. ! queue ! aveffect-{effect['shortName']}{settings} ! filesink location=gst{kind}{number}.{at}"
        run("gst-launch-1.0", "-q", *words.split(), env=env)
        return [hashes(pathlib.Path(f"gst{kind}{number}.{at}").read_bytes()) for at in range(len(some))]

    for (kind, number), made in doors.all_at_once(play, [("bgra", number) for number in range(together)]):
        for (effect, preset), found in zip(cases[number::together], made):
            doors.ledger.check("GStreamer", spoken(effect, preset), kind, found)

    # On planes alone: what comes out of a transition is opaque there.
    def mix(kind):
        words = source(kind) + " ! tee name=first " + source(kind, "-second") + " ! tee name=second"
        for name in doors.transitions:
            words += (f" first. ! queue ! {name}.sink_0 second. ! queue ! {name}.sink_1"
                      f" aveffect-{name} name={name} duration=1000000000 ! filesink location=mixed{kind}.{name}")
        run("gst-launch-1.0", "-q", *words.split(), env=env)

    planar = [kind for kind in names if kind != "bgra"]
    for kind, _ in doors.all_at_once(mix, planar):
        for name in doors.transitions:
            doors.ledger.check("GStreamer", name, kind, hashes(pathlib.Path(f"mixed{kind}.{name}").read_bytes()))


def main():
    lines = pathlib.Path(sys.argv[1]).read_text().splitlines()
    build = pathlib.Path(sys.argv[2]).resolve()
    ledger = Ledger(lines)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        doors = Doors(ledger, build)
        for door in sys.argv[3:] or ["program", "ffmpeg", "melt", "gstreamer"]:
            {"program": program, "ffmpeg": ffmpeg, "melt": melt, "gstreamer": gstreamer}[door](doors)
    print(*ledger.wrong, sep="\n")
    print(", ".join(f"{door}: {count}" for door, count in ledger.checked.items()), "hashes;", len(ledger.wrong), "wrong")
    sys.exit(bool(ledger.wrong) or not ledger.checked)


main()
