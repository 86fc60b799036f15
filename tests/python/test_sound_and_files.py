"""Sound, jobs on files, other packages' pictures, and hard times."""
import gc
import os
import pathlib
import pickle
import signal
import subprocess
import sys
import threading
import time
import warnings

import numpy as np
import pytest

import aveffect
from aveffect import Chain, Effect, InputError, OutputError, Sound, Transition, UsageError

RATE = 44100


def pcm(path, kind):
    shown = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", kind, "-"], check=True, capture_output=True).stdout
    return np.frombuffer(shown, {"s16le": np.int16, "f32le": np.float32}[kind]).reshape(-1, 2)


@pytest.mark.parametrize("kind,codec", [("s16le", "pcm_s16le"), ("f32le", "pcm_f32le")])
@pytest.mark.parametrize("text", ["volume:audio_volume=30%", "volume:audio_volume=0=100;0.5=10", "fade-sound:fader_start_time=0:fader_duration=700:fader_start_scale=0:fader_end_scale=1", "volume/half:@from=0.3:@fade-in=0.2"])
def test_sound_as_the_program_makes_it(kind, codec, text, program, tmp_path):
    source, made = tmp_path / "in.wav", tmp_path / "out.wav"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"anoisesrc=r={RATE}:d=1:seed=4:a=0.7", "-ac", "2", "-c:a", codec, source], check=True)
    subprocess.run([program, "render", source, made, "-a", text, "--audio-codec", codec], check=True, capture_output=True)
    samples, wanted = pcm(source, kind), pcm(made, kind)
    assert (Sound(text)(samples, RATE) == wanted).all()
    loose = np.repeat(samples, 2, axis=0)[::2]
    effect = pickle.loads(pickle.dumps(Sound(text, duration=1)))
    assert effect(loose, RATE, inplace=True) is loose and (loose == wanted).all()
    part = RATE // 2 + 1234
    assert (effect(samples[part:], RATE, start=part / RATE) == wanted[part:]).all(), "a part sounds as in the whole"


@pytest.mark.parametrize("call,error,words", [
    (lambda: Sound("gray"), UsageError, "gray"),
    (lambda: Sound("volume")(np.zeros(9), RATE), TypeError, "float64"),
    (lambda: Sound("volume")([0, 1], RATE), TypeError, "array"),
    (lambda: Sound("volume")(np.zeros((2, 2, 2), np.int16), RATE), UsageError, "shape"),
    (lambda: Sound("volume")(np.zeros(9, np.int16), 0), UsageError, "rate"),
    (lambda: Sound("volume")(np.zeros(9, np.int16), RATE, start=-1), UsageError, "start"),
    (lambda: Sound("replace-sound", audio_replace_path="none.wav")(np.zeros(9, np.int16), RATE), InputError, "none.wav"),
    (lambda: aveffect.render("none.mp4", "out.mp4"), InputError, "none.mp4"),
    (lambda: aveffect.render("none.mp4", "out.mp4", "gry"), UsageError, "gray"),
    (lambda: aveffect.render("none.mp4", "out.mp4", siez="9x9"), UsageError, "--size"),
    (lambda: aveffect.timeline.render("none.otio", "out.mp4"), InputError, "none.otio"),
])
def test_what_is_wrong_is_said(call, error, words, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(error, match=words):
        call()
    assert not os.listdir(tmp_path)


def test_no_samples():
    assert Sound("volume/half")(np.zeros((0, 2), np.int16), RATE).shape == (0, 2)


@pytest.fixture(scope="module")
def clip(tmp_path_factory):
    path = tmp_path_factory.mktemp("clip") / "c.mkv"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=4", "-f", "lavfi", "-i", "sine=d=4",
                    "-c:v", "ffv1", "-c:a", "flac", path], check=True)
    return path


def test_jobs(clip, program, tmp_path):
    seen = []
    result = aveffect.render(clip, tmp_path / "a.mkv", Chain([Effect("blur/soft"), "gray"]), audio_effects=Sound("volume/half"), codec="ffv1",
                             from_=1, to="3", progress=lambda *state: seen.append(state))
    assert result.frames == 50 and result.damage is None and seen[-1][0] == 50
    subprocess.run([program, "render", clip, tmp_path / "b.mkv", "-e", "blur/soft", "-e", "gray", "-a", "volume/half", "--codec", "ffv1", "--from", "1",
                    "--to", "3"], check=True)
    hashes = [subprocess.run(["ffmpeg", "-v", "error", "-i", tmp_path / name, "-f", "framemd5", "-"], capture_output=True, check=True).stdout
              for name in ("a.mkv", "b.mkv")]
    assert hashes[0] == hashes[1]
    with pytest.raises(OutputError, match="exists"):
        aveffect.render(clip, tmp_path / "a.mkv")
    aveffect.frame(clip, tmp_path / "f.png", "invert", at=1.5)
    aveffect.transition(clip, clip, tmp_path / "t.mkv", "push", duration=0.2, codec="ffv1")
    aveffect.join([clip, clip], tmp_path / "j.mkv", "crossfade", codec="ffv1", size="32x18")
    aveffect.sheet(tmp_path / "f.png", tmp_path / "f.png", tmp_path / "s.png", size="16x9")
    subprocess.run([program, "timeline", "new", tmp_path / "film.otio", clip, clip, "-e", "cut"], check=True)
    assert aveffect.timeline.render(tmp_path / "film.otio", tmp_path / "film.mkv", codec="ffv1").frames == 200
    with pytest.warns(RuntimeWarning):
        aveffect.frame(clip, tmp_path / "late.png", at=3.999)
        aveffect.render(clip, tmp_path / "w.gif", "fade-out", size="16x9")


