"""Many logs against many tunings: one summary row for each pair."""

import concurrent.futures
import os

from . import _core
from ._errors import InputError


def _row(tuning_path, log_path, fps, noise):
    """The summary of one pair, flat; an unusable input yields its error."""
    row = {"tuning": str(tuning_path), "log": str(log_path), "error": None}
    try:
        found = _core.summary(
            _core.Tuning.load(tuning_path), _core.load_frames(log_path), fps=fps, noise=noise
        )
    except InputError as error:
        return {**row, "error": str(error)}
    row.update(_numbers(found))
    return row


def _numbers(values, prefix=""):
    """Every number of nested dicts by its dotted name; lists are left out."""
    flat = {}
    for key, value in values.items():
        if isinstance(value, dict):
            flat.update(_numbers(value, f"{prefix}{key}."))
        elif not isinstance(value, list):
            flat[prefix + key] = value
    return flat


def summarize(tunings, logs, client=None, *, fps=30.0, noise=5.0, workers=None):
    """Runs every log through every tuning.

    Parameters
    ----------
    tunings, logs : sequences of paths
    client : distributed.Client, optional
        A Dask cluster that carries the work; paths must mean the same to its workers. A worker
        that is lost has its pairs run again elsewhere. Without one, processes on this machine.
    fps, noise : float
        As for `imgtune.summary`.
    workers : int, optional
        Processes without a client; default: one a core.

    Returns
    -------
    pandas.DataFrame
        One row a pair, tuning by tuning: tuning, log, error (None where all went well), frames,
        and the numbers of the summary.
    """
    import pandas

    pairs = [(tuning, log) for tuning in tunings for log in logs]
    if client is not None:
        futures = [client.submit(_row, *pair, fps, noise, pure=False) for pair in pairs]
        rows = client.gather(futures)
    elif workers == 0:
        rows = [_row(*pair, fps, noise) for pair in pairs]
    else:
        workers = workers or os.cpu_count()
        with concurrent.futures.ProcessPoolExecutor(workers) as pool:
            chunk = max(1, len(pairs) // (4 * workers))
            rows = list(
                pool.map(
                    _row,
                    *zip(*pairs),
                    [fps] * len(pairs),
                    [noise] * len(pairs),
                    chunksize=chunk,
                )
            )
    return pandas.DataFrame(rows)
