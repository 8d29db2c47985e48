"""The module against the command line, and against what people hand it by mistake."""

import copy
import csv
import gc
import json
import os
import pathlib
import pickle
import resource
import subprocess
import threading

import imgtune
import numpy as np
import pytest

EXAMPLES = pathlib.Path(os.environ["IMGTUNE_EXAMPLES"])
TOOL = os.environ["IMGTUNE_TOOL"]
SAMPLES = [
    ("imx477-polynomial", "imx477-walk"),
    ("imx477-polynomial", "imx477-flash-shot"),
    ("imx708-blend", "imx708-walk"),
    ("imx477-measured-blend", "imx477-dusk"),
    ("synthetic-stretched", "imx477-hunting-awb"),
]


def tuning_path(name):
    return EXAMPLES / f"{name}.yaml"


def log_path(name):
    return EXAMPLES / f"{name}.csv"


def tool(*arguments):
    return subprocess.run(
        [TOOL, *map(str, arguments)], check=True, capture_output=True, text=True
    ).stdout


@pytest.fixture
def tuning():
    return imgtune.Tuning.load(tuning_path("imx477-polynomial"))


@pytest.fixture
def walk():
    return imgtune.load_frames(log_path("imx477-walk"))


@pytest.mark.parametrize("tuning_name, log_name", SAMPLES)
def test_registers_equal_the_command_lines(tuning_name, log_name, tmp_path):
    rows = tmp_path / "rows.csv"
    tool("replay", tuning_path(tuning_name), log_path(log_name), "-o", rows)
    loaded = imgtune.Tuning.load(tuning_path(tuning_name))
    frames = imgtune.load_frames(log_path(log_name))
    got = imgtune.replay(loaded, frames, fields="*")
    with open(rows) as file:
        expected = list(csv.DictReader(file))
    assert len(got) == len(expected) == len(frames)
    for k in range(9):
        column = np.array([int(row[f"c{k}"]) for row in expected])
        assert (got["matrix"].reshape(-1, 9)[:, k] == column).all(), f"c{k}"
    words = np.array([[int(row[f"ccm{k}"], 16) for k in range(6)] for row in expected])
    assert (got["ccm"] == words).all()
    for name in got.dtype.names[3:]:
        shape = got[name].shape[1:]
        names = [f"{name}[{e}]" for e in range(shape[0])] if shape else [name]
        column = np.array([[int(row[n]) for n in names] for row in expected])
        assert (got[name].reshape(len(got), -1) == column).all(), name


def test_studies_equal_the_command_lines(tuning, walk):
    path, log = tuning_path("imx477-polynomial"), log_path("imx477-walk")
    expected = json.loads(tool("replay", path, log, "--summary", "--json"))
    assert imgtune.summary(tuning, walk) == expected
    light = {"lv": 35, "cct": 3600, "awb_r": 1200, "awb_g": 512, "awb_b": 1100}
    told = tool("explain", path, "--lv", 35, "--cct", 3600, "--gain", "1200,512,1100", "--json")
    assert imgtune.explain(tuning, light) == json.loads(told)
    swept = imgtune.sweep(tuning, cct=[3000, 4000], lv=[10, 60])
    rows = tool(
        "sweep", path, "--cct", "3000:4000:1000", "--lv", "10:60:50", "--only", "ccm", "--fields", "c?"
    )
    expected = np.loadtxt(rows.splitlines()[1:], delimiter=",", dtype=int)[:, 1:]
    assert (swept["matrix"].reshape(4, 9) == expected).all()
    changed = tuning.copy()
    changed["color.tuning.normal.hue_speed"] = 1
    found = imgtune.diff(tuning, changed, walk)
    assert [d["field"] for d in found["differences"]] == ["color.tuning.normal.hue_speed"]
    assert found["frames"]["frames"] == len(walk)


def test_pieces_with_state_equal_the_whole(tuning, walk):
    whole = imgtune.replay(tuning, walk)
    state = imgtune.State()
    pieces = [imgtune.replay(tuning, piece, state) for piece in np.array_split(walk, [1, 2, 500])]
    assert (np.concatenate(pieces) == whole).all()
    kept = state.copy()
    imgtune.replay(tuning, walk[:9], state)
    again = imgtune.replay(tuning, walk[:9], kept)
    assert (imgtune.replay(tuning, walk[:9], state) != again).any(), "a copy stands by itself"


