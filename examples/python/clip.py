"""An effect on a clip's pictures, decoded and encoded by PyAV: clip.py CLIP OUTPUT

4:2:0 pictures are worked on as they are.
"""
import sys

import av

import aveffect

with av.open(sys.argv[1]) as clip, av.open(sys.argv[2], "w") as output:
    pictures = clip.streams.video[0]
    made = output.add_stream("mpeg4", rate=pictures.average_rate)
    made.width, made.height, made.pix_fmt = pictures.width, pictures.height, "yuv420p"
    seconds = clip.duration / av.time_base
    fade = aveffect.Chain(["aged-film", aveffect.Effect("fade-out-color", begin=seconds / 2)], duration=seconds)
    for frame in clip.decode(pictures):
        for packet in made.encode(fade(frame.reformat(format="yuv420p"))):
            output.mux(packet)
    for packet in made.encode():
        output.mux(packet)
