#!/usr/bin/env python3
"""Holds the panels for Kdenlive against the services that they stand for, in melt.

panels_test.py MODULE FOLDER
"""
import concurrent.futures
import os
import pathlib
import re
import sys
import tempfile
import xml.etree.ElementTree as xml

from melt_runs import environment, run

UNLIKE = {"aveffect.noise", "aveffect.atomize", "aveffect.replace-sound"}  # never the same twice, or useless until set
# What Kdenlive's own descriptions have: its elements with their attributes, and the types of parameters that we use.
KNOWN = {"group": set(), "effect": {"tag", "id", "type"}, "transition": {"tag", "id", "type"}, "name": set(), "description": set(),
         "author": set(), "parameter": {"type", "name", "default", "min", "max", "decimals", "suffix", "paramlist"},
         "paramlistdisplay": set(), "comment": set()}
TYPES = {"animated", "constant", "bool", "color", "list", "url", "position", "fixed"}
ITS_OWN = pathlib.Path("/usr/share/kdenlive")


def check(what, found, expected):
    if found != expected:
        raise SystemExit(f"{what}: {found} instead of {expected}")


def layout(files):
    """Elements and their attributes, and the types of parameters."""
    elements, types = {}, set()
    for file in files:
        for element in xml.parse(file).iter():
            elements.setdefault(element.tag, set()).update(element.attrib)
            if element.tag == "parameter":
                types.add(element.get("type"))
    return elements, types


def fits(ours, known):
    return ours[0].keys() <= known[0].keys() and all(ours[0][name] <= known[0][name] for name in ours[0]) and ours[1] <= known[1]


class Melt:
    def __init__(self, module):
        self.env = environment(module)

    def run(self, *words):
        done = run("melt", "-silent", *words, env=self.env)
        if "aveffect:" in done.stderr:
            raise SystemExit(done.stderr)
        return done.stdout

    def services(self, kind):
        return set(re.findall(r"aveffect\.\S+", self.run("-query", kind)))

    def parameters(self, kind, service):
        """What the service says of each of its properties."""
        text = self.run("-query", f"{kind}={service}").partition("\nparameters:\n")[2]
        found = {}
        for part in re.split(r"^  - identifier: ", text, flags=re.M)[1:]:
            name, _, rest = part.partition("\n")
            facts = dict(re.findall(r"^    (\w+): (.*)$", rest, flags=re.M))
            facts["values"] = re.findall(r"^      - (.*)$", rest, flags=re.M)
            found[name.strip('"')] = {key: fact if isinstance(fact, list) else fact.strip("\"'") for key, fact in facts.items()}
        return found

    def film(self, clips):
        """The pictures and sound of one film of clips, each with a service and its settings."""
        words = []
        for service, settings in clips:
            words += ["avformat:in.mkv", "-attach-cut", service, *settings]
        self.run(*words, "-consumer", "avformat:film.mkv", "vcodec=ffv1", "acodec=pcm_s16le", "pix_fmt=bgr0", "real_time=-1")
        listed = run("ffmpeg", "-v", "error", "-i", "film.mkv", "-f", "framemd5", "-").stdout
        return [line.split(",")[-1] for line in listed.splitlines() if line.startswith("0,")]


def same_range(what, parameter, said):
    """Kdenlive's words for the project's sides stand for the range of what may be a share of them."""
    if "minimum" not in said:
        return check(what, "min" in parameter.attrib, False)
    check(what + " at least", float(parameter.get("min")), float(said["minimum"]))
    if not parameter.get("max").startswith("%"):
        return check(what + " at most", float(parameter.get("max")), float(said["maximum"]))
    check(what + " is a length", "in percent of the picture's" in said["description"], True)
    check(what + " at most", parameter.get("max") == "%height", "picture's height" in said["description"])


def same_default(what, parameter, said):
    default = parameter.get("default")
    if parameter.get("type") == "color" and default:
        default = re.sub("^0x(.{6})ff$", r"#\1", default)
    elif parameter.get("type") == "list":
        check(what, parameter.get("paramlist").split(";"), said["values"])
        check(what, parameter.find("paramlistdisplay").text.split(","), said["values"])
        default = str(said["values"].index(default))
        if "default" not in said:  # presets begin with the first one
            said = dict(said, default="0")
    check(what + " begins with", default, said.get("default"))


def compare(said, kind, panel):
    presets = panel.get("id").endswith(".presets")
    shown = {parameter.get("name"): parameter for parameter in panel.iter("parameter") if parameter.get("name") not in ("in", "out")}
    expected = set() if kind == "transition" else {name for name in said if (name == "preset") == presets}
    check(panel.get("id"), set(shown), expected)
    for name, parameter in shown.items():
        same_range(f"{panel.get('id')} {name}", parameter, said[name])
        same_default(f"{panel.get('id')} {name}", parameter, said[name])


def settings(panel):
    """What Kdenlive sets at once, but for where the filter begins and ends; files are chosen."""
    words = []
    for parameter in panel.iter("parameter"):
        default = "in.mkv" if parameter.get("type") == "url" else parameter.get("default")
        if default is not None and parameter.get("name") not in ("in", "out"):
            words.append(f"{parameter.get('name')}={'0=' if parameter.get('type') == 'animated' else ''}{default}")
    return words


def main():
    module, folder = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
    files = sorted(folder.glob("*/*.xml"))
    ours = layout(files)
    check("the layout is known", fits(ours, (KNOWN, TYPES)), True)
    if ITS_OWN.exists():
        check("Kdenlive's files have it", fits(ours, layout(ITS_OWN.glob("*/*.xml"))), True)
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=256x192:r=25", "-f", "lavfi", "-i", "aevalsrc=sin(2000*t):s=48000",
            "-t", "0.12", "-c:v", "ffv1", "-pix_fmt", "bgra", "-c:a", "pcm_s16le", "in.mkv")
        melt = Melt(module)
        panels = {kind: [panel for file in files for panel in xml.parse(file).iter(kind)] for kind in ("effect", "transition")}
        for kind, service in (("effect", "filter"), ("transition", "transition")):
            services = sorted(melt.services(service + "s"))
            check("services with panels", sorted({panel.get("tag") for panel in panels[kind]}), services)
            with concurrent.futures.ThreadPoolExecutor() as pool:
                said = dict(zip(services, pool.map(lambda name: melt.parameters(service, name), services)))
            for panel in panels[kind]:
                compare(said[panel.get("tag")], service, panel)
        ids = [panel.get("id") for kind in panels for panel in panels[kind]]
        check("names of panels", len(set(ids)), len(ids))
        # What is shown at first is what the service does without being set, and the rest is taken without a word.
        plain = [panel for panel in panels["effect"] if panel.get("id") == panel.get("tag") and panel.get("tag") not in UNLIKE]
        found, expected = (melt.film([(panel.get("tag"), words(panel)) for panel in plain]) for words in (settings, lambda _: []))
        check("the films' pictures", len(found), 3 * len(plain))
        check("with what is shown at first", [panel.get("tag") for at, panel in enumerate(plain) if found[3 * at:3 * at + 3] != expected[3 * at:3 * at + 3]], [])
        melt.film([(panel.get("tag"), settings(panel)) for panel in panels["effect"] if panel not in plain])
        print(f"{len(ids)} panels")


main()
