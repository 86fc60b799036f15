#!/usr/bin/env python3
"""Runs the module's services in melt, and holds what comes out against the program's own renders.

mlt_test.py MODULE TAP PROGRAM EACH
Each so-many-th effect is tried. Pictures are compared by what the tap behind the effect saw, so that melt's own conversions and encoders don't count.
"""
import array
import hashlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from melt_runs import SECONDS, environment, run

FRAMES = 5
MEDIA = """
-f lavfi -i testsrc2=s=256x96:r=25 -frames:v 5 -c:v ffv1 -pix_fmt bgra rgb.mkv
-f lavfi -i testsrc2=s=256x96:r=25 -frames:v 5 -c:v ffv1 -pix_fmt yuv420p yuv.mkv
-f lavfi -i testsrc2=s=512x192:r=25 -frames:v 5 -c:v ffv1 -pix_fmt yuv420p large.mkv
-f lavfi -i testsrc2=s=128x48:r=25 -frames:v 5 -c:v ffv1 -pix_fmt yuv420p small.mkv
-f lavfi -i testsrc2=s=256x96:r=25 -vf setsar=2 -frames:v 5 -c:v ffv1 -pix_fmt yuv420p wide.mkv
-f lavfi -i testsrc=s=63x47:r=25 -frames:v 5 -c:v ffv1 -pix_fmt bgra odd.mkv
-f lavfi -i mandelbrot=s=256x96:r=25 -frames:v 5 -c:v ffv1 -pix_fmt bgra other.mkv
-f lavfi -i mandelbrot=s=63x47:r=25 -frames:v 5 -c:v ffv1 -pix_fmt bgra otherodd.mkv
-f lavfi -i mandelbrot=s=256x96:r=25 -frames:v 5 -c:v ffv1 -pix_fmt yuv420p otheryuv.mkv
-f lavfi -i testsrc2=s=256x96:r=25 -f lavfi -i aevalsrc=sin(2000*t)|cos(3000*t):s=48000 -t 1 -c:v ffv1 -pix_fmt bgra -c:a pcm_s16le sound.mkv
"""


class Hosts:
    def __init__(self, module, tap, program):
        self.program = program
        self.env = environment(module, tap)

    def melt(self, *words, **more):
        done = run("melt", "-silent", *words, env=dict(self.env, **more))
        if "aveffect" in done.stderr:
            raise SystemExit(f"{words}: {done.stderr}")

    def taps(self, kind, labels, *words, threads=1, consumer=(), **more):
        """The pictures behind each label's tap, as melt has them in memory."""
        for old in pathlib.Path().glob("tapped*"):
            old.unlink()
        self.melt(*words, "-consumer", "null", f"real_time=-{threads}", "terminate_on_pause=1", *consumer, **more)
        return {label: [self.tapped(kind, f"tapped{label}.{at}") for at in range(FRAMES)] for label in labels}

    def tapped(self, kind, name):
        data = bytearray(pathlib.Path(name).read_bytes())
        if kind == "rgb24":  # of which melt has none: without alpha, in which transitions leave nothing of use
            del data[3::4]
        return hashlib.md5(data).hexdigest()

    def rendered(self, kind, *words):
        """The program's pictures, laid out as melt has them."""
        run(self.program, *words[:-1], "whole.mkv", *words[-1], "--codec", "ffv1", "--no-sound", "--progress", "none", "--overwrite")
        return hashes(kind, "whole.mkv")


def tap(kind, label):
    return ["tap", "format=" + kind.replace("rgb24", "rgba"), f"label=tapped{label}"]


def hashes(kind, name):
    lines = run("ffmpeg", "-v", "error", "-i", name, "-map", "0:v", "-pix_fmt", kind, "-f", "framemd5", "-").stdout.splitlines()
    return [line.split(",")[-1].strip() for line in lines if not line.startswith("#")]


def samples(name):
    return run("ffmpeg", "-v", "error", "-i", name, "-map", "0:a", "-c:a", "pcm_s16le", "-f", "md5", "-").stdout


def written(effect):
    """The effect's settings for melt and for the program, so that it does something."""
    if effect["name"] == "addnoise":
        return ["addnoise_level=-10"], effect["shortName"] + ":addnoise_level=-10"
    if effect["presets"]:
        return ["preset=" + effect["presets"][0]["name"]], effect["shortName"] + "/" + effect["presets"][0]["name"]
    return [], effect["shortName"]


def check(what, found, expected):
    if found != expected:
        differing = [key for key in expected if found.get(key) != expected[key]] if isinstance(expected, dict) else [found, expected]
        raise SystemExit(f"{what}: {differing}")