def test_frames_of_any_layout(tuning, walk):
    expected = imgtune.replay(tuning, walk)
    columns = {name: walk[name].copy() for name in walk.dtype.names}
    wide = {name: values.astype("i8") for name, values in columns.items()}
    swapped = {name: values.astype(">i4") for name, values in columns.items()}
    strided = np.zeros(2 * len(walk), imgtune.FRAME_DTYPE)[::2]
    strided[:] = walk
    read_only = walk.copy()
    read_only.flags.writeable = False
    before = walk.copy()
    for frames in (columns, wide, swapped, strided, read_only, walk[::-1][::-1]):
        assert (imgtune.replay(tuning, frames) == expected).all()
    assert (walk == before).all()
    pandas = pytest.importorskip("pandas")
    frame = pandas.DataFrame(walk)
    frame["x_note"] = "skipped"
    assert (imgtune.replay(tuning, frame) == expected).all()
    assert len(imgtune.replay(tuning, walk[:0])) == 0


GOOD = {"lv": [1], "cct": [4000], "awb_r": [700], "awb_g": [512], "awb_b": [900]}
BAD_FRAMES = [
    ({**GOOD, "lv": [1.5]}, "lv", "dtype float64"),
    ({**GOOD, "lv": [[1]]}, "lv", "2 dimensions"),
    ({**GOOD, "lv": [1, 2]}, "cct", "1 values, the columns before it 2"),
    ({**GOOD, "lv": [2**32]}, "lv", "4294967296 is out of range"),
    ({**GOOD, "awb_r": np.array([2**64 - 1], "u8")}, "awb_r", "out of range"),
    ({**GOOD, "falsh": [1]}, "falsh", "did you mean 'flash'"),
    ({k: v for k, v in GOOD.items() if k != "cct"}, "cct", "missing"),
    ({k: v for k, v in GOOD.items() if k != "awb_b"}, "awb_r", "three columns"),
    ({"lv": [1], "cct": [2]}, "awb_r", "the gain is missing"),
    (np.zeros((2, 3)), "frames", "no named columns"),
    (7, "frames", "neither"),
]


@pytest.mark.parametrize("frames, field, text", BAD_FRAMES)
def test_bad_frames_name_the_column(tuning, frames, field, text):
    with pytest.raises(imgtune.InputError, match="(?s).*" + text) as raised:
        imgtune.replay(tuning, frames)
    assert raised.value.field == field


def test_other_bad_input(tuning, walk, tmp_path):
    with pytest.raises(imgtune.InputError, match="Global.Q"):
        imgtune.replay(tuning, walk, fields=["matrix", "Global.Q"])
    with pytest.raises(imgtune.InputError, match="'ccm' and 'color'"):
        imgtune.replay(tuning, walk, only="both")
    bad = tmp_path / "bad.csv"
    bad.write_text("lv,cct,awb_r,awb_g,awb_b\n1,2,3,4,5\n1,2,x,4,5\n")
    with pytest.raises(imgtune.InputError) as raised:
        imgtune.load_frames(bad)
    assert (raised.value.file, raised.value.line, raised.value.field) == (str(bad), 3, "awb_r")
    with pytest.raises(imgtune.InputError) as raised:
        imgtune.Tuning.from_yaml("format: imgtune-tuning/1\nccm: 3\n", "odd.yaml")
    assert raised.value.file == "odd.yaml" and raised.value.line and raised.value.findings
    with pytest.raises(imgtune.InputError, match="values, 117 are needed"):
        imgtune.library.inter_param_global({}, np.zeros(116), np.zeros(117), np.zeros(117))


