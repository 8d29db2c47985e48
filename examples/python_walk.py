"""Replays a walk from sun to candle light and draws what the library makes of it.

Usage: python3 examples/python_walk.py [PICTURE]
"""

import pathlib
import sys

import imgtune
from imgtune import plot
from matplotlib import pyplot

here = pathlib.Path(__file__).parent
tuning = imgtune.Tuning.load(here / "imx708-blend.yaml")
walk = imgtune.load_frames(here / "imx708-walk.csv")
registers = imgtune.replay(tuning, walk, fields="matrix")

figure, (left, middle, right) = pyplot.subplots(1, 3, figsize=(15, 4.2), layout="constrained")
plot.gain_plane(tuning, walk, left).set_title("AWB gains: tuned, and of the walk")
plot.coefficients(registers, middle, fps=30).set_title("matrix over the walk")
plot.sweep(tuning, 0, right).set_title("c0 over light, before smoothing")
figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "walk.png", dpi=80)