def filters(hosts, effects, clip, kind):
    """Every effect on a clip of its own, in one film."""
    words = []
    for effect in effects:
        words += ["avformat:" + clip, "-attach-cut", "aveffect." + effect["shortName"], *written(effect)[0], "-attach-cut", *tap(kind, effect["shortName"])]
    labels = [effect["shortName"] for effect in effects]
    found = hosts.taps(kind, labels, *words)
    check("threads", hosts.taps(kind, labels, *words, threads=4), found)
    untouched = hashes(kind, clip)
    for effect in effects:
        name = effect["shortName"]
        check(f"{name} on {clip}", found[name], hosts.rendered(kind, "render", clip, ["-e", written(effect)[1], "--pixel-format", kind.replace("rgba", "bgra")]))
        if found[name] == untouched and not effect["changesAlpha"]:
            raise SystemExit(f"{name} changes nothing on {clip}")


def moving(hosts):
    frames = ["spherize_r=0=10%;4=60%", "spherize_x=50%", "spherize_y=50%", "spherize_scale=1.5"]
    seconds = "spherize:spherize_r=0=10%;0.16=60%:spherize_x=50%:spherize_y=50%:spherize_scale=1.5"
    film = ["avformat:rgb.mkv", "-attach", "aveffect.spherize", *frames, "-attach", "aveffect.invert", "-attach", *tap("rgba", "film")]
    expected = {"film": hosts.rendered("rgba", "render", "rgb.mkv", ["-e", seconds, "-e", "invert"])}
    for threads in (1, 4):
        check("a setting that moves", hosts.taps("rgba", ["film"], *film, threads=threads), expected)
    # Beside a filter whose pictures the host cuts up for its threads.
    sliced = [*film[:-4], "-attach", "lift_gamma_gain", "-attach", "aveffect.invert", "-attach", "aveffect.invert", *film[-4:]]
    check("slices", hosts.taps("rgba", ["film"], *sliced, threads=4, MLT_SLICES_COUNT="4"), expected)
    # Filters that begin and end within the clip count their time from there.
    part = ["avformat:rgb.mkv", "-filter", "aveffect.fade-in-color", "in=1", "out=3", "-filter", "aveffect.gray", "in=2", "out=4", "-filter", *tap("rgba", "part")]
    check("in and out points", hosts.taps("rgba", ["part"], *part),
          {"part": hosts.rendered("rgba", "render", "rgb.mkv", ["-e", "fade-in-color:@from=0.04:@to=0.16", "-e", "gray:@from=0.08"])})
    # A film that is saved and played again.
    hosts.melt(*film, "-consumer", "xml:film.mlt")
    check("a saved film", hosts.taps("rgba", ["film"], "film.mlt"), expected)


def scaled(hosts):
    """Clips that are scaled or cut: an effect that changes nothing leaves them as they are without it."""
    for words in (["large.mkv"], ["small.mkv"], ["wide.mkv"], ["yuv.mkv", "-attach-cut", "crop", "left=40", "top=20"]):
        found, expected = (hosts.taps("rgba", ["scaled"], "yuv.mkv", *words, *effect, "-attach-cut", *tap("rgba", "scaled"))
                           for effect in (["-attach-cut", "aveffect.spherize"], []))
        check(f"{words} in a film of another size", found, expected)
    # A film that is shown at half its size: lengths in its pixels are halved, whatever writes them.
    found, expected = (hosts.taps("rgba", ["half"], "yuv.mkv", "-attach", "aveffect.spherize", f"spherize_r={r}", f"spherize_x={x}", f"spherize_y={y}", "spherize_scale=1.5",
                                  "-attach", *tap("rgba", "half"), consumer=["scale=0.5"]) for r, x, y in (("48", "1.28e+02", "0=48"), ("50%", "50%", "50%")))
    check("a preview", found, expected)
    # The film is as large as its first clip.
    found, expected = (hosts.taps("rgba", ["cut"], "yuv.mkv", "-attach", "crop", "left=40", "top=20", *effect, "-attach", *tap("rgba", "cut"))
                       for effect in (["-attach", "aveffect.spherize"], []))
    check("a film that is cut", found, expected)


def refused(hosts):
    """A setting that is wrong: it is said, and pictures are passed on as they are."""
    done = run("melt", "-silent", "avformat:rgb.mkv", "-attach", "aveffect.gray", "-attach", "aveffect.spherize", "spherize_r=-7",
               "-attach", *tap("rgba", "refused"), "-consumer", "null", "real_time=-1", "terminate_on_pause=1", env=hosts.env)
    check("a wrong setting is named", "spherize_r" in done.stderr and "-7" in done.stderr, True)
    check("passed on", [hosts.tapped("rgba", f"tappedrefused.{at}") for at in range(FRAMES)],
          hosts.rendered("rgba", "render", "rgb.mkv", ["-e", "gray"]))


