#!/usr/bin/python3
"""Runs GStreamer's elements in GStreamer, and holds what comes out against the program's own renders.

gst_test.py PLUGIN PROGRAM
"""
import array
import concurrent.futures
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

SECOND = 1000000000
RATE, FRAMES = 25, 5
LENGTH = FRAMES * SECOND // RATE
ODD = (161, 97)
SOUND_RATE = 48000
FORMATS = {"bgra": "BGRA", "yuv420p": "I420", "yuv422p": "Y42B", "yuv411p": "Y41B", "yuv410p": "YUV9", "yuva420p": "A420"}


def run(*words, wrong=False):
    done = subprocess.run([str(word) for word in words], capture_output=True, timeout=60)
    if done.returncode < 0 or bool(done.returncode) != wrong:
        raise SystemExit(f"{words}: {done.returncode}\n{done.stderr.decode()}")
    return done


def check(what, found, expected):
    if found != expected:
        differing = [key for key in expected if found.get(key) != expected[key]] if isinstance(expected, dict) else [found, expected]
        raise SystemExit(f"{what}: {differing}")


class Clip:
    """Pictures of testsrc2 or of another source, as a file for the program and as bytes for GStreamer."""

    def __init__(self, kind, size=ODD, source="testsrc2", flags=()):
        self.kind, self.size, self.name = kind, size, f"{source}-{kind}-{size[0]}{''.join(flags)}.mkv"
        self.layout = Layout(f"format={FORMATS[kind]},width={size[0]},height={size[1]}")
        if not os.path.exists(self.name):
            run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"{source}{':' if '=' in source else '='}s={size[0] * 2}x{size[1] * 2}:r={RATE}", "-frames:v", FRAMES, "-vf",
                f"scale={size[0]}:{size[1]}:flags=neighbor,format={kind}", "-c:v", "ffv1", *flags, self.name)
        self.frames = cut(run("ffmpeg", "-v", "error", "-i", self.name, "-f", "rawvideo", "-").stdout)


def cut(data):
    step = len(data) // FRAMES
    return [data[at:at + step] for at in range(0, len(data), step)]


class Program:
    def __init__(self, path):
        self.path = path

    def render(self, clip, *effects, pixel_format=None):
        words = [word for effect in effects for word in ("-e", effect)]
        return self.raw(pixel_format or clip.kind, "render", clip.name, *words, "--pixel-format", pixel_format or clip.kind)

    def raw(self, pixel_format, *words):
        """Bytes of pictures without rows' padding."""
        with tempfile.NamedTemporaryFile(suffix=".yuv") as out:
            run(self.path, *words, out.name, "--output-format", pixel_format, "--codec", "rawvideo", "--no-sound", "--progress", "none", "--overwrite")
            return cut(pathlib.Path(out.name).read_bytes())


