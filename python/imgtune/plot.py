"""Plots of tunings and registers. Each takes and returns matplotlib axes."""

import numpy as np

from . import _core

_ROWS = {"normal": "C0", "low_light": "C1", "flash": "C2"}


def _axes(axes):
    if axes is not None:
        return axes
    import matplotlib.pyplot as pyplot

    return pyplot.subplots()[1]


def gain_plane(tuning, frames=None, axes=None):
    """Tuned gains of each LV row, with the gains of a log.

    Parameters
    ----------
    tuning : Tuning
    frames : as for `replay`, with awb_r and awb_b, optional
    axes : matplotlib axes, optional

    Returns
    -------
    matplotlib axes
    """
    axes = _axes(axes)
    count = tuning["ccm.i4NumCT"]
    if frames is not None:
        axes.plot(frames["awb_r"], frames["awb_b"], ".", color="0.75", label="log")
    for row, color in _ROWS.items():
        gains = tuning[f"ccm.rows.{row}.gains"][:count]
        if gains.any():
            axes.plot(gains[:, 0], gains[:, 2], "o-", color=color, label=row.replace("_", " "))
    axes.set_xlabel("red gain (512 = 1.0)")
    axes.set_ylabel("blue gain (512 = 1.0)")
    axes.legend()
    return axes


def coefficients(registers, axes=None, fps=None):
    """The nine matrix coefficients over the frames of a replay, or over seconds with `fps`."""
    axes = _axes(axes)
    matrix = registers["matrix"].reshape(len(registers), 9) / 512
    time = np.arange(len(registers)) / (fps or 1)
    for k in range(9):
        axes.plot(time, matrix[:, k], label=f"c{k}", linewidth=1)
    axes.set_xlabel("s" if fps else "frame")
    axes.set_ylabel("coefficient (1.0 = unity)")
    axes.legend(ncol=3)
    return axes


def sweep(tuning, coefficient=0, axes=None, **grid):
    """One coefficient over colour temperature and light value, as `imgtune.sweep` gives it."""
    axes = _axes(axes)
    result = _core.sweep(tuning, **grid)
    values = result["matrix"].reshape(len(result["lv"]), len(result["cct"]), 9)[..., coefficient]
    mesh = axes.pcolormesh(result["cct"], result["lv"], values / 512, shading="nearest")
    axes.figure.colorbar(mesh, ax=axes, label=f"c{coefficient} (1.0 = unity)")
    axes.set_xlabel("colour temperature (K)")
    axes.set_ylabel("light value")
    return axes
