"""Effects on arrays: every way to lay a picture out gives what the program gives for the same picture."""
import doctest
import os
import pathlib
import pickle
import subprocess
import threading

import numpy as np
import pytest

import aveffect
from aveffect import Chain, Effect, EffectError, Transition, UsageError

WIDTH, HEIGHT = 256, 64  # rows without padding in the program, whose effects may read behind them
ON_PICTURES = [effect for effect in aveffect.effects() if effect.kind not in ("transition", "audio")]
TRANSITIONS = [effect for effect in aveffect.effects() if effect.kind == "transition"]


@pytest.fixture(scope="module")
def picture():
    return np.random.default_rng(7).integers(0, 256, (HEIGHT, WIDTH, 4), np.uint8)


@pytest.fixture(scope="module")
def planes():
    random = np.random.default_rng(8)
    return tuple(random.integers(16, 236, shape, np.uint8) for shape in ((HEIGHT, WIDTH), (HEIGHT // 2, WIDTH // 2), (HEIGHT // 2, WIDTH // 2)))


@pytest.fixture(scope="module")
def clips(picture, planes, tmp_path_factory):
    """The same picture twice, half a second each, for the program."""
    folder = tmp_path_factory.mktemp("clips")
    for name, raw in (("bgra", picture.tobytes()), ("yuv420p", b"".join(plane.tobytes() for plane in planes))):
        write = ["-v", "error", "-f", "rawvideo", "-pixel_format", name, "-video_size", f"{WIDTH}x{HEIGHT}", "-framerate", "2", "-i", "-"]
        subprocess.run(["ffmpeg", *write, "-c:v", "ffv1", folder / f"{name}.mkv"], input=2 * raw, check=True)
    return folder


def by_the_program(program, clips, pixel_format, effect):
    """The second picture."""
    made = clips / "made.raw"
    subprocess.run([program, "render", clips / f"{pixel_format}.mkv", made, "--format", "rawvideo", "--overwrite", "--pixel-format",
                    pixel_format, "--output-format", pixel_format, "-e", effect], check=True, capture_output=True)
    raw = made.read_bytes()
    return raw[len(raw) // 2:]


def settings_of(effect):
    """What has it change something: its first preset, or nothing."""
    return effect.name + ("/" + effect.presets[0].name if effect.presets else "")


@pytest.mark.parametrize("effect", ON_PICTURES, ids=lambda effect: effect.name)
def test_the_same_bytes_as_the_program(effect, picture, planes, program, clips):
    name = settings_of(effect)
    for pixel_format, given in (("bgra", (picture,)), ("yuv420p", planes)):
        chain = Effect(name, duration=1)
        for time in (0.0, 0.5):
            shown = tuple(plane.copy() for plane in given)
            made = chain(shown if len(shown) > 1 else shown[0], time)
        raw = b"".join(plane.tobytes() for plane in (made if isinstance(made, tuple) else (made,)))
        assert raw == by_the_program(program, clips, pixel_format, name), pixel_format


@pytest.mark.parametrize("effect", TRANSITIONS, ids=lambda effect: effect.name)
def test_transitions(effect, picture, planes, program, tmp_path):
    other = 255 - picture
    for name, pixels in (("a", picture), ("b", other)):
        write = "-y -v error -f rawvideo -pixel_format bgr0 -video_size".split()
        subprocess.run(["ffmpeg", *write, f"{WIDTH}x{HEIGHT}", "-i", "-", tmp_path / f"{name}.png"], input=pixels.tobytes(), check=True)
    subprocess.run([program, "transition", tmp_path / "a.png", tmp_path / "b.png", tmp_path / "t.nut", "-e", effect.name, "--duration", "1",
                    "--fps", "4", "--codec", "rawvideo", "--output-format", "bgr0"], check=True, capture_output=True)
    shown = subprocess.run(["ffmpeg", "-v", "error", "-i", tmp_path / "t.nut", "-f", "rawvideo", "-"], check=True, capture_output=True).stdout
    wanted = np.frombuffer(shown, np.uint8).reshape(-1, HEIGHT, WIDTH, 4)[:4, ..., :3]
    made = [Transition(effect.name, picture, other)(i / 4) for i in range(4)]
    assert all((a[..., :3] == b).all() for a, b in zip(made, wanted, strict=True))
    middle = made[2]
    assert (Transition(effect.name, picture, other)(1) == other).all()
    red_first = Transition(effect.name, picture[..., [2, 1, 0, 3]], other[..., [2, 1, 0, 3]], order="RGBA")(0.5)
    assert (red_first[..., [2, 1, 0, 3]] == middle).all()
    assert (Transition(effect.name, picture[..., :3], other[..., :3])(0.5) == middle[..., :3]).all()
    out = np.empty_like(picture)
    assert Transition(effect.name, picture, other)(0.5, out=out) is out and (out == middle).all()
    planar = Transition(effect.name, planes, tuple(255 - plane for plane in planes))(0.5)
    assert [plane.shape for plane in planar] == [plane.shape for plane in planes] and not (planar[0] == planes[0]).all()


def strided(picture):
    """The same pixels, laid out otherwise."""
    wide = np.zeros((HEIGHT, WIDTH + 9, 4), np.uint8)
    wide[:, 4:-5] = picture
    yield wide[:, 4:-5]
    yield np.ascontiguousarray(picture[::-1])[::-1]
    yield np.ascontiguousarray(picture[:, ::-1])[:, ::-1]
    yield np.repeat(picture, 2, axis=1)[:, ::2]
    yield np.asfortranarray(picture)
    odd = np.empty(picture.nbytes + 1, np.uint8)[1:].reshape(picture.shape)
    odd[:] = picture
    yield odd


@pytest.mark.parametrize("name", ["gray", "oil-painting", "aged-film", "edge-light", "spherize/bulge"])
def test_any_layout_in_place_and_out(name, picture):
    effect = Effect(name)
    seed = lambda: Effect(name)  # of effects that draw at random, each picture begins anew
    wanted = effect(picture)
    for view in strided(picture):
        kept = view.base.copy() if view.base is not None else None
        assert (seed()(view) == wanted).all()
        out = view.copy(order="K")
        assert seed()(picture, out=out) is out and (out == wanted).all()
        untouched = None
        if view.base is not None and view.base.shape == (HEIGHT, WIDTH + 9, 4):
            untouched = kept.copy()
            untouched[:, 4:-5] = wanted
        assert seed()(view, inplace=True) is view and (view == wanted).all()
        if untouched is not None:
            assert (view.base == untouched).all(), "what lies beside the view has changed"
    red_first = picture[..., [2, 1, 0, 3]]
    assert (seed()(red_first, order="RGBA")[..., [2, 1, 0, 3]] == wanted).all()
    opaque = picture.copy()
    opaque[..., 3] = 255
    wanted = seed()(opaque)[..., :3]
    assert (seed()(opaque[..., :3]) == wanted).all()
    assert (seed()(opaque[..., 2::-1], order="RGB") == wanted[..., ::-1]).all()


def test_in_place_is_in_place(picture):
    given = picture.copy()
    address = given.ctypes.data
    assert Effect("invert")(given, inplace=True) is given and given.ctypes.data == address
    assert (given[..., :3] == 255 - picture[..., :3]).all()
    frozen = picture.copy()
    frozen.flags.writeable = False
    assert (Effect("invert")(frozen) == given).all()
    for words in (dict(inplace=True), dict(out=frozen)):
        with pytest.raises(UsageError, match="can only be read"):
            Effect("invert")(frozen, **words)


def test_grey_and_what_has_no_alpha(picture):
    grey = np.ascontiguousarray(picture[..., 0])
    assert (Effect("invert")(grey) == 255 - grey).all()
    half = Effect("fade-in", duration=1)(np.full((8, 8, 3), 200, np.uint8), 0.5)
    assert half.min() == half.max() and 95 <= half[0, 0, 0] <= 105  # over black


@pytest.mark.parametrize("shifts,alpha", [((1, 1), False), ((1, 0), False), ((2, 0), False), ((2, 2), False), ((1, 1), True), ((0, 0), True)])
def test_planes(shifts, alpha):
    height, width = 37, 51
    random = np.random.default_rng(3)
    for up in (False, True):
        share = lambda side, shift: -(-side >> shift) if up else side >> shift
        chroma = share(height, shifts[1]), share(width, shifts[0])
        shapes = [(height, width), chroma, chroma] + ([(height, width)] if alpha else [])
        given = [random.integers(0, 256, shape, np.uint8) for shape in shapes]
        made = Effect("invert")(given)
        assert isinstance(made, tuple) and (made[0] == 255 - given[0]).all()
        assert (made[1] == 255 - given[1]).all() and (made[2] == 255 - given[2]).all(), "chroma is served whole"
        if alpha:
            assert (made[3] == given[3]).all()
        loose = [np.repeat(plane, 2, axis=1)[:, ::2] for plane in given]
        assert all((a == b).all() for a, b in zip(Effect("invert")(loose, inplace=True), made))
        assert all((a == b).all() for a, b in zip(loose, made))


def test_time_area_mix_and_stereo(picture, tmp_path):
    moving = Effect("brightness-contrast", brightness={0: 0, 2: 100})
    brightness = [int(moving(picture, time).astype(int).sum()) for time in (0, 1, 2)]
    assert brightness == sorted(set(brightness))
    area = Effect("invert", area=("rectangle", 0, 0, 50, 100))(picture)
    assert (area[:, :WIDTH // 2, 0] == 255 - picture[:, :WIDTH // 2, 0]).all() and (area[:, WIDTH // 2:] == picture[:, WIDTH // 2:]).all()
    assert (Effect("invert", mix="0%")(picture) == picture).all()
    mask = tmp_path / "mask.pgm"
    mask.write_bytes(b"P5 2 1 255\n\x00\xff")
    masked = Effect("invert", mask=mask)(picture)
    assert (masked[:, :WIDTH // 4] == picture[:, :WIDTH // 4]).all() and (masked[:, -WIDTH // 4:, 1] == 255 - picture[:, -WIDTH // 4:, 1]).all()
    pair = Effect("anaglyph", render_3d_mode=3)(picture, right=255 - picture)
    half = WIDTH // 2
    assert (pair[:, :half, :3] == picture[:, ::2, :3]).all() and (pair[:, half:, :3] == 255 - picture[:, ::2, :3]).all()


def test_masks_that_are_arrays(picture, tmp_path):
    grey = np.zeros((HEIGHT, WIDTH), np.uint8)
    grey[:, WIDTH // 2:] = 255
    wanted = np.where(grey[..., None] * np.uint8([1, 1, 1, 0]) > 0, 255 - picture, picture)
    opaque = np.dstack([grey, grey, grey, np.full_like(grey, 255)])
    for mask in (grey, grey > 0, grey / 255, grey * np.uint16(257), opaque[..., :3], opaque, np.dstack([opaque[..., :3] // 2, grey]), np.asfortranarray(grey)):
        assert (Effect("invert", mask=mask)(picture) == wanted).all(), mask.shape
    shades = np.random.default_rng(5).integers(0, 256, (9, 7), np.uint8)
    (tmp_path / "shades.pgm").write_bytes(b"P5\n7 9\n255\n" + shades.tobytes())
    for more in ({}, {"mask_invert": True, "mask_feather": 5}):
        by_file = Effect("invert", mask=tmp_path / "shades.pgm", **more)(picture)
        assert (Effect("invert", mask=shades, **more)(picture) == by_file).all()
    # They stay as long as anything uses them, in a copy too, and no longer.
    before = len(os.listdir("/proc/self/fd"))
    chain = pickle.loads(pickle.dumps(Chain([Effect("invert", mask=grey), Effect("flip-color", mask=255 - grey)])))
    assert (chain(picture)[:, WIDTH // 2:] == wanted[:, WIDTH // 2:]).all() and (chain(picture)[:, 0, 0] == picture[:, 0, 2]).all()
    del chain
    assert len(os.listdir("/proc/self/fd")) == before


@pytest.mark.parametrize("go_past", [
    lambda: aveffect._core.Chain.__new__(aveffect._core.Chain).process(np.zeros((4, 4, 4), np.uint8), 0.0, "", None, False, None),
    lambda: aveffect._core.Chain.__new__(aveffect._core.Chain).texts,
    lambda: aveffect._core.Transition.__new__(aveffect._core.Transition).draw(0.5, None),
    lambda: aveffect._core.Sound.__new__(aveffect._core.Sound).process(np.zeros(4, np.int16), 48000, 0.0, False),
    lambda: aveffect._core.Sound.__new__(aveffect._core.Sound).length,
    lambda: aveffect._core.Chain.process(3, np.zeros((4, 4, 4), np.uint8), 0.0, "", None, False, None),
    lambda: Effect.__new__(Effect)(np.zeros((4, 4, 4), np.uint8)),
])
def test_objects_that_were_never_made(go_past):
    with pytest.raises((TypeError, AttributeError)):
        go_past()


@pytest.mark.parametrize("call,error,words", [
    (lambda p: Effect("blurr"), UsageError, "did you mean 'blur'"),
    (lambda p: Effect("blur", blur_cout=1), UsageError, "blur_count"),
    (lambda p: Effect("blur", blur_count=99999), UsageError, "65535"),
    (lambda p: Effect("crossfade"), UsageError, "Transition"),
    (lambda p: Effect("volume"), UsageError, "sound"),
    (lambda p: Effect("fade-in")(p), UsageError, "give duration"),
    (lambda p: Effect("blur", blur_count={-1: 2})(p), UsageError, "give duration"),
    (lambda p: Effect("blur", duration=0), UsageError, "duration"),
    (lambda p: Effect(3), TypeError, "name"),
    (lambda p: Effect("blur", blur_count=[1]), TypeError, "setting"),
    (lambda p: Effect("gray")(p.astype(np.float32)), TypeError, "float32"),
    (lambda p: Effect("gray")(p[..., :2]), UsageError, "shape"),
    (lambda p: Effect("gray")(p[0, 0]), UsageError, "shape"),
    (lambda p: Effect("gray")(p[:0]), UsageError, "no picture"),
    (lambda p: Effect("gray")(p, order="GBR"), UsageError, "BGRA"),
    (lambda p: Effect("gray")(p, order="RGB"), UsageError, "3 channels"),
    (lambda p: Effect("gray")("picture"), TypeError, "str"),
    (lambda p: Effect("gray")(None), TypeError, "NoneType"),
    (lambda p: Effect("gray")((p[..., 0],)), UsageError, "3 planes"),
    (lambda p: Effect("gray")((p[..., 0], p[:9, :9, 0], p[:9, :9, 0])), UsageError, "4:2:0"),
    (lambda p: Effect("gray")((p[..., 0], p[..., 0], p[:9, :9, 0])), UsageError, "one shape"),
    (lambda p: Effect("gray")(p, out=p[:5]), UsageError, "out must have"),
    (lambda p: Effect("gray")(p, out=p, inplace=True), UsageError, "exclude"),
    (lambda p: Effect("gray")(p, float("nan")), UsageError, "time"),
    (lambda p: Effect("gray")(p, right=p), UsageError, "stereo"),
    (lambda p: Effect("gray", mask=p[..., :2]), UsageError, "shape"),
    (lambda p: Effect("gray", mask=p[:0, :, 0]), UsageError, "shape"),
    (lambda p: Effect("gray", mask=p[..., 0].astype(np.int32)), UsageError, "int32"),
    (lambda p: Effect("gray", mask=np.full((2, 2), np.nan)), UsageError, "from 0 to 1"),
    (lambda p: Effect("gray", mask=3), TypeError, "int"),
    (lambda p: Transition("crossfade", p, p[:5]), UsageError, "one shape"),
    (lambda p: Transition("gray", p, p), UsageError, "crossfade"),
    (lambda p: Transition("crossfade", p, p)(1.5), UsageError, "from 0 to 1"),
    (lambda p: Chain("gray"), TypeError, "list"),
    (lambda p: Chain([3]), TypeError, "3"),
])
def test_what_is_wrong_is_said(call, error, words, picture):
    before = picture.copy()
    with pytest.raises(error) as raised:
        call(picture)
    assert words in str(raised.value) and "\n" not in str(raised.value)
    assert (picture == before).all()


def test_threads(picture):
    many = Effect("oil-painting")
    large = np.tile(picture, (12, 5, 1))
    wanted = many(large)
    results, refused = [], []

    def work(effect):
        try:
            for _ in range(3):
                results.append((effect(large) == wanted).all())
        except RuntimeError as error:
            refused.append(str(error))

    def all_at_once(effects):
        threads = [threading.Thread(target=work, args=(effect,)) for effect in effects]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    all_at_once([Effect("oil-painting") for _ in range(4)])
    assert len(results) == 12 and all(results) and not refused
    all_at_once([many] * 4)  # one of them works, the others are told
    assert all(results) and refused and all("two threads" in text for text in refused)
    assert (many(large) == wanted).all()


def test_documentation():
    for module in (aveffect, aveffect._catalogue):
        failed, tried = doctest.testmod(module)
        assert tried and not failed
    for effect in aveffect.effects():
        assert effect.title in str(effect) and effect.help.split()[0] in str(effect)
    assert "spherize" in Effect.__doc__ and "crossfade" in Transition.__doc__
