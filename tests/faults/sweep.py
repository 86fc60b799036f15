#!/usr/bin/env python3
"""Makes calls of the program fail, one in each run, and judges what comes of it.

sweep.py PROGRAM LAYER [--sample] [--sanitizer] [--calls N] [--command NAME] [--function NAME]
--sample: of each function one call, in one command that makes it, and a second one elsewhere.
--sanitizer: the program is built with the address sanitizer; the layer is an ordinary one.
"""
import argparse
import concurrent.futures
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SECONDS = 30  # a run may take; one that takes longer is given ten times as many, for the machine may be busy
MEMORY = "nmtao"  # kinds of failures.txt that say so
CALLS = 12  # of a function in a command that are made to fail, the first ones, and as many between them and the last
# Libraries that keep memory of their own, which the program, locked in, can't read from the sanitizer's list.
KEEPERS = re.findall("leak:(.*)", (pathlib.Path(__file__).resolve().parents[2] / "cmake/leaks.txt").read_text())
# Frames, names and scalers that FFmpeg's filters lose when they fail.
KEEPERS += ["av_buffersrc_add_frame_flags", "avfilter_graph_alloc_filter", "sws_init_context"]
# What is kept under other names until it counts.
KEPT = re.compile(r"work/|plan/chunks/.*(?<!\d\.json)$")

MEDIA = """
-f lavfi -i testsrc2=s=32x32:r=10:d=0.5 -f lavfi -i sine=d=0.5 -i words.srt -i about.txt -map 0 -map 1 -map 2
  -map_metadata 3 -c:v mpeg4 -c:a pcm_s16le -c:s mov_text -disposition:v:0 default a.mov
-f lavfi -i mandelbrot=s=32x32:r=10 -f lavfi -i sine=300 -t 0.5 -c:v mjpeg -c:a pcm_s16le b.mov
-f lavfi -i testsrc2=s=32x32:r=10:d=0.5 -c:v libx264 c.mkv
-f lavfi -i mandelbrot=s=32x32:r=10 -t 0.5 -c:v libvpx-vp9 d.webm
-f lavfi -i sine=d=0.5 -metadata title=sine s.wav
-f lavfi -i testsrc2=s=32x32 -frames:v 1 p.png
-f lavfi -i testsrc2=s=32x32 -frames:v 1 p.jpg
-f lavfi -i testsrc2=s=32x32 -frames:v 1 q.jpg
"""
FARM = "plan plan --chunks 2 render a.mov o.mov --codec mpeg4 -e gray"
WORDS = "1\n00:00:00,000 --> 00:00:00,400\nword\n"
ABOUT = ";FFMETADATA1\ntitle=a\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=300\ntitle=one\n"