def test_fields_by_path(tuning, tmp_path):
    gains = tuning["ccm.rows.normal.gains"]
    assert gains.shape == (8, 3) and gains.dtype == np.int32
    gains[0, 0] += 1  # a view
    assert tuning["ccm.rows.normal.gains.0"][0] == gains[0, 0]
    assert tuning.words("ccm")[425] == gains[0, 0]
    matrix = tuning["ccm.rows.normal.matrices.0"]
    with pytest.raises(ValueError):
        matrix[0] = 1  # a copy
    tuning["ccm.rows.normal.matrices.0"] = matrix - 1
    assert (tuning["ccm.rows.normal.matrices.0"] == matrix - 1).all()
    before = tuning.copy()
    for path, value, text in [
        ("color.images.normal.2.Luma.PY[3]", 256, "allowed are 0..255"),
        ("color.images.normal.2.Luma.PY", [1, 2], "16 values; 2 were given"),
        ("ccm.i4NumCt", 3, "did you mean 'ccm.i4NumCT'"),
        ("ccm.i4NumCT", 1.5, "whole numbers"),
        ("ccm", 1, "group of fields"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            tuning[path] = value
    assert tuning == before
    for form in ("yaml", "images"):
        tuning.save(tmp_path / form, form=form)
        assert imgtune.Tuning.load(tmp_path / form)["ccm.rows.normal.gains.0"][0] == gains[0, 0]
    for twin in (pickle.loads(pickle.dumps(tuning)), copy.deepcopy(tuning)):
        assert twin == tuning and twin is not tuning
    del tuning
    gc.collect()
    gains[0, 0] += 1  # the view keeps its tuning


def test_exported_functions():
    lib = imgtune.library
    assert lib.inter_param_by_ct([300, 220, 0], 200, 250, 10, 20).tolist() == [30, 14, 20]
    assert lib.iir(10, 20, 3) == 13 and lib.clip(2**32 - 10, 10, 20) == 20
    matrix = np.arange(9, dtype="f4").reshape(3, 3)
    assert (lib.matmul3(np.eye(3), matrix) == matrix).all()
    assert lib.sort3([1, 3, 2]).tolist() == [3, 2, 1]
    high, low = np.full(117, 300 << 16 | 100), np.full(117, 200 << 16 | 50)
    param = {"IsCapture": 1, "u4Ratio": 16, "u4RealCT": 250, "u4UpperCT": 150, "u4LowerCT": 350}
    image = lib.inter_param_global(param, high, low, np.zeros(117))
    assert image[4] == 250 << 16 | 75


def test_threads_do_not_disturb_each_other(tuning, walk):
    expected = imgtune.replay(tuning, walk)
    results = [None] * 4

    def run(i):
        results[i] = imgtune.replay(tuning, walk)

    threads = [threading.Thread(target=run, args=(i,)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all((result == expected).all() for result in results)


def test_calls_leave_no_memory_behind(tuning, walk):
    one = walk[:1]

    def peak_after(calls):
        for _ in range(calls):
            imgtune.replay(tuning, one, fields="matrix")
            tuning["ccm.rows.normal.gains"]
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    settled = peak_after(2000)
    assert peak_after(20000) - settled < 2048  # KiB


def test_fleet_gives_the_serial_rows(tmp_path):
    pytest.importorskip("pandas")
    from imgtune import fleet

    bad = tmp_path / "bad.csv"
    bad.write_text("lv\n")
    tunings = [tuning_path("imx477-polynomial"), tuning_path("imx708-blend")]
    logs = [log_path("imx477-flash-shot"), bad]
    serial = fleet.summarize(tunings, logs, workers=0)
    assert serial["error"].isna().tolist() == [True, False, True, False]
    assert serial["frames"].iloc[0] == 186
    assert fleet.summarize(tunings, logs, workers=2).equals(serial)


def test_plots_take_and_return_axes(tuning, walk):
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    from imgtune import plot

    axes = plot.gain_plane(tuning, walk)
    assert axes.get_xlabel() and len(axes.lines) >= 2
    axes = plot.coefficients(imgtune.replay(tuning, walk), fps=30)
    assert len(axes.lines) == 9 and axes.lines[0].get_xdata()[-1] == 28.0
    assert plot.sweep(tuning, cct=[3000, 4000], lv=[10, 60], axes=axes) is axes
