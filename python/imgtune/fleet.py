"""Many logs against many tunings: one summary row for each pair."""

import concurrent.futures
import os
from collections.abc import Callable, Sequence
from concurrent.futures.process import BrokenProcessPool
from typing import TYPE_CHECKING, Any, Optional, Union

import numpy as np

from . import _core
from ._errors import InputError
from ._files import load_frames

if TYPE_CHECKING:
    import pandas

Path = Union[str, "os.PathLike[str]"]
Row = dict[str, Any]

_CHUNKS_A_WORKER = 8
_LARGEST_CHUNK = 64
_ATTEMPTS = 3


def _flat(values: Row, prefix: str = "") -> Row:
    """The values of nested dicts by their dotted names."""
    flat: Row = {}
    for key, value in values.items():
        if isinstance(value, dict):
            flat.update(_flat(value, f"{prefix}{key}."))
        else:
            flat[prefix + key] = value
    return flat


def _rows(tuning: Union[Path, _core.Tuning], logs: Sequence[Path], load: Callable, options: Row):
    """The summaries of a chunk of logs, flat; an unusable input yields its error."""
    name = tuning.name if isinstance(tuning, _core.Tuning) else os.fspath(tuning)
    rows: list[Row] = []
    for log in logs:
        row: Row = {"tuning": name, "log": os.fspath(log), "error": None}
        try:
            if not isinstance(tuning, _core.Tuning):
                tuning = _core.Tuning.load(tuning)
            row.update(_flat(_core.summary_row(tuning, load(log), **options)))
        except InputError as error:
            row["error"] = str(error)
        rows.append(row)
    return rows


def _verdict_rows(
    tuning: Union[Path, _core.Tuning],
    logs: Sequence[Optional[Path]],
    load: Callable,
    options: Row,
) -> list[Row]:
    """The verdicts of a chunk of logs, flat; None stands for the tuning itself."""
    name = tuning.name if isinstance(tuning, _core.Tuning) else os.fspath(tuning)
    limits, against = options["limits"], options["against"]
    rows: list[Row] = []
    for log in logs:
        row: Row = {"tuning": name, "log": log and os.fspath(log), "accepted": False, "error": None}
        try:
            if not isinstance(tuning, _core.Tuning):
                tuning = _core.Tuning.load(tuning)
            if isinstance(against, (str, os.PathLike)):
                against = _core.Tuning.load(against)
            if log is None:
                verdict = _core.judge_tuning(tuning, limits, against=against)
            else:
                frames = load(log)
                verdict = _core.judge(tuning, frames, limits, log=row["log"], against=against)
            row.update(accepted=verdict["accepted"], frames=verdict.get("frames", 0))
            for limit in verdict["limits"]:
                for key in ("value", "allowed", "broken", "frame", "where"):
                    row[f"{limit['limit']}.{key}"] = limit[key]
        except InputError as error:
            row["error"] = str(error)
        rows.append(row)
    return rows


def _in_processes(
    work: Callable[..., list[Row]], tasks: Sequence[tuple], workers: int
) -> list[list[Row]]:
    """Runs the tasks; what a process that died had taken is run again."""
    done: dict[int, list[Row]] = {}
    for _ in range(_ATTEMPTS):
        with concurrent.futures.ProcessPoolExecutor(workers) as pool:
            try:
                left = [i for i in range(len(tasks)) if i not in done]
                running = {i: pool.submit(work, *tasks[i]) for i in left}
            except BrokenProcessPool:
                continue
            for i, future in running.items():
                if not isinstance(future.exception(), BrokenProcessPool):
                    done[i] = future.result()
        if len(done) == len(tasks):
            return [done[i] for i in range(len(tasks))]
    raise RuntimeError(f"worker processes died in each of {_ATTEMPTS} attempts")


def _spread(
    work: Callable[..., list[Row]],
    pairs: Sequence[tuple[Any, Sequence]],
    client: Any,
    workers: Optional[int],
    load: Callable,
    options: Row,
) -> "pandas.DataFrame":
    """A row for each log of each tuning, in their order, worked out in chunks."""
    import pandas

    if client is not None:
        count = sum(client.nthreads().values())
    else:
        count = workers or os.cpu_count() or 1
    size = sum(len(logs) for _, logs in pairs) // (_CHUNKS_A_WORKER * max(count, 1))
    size = min(max(size, 1), _LARGEST_CHUNK)
    tasks = [
        (tuning, list(logs[first : first + size]), load, options)
        for tuning, logs in pairs
        for first in range(0, len(logs), size)
    ]
    if client is not None:
        chunks = client.gather([client.submit(work, *task, pure=False) for task in tasks])
    elif workers == 0:
        chunks = [work(*task) for task in tasks]
    else:
        chunks = _in_processes(work, tasks, count)
    return pandas.DataFrame([row for chunk in chunks for row in chunk])


def summarize(
    tunings: Sequence[Union[Path, _core.Tuning]],
    logs: Sequence[Path],
    client: Any = None,
    *,
    fps: float = 30.0,
    noise: float = 5.0,
    flicker_mean: float = 0.5,
    flicker_patch: float = 1.0,
    settled: float = 1.0,
    patch: str = "light skin",
    workers: Optional[int] = None,
    load: Callable[[Path], np.ndarray] = load_frames,
) -> "pandas.DataFrame":
    """Runs every log through every tuning.

    Parameters
    ----------
    tunings : sequence of paths or Tunings
    logs : sequence of paths
    client : distributed.Client, optional
        A Dask cluster that carries the work; paths must mean the same to its workers. A worker
        that is lost has its pairs run again elsewhere. Without one, processes on this machine.
    fps, noise, flicker_mean, flicker_patch, settled, patch
        As for `imgtune.summary`.
    workers : int, optional
        Processes without a client; default: one a core, 0: none but this one.
    load : callable
        Makes frames of a path, such as `imgtune.frames_from_logcat`.

    Returns
    -------
    pandas.DataFrame
        One row a pair, tuning by tuning: tuning (path or name), log, error (None where all went
        well), frames, and the numbers of the summary by dotted names, such as
        visible.flicker.worst, visible.settling.median_frames, visible.overshoot.worst,
        clipped.frames.
    """
    pairs = [(tuning, logs) for tuning in tunings]
    options = {
        "fps": fps,
        "noise": noise,
        "flicker_mean": flicker_mean,
        "flicker_patch": flicker_patch,
        "settled": settled,
        "patch": patch,
    }
    return _spread(_rows, pairs, client, workers, load, options)


def judge(
    tunings: Sequence[Union[Path, _core.Tuning]],
    logs: Sequence[Path],
    limits: Path,
    client: Any = None,
    *,
    against: Union[Path, _core.Tuning, None] = None,
    workers: Optional[int] = None,
    load: Callable[[Path], np.ndarray] = load_frames,
) -> "pandas.DataFrame":
    """Holds every tuning against limits, over every log: the verdicts of `imgtune judge`.

    Parameters
    ----------
    tunings, logs, client, workers, load
        As for `summarize`.
    limits : path
        Limits as `imgtune judge --starter` writes them.
    against : path or Tuning, optional
        The old tuning, for limits with no_worse_by.

    Returns
    -------
    pandas.DataFrame
        For each tuning a row with log None, about the tuning itself, then one a log: tuning, log,
        accepted, error (None where it could be judged), frames, and for each limit value, allowed,
        broken, frame and where by dotted names, such as visible_step.value.
    """
    pairs = [(tuning, [None, *logs]) for tuning in tunings]
    options = {"limits": os.path.abspath(limits), "against": against}
    return _spread(_verdict_rows, pairs, client, workers, load, options)
