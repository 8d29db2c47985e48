"""A cluster of real worker processes, one of which is lost in the middle."""

import os
import pathlib
import shutil
import signal

import pytest

distributed = pytest.importorskip("distributed")
pytest.importorskip("pandas")


def test_a_lost_worker_loses_nothing(tmp_path):
    import imgtune
    from imgtune import fleet

    def die_once(path):
        """Loads frames; the first worker to come to one of the logs is lost there."""
        if path.name == "30.csv" and not path.with_name("died").exists():
            path.with_name("died").touch()
            os.kill(os.getpid(), signal.SIGKILL)
        return imgtune.load_frames(path)

    examples = pathlib.Path(os.environ["IMGTUNE_EXAMPLES"])
    logs = [tmp_path / f"{i}.csv" for i in range(60)]
    for log in logs:
        shutil.copy(examples / "imx477-flash-shot.csv", log)
    logs[9].write_text("lv\n")
    tunings = [examples / "imx477-polynomial.yaml"]
    serial = fleet.summarize(tunings, logs, workers=0)
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None
    ) as cluster, distributed.Client(cluster) as client:
        assert fleet.summarize(tunings, logs, client, load=die_once).equals(serial)
        (tmp_path / "died").unlink()
        limits = tmp_path / "limits.yaml"
        limits.write_text("format: imgtune-limits/1\nlimits: {visible_step: 3}\n")
        judged = fleet.judge(tunings, logs, limits, workers=0)
        assert fleet.judge(tunings, logs, limits, client, load=die_once).equals(judged)
    assert (tmp_path / "died").exists()
