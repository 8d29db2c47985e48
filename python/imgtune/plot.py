"""Plots of tunings and registers. Each takes and returns matplotlib axes."""

from typing import Any, Optional

import numpy as np
import numpy.typing as npt

from . import _core

_ROWS = ("normal", "low_light", "flash")
_UNITY = 512
_CHART = (4, 6)  # rows and columns of patches
_PATCH = 12  # pixels of a patch; its inner two thirds show what the matrix makes of it


def _axes(axes: Any) -> Any:
    if axes is not None:
        return axes
    import matplotlib.pyplot as pyplot

    return pyplot.subplots()[1]


def gain_plane(tuning: _core.Tuning, frames: Any = None, axes: Any = None) -> Any:
    """Tuned gains of each LV row with their CTs, and the AWB gains of a log.

    Parameters
    ----------
    tuning : Tuning
    frames : as for `replay`, optional
    axes : matplotlib axes, optional

    Returns
    -------
    matplotlib axes
    """
    axes = _axes(axes)
    count = tuning["ccm.i4NumCT"]
    if frames is not None:
        log = _core.as_frames(frames)
        axes.plot(log["awb_r"], log["awb_b"], ".", color="0.75", markersize=3, label="log")
    rows: dict[bytes, list[str]] = {}  # by their gains: rows that share them are one line
    for row in _ROWS:
        gains = tuning[f"ccm.rows.{row}.gains"][:count]
        if gains.any():
            rows.setdefault(gains.tobytes(), []).append(row)
    for names in rows.values():
        gains = tuning[f"ccm.rows.{names[0]}.gains"][:count]
        label = ", ".join(names).replace("_", " ")
        axes.plot(gains[:, 0], gains[:, 2], "o-", markersize=4, label=f"tuned: {label}")
    for gain, kelvin in zip(tuning["ccm.rows.normal.gains"][:count], tuning.kelvin[0]):
        if kelvin:
            axes.annotate(f"{kelvin} K", (gain[0], gain[2]), (4, 4), textcoords="offset points")
    axes.margins(0.12)
    axes.set_xlabel("red gain (512 = 1.0)")
    axes.set_ylabel("blue gain (512 = 1.0)")
    axes.legend()
    return axes


def coefficients(registers: np.ndarray, axes: Any = None, fps: Optional[float] = None) -> Any:
    """The nine matrix coefficients over the frames of a replay, or over seconds with `fps`."""
    axes = _axes(axes)
    matrix = registers["matrix"].reshape(len(registers), 9) / _UNITY
    time = np.arange(len(registers)) / (fps or 1)
    for k in range(9):
        style = "-" if k % 4 == 0 else "--"  # the diagonal stands out
        axes.plot(time, matrix[:, k], style, color=f"C{k}", label=f"c{k}", linewidth=1)
    axes.set_xlabel("s" if fps else "frame")
    axes.set_ylabel("coefficient")
    axes.legend(loc="center left", bbox_to_anchor=(1, 0.5), frameon=False)
    return axes


def sweep(tuning: _core.Tuning, coefficient: int = 0, axes: Any = None, **grid: Any) -> Any:
    """One coefficient over colour temperature and light value, as `imgtune.sweep` gives it."""
    axes = _axes(axes)
    result = _core.sweep(tuning, **grid)
    values = result["matrix"].reshape(len(result["lv"]), len(result["cct"]), 9)[..., coefficient]
    mesh = axes.pcolormesh(result["cct"], result["lv"], values / _UNITY, shading="nearest")
    axes.figure.colorbar(mesh, ax=axes, label=f"c{coefficient}")
    axes.set_xlabel("colour temperature (K)")
    axes.set_ylabel("light value")
    return axes


def patches(matrix: npt.ArrayLike, reference: npt.ArrayLike, axes: Any = None) -> Any:
    """The chart's patches: around them their own colours, inside what a matrix makes of them.

    Parameters
    ----------
    matrix, reference : (3, 3) int
        As for `imgtune.patches`.
    axes : matplotlib axes, optional

    Returns
    -------
    matplotlib axes
    """
    axes = _axes(axes)
    found = _core.patches(matrix, reference)

    def picture(colors: np.ndarray) -> np.ndarray:
        grid = colors.reshape(*_CHART, 3)
        return grid.repeat(_PATCH, axis=0).repeat(_PATCH, axis=1)

    image = picture(found["chart"])
    row, column = (np.arange(size) % _PATCH for size in image.shape[:2])
    edge = _PATCH // 6
    inner = np.ix_(
        (row >= edge) & (row < _PATCH - edge), (column >= edge) & (column < _PATCH - edge)
    )
    image[inner] = picture(found["seen"])[inner]
    axes.imshow(image)
    axes.set_axis_off()
    axes.set_title(f"CIEDE2000: mean {found['mean']:.1f}, largest {found['largest']:.1f}")
    return axes
