"""An effect on what a camera sees, with OpenCV: camera.py [CLIP [OUTPUT]]

Without a clip the first camera is taken, without an output a window shows it; Esc ends.
"""
import sys

import cv2

import aveffect

source = cv2.VideoCapture(sys.argv[1] if len(sys.argv) > 1 else 0)
if not source.isOpened():
    sys.exit("there is no camera, and no clip that can be read")
rate = source.get(cv2.CAP_PROP_FPS) or 25
output = None
effect = aveffect.Chain(["portrait/vignette", aveffect.Effect("spherize/bulge", spherize_scale={0: 0, 2: 1})])

number = 0
while True:
    there, frame = source.read()  # (H, W, 3), B first
    if not there:
        break
    effect(frame, number / rate, inplace=True)
    number += 1
    if len(sys.argv) > 2:
        if output is None:
            output = cv2.VideoWriter(sys.argv[2], cv2.VideoWriter_fourcc(*"MJPG"), rate, frame.shape[1::-1])
        output.write(frame)
        continue
    cv2.imshow("AVEffect", frame)
    if cv2.waitKey(1) == 27:
        break
if output is not None:
    output.release()
print(f"{number} pictures")