def transitions(hosts, effects):
    """On even sides and odd ones, by their own time and by keyframes, threads side by side. What they make of planes the ledger has."""
    for effect in effects:
        name, label = "aveffect." + effect["shortName"], effect["shortName"]

        def mixed(kind, first, second, *settings, threads=1, length=5):
            words = [first, "in=0", "out=4", second, "in=0", "out=4", "-mix", str(length), "-mixer", name, *settings, "-filter", *tap(kind, label)]
            return hosts.taps(kind, [label], *words, threads=threads)[label]
        for first, second in (("rgb.mkv", "other.mkv"), ("odd.mkv", "otherodd.mkv")):
            if label in ("clock", "shutter") and first == "odd.mkv":  # they draw with what lies behind rows, too
                continue
            expected = hosts.rendered("rgb24", "join", first, second, ["-e", label, "--duration", "0.2"])
            check(f"{name} on {first}", mixed("rgb24", first, second), expected)
        by_time = mixed("yuv420p", "yuv.mkv", "otheryuv.mkv", threads=4, length=4)
        check(name + " by progress", mixed("yuv420p", "yuv.mkv", "otheryuv.mkv", "progress=0=0;4=100%", length=4), by_time)
        # Once it is over, the second picture is left.
        check(name + " ends", mixed("yuv420p", "yuv.mkv", "otheryuv.mkv", "progress=1"), hashes("yuv420p", "otheryuv.mkv"))


def sound(hosts):
    for words, effect in [(["audio_volume=30"], "volume:audio_volume=30"),
                          (["fader_start_scale=0", "fader_end_scale=1", "fader_duration=800"],
                           "fade-sound:fader_start_scale=0:fader_end_scale=1:fader_duration=800"),
                          (["audio_replace_path=sound.mkv", "audio_replace_loop=1"],
                           "replace-sound:audio_replace_path=sound.mkv:audio_replace_loop=1")]:
        name = "aveffect." + effect.split(":")[0]
        hosts.melt("sound.mkv", "-attach", name, *words, "-consumer", "avformat:heard.wav", "acodec=pcm_s16le", "vn=1", "real_time=-1")
        run(hosts.program, "render", "sound.mkv", "wav.wav", "-a", effect, "--overwrite", "--progress", "none")
        check(name, samples("heard.wav"), samples("wav.wav"))
    # A volume that moves does so from sample to sample.
    hosts.melt("sound.mkv", "-attach", "aveffect.volume", "audio_volume=0=100;25=0", "-consumer", "avformat:heard.wav", "acodec=pcm_s16le", "vn=1", "real_time=-1")
    run(hosts.program, "render", "sound.mkv", "wav.wav", "-a", "volume:audio_volume=0=100;1=0", "--overwrite", "--progress", "none")
    heard, wanted = (array.array("h", subprocess.run(["ffmpeg", "-v", "error", "-i", name, "-f", "s16le", "-"], capture_output=True, check=True, timeout=SECONDS).stdout)
                     for name in ("heard.wav", "wav.wav"))
    check("a volume that moves", len(heard) == len(wanted) and max(abs(a - b) for a, b in zip(heard, wanted)) <= 1, True)


def guide(hosts, text):
    """The commands of the guide for users, as they stand there."""
    commands = text.split("\n## Pictures and sound: MLT")[1].split("```sh\n")[1].split("```")[0]
    pathlib.Path("build").symlink_to(pathlib.Path(hosts.program).parent.parent)
    for name, source in (("a.mp4", "testsrc2"), ("b.mp4", "mandelbrot")):
        run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"{source}=s=128x96:r=25", "-t", "4", "-pix_fmt", "yuv420p", name)
    pathlib.Path("in.mp4").symlink_to("a.mp4")
    for command in commands.replace("out.mp4\n", "warped.mp4\n", 1).splitlines()[2:]:
        run("bash", "-euc", commands.split("export")[0] + "export MLT_REPOSITORY=~/mlt\n" + command,
            env=dict(os.environ, HOME=os.getcwd(), QT_QPA_PLATFORM="offscreen"))
    plain, warped, mixed = (hashes("yuv420p", name) for name in ("a.mp4", "warped.mp4", "out.mp4"))
    check("the guide's films", warped[:50] != plain[:50] and len(mixed) >= 74 + 100 - 25, True)


def main():
    module, tap_module, program = (os.path.abspath(path) for path in sys.argv[1:4])
    effects = json.loads(run(program, "list", "--json").stdout)["effects"]
    here = os.path.abspath(__file__)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for line in MEDIA.strip().splitlines():
            run("ffmpeg", "-v", "error", *line.split())
        hosts = Hosts(module, tap_module, program)
        each = int(sys.argv[4])
        pictures = [effect for effect in effects if effect["kind"] not in ("transition", "audio")][::each]
        filters(hosts, pictures, "rgb.mkv", "rgba")
        # atomize takes what lies behind a row's end, which is the next row's here and padding in the program.
        planar = [effect for effect in pictures if not effect["changesAlpha"] and effect["name"] != "atomize"]
        filters(hosts, planar, "yuv.mkv", "yuv420p")
        filters(hosts, pictures[::5], "odd.mkv", "rgba")
        moving(hosts)
        scaled(hosts)
        refused(hosts)
        transitions(hosts, [effect for effect in effects if effect["kind"] == "transition"][::each])
        sound(hosts)
        guide(hosts, (pathlib.Path(here).parents[2] / "docs/in-other-programs.md").read_text())
        print(f"{len(effects)} services")


main()
