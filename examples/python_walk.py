"""From published figures to a tuning, and what the library makes of a walk with it.

Usage: python3 examples/python_walk.py [PICTURE]
"""

# %% A tuning of a published calibration; colour tables come from a sample.
import pathlib
import sys

import imgtune
from imgtune import plot
from matplotlib import pyplot

here = pathlib.Path(__file__).parent
sample = imgtune.Tuning.load(here / "imx708-blend.yaml")
tuning, report = imgtune.Tuning.import_calibration(
    here / "calibrations" / "imx708.json", color_from=sample
)
print("tuned CTs:", report["tuned_cts"])
for finding in tuning.check():
    print(finding["severity"] + ":", finding["message"])

# %% A walk from sun to candle light, frame after frame.
walk = imgtune.load_frames(here / "imx708-walk.csv")
registers = imgtune.replay(tuning, walk, fields=["matrix", "Global.*"])
changes = imgtune.summary(tuning, walk)["changes_of_light"]
print(f"{len(walk)} frames, the light changed {changes} times")

# %% What it looks like.
figure, axes = pyplot.subplots(2, 2, figsize=(12, 8), layout="constrained")
plot.gain_plane(tuning, walk, axes[0, 0]).set_title("AWB gains: tuned, and of the walk")
plot.coefficients(registers, axes[0, 1], fps=30).set_title("matrix over the walk, 1.0 = unity")
plot.sweep(tuning, 0, axes[1, 0], lv=range(0, 121, 4)).set_title("c0 over light, before smoothing")
daylight = tuning["ccm.rows.normal.matrices.2"]
low_light = tuning["ccm.rows.low_light.matrices.2"]
chart = plot.patches(low_light, daylight, axes[1, 1])
chart.set_title("4640 K: low light inside, normal light around it\n" + chart.get_title())
figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "walk.png", dpi=80, format="png")
