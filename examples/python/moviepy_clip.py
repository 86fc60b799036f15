"""An effect on a clip of MoviePy's: moviepy_clip.py CLIP OUTPUT

MoviePy 1 and 2, which Debian 12 doesn't have.
"""
import sys

try:
    from moviepy import VideoFileClip
except ImportError:
    from moviepy.editor import VideoFileClip

import aveffect

clip = VideoFileClip(sys.argv[1])
look = aveffect.Chain(["aged-film", "fade-out-color"], duration=clip.duration)


def seen(pictures, time):
    return look(pictures(time), time, order="RGB")


made = clip.transform(seen) if hasattr(clip, "transform") else clip.fl(seen)
made.write_videofile(sys.argv[2], logger=None)
