"""The imgtune library and its workbench: arrays in, registers out.

Every register comes from the shipped library itself; nothing is computed here.

Examples
--------
>>> import imgtune
>>> t = imgtune.Tuning.starter()
>>> r = imgtune.replay(t, {"lv": [80], "cct": [4000], "awb_r": [800], "awb_g": [512],
...                        "awb_b": [1000]})
>>> r["matrix"].shape
(1, 3, 3)
"""

import numpy as _np

FRAME_DTYPE = _np.dtype(
    [("lv", "u4"), ("cct", "u4")]
    + [(name, "i4") for name in ("full_r", "full_g", "full_b", "awb_r", "awb_g", "awb_b")]
    + [(name, "i4") for name in ("flash", "scene", "profile", "capture")]
)
"""A frame: light value, colour temperature (kelvin), AWB gains (512 = 1.0), conditions."""

from . import library
from ._core import (
    State,
    Tuning,
    as_frames,
    calibrate,
    diff,
    explain,
    fit,
    frames_from_logcat,
    judge,
    judge_tuning,
    patches,
    register_fields,
    replay,
    smooth,
    steepest,
    summary,
    sweep,
)
from ._errors import InputError
from ._files import load_frames, load_registers, save_frames, save_registers, to_dataframe

__all__ = [
    "FRAME_DTYPE",
    "InputError",
    "State",
    "Tuning",
    "as_frames",
    "calibrate",
    "diff",
    "explain",
    "fit",
    "frames_from_logcat",
    "judge",
    "judge_tuning",
    "library",
    "load_frames",
    "load_registers",
    "patches",
    "register_fields",
    "replay",
    "save_frames",
    "save_registers",
    "smooth",
    "steepest",
    "summary",
    "sweep",
    "to_dataframe",
]
