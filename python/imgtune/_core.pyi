from os import PathLike
from typing import Any, Literal, Mapping, Optional, Sequence, Union, overload

import numpy as np
import numpy.typing as npt

from . import library as library

_Frames = Union[np.ndarray, Mapping[str, npt.ArrayLike], Any]
_Path = Union[str, "PathLike[str]"]
_Finding = dict[str, Any]

class Tuning:
    name: str
    has_ccm: bool
    has_color: bool
    __hash__: None  # type: ignore[assignment]
    def __init__(self) -> None: ...
    @staticmethod
    def load(path: _Path) -> Tuning: ...
    @staticmethod
    def from_yaml(text: str, name: str = ...) -> Tuning: ...
    @staticmethod
    def starter() -> Tuning: ...
    @staticmethod
    def import_calibration(
        path: _Path,
        *,
        name: str = ...,
        method: Optional[Literal["blend", "polynomial"]] = ...,
        fit: Optional[Literal["points", "blend"]] = ...,
        cts: Sequence[float] = ...,
        most: int = ...,
        low_light_saturation: float = ...,
        flash_ct: float = ...,
        flash_share: float = ...,
        rows: Literal["divide", "diagonal"] = ...,
        extrapolate: bool = ...,
        stretch: float = ...,
        color_from: Optional[Tuning] = ...,
        page: Optional[_Path] = ...,
    ) -> tuple[Tuning, dict[str, Any]]: ...
    @staticmethod
    def paths() -> list[str]: ...
    def save(
        self,
        path: _Path,
        *,
        form: Literal["yaml", "images"] = ...,
        comments: bool = ...,
        overwrite: bool = ...,
    ) -> None: ...
    def export_calibration(
        self, path: _Path, *, form: Literal["json", "yaml"] = ..., cts: Sequence[float] = ...
    ) -> list[_Finding]: ...
    def to_yaml(self, *, comments: bool = ...) -> str: ...
    def check(self) -> list[_Finding]: ...
    def compare(self, other: Tuning) -> list[dict[str, Any]]: ...
    def copy(self) -> Tuning: ...
    def words(self, part: Literal["ccm", "color", "pca"]) -> npt.NDArray[np.uint32]: ...
    @property
    def kelvin(self) -> npt.NDArray[np.uint32]: ...
    def __getitem__(self, path: str) -> Any: ...
    def __setitem__(self, path: str, value: Union[npt.ArrayLike, Mapping[str, Any]]) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> Tuning: ...
    def __deepcopy__(self, memo: dict[Any, Any]) -> Tuning: ...
    def _ipython_key_completions_(self) -> list[str]: ...

class State:
    def __init__(self) -> None: ...
    def copy(self) -> State: ...

def replay(
    tuning: Tuning,
    frames: _Frames,
    state: Optional[State] = ...,
    fields: Union[None, str, Sequence[str]] = ...,
    *,
    only: Optional[Literal["ccm", "color"]] = ...,
) -> np.ndarray: ...
def register_fields() -> list[str]: ...
def register_dtype(fields: Union[None, str, Sequence[str]] = ...) -> np.dtype[Any]: ...
def read_csv(path: _Path) -> np.ndarray: ...
def as_frames(frames: _Frames) -> np.ndarray: ...
@overload
def frames_from_logcat(
    path: _Path,
    camera: Union[None, int, tuple[int, int]] = ...,
    *,
    return_report: Literal[False] = ...,
) -> np.ndarray: ...
@overload
def frames_from_logcat(
    path: _Path, camera: Union[None, int, tuple[int, int]] = ..., *, return_report: Literal[True]
) -> tuple[np.ndarray, dict[str, Any]]: ...
def explain(
    tuning: Tuning, frame: Mapping[str, int], *, after: Optional[Mapping[str, int]] = ...
) -> dict[str, Any]: ...
def summary(
    tuning: Tuning,
    frames: _Frames,
    *,
    fps: float = ...,
    noise: float = ...,
    flicker_mean: float = ...,
    flicker_patch: float = ...,
    settled: float = ...,
    patch: str = ...,
) -> dict[str, Any]: ...
def summary_row(
    tuning: Tuning,
    frames: _Frames,
    *,
    fps: float = ...,
    noise: float = ...,
    flicker_mean: float = ...,
    flicker_patch: float = ...,
    settled: float = ...,
    patch: str = ...,
) -> dict[str, Any]: ...
def calibrate(
    captures: Union[_Path, Sequence[_Path], Mapping[float, npt.ArrayLike]],
    *,
    corners: Optional[_Path] = ...,
    flats: Union[_Path, Sequence[_Path], None] = ...,
    dark: Optional[_Path] = ...,
    kelvin: Sequence[float] = ...,
    reference: Optional[_Path] = ...,
    edition: Literal["before-2014", "after-2014"] = ...,
    weights: Optional[Mapping[Union[str, int], float]] = ...,
    black: Optional[float] = ...,
    white: Optional[float] = ...,
    order: Literal["", "RGGB", "BGGR", "GRBG", "GBRG"] = ...,
    name: str = ...,
    method: Optional[Literal["blend", "polynomial"]] = ...,
    fit: Optional[Literal["points", "blend"]] = ...,
    cts: Sequence[float] = ...,
    color_from: Optional[Tuning] = ...,
    page: Optional[_Path] = ...,
) -> tuple[Tuning, dict[str, Any]]: ...
def judge(
    tuning: Tuning, frames: _Frames, limits: _Path, *, log: str = ..., against: Optional[Tuning] = ...
) -> dict[str, Any]: ...
def judge_tuning(
    tuning: Tuning, limits: _Path, *, against: Optional[Tuning] = ...
) -> dict[str, Any]: ...
def smooth(
    tuning: Tuning,
    logs: list[_Frames],
    *,
    settle: float = ...,
    step: float = ...,
    at_rest: float = ...,
    fps: float = ...,
    noise: float = ...,
    workers: int = ...,
) -> tuple[Tuning, dict[str, Any]]: ...
def diff(a: Tuning, b: Tuning, frames: Optional[_Frames] = ...) -> dict[str, Any]: ...
def steepest(tuning: Tuning) -> dict[str, Any]: ...
def sweep(
    tuning: Tuning,
    *,
    cct: Optional[Sequence[int]] = ...,
    lv: Sequence[int] = ...,
    flash: int = ...,
    scene: int = ...,
) -> dict[str, np.ndarray]: ...
def fit(gains: npt.ArrayLike, matrices: npt.ArrayLike) -> dict[str, Any]: ...
def patches(matrix: npt.ArrayLike, reference: npt.ArrayLike) -> dict[str, Any]: ...