# NAME[:FOLDER] ARGUMENTS; {in} is the folder of MEDIA, {out} the one that the output goes to, into which FOLDER is copied.
COMMANDS = """
render render {in}/a.mov {out}/o.mov --codec mpeg4 -e invert -a volume/half --size 24x24 --fit contain
mp4 render {in}/a.mov {out}/o.mp4 --preset ultrafast -e invert
copy render {in}/a.mov {out}/o.mkv -a volume/half
sound render {in}/s.wav {out}/o.flac -a volume/half
right render {in}/a.mov {out}/o.mov --codec mpeg4 --right {in}/b.mov -e anaglyph
still render {in}/p.jpg {out}/o.png -e gray
frame frame {in}/a.mov {out}/o.jpg --at 0.2 -e blur
transition transition {in}/a.mov {in}/b.mov {out}/o.mov --codec mpeg4 -e crossfade --duration 0.3 --live
kinds transition {in}/c.mkv {in}/d.webm {out}/o.mov --codec mpeg4 -e crossfade --duration 0.3 --live --threads 2
join join {in}/a.mov {in}/b.mov {in}/p.png@0.2 {out}/o.mov --codec mpeg4 -e crossfade --duration 0.1 --music {in}/s.wav
sheet sheet {in}/p.png {in}/p.jpg {out}/o.png --size 8x8 --threads 2
compare compare {in}/a.mov {in}/b.mov --difference {out}/o.png
batch batch {in}/p.png {in}/q.jpg --to {out} --extension png --jobs 1 -e gray
film timeline render {in}/film.otio {out}/o.mov --codec mpeg4
pieces timeline render {in}/film.otio {out}/o.mov --codec mpeg4 --work {out}/work
check timeline check {in}/film.otio
page timeline show {in}/film.otio --html {out}/o.html
new timeline new {out}/o.otio {in}/a.mov {in}/b.mov -e crossfade --duration 0.1
set timeline set {in}/film.otio tracks[0].children[1] effect=push -o {out}/o.otio
list list
describe describe push --json
play play {in}/b.mov -e invert
sync render {in}/p.png {out}/o.png --sync --max-pixels 1000000 --max-memory 4G --timeout 20
numbers render {in}/b.mov {out}/%d.png --frames 2 --fps 5 --crop 16:16 --no-sound
masked render {in}/a.mov {out}/o.mov --codec mpeg4 -e blur:@mask={in}/p.png:@mix=50% -a replace-sound:audio_replace_path={in}/s.wav
pipe render {in}/a.mov - --format nut --codec mpeg4 --no-sandbox
chosen compare {in}/p.png {in}/q.jpg --json
films timeline show {in}/film.otio
plan:media plan plan --chunks 2 render a.mov o.mov --codec mpeg4 -e gray
lines:planned plan plan --as kubernetes
work:planned work plan 1
beside:planned work plan 2
finish:worked finish plan --sync
status:worked status plan
"""

# What comes of memory and threads that the media libraries are refused: the program sees that unless a sanitizer stands between. Then
# FFmpeg's own crashes, and decoders that wait for ever, are counted and no more.
UNSEEN = ("does not say memory", "lost without a word", "does not decode")


