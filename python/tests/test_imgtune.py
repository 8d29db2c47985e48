"""The module against the command line, and against what people hand it by mistake."""

import contextlib
import copy
import csv
import gc
import importlib.util
import json
import multiprocessing
import os
import pathlib
import pickle
import shutil
import signal
import subprocess
import sys
import threading
import time
import tracemalloc

import imgtune
import numpy as np
import pytest

EXAMPLES = pathlib.Path(os.environ["IMGTUNE_EXAMPLES"])
TOOL = os.environ["IMGTUNE_TOOL"]
SAMPLES = [
    (tuning.stem, log.stem)
    for tuning in sorted(EXAMPLES.glob("*.yaml"))
    for log in sorted(EXAMPLES.glob("*.csv"))
]
LEAK_CALLS = int(os.environ.get("IMGTUNE_LEAK_CALLS", "20000"))


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
    fields = [name for name in got.dtype.names if "." in name]
    assert bool(fields) == loaded.has_color
    for name in fields:
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
        "sweep", path, "--only", "ccm", "--fields", "c?",
        "--cct", "3000:4000:1000", "--lv", "10:60:50",
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


def test_the_input_is_not_copied(tuning, walk):
    frames = {name: np.broadcast_to(walk[name][0], 300_000) for name in walk.dtype.names}
    tracemalloc.start()
    result = imgtune.replay(tuning, frames, fields="Global.B")
    peak = tracemalloc.get_traced_memory()[1]
    tracemalloc.stop()
    assert peak < result.nbytes + 1_000_000  # one column of the input as int32 has 1,200,000


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
    for error in (raised.value, pickle.loads(pickle.dumps(raised.value))):
        assert (error.file, error.line, error.field) == (str(bad), 3, "awb_r")
        assert str(error).startswith(f"{bad}:3: column 'awb_r'")
    odd = tmp_path / "odd:7: column 'x'.csv"  # a name like a message
    with pytest.raises(imgtune.InputError) as raised:
        imgtune.load_frames(odd)
    assert (raised.value.file, raised.value.line, raised.value.field) == (str(odd), None, None)
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
    stored = gains.copy()
    for value, text in [
        (1.34, "float64 is no whole number"),
        (np.float32(2), "float32 is no whole number"),
        ("1", "no whole number"),
        (2**31, "2147483648 does not fit; allowed are -2147483648..2147483647"),
        (np.array([5, -(2**40), 7]), "-1099511627776 does not fit"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            gains[0] = value
        with pytest.raises((imgtune.InputError, ValueError)):
            gains[0].fill(value)
    with pytest.raises(TypeError):  # numpy's own
        gains *= 1.1
    assert (gains == stored).all()
    gains += 0
    assert type(gains * 1.5) is np.ndarray and (gains * 2 // 2 == gains).all()
    tuning["ccm.rows.normal.matrices.0"] = matrix - 1
    assert (tuning["ccm.rows.normal.matrices.0"] == matrix - 1).all()
    before = tuning.copy()
    for path, value, text in [
        ("color.images.normal.2.Luma.PY[3]", 256, "allowed are 0..255"),
        ("color.images.normal.2.Luma.PY", [1, 2], "16 values; 2 were given"),
        ("ccm.i4NumCt", 3, "did you mean 'ccm.i4NumCT'"),
        ("ccm.i4NumCT", 1.5, "whole numbers"),
        ("ccm", 1, "group of fields"),
        ("ccm", {"i4NumCT": 5, "i4NumLV": 2**40}, "i4NumLV is 1099511627776"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            tuning[path] = value
    assert tuning == before
    tuning["caller"] = {"int_bits": 4, "weights": [5, 6, 7]}
    changed = [{"field": "caller.int_bits", "a": 3, "b": 4}]
    changed += [{"field": f"caller.weights[{i}]", "a": [2, 1, 1][i], "b": 5 + i} for i in range(3)]
    assert before.compare(tuning) == changed
    tuning["caller"] = before["caller"]
    for form in ("yaml", "images"):
        tuning.save(tmp_path / form, form=form)
        with pytest.raises(imgtune.InputError, match="already exists.*overwrite=True") as raised:
            tuning.save(tmp_path / form, form=form)
        assert raised.value.file == str(tmp_path / form)
        tuning.save(tmp_path / form, form=form, overwrite=True)
        assert imgtune.Tuning.load(tmp_path / form)["ccm.rows.normal.gains.0"][0] == gains[0, 0]
    for twin in (pickle.loads(pickle.dumps(tuning)), copy.deepcopy(tuning)):
        assert twin == tuning and twin is not tuning
    del tuning
    gc.collect()
    gains[0, 0] += 1  # the view keeps its tuning


def test_calibrations_come_and_go_as_with_the_command_line(tmp_path):
    figures, base = EXAMPLES / "calibrations" / "imx477.json", tuning_path("imx708-blend")
    told = tool(
        "import", figures, "-o", tmp_path / "a.yaml", "--method", "polynomial", "--fit", "points", "--most", "5",
        "--flash-share", "0.25", "--color-from", base, "--json",
    )
    made, report = imgtune.Tuning.import_calibration(
        figures, method="polynomial", fit="points", most=5, flash_share=0.25, color_from=imgtune.Tuning.load(base)
    )
    assert report == json.loads(told)
    assert made.compare(imgtune.Tuning.load(tmp_path / "a.yaml")) == []
    count = made["ccm.i4NumCT"]
    gains, matrices = (made[f"ccm.rows.normal.{what}"][:count] for what in ("gains", "matrices"))
    fitted = imgtune.fit(gains, matrices.reshape(-1, 3, 3))
    for name, values in fitted.items():
        assert np.array_equal(made["ccm.rCCMPoly22"][name], values), name
    made["ccm.rCCMPoly22Flash"] = fitted
    assert made["ccm.rCCMPoly22Flash.i4R_AVG"] == made["ccm.rCCMPoly22.i4R_AVG"]
    fitted_made, fitted_report = imgtune.Tuning.import_calibration(
        EXAMPLES / "calibrations" / "imx219.yaml", page=tmp_path / "page.html"
    )
    chosen = next(one for one in fitted_report["candidates"] if one["chosen"])
    assert (chosen["fit"], fitted_made["ccm.i4NumCT"]) == ("blend", len(chosen["tuned_cts"]))
    assert (tmp_path / "page.html").read_text().startswith("<!doctype html>")
    left_behind = made.export_calibration(tmp_path / "b.json")
    assert {finding["severity"] for finding in left_behind} == {"warning"}
    again, _ = imgtune.Tuning.import_calibration(
        tmp_path / "b.json", cts=report["tuned_cts"], method="polynomial", fit="points"
    )
    assert (again["ccm.rows.normal.matrices"] == made["ccm.rows.normal.matrices"]).all()
    for arguments, text in [
        ({"most": 2}, "2 tuned CTs; allowed are 3..8"),
        ({"flash_ct": float("nan")}, "allowed are 1000..1000000 K"),
        ({"cts": [3000, float("nan"), 5000]}, "a CT of nan K"),
        ({"method": "spline"}, "allowed are 'blend' and 'polynomial'"),
        ({"method": "polynomial", "fit": "blend"}, "not fitted through the blend"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            imgtune.Tuning.import_calibration(figures, **arguments)
    for bad, text in [
        ((gains[:1], matrices[:1]), "two points or more"),
        ((gains[::-1], matrices), "red does not rise"),
        ((gains, matrices[:-1]), "4 matrices for 5 gains"),
        ((gains, matrices / 512), "whole numbers, not float64"),
        ((gains + [0, 0, 40000], matrices), "the value 4[0-9]{4}; allowed are 1..32767"),
        ((gains, matrices * 0 - 4096), "-4096; allowed are -4095..4096"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            imgtune.fit(*bad)


def test_photographs_become_a_tuning_as_with_the_command_line(tmp_path):
    folder = EXAMPLES / "captures"
    shots = sorted(folder.glob("*_*k.dng"))
    corners, flat, chart = (folder / name for name in ("corners.csv", "flat.dng", "reference.csv"))
    told = tool(
        "calibrate", *shots, "--corners", corners, "--flat", flat, "--reference", chart,
        "-o", tmp_path / "a.yaml", "--json",
    )
    made, report = imgtune.calibrate(shots, corners=corners, flats=flat, reference=chart, name="a")
    assert report["lights"] == json.loads(told)["lights"]
    assert made.compare(imgtune.Tuning.load(tmp_path / "a.yaml")) == []
    means = {
        light["kelvin"]: np.array([patch["mean"] for patch in light["patches"]])
        for light in report["lights"]
    }
    again, _ = imgtune.calibrate(means, reference=chart)
    assert (again["ccm.rows.normal.matrices"] == made["ccm.rows.normal.matrices"]).all()
    for arguments, text in [
        ({"captures": shots}, "no corners are given"),
        ({"captures": {5000: np.zeros((24, 3))}}, "fewer than three greys"),
        ({"captures": {5000: np.zeros((3, 24))}}, "no .24, 3. array"),
        ({"captures": means, "weights": {"teal": 1}}, "weights: a patch's name"),
        ({"captures": tmp_path / "none_5000k.dng", "corners": corners}, "no corners are given"),
    ]:
        with pytest.raises(imgtune.InputError, match=text):
            imgtune.calibrate(**arguments)


def test_patches_show_what_a_matrix_does():
    unity = 512 * np.eye(3, dtype=int)
    found = imgtune.patches(unity[[2, 1, 0]], unity)  # red and blue exchanged
    assert (found["seen"] == found["chart"][:, ::-1]).all() and found["name"][15] == "yellow"
    assert found["ciede2000"].max() == found["largest"] > 20 > found["ciede2000"][18]
    with pytest.raises(imgtune.InputError, match="reference has 2 matrices"):
        imgtune.patches(unity, [unity, unity])


def test_frames_and_registers_in_files(tuning, walk, tmp_path):
    columnar = ["npz"] + ["arrow", "parquet"] * (importlib.util.find_spec("pyarrow") is not None)
    for suffix in ["csv"] + columnar:
        path = tmp_path / f"walk.{suffix}"
        imgtune.save_frames(path, {name: walk[name] for name in walk.dtype.names})
        loaded = imgtune.load_frames(path)
        assert loaded.dtype == imgtune.FRAME_DTYPE and (loaded == walk).all()
    rows = tool("replay", tuning_path("imx477-polynomial"), tmp_path / "walk.csv", "--fields", "c0")
    registers = imgtune.replay(tuning, walk, fields="*")
    c0 = np.loadtxt(rows.splitlines()[1:], delimiter=",", dtype=int)[:, 1]
    assert c0.tolist() == registers["matrix"][:, 0, 0].tolist()
    for suffix in columnar:
        imgtune.save_registers(tmp_path / f"r.{suffix}", registers)
        loaded = imgtune.load_registers(tmp_path / f"r.{suffix}")
        assert loaded.dtype == registers.dtype and (loaded == registers).all()
    (tmp_path / "torn.npz").write_bytes((tmp_path / "r.npz").read_bytes()[:999])
    np.savez(tmp_path / "thin.npz", matrix=np.zeros((2, 9), "i4"))
    np.savez(tmp_path / "pickle.npz", lv=np.array([{}]))
    for call, file, text in [
        (imgtune.load_registers, "torn.npz", "not a zip"),
        (imgtune.load_registers, "thin.npz", r"\(2, 9\), needed is int32 \(2, 3, 3\)"),
        (imgtune.load_registers, "walk.npz", "no register is called 'lv'"),
        (imgtune.load_frames, "pickle.npz", "allow_pickle"),
        (imgtune.load_frames, "r.npz", "unknown column 'matrix'"),
        (imgtune.load_frames, "none.csv", "No such file"),
        (lambda path: imgtune.save_frames(path, walk), "none/walk.npz", "No such file"),
        (lambda path: imgtune.save_registers(path, registers), "r.csv", "known are .npz"),
    ]:
        with pytest.raises(imgtune.InputError, match=text) as raised:
            call(tmp_path / file)
        assert raised.value.file == str(tmp_path / file)
    assert not list(tmp_path.glob(".*")), "nothing half written stays"


def test_frames_of_a_phones_log(tmp_path):
    traced = subprocess.run(
        [TOOL, "replay", tuning_path("imx708-blend"), log_path("imx708-walk"), "--fields", "c0"]
        + ["--set", "debug.smooth_ccm.enable=1", "--set", "debug.smooth_color.dump=1"],
        check=True, capture_output=True, text=True,
    ).stderr
    log = tmp_path / "phone.log"
    log.write_text("05-01 10:00:00.000  7  8 I other: line\n" + traced)
    tool("frames", log, "-o", tmp_path / "frames.csv")
    expected = imgtune.load_frames(tmp_path / "frames.csv")
    frames, report = imgtune.frames_from_logcat(log, return_report=True)
    for name in imgtune.FRAME_DTYPE.names:
        assert (frames[name] == expected[name]).all(), name
    assert report["frames"] == len(frames) == 841 and report["other_cameras"] == []
    assert frames["x_line"][0] == 2
    loaded = imgtune.Tuning.load(tuning_path("imx708-blend"))
    assert len(imgtune.replay(loaded, frames, fields="matrix")) == 841
    with pytest.raises(imgtune.InputError, match="no frame of that camera") as raised:
        imgtune.frames_from_logcat(log, (7, 8))
    assert raised.value.file == str(log)


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
    assert lib.sign([0.0, 0.5]).tolist() == [-1, 1] and lib.sign_extension(0x1001, 19) == -4095
    assert lib.CLIP(5, 7, 3) == 3 and lib.CLIP_uint8(2, 3, 9) == 3
    table = np.zeros((9, 8, 8), int)
    table[1, 0, 0] = 100  # row 0, CT 0: what position -1 takes
    expected = [412, 100, 0, 0, 512, 0, 0, 0, 512]
    assert lib.blend_ccm([1, 1], table, -1, 0, 3).tolist() == expected
    ccm = np.zeros(1102)
    got = lib.interpolation([512] * 3, ccm, table, False, [1, 1], 2, 0, -1, 3)
    assert got.tolist() == expected
    projected, ratios, position = lib.gain_projection([1, 512, 1], ccm, 2, 3, 0)
    assert position == 13 and projected.tolist() == [0, 0, 0]  # above all gains, which are 0
    terms = np.zeros((6, 9))
    terms[0, 1], terms[1, 1] = 10, 2  # 10 + 2 nr, nr = (512 - 412) / 50
    matrix = lib.gen_ccm([512] * 3, [412, 512], [50, 1], terms)
    assert matrix.tolist() == [498, 14, 0, 0, 512, 0, 0, 0, 512]
    decoded = lib.seperate_rwb_ccm_by_ratio(np.full(6, 100 << 16 | 100), 0.0)
    spare = 100 << 16  # beside the third coefficient of a row; left alone
    assert decoded.tolist() == [512, spare, 512 << 16, spare, 0, spare | 512]


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

    light_columns = {name: one[name].tolist() for name in one.dtype.names}

    def pages_after(calls):
        for _ in range(calls // 8):
            imgtune.replay(tuning, one, imgtune.State(), "matrix")
            tuning["ccm.rows.normal.gains"] = tuning["ccm.rows.normal.gains"][::-1]
            imgtune.as_frames(light_columns)
            imgtune.library.matmul3(np.eye(3), np.eye(3))
            with contextlib.suppress(imgtune.InputError):
                imgtune.replay(tuning, one, only="both")
            tuning.copy().words("color")
        gc.collect()
        return int(pathlib.Path("/proc/self/statm").read_text().split()[1])

    settled = pages_after(LEAK_CALLS // 10)
    assert pages_after(LEAK_CALLS) - settled < 256  # 1 MiB


def die_once(path):
    """Loads frames; the first process to come to one of the logs is lost there."""
    try:
        if path.name == "7.csv":
            os.close(os.open(path.with_name("died"), os.O_CREAT | os.O_EXCL))
            os.kill(os.getpid(), signal.SIGKILL)
    except FileExistsError:
        pass
    return imgtune.load_frames(path)


def test_fleet_gives_the_serial_rows(tmp_path):
    pytest.importorskip("pandas")
    from imgtune import fleet

    logs = [tmp_path / f"{i}.csv" for i in range(20)]
    for log in logs:
        shutil.copy(log_path("imx477-flash-shot"), log)
    logs[3].write_text("lv\n")
    tunings = [tuning_path("imx477-polynomial"), tmp_path / "none.yaml", imgtune.Tuning.starter()]
    serial = fleet.summarize(tunings, logs, workers=0)
    failed = [i in (3, 20, 24) for i in range(41)]  # the tuning that is not there has one row
    assert (~serial["error"].isna()).tolist() == failed
    assert "none.yaml" in serial["error"][20] and "'cct'" in serial["error"][3]
    assert serial["frames"][0] == 186 and serial["tuning"][21] == "starter"
    told = imgtune.summary(imgtune.Tuning.load(tunings[0]), imgtune.load_frames(logs[0]))
    assert serial["flicker_spans"][0] == len(told["flicker"]["spans"]) > 0
    assert serial["settling.ccm.most_frames"][0] == told["settling"]["ccm"]["most_frames"]
    name, motion = max(told["fields"].items(), key=lambda item: item[1]["largest_step"])
    assert tuple(serial.loc[0, ["largest_step.field", "largest_step.size"]]) == (
        name,
        motion["largest_step"],
    )
    assert len(serial.columns) < 100, "no column a field"
    assert fleet.summarize(tunings, logs, workers=2, load=die_once).equals(serial)
    assert (tmp_path / "died").exists()


LIMITS = """format: imgtune-limits/1
limits: {visible_step: 3, settling_frames: 40, clipped_share: {no_worse_by: 0}, check_errors: 0}
overrides: [{logs: "*walk*", limits: {visible_step: 0.1}}]
"""


def test_verdicts_are_those_of_the_command_line(tmp_path):
    pytest.importorskip("pandas")
    from imgtune import fleet

    limits = tmp_path / "limits.yaml"
    limits.write_text(LIMITS)
    logs = [tmp_path / name for name in ("dusk.csv", "walk.csv", "short.csv")]
    for log in logs[:2]:
        shutil.copy(log_path(f"imx477-{log.stem}"), log)
    logs[2].write_text("lv\n")
    path = tuning_path("imx477-polynomial")
    command = [os.environ["IMGTUNE_TOOL"], "judge", str(path), *map(str, logs)]
    command += ["--limits", str(limits), "--against", str(path), "--json"]
    run = subprocess.run(command, capture_output=True, text=True)
    told = json.loads(run.stdout)
    assert run.returncode == 1 and not told["accepted"]
    rows = fleet.judge([path], logs, limits, against=path, workers=0)
    assert len(rows) == 4 and rows["log"][0] is None and rows["accepted"].tolist()[0]
    by_log = {verdict["log"]: verdict for verdict in told["logs"]}
    for _, row in rows.iloc[1:].iterrows():
        verdict = by_log[row["log"]]
        assert row["accepted"] == verdict["accepted"]
        assert (row["error"] is None) == (verdict["error"] is None)
        for limit in verdict["limits"]:
            assert row[f"{limit['limit']}.value"] == limit["value"]
            assert row[f"{limit['limit']}.broken"] == limit["broken"]
    assert not by_log[str(logs[1])]["accepted"], "its override is strict"
    parallel = fleet.judge([path], logs, limits, against=path, workers=2)
    assert parallel.equals(rows)
    with pytest.raises(imgtune.InputError, match="against"):
        imgtune.judge(imgtune.Tuning.load(path), imgtune.load_frames(logs[0]), limits)


def test_smooth_meets_its_wish_by_its_own_measure(tmp_path):
    tuning = imgtune.Tuning.load(tuning_path("imx477-polynomial"))
    walk = imgtune.load_frames(log_path("imx477-flash-shot"))
    found, told = imgtune.smooth(tuning, [walk], settle=60, step=5.0, at_rest=2.0)
    assert told["tried"] == 526 and told["met"]
    assert found["caller.weights"].tolist() == told["chosen"]["weights"]
    limits = tmp_path / "limits.yaml"
    limits.write_text("format: imgtune-limits/1\nlimits: {visible_step: 5, error_at_rest: 2}\n")
    found.has_color = False
    verdict = imgtune.judge(found, walk, limits)
    assert verdict["accepted"]
    assert verdict["limits"][0]["value"] == told["chosen"]["step"]
    assert imgtune.smooth(tuning, [walk], settle=60, step=5.0, at_rest=2.0, workers=1)[1] == told


def slow_from_the_second_on(path):
    if path.name != "0.csv":
        time.sleep(20)
    return imgtune.load_frames(path)


@pytest.mark.parametrize("workers", [0, 2])
def test_an_interrupted_fleet_gives_what_is_done(tmp_path, workers):
    pytest.importorskip("pandas")
    from imgtune import fleet

    logs = [tmp_path / f"{i}.csv" for i in range(6)]
    for log in logs:
        shutil.copy(log_path("imx477-flash-shot"), log)
    timer = threading.Timer(3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    rows = fleet.summarize(
        [imgtune.Tuning.starter()], logs, workers=workers, load=slow_from_the_second_on
    )
    ended = time.monotonic()
    timer.join()
    assert rows["frames"][0] == 186 and rows["error"].isna().tolist() == [True] + 5 * [False]
    assert set(rows["error"][1:]) == {"not run: stopped by Ctrl-C"}
    while multiprocessing.active_children() and time.monotonic() - ended < 5:
        time.sleep(0.05)
    assert not multiprocessing.active_children()


def test_registers_as_a_table(tuning, walk):
    pandas = pytest.importorskip("pandas")
    registers = imgtune.replay(tuning, walk, fields="*")
    table = imgtune.to_dataframe(registers)
    assert isinstance(table, pandas.DataFrame) and len(table) == len(walk)
    assert (table["c4"] == registers["matrix"][:, 1, 1]).all()
    assert (table["color116"] == registers["color"][:, 116]).all()
    assert (table["Luma.PY[3]"] == registers["Luma.PY"][:, 3]).all()


def test_plots_take_and_return_axes(tuning, walk):
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    from imgtune import plot

    axes = plot.gain_plane(tuning, walk)
    assert axes.get_xlabel() and len(axes.lines) >= 2
    axes = plot.coefficients(imgtune.replay(tuning, walk), fps=30)
    assert len(axes.lines) == 9 and axes.lines[0].get_xdata()[-1] == 28.0
    assert plot.sweep(tuning, cct=[3000, 4000], lv=[10, 60], axes=axes) is axes
    unity = 512 * np.eye(3, dtype=int)
    assert "mean 0.0, largest 0.0" in plot.patches(unity, unity).get_title()


def test_a_pipe_that_nobody_reads_is_an_error_and_ends_nothing():
    script = """
import os, sys, imgtune
read_end, write_end = os.pipe()
os.close(read_end)
os.dup2(write_end, 1)
try:
    imgtune.Tuning.load(sys.argv[1]).save("-")
except BrokenPipeError:
    print("raised", file=sys.stderr)
os._exit(7)
"""
    run = subprocess.run(
        [sys.executable, "-c", script, EXAMPLES / "imx708-blend.yaml"], capture_output=True, text=True
    )
    assert (run.returncode, run.stderr) == (7, "raised\n")


def test_arguments_that_are_no_light_and_no_rate_are_told():
    tuning = imgtune.Tuning.load(EXAMPLES / "imx708-blend.yaml")
    walk = imgtune.load_frames(EXAMPLES / "imx708-walk.csv")
    for name, value in [("fps", -1), ("fps", float("nan")), ("noise", -5), ("noise", 51)]:
        with pytest.raises(imgtune.InputError, match=f"^{name} is .*; allowed are"):
            imgtune.summary(tuning, walk, **{name: value})
    for name, value in [("cct", [-5]), ("cct", "3000"), ("lv", [0.5]), ("lv", np.zeros((2, 2)))]:
        with pytest.raises(imgtune.InputError, match=f"^{name}: a sequence of whole numbers") as told:
            imgtune.sweep(tuning, **{name: value})
        assert told.value.field == name
    assert imgtune.sweep(tuning, cct=[3000])["lv"][0] == 0
