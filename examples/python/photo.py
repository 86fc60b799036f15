"""An effect on a photo, with Pillow: photo.py PHOTO OUTPUT [EFFECT...]"""
import sys

from PIL import Image

import aveffect

photo, output, *effects = sys.argv[1:]
aveffect.Chain(effects or ["oil-painting"])(Image.open(photo)).save(output)
