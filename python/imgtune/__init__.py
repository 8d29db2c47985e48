"""The imgtune library and its workbench: arrays in, registers out.

All functions run the shipped library itself; nothing is computed here.
"""

import numpy as _np

FRAME_DTYPE = _np.dtype(
    [("lv", "u4"), ("cct", "u4")]
    + [(name, "i4") for name in ("full_r", "full_g", "full_b", "awb_r", "awb_g", "awb_b")]
    + [(name, "i4") for name in ("flash", "scene", "profile", "capture")]
)
"""A frame: light value, colour temperature (kelvin), AWB gains (512 = 1.0), conditions."""

from ._core import State, Tuning, library, load_frames, register_fields, replay
from ._errors import InputError

__all__ = [
    "FRAME_DTYPE",
    "InputError",
    "State",
    "Tuning",
    "library",
    "load_frames",
    "register_fields",
    "replay",
]