class Layout:
    """Where GStreamer has the bytes of a picture."""

    def __init__(self, caps, wider=0, later=0):
        self.caps_text = caps
        self.caps = Gst.Caps.from_string(f"video/x-raw,{caps},framerate={RATE}/1")
        self.info = GstVideo.VideoInfo.new_from_caps(self.caps)
        planes = self.info.finfo.n_planes
        self.strides = [stride + wider for stride in self.info.stride[:planes]]
        self.offsets, end = [], later
        for plane in range(planes):
            self.offsets.append(end)
            end += later + self.strides[plane] * self.size_of(plane)[1]
        self.bytes = end

    def size_of(self, plane):
        finfo = self.info.finfo
        component = list(finfo.plane[:finfo.n_components]).index(plane)
        width, height = -(-self.info.width // (1 << finfo.w_sub[component])), -(-self.info.height // (1 << finfo.h_sub[component]))
        return width * finfo.pixel_stride[component], height

    def rows(self, offsets, strides):
        """Of the picture, in the order Y, U, V, A: place and length."""
        finfo = self.info.finfo
        for plane in dict.fromkeys(finfo.plane[:finfo.n_components]):
            width, height = self.size_of(plane)
            for row in range(height):
                yield offsets[plane] + row * strides[plane], width

    def buffer(self, picture):
        data, taken = bytearray(b"\xa5" * self.bytes), 0
        for place, length in self.rows(self.offsets, self.strides):
            data[place:place + length] = picture[taken:taken + length]
            taken += length
        buffer = Gst.Buffer.new_wrapped(bytes(data))
        GstVideo.buffer_add_video_meta_full(buffer, GstVideo.VideoFrameFlags.NONE, self.info.finfo.format, self.info.width, self.info.height,
                                            len(self.offsets), self.offsets + [0] * (4 - len(self.offsets)), self.strides + [0] * (4 - len(self.strides)))
        return buffer

    @staticmethod
    def picture(sample):
        buffer = sample.get_buffer()
        layout = Layout(sample.get_caps().to_string().removeprefix("video/x-raw,"))
        meta = GstVideo.buffer_get_video_meta(buffer)
        data = buffer.extract_dup(0, buffer.get_size())
        rows = layout.rows(meta.offset, meta.stride) if meta else layout.rows(layout.info.offset, layout.info.stride)
        return b"".join(data[place:place + length] for place, length in rows)


def control(element, setting, values):
    """Values by time, by way of GStreamer's own controller."""
    source = GstController.InterpolationControlSource(mode=GstController.InterpolationMode.LINEAR)
    element.add_control_binding(GstController.DirectControlBinding.new_absolute(element, setting, source))
    for at, value in values.items():
        source.set(at, value)


class Pipeline:
    """Pictures go in at the elements src0 and src1, and come out at sink."""

    def __init__(self, text, *streams):
        self.pipeline = Gst.parse_launch(text + " ! appsink name=sink sync=false")
        for number, stream in enumerate(streams):
            source = self.pipeline.get_by_name(f"src{number}")
            source.set_property("format", Gst.Format.TIME)
            at = 0
            for layout, frames in stream:
                for frame in frames:
                    buffer = layout.buffer(frame)
                    buffer.pts, buffer.duration = at * SECOND // RATE, SECOND // RATE
                    source.push_sample(Gst.Sample.new(buffer, layout.caps, None, None))
                    at += 1
            source.end_of_stream()

    def element(self, name):
        return self.pipeline.get_by_name(name)

    def control(self, name, setting, *values):
        """A value for each picture."""
        control(self.element(name), setting, {at * SECOND // RATE: value for at, value in enumerate(values)})
        return self

    def start(self):
        self.pipeline.set_state(Gst.State.PLAYING)
        return self

    def samples(self):
        sink, found = self.start().element("sink"), []
        while sample := sink.pull_sample():
            found.append(sample)
        bus = self.pipeline.get_bus()
        self.said = []
        while message := bus.pop_filtered(Gst.MessageType.ERROR | Gst.MessageType.WARNING):
            failed = message.type == Gst.MessageType.ERROR
            self.said.append((message.parse_error() if failed else message.parse_warning())[0].message)
        self.pipeline.set_state(Gst.State.NULL)
        return found

    def pictures(self, warnings=0):
        found = [Layout.picture(sample) for sample in self.samples()]
        check("said", len(self.said) == warnings or self.said, True)
        return found


def element(effect, *settings):
    return " ".join(["aveffect-" + effect["shortName"], *settings])


def written(effect):
    """The effect's settings for GStreamer and for the program, so that it does something."""
    times = [f"duration={LENGTH}"] if effect["kind"] == "fade" else []
    if effect["name"] == "addnoise":
        return element(effect, "addnoise-level=-10"), effect["shortName"] + ":addnoise_level=-10"
    if effect["presets"]:
        preset = effect["presets"][0]["name"]
        return element(effect, "preset=" + preset, *times), effect["shortName"] + "/" + preset
    return element(effect, *times), effect["shortName"]


def hashes(frames):
    return [hashlib.md5(frame).hexdigest() for frame in frames]


def filters(program, effects, clip, workers):
    """Every effect, all of them at once, each on threads of its own."""
    playing = {effect["shortName"]: Pipeline(f"appsrc name=src0 ! queue ! {written(effect)[0]} ! queue", [(clip.layout, clip.frames)]).start() for effect in effects}
    rendered = {effect["shortName"]: workers.submit(program.render, clip, written(effect)[1]) for effect in effects}
    found = {name: hashes(pipeline.pictures()) for name, pipeline in playing.items()}
    check(f"on {clip.name}", found, {name: hashes(render.result()) for name, render in rendered.items()})
    for effect in effects:
        if found[effect["shortName"]] == hashes(clip.frames):
            raise SystemExit(f"{effect['shortName']} changes nothing on {clip.name}")


def formats(program):
    """What else is served, in whatever order and at whatever places the planes lie."""
    chain = "appsrc name=src0 ! aveffect-spherize preset=bulge ! aveffect-brightness-contrast brightness=20 contrast=30"
    same = ("spherize/bulge", "brightness-contrast:brightness=20:contrast=30")
    width, height = ODD
    for kind, flags, caps in [("yuv422p", (), ""), ("yuv411p", (), ""), ("yuv410p", (), ""), ("yuva420p", (), ""),
                              ("yuv420p", (), "format=YV12"), ("yuv410p", (), "format=YVU9"), ("bgra", (), "format=BGRx"),
                              ("yuv420p", ("-color_range", "pc"), "format=I420,colorimetry=1:1:5:1")]:
        clip = Clip(kind, ODD, flags=flags)
        layout = Layout(f"{caps},width={width},height={height}") if caps else clip.layout
        full = "yuvj420p" if flags else None
        expected = hashes(program.render(clip, *same, pixel_format=full))
        check(f"{kind} {caps}", hashes(Pipeline(chain, [(layout, clip.frames)]).pictures()), expected)
        if not caps or not flags:
            wide = Layout(layout.caps_text, wider=13, later=7)
            check(f"{kind} {caps} with room", hashes(Pipeline(chain, [(wide, clip.frames)]).pictures()), expected)
    # Bytes in an order of their own.
    clip = Clip("bgra")
    check("RGBA", hashes(Pipeline("appsrc name=src0 ! aveffect-spherize preset=bulge", [(Layout(f"format=RGBA,width={width},height={height}"), clip.frames)]).pictures()),
          hashes(program.render(clip, "spherize/bulge")))


def negotiated(words):
    return Pipeline("videotestsrc num-buffers=1 ! " + words).samples()[0].get_caps().get_structure(0).get_string("format")


def negotiation():
    for words, expected in [("video/x-raw,format=YV12 ! aveffect-gray", "YV12"), ("aveffect-gray ! video/x-raw,format=Y41B", "Y41B"),
                            ("video/x-raw,format=NV12 ! videoconvert ! aveffect-gray ! videoconvert ! video/x-raw,format=UYVY", "UYVY"),
                            ("video/x-raw,format=I420 ! videoconvert ! aveffect-transparency ! aveffect-blur", "A420"),
                            ("aveffect-quarter-turns ! video/x-raw,format=I420", "I420"), ("aveffect-mosaic ! video/x-raw,format=ARGB", "ARGB")]:
        check(words, negotiated(words) == expected or negotiated(words), True)
    for words in ("video/x-raw,format=NV12 ! aveffect-gray", "aveffect-transparency ! video/x-raw,format=I420"):
        try:
            Gst.parse_launch("videotestsrc ! " + words + " ! fakesink")
        except gi.repository.GLib.Error:
            continue
        raise SystemExit(f"{words}: linked")


def settings(program):
    """Settings of every type, those that GStreamer moves, pictures that change their size, and settings that are wrong."""
    clip, other = Clip("bgra"), Clip("yuv420p", (128, 97))
    # An angle of 0 is none of its own accord.
    check("types", hashes(Pipeline("appsrc name=src0 ! aveffect-reverse mirror=true preset=flip ! aveffect-tile-reflect tilereflect_angle=0 tilereflect-size=30 "
                                   "! aveffect-quarter-turns Rotate90XDerection=1 ! aveffect-anaglyph render-3d-mode=red-cyan ! aveffect-pop-style popstyle-color=0x40ff80",
                                   [(clip.layout, clip.frames)]).pictures()),
          hashes(program.render(clip, "reverse/flip:mirror=on", "tile-reflect:tilereflect_angle=0:tilereflect_size=30", "quarter-turns:Rotate90XDerection=1",
                                "anaglyph:render_3d_mode=red-cyan", "pop-style:popstyle_color=#40ff80")))
    pipeline = Pipeline("appsrc name=src0 ! aveffect-spherize name=a spherize-x=80 spherize-y=40 spherize-scale=1.5 ! aveffect-brightness-contrast name=b ! aveffect-color-filter name=c filter-scope=90",
                        [(clip.layout, clip.frames)])
    pipeline.control("a", "spherize_r", 10, 20, 30, 40, 50).control("b", "brightness", -50, -25, 0, 25, 50).control("c", "filter-color", *[0xff0000] * 5)
    check("settings that move", hashes(pipeline.pictures()), hashes(program.render(
        clip, "spherize:spherize_r=0=10;0.16=50:spherize_x=80:spherize_y=40:spherize_scale=1.5", "brightness-contrast:brightness=0=-50;0.16=50", "color-filter:filter_color=0xff0000:filter_scope=90")))
    found = hashes(Pipeline("appsrc name=src0 ! aveffect-spherize preset=bulge", [(clip.layout, clip.frames), (other.layout, other.frames)]).pictures())
    check("another size", found, [one for each in (clip, other) for one in hashes(program.render(each, "spherize/bulge"))])
    lost = Pipeline("appsrc name=src0 ! aveffect-fade-in-color", [(clip.layout, clip.frames)])
    check("passed on", hashes(lost.pictures(warnings=1)), hashes(clip.frames))
    check("said", "duration" in lost.said[0], True)


def transitions(program, effects):
    size = (160, 96)  # rows without padding, which some of them draw with
    first, second, black, planar = Clip("bgra", size), Clip("bgra", size, "mandelbrot"), Clip("yuv420p", (80, 48), "color=black"), Clip("yuv420p", size)

    def mixed(name, settings, one, two, progress=()):
        pipeline = Pipeline(f"aveffect-{name} name=t {settings} appsrc name=src0 ! t.sink_0 appsrc name=src1 ! queue ! t.sink_1 t.",
                            *[[(clip.layout, clip.frames)] for clip in (one, two)])
        return (pipeline.control("t", "progress", *progress) if progress else pipeline).pictures()
    for effect in effects:
        name = effect["shortName"]
        joined = program.raw("bgra", "join", first.name, second.name, "-e", name, "--duration", LENGTH / SECOND)
        check(name, hashes(mixed(name, f"duration={LENGTH}", first, second)), hashes(joined))
        by_time = mixed(name, f"start={SECOND // RATE} duration={2 * SECOND // RATE}", first, second)
        check(name + " by progress", hashes(mixed(name, "", first, second, (0, 0, 0.5, 1, 1)))[1:], hashes(by_time)[1:])
        check(name + " before and behind", [by_time[0], by_time[4]] == [first.frames[0], second.frames[4]], True)
        # Pictures of another size and format are made to fit.
        check(name + " of two kinds", set(mixed(name, "progress=1", first, black)[0]), {0, 255})
        halfway = mixed(name, "progress=0.5", planar, black)[0]
        check(name + " planar", len(halfway) == len(planar.frames[0]) and halfway not in (planar.frames[0], black.frames[0]), True)


def heard(words):
    return run("gst-launch-1.0", *f"filesrc location=in.wav ! wavparse ! queue ! aveffect-{words} ! wavenc ! filesink location=heard.wav".split()).stdout.decode()


def samples(name):
    return run("ffmpeg", "-v", "error", "-i", name, "-f", "md5", "-").stdout


def sound(program):
    run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"aevalsrc=sin(2000*t)|cos(3000*t):s={SOUND_RATE}:d=1", "-c:a", "pcm_s16le", "in.wav")
    run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"aevalsrc=sin(500*t)|cos(700*t):s={SOUND_RATE}:d=0.3", "-c:a", "pcm_s16le", "other.wav")
    for words, effect in [("volume audio-volume=30", "volume:audio_volume=30"),
                          ("fade-sound fader-start-scale=0 fader-end-scale=1 fader-duration=800", "fade-sound:fader_start_scale=0:fader_end_scale=1:fader_duration=800"),
                          ("replace-sound audio-replace-path=other.wav audio-replace-loop=true", "replace-sound:audio_replace_path=other.wav:audio_replace_loop=1")]:
        heard(words)
        run(program.path, "render", "in.wav", "out.wav", "-a", effect, "--overwrite", "--progress", "none")
        check(words, samples("heard.wav"), samples("out.wav"))
    # A volume that is controlled moves from sample to sample, as the program's does, but between whole percents, to which
    # controllers cut. A buffer's step would be four of them.
    moving = Gst.parse_launch("filesrc location=in.wav ! wavparse ! aveffect-volume name=v ! appsink name=sink sync=false")
    control(moving.get_by_name("v"), "audio-volume", {0: 100, SECOND: 0})
    moving.set_state(Gst.State.PLAYING)
    heard_bytes = b""
    while sample := moving.get_by_name("sink").pull_sample():
        heard_bytes += sample.get_buffer().extract_dup(0, sample.get_buffer().get_size())
    moving.set_state(Gst.State.NULL)
    run(program.path, "render", "in.wav", "out.wav", "-a", "volume:audio_volume=0=100;1=0", "--overwrite", "--progress", "none")
    found, wanted = array.array("h", heard_bytes), array.array("h", run("ffmpeg", "-v", "error", "-i", "out.wav", "-f", "s16le", "-").stdout)
    check("a volume that moves", len(found) == len(wanted) and max(abs(a - b) for a, b in zip(found, wanted)) <= 330, True)
    silent = Clip("bgra").name
    said = heard("replace-sound audio-replace-path=" + silent)
    check("no sound", (said.count("WARNING"), silent in said, samples("heard.wav")), (1, True, samples("in.wav")))


def programs(effects, guide):
    """The commands of the guide for users, as they stand there; an editor's engine; and a plug-in without its companions."""
    commands = guide.split("\n## Pictures and sound: GStreamer")[1].split("```sh\n")[1].split("```")[0]
    run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc=s=160x96:r={RATE}", "-frames:v", 1, "in.png")
    for command in commands.replace("\\\n", "").splitlines():
        if not command.startswith(("mkdir", "export")):
            run("bash", "-euc", command)
    listed = run("gst-inspect-1.0", "aveffect").stdout.decode()
    check("listed", [effect["shortName"] for effect in effects if f"  aveffect-{effect['shortName']}: " not in listed], [])
    # An effect on a clip has the clip's time.
    clip = ["+test-clip", "red", "duration=0.2", "+effect", "aveffect-fade-in"]
    edited = run("ges-launch-1.0", *clip, *clip, "--videosink", "checksumsink", "--audiosink", "fakesink", "--disable-mixing").stdout.decode()
    sums = [line.split()[1] for line in edited.splitlines() if line.startswith("0:")]
    check("edited", len(sums) == 12 and sums[:6] == sums[6:] and len(set(sums)) == 6 or sums, True)
    os.mkdir("alone")
    shutil.copy(os.path.realpath("plugins/libgstaveffect.so"), "alone")
    os.environ.update(GST_PLUGIN_PATH=os.path.abspath("alone"), GST_REGISTRY=os.path.abspath("registry of its own"))
    said = run("gst-launch-1.0", "videotestsrc", "num-buffers=1", "!", "aveffect-gray", "!", "fakesink", wrong=True).stderr.decode()
    check("without companions", [line.count("libaveffect_gst.so") for line in said.splitlines() if "aveffect:" in line] == [1] or said, True)


def main():
    program = Program(sys.argv[2])
    effects = json.loads(run(program.path, "list", "--json").stdout)["effects"]
    on_pictures = [effect for effect in effects if effect["kind"] not in ("transition", "audio")]
    with concurrent.futures.ThreadPoolExecutor(2) as workers:
        for kind in ("bgra", "yuv420p"):
            on_kind = [effect for effect in on_pictures if kind == "bgra" or not effect["changesAlpha"]]
            # These take what lies behind a row's end, which is alike where there is no padding.
            reaching = [effect for effect in on_kind if effect["name"] in ("atomize", "edgelight")]
            filters(program, [effect for effect in on_kind if effect not in reaching], Clip(kind), workers)
            filters(program, reaching, Clip(kind, (128, 97)), workers)
    formats(program)
    negotiation()
    settings(program)
    transitions(program, [effect for effect in effects if effect["kind"] == "transition"])
    sound(program)
    programs(effects, (pathlib.Path(here).parents[2] / "docs/in-other-programs.md").read_text())


if __name__ == "__main__":
    here, plugin = os.path.abspath(__file__), os.path.abspath(sys.argv[1])
    sys.argv[2] = os.path.abspath(sys.argv[2])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.mkdir("plugins")
        os.symlink(plugin, "plugins/" + os.path.basename(plugin))
        os.environ.update(GST_PLUGIN_PATH=os.path.abspath("plugins"), GST_REGISTRY=os.path.abspath("registry"))
        import gi
        for name in ("Gst", "GstApp", "GstController", "GstVideo"):
            gi.require_version(name, "1.0")
        from gi.repository import Gst, GstApp, GstController, GstVideo
        Gst.init(None)
        main()
