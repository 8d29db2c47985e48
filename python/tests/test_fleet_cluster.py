"""A cluster of real worker processes, one of which is lost in the middle."""

import os
import pathlib
import shutil
import signal

import pytest

distributed = pytest.importorskip("distributed")
pytest.importorskip("pandas")


def test_a_lost_worker_loses_nothing(tmp_path):
    from imgtune import fleet

    examples = pathlib.Path(os.environ["IMGTUNE_EXAMPLES"])
    logs = []
    for i in range(60):
        logs.append(tmp_path / f"{i}.csv")
        shutil.copy(examples / "imx477-flash-shot.csv", logs[-1])
    tunings = [examples / "imx477-polynomial.yaml"]
    serial = fleet.summarize(tunings, logs, workers=0)
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None
    ) as cluster, distributed.Client(cluster) as client:
        victim = next(iter(client.run(os.getpid).values()))
        client.loop.call_later(0.3, os.kill, victim, signal.SIGKILL)
        assert fleet.summarize(tunings, logs, client).equals(serial)
