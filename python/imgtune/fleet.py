"""Many logs against many tunings: one summary row for each pair."""

import concurrent.futures
import functools
import multiprocessing
import os
import signal
import sys
from collections.abc import Callable, Iterable, Iterator, Sequence
from concurrent.futures.process import BrokenProcessPool
from typing import TYPE_CHECKING, Any, NamedTuple, Optional, Union

import numpy as np

from . import _core
from ._errors import InputError
from ._files import load_frames

if TYPE_CHECKING:
    import pandas

Path = Union[str, "os.PathLike[str]"]
Row = dict[str, Any]
# What a study says of a log; of the tuning itself where the log is None.
Study = Callable[[_core.Tuning, Optional[Path], Callable, Row], Row]

_CHUNKS_A_WORKER = 8
_LARGEST_CHUNK = 16
_ATTEMPTS = 3
_STOPPED = "not run: stopped by Ctrl-C"


def _flat(values: Row, prefix: str = "") -> Row:
    """The values of nested dicts by their dotted names."""
    flat: Row = {}
    for key, value in values.items():
        if isinstance(value, dict):
            flat.update(_flat(value, f"{prefix}{key}."))
        else:
            flat[prefix + key] = value
    return flat


class _Chunk(NamedTuple):
    """A tuning and some of the logs that run through it."""

    name: str  # of the tuning, as its rows show it
    yaml: str
    logs: Sequence[Optional[Path]]
    without_result: Row  # what a row says besides its error

    def row(self, log: Optional[Path], error: Optional[str] = None) -> Row:
        name = None if log is None else os.fspath(log)
        return {"tuning": self.name, "log": name, "error": error, **self.without_result}


@functools.lru_cache(maxsize=8)
def _read(yaml: str, name: str) -> _core.Tuning:
    """Each process reads a tuning once, not once a chunk."""
    return _core.Tuning.from_yaml(yaml, name)


def _rows(study: Study, chunk: _Chunk, load: Callable, options: Row) -> list[Row]:
    """The rows of a chunk of logs, flat; an unusable log yields its error."""
    rows: list[Row] = []
    for log in chunk.logs:
        row = chunk.row(log)
        try:
            row.update(study(_read(chunk.yaml, chunk.name), log, load, options))
        except InputError as error:
            row["error"] = str(error)
        rows.append(row)
    return rows


class _Progress:
    """Pairs done so far, as a bar of tqdm where that is installed and somebody looks."""

    def __init__(self, total: int, shown: bool) -> None:
        self._bar = None
        if shown:
            try:
                from tqdm.auto import tqdm
            except ImportError:
                return
            self._bar = tqdm(total=total, unit="log")

    def add(self, count: int) -> None:
        if self._bar is not None:
            self._bar.update(count)

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()


def _leave_interrupts_to_the_parent() -> None:
    signal.signal(signal.SIGINT, signal.SIG_IGN)


def _in_processes(tasks: Sequence[tuple], workers: int) -> Iterator[tuple[int, list[Row]]]:
    """Runs the tasks; what a process that died had taken is run again.

    Each process has one task, none waits in a pipe: one that nobody reads would hold up the end.
    """
    left = set(range(len(tasks)))
    for _ in range(_ATTEMPTS):
        pool = concurrent.futures.ProcessPoolExecutor(
            workers, initializer=_leave_interrupts_to_the_parent
        )
        before = set(multiprocessing.active_children())
        try:
            waiting = sorted(left, reverse=True)
            running: dict[concurrent.futures.Future, int] = {}
            while waiting or running:
                while waiting and len(running) < workers:
                    try:
                        running[pool.submit(_rows, *tasks[waiting[-1]])] = waiting[-1]
                    except BrokenProcessPool:
                        waiting.clear()
                        break
                    waiting.pop()
                done, _ = concurrent.futures.wait(
                    running, return_when=concurrent.futures.FIRST_COMPLETED
                )
                for future in done:
                    i = running.pop(future)
                    if not isinstance(future.exception(), BrokenProcessPool):
                        left.discard(i)
                        yield i, future.result()
        except BaseException:  # an interrupt, or nobody wants more: what runs is not waited for
            pool.shutdown(wait=False, cancel_futures=True)
            for process in set(multiprocessing.active_children()) - before:
                process.terminate()
            raise
        finally:
            pool.shutdown(wait=not left)
        if not left:
            return
    raise RuntimeError(f"worker processes died in each of {_ATTEMPTS} attempts")


def _on_cluster(client: Any, tasks: Sequence[tuple], shown: bool) -> Iterator[tuple[int, list[Row]]]:
    import distributed

    futures = [client.submit(_rows, *task, pure=False) for task in tasks]
    try:
        if shown:
            distributed.progress(futures)
        distributed.wait(futures)
        yield from enumerate(client.gather(futures))
    except KeyboardInterrupt:
        done = [i for i, future in enumerate(futures) if future.status == "finished"]
        client.cancel([future for future in futures if future.status != "finished"])
        yield from zip(done, client.gather([futures[i] for i in done]))
        raise


def _in_this_process(tasks: Sequence[tuple]) -> Iterator[tuple[int, list[Row]]]:
    for i, task in enumerate(tasks):
        yield i, _rows(*task)


def _tunings(tunings: Sequence[Union[Path, _core.Tuning]]) -> Iterable[tuple[str, str, str]]:
    """Name, YAML form and error of each, read once."""
    for tuning in tunings:
        if isinstance(tuning, _core.Tuning):
            yield tuning.name, tuning.to_yaml(), ""
            continue
        name = os.fspath(tuning)
        try:
            yield name, _core.Tuning.load(tuning).to_yaml(), ""
        except InputError as error:
            yield name, "", str(error)


