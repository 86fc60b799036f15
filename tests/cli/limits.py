"""What headers claim is believed within limits only: one line, soon, and no more memory than for an honest file.

limits.py AVEFFECT STRANGER
"""
import os
import signal
import struct
import subprocess
import sys
import tempfile
import time
import zlib

PROGRAM, STRANGER = map(os.path.abspath, sys.argv[1:3])
SANITIZED = b"__asan_init" in open(PROGRAM, "rb").read()
SECONDS, MEGABYTES_MORE = (60, 400) if SANITIZED else (10, 60)


def png(width, height):
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
    head = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(bytes(99999))) + chunk(b"IEND", b"")


def riff(name, *parts):
    data = b"".join(parts)
    return name + struct.pack("<I", len(data)) + data + bytes(len(data) % 2)


def wav(channels):
    form = struct.pack("<HHIIHH", 1, channels, 48000, 96000 * channels & 0xFFFFFFFF, 2 * channels & 0xFFFF, 16)
    return riff(b"RIFF", b"WAVE", riff(b"fmt ", form), riff(b"data", bytes(8 * channels)))


def avi(streams):
    stream = riff(b"LIST", b"strl", riff(b"strh", b"auds", bytes(16), struct.pack("<II", 1, 8000), bytes(28)),
                  riff(b"strf", struct.pack("<HHIIHH", 1, 1, 8000, 8000, 1, 8)))
    head = riff(b"avih", struct.pack("<7I", 40000, 0, 0, 16, 1, 0, streams), bytes(28))
    return riff(b"RIFF", b"AVI ", riff(b"LIST", b"hdrl", head, stream * streams), riff(b"LIST", b"movi", bytes(99)))


def gif(side):
    picture = b"!\xf9\x04" + bytes(5) + b"," + struct.pack("<HHHH", 0, 0, 1, 1) + b"\0\x02\x02\x44\x01\0"
    return b"GIF89a" + struct.pack("<HH", side, side) + b"\x80\0\0\0\0\0\xff\xff\xff" + picture * 10 + b";"


def y4m(rate, pictures=1000):
    return b"YUV4MPEG2 W16 H16 F%d:1 C420\n" % rate + (b"FRAME\n" + bytes(384)) * pictures


def forever(data, head=b""):
    """A pipe in which that comes again and again, and the process that fills it."""
    filler = "import os, sys\nd = %r * 100\nos.write(1, %r)\nwhile True: os.write(1, d)" % (data, head)
    return subprocess.Popen([sys.executable, "-c", filler], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)


def run(arguments, stdin=None, **setting):
    """Exit code, what was said, seconds, megabytes."""
    begin = time.monotonic()
    with tempfile.TemporaryFile() as said:
        child = subprocess.Popen([PROGRAM] + arguments, stdin=stdin or subprocess.DEVNULL, stdout=said, stderr=said,
                                 env={**os.environ, **setting})
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = 0
        said.seek(0)
        return os.waitstatus_to_exitcode(status), said.read().decode(), time.monotonic() - begin, usage.ru_maxrss / 1024


FILES = {"honest.png": png(9, 9), "huge.png": png(60000, 60000), "large.png": png(20000, 20000), "huge.gif": gif(65535),
         "honest.gif": gif(64), "wide.wav": wav(65535), "many.avi": avi(10000), "fast.y4m": y4m(1000000), "slow.y4m": y4m(25)}
RENDER, JOIN = ["render", "IN", "out.mkv"], ["join", "slow.y4m", "IN", "out.mkv", "-e", "cut"]
FILM = ["transition", "IN", "slow.y4m", "out.mkv", "-e", "clock"]
# Input, what is done with it, exit code, words that are said.
CASES = [
    ("honest.gif", RENDER, 0, ""),
    *[(name, done, 3, "claims pictures of %s pixels" % size)
      for name, size in (("huge.png", "60000x60000"), ("large.png", "20000x20000"), ("huge.gif", "65535x65535"))
      for done in (RENDER, JOIN, ["frame", "IN", "out.png"], ["sheet", "IN", "IN", "out.png"], ["compare", "IN", "slow.y4m"])],
    ("slow.y4m", RENDER + ["--max-pixels", "255"], 3, "16x16 pixels"),
    ("slow.y4m", RENDER + ["--max-pixels", "256"], 0, ""),
    ("wide.wav", ["render", "IN", "out.wav", "-a", "volume/half"], 2, "65535 channels"),
    ("many.avi", RENDER, 3, "more than 1000 streams"),
    ("fast.y4m", RENDER, 0, ""),
    ("slow.y4m", ["render", "IN", "nowhere/out.mkv", "--size", "64x64", "--codec", "libsvtav1"], 4, "nowhere/out.mkv"),
    ("fast.y4m", FILM, 2, "1000000 pictures a second"),
    ("fast.y4m", FILM + ["--fps", "25"], 0, ""),
    ("slow.y4m", RENDER + ["--max-memory", "1M"], None, ""),
    ("slow.y4m", RENDER + ["--timeout", "0"], 2, "a time above 0"),
]
PIPES = [
    (dict(data=bytes(512)), [], 3, "is no clip"),
    (dict(data=b"y\n" * 99), [], 3, "is no clip"),
    (dict(data=b"FRAME\n" + bytes(384), head=y4m(25, 0)), ["--timeout", "1.5"], 142, "--timeout: "),
]


def judge(what, found, code, words, honest):
    wrong = []
    exit_code, said, seconds, megabytes = found
    if exit_code != code if code is not None else exit_code <= 0 or exit_code > 6:
        wrong.append("exit code %d" % exit_code)
    if words not in said or (exit_code != 0 and said.count("aveffect: ") != 1):
        wrong.append("said: " + said)
    if seconds > SECONDS:
        wrong.append("took %.1f s" % seconds)
    if megabytes > honest + MEGABYTES_MORE:
        wrong.append("took %.0f MB" % megabytes)
    for name in os.listdir("."):
        if name not in FILES and exit_code != 0:
            wrong.append("left " + name)
        if name not in FILES:
            os.remove(name)
    return ["%s: %s" % (" ".join(what), text) for text in wrong]


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for name, data in FILES.items():
        with open(name, "wb") as file:
            file.write(data)
    faults = []
    honest = run(["render", "slow.y4m", "honest.mkv"])[3]
    os.remove("honest.mkv")
    for name, done, code, words in CASES:
        command = [name if argument == "IN" else argument for argument in done]
        if not (SANITIZED and "--max-memory" in command):
            faults += judge(command, run(command), code, words, honest)
    for pipe, options, code, words in PIPES:
        with forever(**pipe) as filler:
            command = ["render", "-", "out.mkv"] + options
            faults += judge(command, run(command, filler.stdout), code, words, honest)
            filler.kill()
    hanging = ["render", "slow.y4m", "out.mkv", "--timeout", "1"]  # in a call that never returns
    faults += judge(hanging, run(hanging, LD_PRELOAD=STRANGER, STRANGER_HANGS="1"), 142, "did not end", honest)
    broken = ["render", "slow.y4m", "out.mkv", "--frames", "9"]  # by a library that waits or falls
    for what in () if SANITIZED else ("short-waits", "short-falls", "short-aborts"):
        faults += judge(broken, run(broken, LD_PRELOAD=STRANGER, STRANGER_BREAKS=what), 1, "out of memory", honest)
    if not SANITIZED and run(broken, LD_PRELOAD=STRANGER, STRANGER_BREAKS="falls")[0] != -signal.SIGSEGV:
        faults.append("a crash for no want of memory is hidden")
    print("\n".join(faults))
    sys.exit(1 if faults else 0)
