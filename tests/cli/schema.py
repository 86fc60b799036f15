"""The installed schema and the program agree on what films say: schema.py SCHEMA PROGRAM"""
import json
import subprocess
import sys
import tempfile

import jsonschema

schema = json.load(open(sys.argv[1]))
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
folder = tempfile.TemporaryDirectory()


def time(value):
    return {"OTIO_SCHEMA": "RationalTime.1", "rate": 25, "value": value}


def film(effects=(), transition={}, **metadata):
    def clip(own):
        return {"OTIO_SCHEMA": "Clip.1", "source_range": {"start_time": time(0), "duration": time(250)}, "effects": own}
    dissolve = {"OTIO_SCHEMA": "Transition.1", "metadata": {"aveffect": transition}, "in_offset": time(5), "out_offset": time(5)}
    track = {"OTIO_SCHEMA": "Track.1", "kind": "Video", "children": [clip(list(effects)), dissolve, clip([])]}
    return {"OTIO_SCHEMA": "Timeline.1", "metadata": {"aveffect": metadata},
            "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [track]}}


def effect(name, **words):
    return {"OTIO_SCHEMA": "Effect.1", "effect_name": "aveffect." + name, "metadata": {"aveffect": words, "theirs": {"x": 1}}}


catalogue = json.loads(subprocess.check_output([sys.argv[2], "list", "--json"]))["effects"]
usual = [effect(one["shortName"], settings={p["name"]: p["default"] for p in one["properties"] if p["default"] not in (None, "")})
         for one in catalogue if one["kind"] not in ("transition", "stereo")]
presets = [effect(one["shortName"], preset=p["name"]) for one in catalogue for p in one["presets"] if one["kind"] not in ("transition", "stereo")]
assert len(usual) > 30 and len(presets) > 20
key = {"time": 1, "value": 0.5}
good = [
    film(usual + presets),
    film([{"OTIO_SCHEMA": "Effect.1", "effect_name": "Blur", "metadata": {"aveffect": 3}}]),
    film([effect("spherize", settings={"spherize_x": "30%", "spherize_y": "0=10;50%=20"}, mix="0=50;2=100",
                 area="ellipse,10,10,50,50", mask_feather=8, **{"from": "0:01", "to": time(200), "fade_in": "10f"}),
          effect("spherize", keyframes={"spherize_scale": [key, {"time": "50%", "value": 1, "easing": "ease-in-out"}], "mix": [key]})]),
    film(transition={"effect": "clock"}),
    film(output={"width": 64, "height": 48, "rate": "30000/1001", "limiter": False, "video_codec": "ffv1"}),
]
bad = [film([one]) for one in (
    effect("spherise"), effect("crossfade"), effect("spherize", preset="bulg"), effect("spherize", settings={"sperize_x": 1}),
    effect("spherize", settings={"spherize_x": -1}), effect("spherize", settings={"spherize_x": "wide"}),
    effect("spherize", settings={"spherize_x": [1]}), effect("reverse", settings={"mirror": "perhaps"}),
    effect("gray", mixx=1), effect("gray", mix=50), effect("gray", keyframes={"mix": []}), effect("gray", **{"from": "soon"}),
    effect("gray", keyframes={"mix": [{"time": 0, "value": 1, "easing": "bouncy"}]}), effect("gray", keyframes={"mix": [{"time": 0}]}),
    effect("volume", area="ellipse,1,1,1,1"))]
bad += [film(transition={"effect": "gray"}), film(output={"width": 64}), film(output={"width": 0, "height": 2}),
        film(output={"rate": 0}), film(output={"limiter": "yes"}), film(outputs={})]

failed = 0
for right, films in ((True, good), (False, bad)):
    for one in films:
        complaint = next((e.message for e in validator.iter_errors(one)), None)
        path = folder.name + "/film.otio"
        json.dump(one, open(path, "w"))
        ran = subprocess.run([sys.argv[2], "timeline", "check", path], capture_output=True, text=True)
        told = [line for line in ran.stderr.splitlines() if "warning:" not in line]
        if (complaint is None) != right or (ran.returncode != 2) != right:
            failed = 1
            print("should be", "right" if right else "wrong", json.dumps(one)[:2000], "\n schema:", complaint, "\n program:", ran.returncode, told[:5])
sys.exit(failed)