def _run(
    study: Study,
    options: Row,
    tunings: Sequence[Union[Path, _core.Tuning]],
    logs: Sequence[Optional[Path]],
    client: Any,
    workers: Optional[int],
    load: Callable,
    progress: Optional[bool],
    without_result: Optional[Row] = None,
) -> "pandas.DataFrame":
    """One row a pair, whatever the study says of it; those of a chunk once it is done."""
    import pandas

    if progress is None:
        progress = sys.stderr.isatty() or "ipykernel" in sys.modules
    count = sum(client.nthreads().values()) if client is not None else workers or os.cpu_count() or 1
    pairs = len(tunings) * len(logs)
    size = min(max(pairs // (_CHUNKS_A_WORKER * max(count, 1)), 1), _LARGEST_CHUNK)
    blank = without_result or {}
    chunks: list[_Chunk] = []
    results: dict[int, list[Row]] = {}
    for name, yaml, error in _tunings(tunings):
        if error:
            chunks.append(_Chunk(name, "", [], blank))
            results[len(chunks) - 1] = [chunks[-1].row(None, error)]
            continue
        for first in range(0, len(logs), size):
            chunks.append(_Chunk(name, yaml, list(logs[first : first + size]), blank))
    numbers = [i for i in range(len(chunks)) if i not in results]
    tasks = [(study, chunks[i], load, options) for i in numbers]
    bar = _Progress(sum(len(chunks[i].logs) for i in numbers), progress and client is None)
    if client is not None:
        done = _on_cluster(client, tasks, progress)
    elif workers == 0:
        done = _in_this_process(tasks)
    else:
        done = _in_processes(tasks, count)
    try:
        for task, rows in done:
            results[numbers[task]] = rows
            bar.add(len(rows))
    except KeyboardInterrupt:
        done.close()
        for i in numbers:
            if i not in results:
                results[i] = [chunks[i].row(log, _STOPPED) for log in chunks[i].logs]
    finally:
        bar.close()
    return pandas.DataFrame([row for i in range(len(chunks)) for row in results[i]])


def _summary(
    tuning: _core.Tuning, log: Optional[Path], load: Callable, options: Row
) -> Row:
    return _flat(_core.summary_row(tuning, load(log), **options))


def _verdict(tuning: _core.Tuning, log: Optional[Path], load: Callable, options: Row) -> Row:
    limits, old = options["limits"], options["against"]
    against = None if old is None else _read(*old)
    if log is None:
        verdict = _core.judge_tuning(tuning, limits, against=against)
    else:
        verdict = _core.judge(tuning, load(log), limits, log=os.fspath(log), against=against)
    row: Row = {"accepted": verdict["accepted"], "frames": verdict.get("frames", 0)}
    for limit in verdict["limits"]:
        for key in ("value", "allowed", "broken", "frame", "where"):
            row[f"{limit['limit']}.{key}"] = limit[key]
    return row


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
    progress: Optional[bool] = None,
) -> "pandas.DataFrame":
    """Runs every log through every tuning.

    Ctrl-C ends it within a second; pairs that were not run say so in their error.

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
    progress : bool, optional
        Show how far it is: a bar of tqdm where that is installed, Dask's own with a client.
        Default: where standard error is a terminal, and in notebooks.

    Returns
    -------
    pandas.DataFrame
        One row a pair, tuning by tuning: tuning (path or name), log, error (None where all went
        well), frames, and the numbers of the summary by dotted names, such as
        visible.flicker.worst, visible.settling.median_frames, visible.overshoot.worst,
        clipped.frames. A tuning that cannot be read has one row, with its error and no log.
    """
    options = {
        "fps": fps,
        "noise": noise,
        "flicker_mean": flicker_mean,
        "flicker_patch": flicker_patch,
        "settled": settled,
        "patch": patch,
    }
    return _run(_summary, options, tunings, logs, client, workers, load, progress)


def judge(
    tunings: Sequence[Union[Path, _core.Tuning]],
    logs: Sequence[Path],
    limits: Path,
    client: Any = None,
    *,
    against: Union[Path, _core.Tuning, None] = None,
    workers: Optional[int] = None,
    load: Callable[[Path], np.ndarray] = load_frames,
    progress: Optional[bool] = None,
) -> "pandas.DataFrame":
    """Holds every tuning against limits, over every log: the verdicts of `imgtune judge`.

    Ctrl-C ends it within a second; logs that were not judged say so in their error.

    Parameters
    ----------
    tunings, logs, client, workers, load, progress
        As for `summarize`.
    limits : path
        Limits as `imgtune judge --starter` writes them.
    against : path or Tuning, optional
        The old tuning, for limits with no_worse_by.

    Returns
    -------
    pandas.DataFrame
        For each tuning a row with log None, about the tuning itself, then one a log: tuning, log,
        error (None where it could be judged), accepted, frames, and for each limit value, allowed,
        broken, frame and where by dotted names, such as visible_step.value.
    """
    old = None
    if against is not None:
        tuning = against if isinstance(against, _core.Tuning) else _core.Tuning.load(against)
        old = (tuning.to_yaml(), tuning.name)
    options = {"limits": os.path.abspath(limits), "against": old}
    all_logs = [None, *logs]
    return _run(
        _verdict, options, tunings, all_logs, client, workers, load, progress, {"accepted": False}
    )