class Sweep:
    def __init__(self, options, folder):
        self.program, self.layer = os.path.abspath(options.program), os.path.abspath(options.layer)
        self.media = folder / "in"
        self.folder = folder
        self.good = {}
        self.sanitizer = options.sanitizer
        self.own = 0  # crashes and waits that are FFmpeg's
        self.kinds = {}
        self.env = dict(os.environ, SDL_VIDEODRIVER="dummy", SDL_AUDIODRIVER="dummy")
        if options.sanitizer:
            self.env["ASAN_OPTIONS"] = "verify_asan_link_order=0:allocator_may_return_null=1"
            self.env.pop("LSAN_OPTIONS", None)  # a list of suppressions lies beyond the program's walls; KEEPERS are told apart here
        self.make_media()

    def make_media(self):
        self.media.mkdir()
        (self.media / "words.srt").write_text(WORDS)
        (self.media / "about.txt").write_text(ABOUT)
        for line in MEDIA.strip().replace("\n  ", " ").splitlines():
            subprocess.run(["ffmpeg", "-v", "error", *line.split()], cwd=self.media, check=True)
        film = "timeline new film.otio a.mov b.mov -e crossfade --duration 0.1"
        subprocess.run([self.program, *film.split()], cwd=self.media, check=True)
        (self.folder / "media").mkdir()
        shutil.copy(self.media / "a.mov", self.folder / "media")
        for folder, before, steps in (("planned", "media", [FARM]), ("worked", "planned", ["work plan 0", "work plan 1", "work plan 2"])):
            shutil.copytree(self.folder / before, self.folder / folder)
            for step in steps:
                subprocess.run([self.program, *step.split()], cwd=self.folder / folder, check=True, stdout=subprocess.DEVNULL)

    def run(self, command, seconds=SECONDS, **fault):
        """One run, as a dictionary of what came of it."""
        out = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        name, *words = command.split()
        before = {}
        if ":" in name:
            shutil.copytree(self.folder / name.split(":")[1], out, dirs_exist_ok=True)
            before = {path: path.stat().st_mtime_ns for path in out.rglob("*")}
        words = [word.format(**{"in": self.media, "out": out}) for word in words]
        try:
            done = subprocess.run([self.program, *words], env=dict(self.env, LD_PRELOAD=self.layer, **fault), capture_output=True,
                                  timeout=seconds, cwd=out)
            code, said, told = done.returncode, done.stderr.decode(errors="replace"), done.stdout
        except subprocess.TimeoutExpired:
            code, said, told = "no end", "", b""
        files = {str(path.relative_to(out)): path for path in sorted(out.rglob("*"))
                 if path.is_file() and before.get(path) != path.stat().st_mtime_ns}
        return {"code": code, "said": said.splitlines(), "told": told.replace(bytes(out), b""), "files": files, "out": out}

    def count(self, command):
        """Runs a command well; how often it calls what."""
        counts = self.folder / (command.split()[0] + ".counts")
        good = self.run(command, FAULT_COUNTS=str(counts))
        if good["code"] not in (0, 7) or good["said"]:
            sys.exit(f"{command}: {good['code']} {good['said']}")
        good["print"] = self.print_of(good)
        self.good[command] = good
        lines = [line.split() for line in counts.read_text().splitlines()]
        self.kinds = {name: kind[:2] for name, kind, _ in lines}
        return {name: int(number) for name, _, number in lines}

    def print_of(self, result):
        """What stands in the output, whatever is random in its bytes."""
        prints = []
        for name, path in result["files"].items():
            if KEPT.match(name):
                continue
            if path.suffix == ".mkv":
                shown = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-map", "0", "-map", "-0:s", "-f", "framemd5", "-"],
                                       capture_output=True)
                text = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "ffmetadata", "-"], capture_output=True)
                prints.append((name, shown.stdout, text.stdout))
            else:
                prints.append((name, hashlib.sha256(path.read_bytes().replace(bytes(result["out"]), b"")).digest()))
        return prints, result["told"]

    def decodes(self, path):
        if path.suffix in (".otio", ".html", ".json"):
            return path.stat().st_size > 0
        shown = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "null", "-"], capture_output=True)
        return shown.returncode == 0 and not shown.stderr

    def judge(self, command, kind, result):
        """What is wrong with a result; nothing when all is right."""
        code, said, good = result["code"], result["said"], self.good[command]
        files = {name: path for name, path in result["files"].items() if not KEPT.match(name)}
        name, memory = command.split()[0], kind[0] in MEMORY
        if self.sanitizer and memory and (code == "no end" or any(line.startswith("crash in ") for line in said)):
            self.own += 1
            return ""
        if code == "no end" or code < 0 or code > 7:
            return f"ends with {code}"
        said = without_kept(said)
        if any("Sanitizer" in line for line in said):
            return "the sanitizer: " + " ".join(re.findall("in (aveffect::[A-Za-z:]*)", " ".join(said))[:3])
        if any("/." in "/" + name for name in result["files"]):
            return "a hidden file is left"
        # FFmpeg's muxers leave out what they have no memory for.
        if code in (0, 7) and not said and kind.endswith("m"):
            return "" if all(self.decodes(path) for path in files.values()) else "does not decode"
        if code in (0, 7) and not said:
            return "" if code == good["code"] and self.print_of(result) == good["print"] else "lost without a word"
        if not said:
            return f"{code} without a word"
        if code in (0, 6, 7) or name in ("batch", "numbers"):  # whose files are done one by one
            if not all(self.decodes(path) for path in files.values()):
                return "does not decode"
            return "does not say memory" if code and memory and "memory" not in "".join(said) else ""
        said = [line for line in said if not line.startswith("aveffect: warning: ")]  # which are told as they come
        if len(said) != 1:
            return "not one line"
        if files:
            return "left behind"
        # What effects say of a tool that they could not get for a frame; why, they have forgotten.
        if memory and code == 5 and re.fullmatch("aveffect: effect [A-Za-z]+ failed: Bad pointer", said[0]):
            return ""
        if memory and (code != 1 or "memory" not in said[0]):
            return "does not say memory"
        if not memory and code in (1, 2):
            return "blames something else"
        return ""

    def try_one(self, task):
        command, function, at = task
        result = self.run(command, FAULT=function, FAULT_AT=str(at))
        if result["code"] == "no end":
            shutil.rmtree(result["out"])
            result = self.run(command, 10 * SECONDS, FAULT=function, FAULT_AT=str(at))
        wrong = self.judge(command, self.kinds[function], result)
        if wrong.startswith("the sanitizer"):  # once more, slowly, for the whole way to what is lost
            shutil.rmtree(result["out"])
            slowly = self.env["ASAN_OPTIONS"] + ":fast_unwind_on_malloc=0"
            result = self.run(command, 10 * SECONDS, FAULT=function, FAULT_AT=str(at), ASAN_OPTIONS=slowly)
            wrong = self.judge(command, self.kinds[function], result)
        if self.sanitizer and wrong in UNSEEN:
            wrong = ""
        shutil.rmtree(result["out"])
        return wrong and f"{command.split()[0]}: {function} {at}: {wrong}: {result['code']} {' | '.join(result['said'])[:200]}"