def test_callbacks_and_signals_end_jobs(clip, tmp_path):
    def stop(*_):
        raise LookupError("enough")
    with pytest.raises(LookupError, match="enough"):
        aveffect.render(clip, tmp_path / "a.mkv", ["oil-painting"] * 300, codec="ffv1", progress=stop)
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    begun = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        aveffect.render(clip, tmp_path / "a.mkv", ["oil-painting"] * 300, codec="ffv1")
    assert time.monotonic() - begun < 20 and not os.listdir(tmp_path)


def test_pictures_of_pyav(clip):
    av = pytest.importorskip("av")
    with av.open(str(clip)) as container:
        frames = [frame for _, frame in zip(range(3), container.decode(video=0))]
    frame = frames[2]
    made = Effect("invert")(frame)
    assert made.pts == frame.pts and made.format.name == frame.format.name == "yuv420p"
    assert (made.to_ndarray()[:180] == 255 - frame.to_ndarray()[:180]).all()
    rgb = Effect("invert")(frame.reformat(format="rgb24"))
    assert rgb.format.name == "bgra" and rgb.width == frame.width
    full = frame.reformat(format="yuvj420p")
    assert Effect("invert")(full).format.name == "bgra", "full range is not taken for the usual one"
    moving = Effect("brightness-contrast", brightness={0: 0, frame.time: 50})
    assert moving(frame).to_ndarray()[:180].sum() > moving(frames[0]).to_ndarray()[:180].sum()


def test_pictures_of_pillow_and_of_protocols():
    Image = pytest.importorskip("PIL.Image")
    picture = np.random.default_rng(1).integers(0, 256, (20, 30, 3), np.uint8)
    made = Effect("gray")(Image.fromarray(picture, "RGB"))
    assert made.mode == "RGB" and (np.asarray(made) == Effect("gray")(picture, order="RGB")).all()
    assert Effect("invert")(Image.fromarray(picture, "RGB").convert("P")).size == (30, 20)

    class Bare:
        def __init__(self, array):
            self.array = array

        def __dlpack__(self, **words):
            return self.array.__dlpack__(**words)

        def __dlpack_device__(self):
            return self.array.__dlpack_device__()

    wanted = Effect("invert")(picture)
    assert (Effect("invert")(Bare(picture)) == wanted).all()
    assert (Effect("invert")(memoryview(picture)) == wanted).all()
    with pytest.raises(TypeError, match="object"):
        Effect("invert")(object())


HARD = """
import gc, os, sys, threading, numpy as np, aveffect
picture = np.zeros((64, 256, 4), np.uint8)
effect = aveffect.Effect("spherize/bulge")
effect(picture)
child = os.fork()
if child == 0:
    effect(picture); aveffect.Effect("blur/soft")(picture)
    os._exit(0 if aveffect.Effect("invert")(picture)[0, 0, 0] == 255 else 1)
assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
for unmade in (aveffect.Effect, aveffect.Chain, aveffect.Transition, aveffect.Sound):
    for use in (lambda: unmade.__new__(unmade)(picture), lambda: repr(unmade.__new__(unmade))):
        try: use()
        except (AttributeError, TypeError): pass
def work():
    other = aveffect.Effect("oil-painting")
    large = np.zeros((1080, 1920, 4), np.uint8)
    while True: other(large, inplace=True)
threading.Thread(target=work, daemon=True).start()
import time; time.sleep(0.2)
sys.exit(0)  # while it works
"""


def test_fork_shutdown_and_what_was_not_made():
    done = subprocess.run([sys.executable, "-c", HARD], capture_output=True, text=True, timeout=60)
    assert (done.returncode, done.stderr) == (0, "")


def resident():
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


@pytest.mark.skipif(os.environ.get("AVEFFECT_CALLS") == "0", reason="the process's size says nothing")
def test_nothing_leaks():
    """Each call that is made or fails, often: a kilobyte lost in one would be seen."""
    picture, frozen = np.zeros((4, 8, 4), np.uint8), np.zeros((4, 8, 3), np.uint8)
    frozen.flags.writeable = False
    effect, transition, sound = Effect("invert"), Transition("push", picture, picture), Sound("volume/half")
    samples = np.zeros(64, np.float32)
    calls = int(os.environ.get("AVEFFECT_CALLS", 100000))

    def round_of_calls():
        effect(picture, inplace=True)
        effect(frozen, order="RGB")
        effect(picture[::-1], out=picture)
        try:
            effect(frozen, inplace=True)
        except UsageError:
            pass

    def rarer():
        transition(0.5)
        sound(samples, 8000)
        try:
            Effect("blurr")
        except UsageError:
            pass

    for warm in range(300):
        round_of_calls(), rarer()
    gc.collect()
    before = resident()
    for i in range(calls // 4):
        round_of_calls()
        if i % 20 == 0:
            rarer()
    gc.collect()
    assert resident() - before < 1 << 20