def without_kept(said):
    """The lines without a sanitizer's report that tells of nothing but what libraries keep."""
    begin = next((at for at, line in enumerate(said) if "LeakSanitizer: detected" in line), None)
    if begin is None:
        return said
    leaks = [leak.split("Indirect leak of")[0] for leak in "\n".join(said[begin:]).split("Direct leak of")[1:]]  # without what hangs on them
    kept = leaks and all(any(keeper in leak for keeper in KEEPERS) for leak in leaks)
    return [line for line in said[:begin] if line.strip("=")] if kept else said


def calls_of(number, calls):
    """Which of a function's calls to try: the first ones, the last, and as many evenly between."""
    between = range(calls + 1, number, max(1, (number - calls) // max(1, calls)))
    return sorted({*range(1, min(number, calls) + 1), *(between if calls > 1 else ()), number})


def tasks_of(counts, sample, calls):
    """What to try: (command, function, call). A sample takes each function in two commands, its first call and its last."""
    tasks = []
    for function in sorted({name for each in counts.values() for name in each}):
        makers = [command for command in counts if counts[command].get(function, 0) > 0]
        if sample and makers:
            start = int(hashlib.sha256(function.encode()).hexdigest(), 16)
            first, last = makers[start % len(makers)], makers[start // 97 % len(makers)]
            tasks += {(first, function, 1), (last, function, counts[last][function])}
            continue
        for command in makers:
            tasks += [(command, function, at) for at in calls_of(counts[command][function], calls)]
    return tasks


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("layer")
    parser.add_argument("--sample", action="store_true")
    parser.add_argument("--sanitizer", action="store_true")
    parser.add_argument("--calls", type=int, default=CALLS)
    parser.add_argument("--command", action="append")
    parser.add_argument("--function", action="append")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        sweep = Sweep(options, pathlib.Path(folder))
        commands = [line for line in COMMANDS.strip().splitlines()
                    if not options.command or re.split("[: ]", line)[0] in options.command]
        counts = {command: sweep.count(command) for command in commands}
        if options.sanitizer:  # without what is mapped already known, the limit on memory is below what the sanitizer has
            for each in counts.values():
                each.pop("fopen", None)
        if options.function:
            counts = {command: {name: number for name, number in each.items() if name in options.function}
                      for command, each in counts.items()}
        tasks = tasks_of(counts, options.sample, options.calls)
        found = 0
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for wrong in pool.map(sweep.try_one, tasks):
                if wrong:
                    print(wrong, flush=True)
                    found += 1
        functions = len({function for _, function, _ in tasks})
        print(f"{len(tasks)} runs of {len(commands)} commands, {functions} functions, {found} wrong, {sweep.own} crashes in FFmpeg")
        sys.exit(bool(found))


main()
