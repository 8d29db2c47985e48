"""Frame logs and registers in files: CSV for the command line, columns for everything else."""

import contextlib
import os
import pathlib
import zipfile
from collections.abc import Callable, Iterator, Mapping
from typing import Any

import numpy as np

from . import _core
from ._errors import InputError

Columns = Mapping[str, np.ndarray]


@contextlib.contextmanager
def _about(path: pathlib.Path) -> Iterator[None]:
    """Makes whatever is wrong with a file an InputError that names it."""
    try:
        yield
    except (OSError, ValueError, EOFError, zipfile.BadZipFile) as error:
        what, field = getattr(error, "strerror", None) or error, getattr(error, "field", None)
        raise InputError(f"{path}: {what}", file=str(path), field=field) from error


def _read_npz(path: pathlib.Path) -> Columns:
    with np.load(path, allow_pickle=False) as members:
        if not isinstance(members, np.lib.npyio.NpzFile):
            raise ValueError("holds one array; an .npz file with one array a column is needed")
        return {name: members[name] for name in members.files}


def _write_npz(path: pathlib.Path, columns: Columns) -> None:
    with open(path, "wb") as file:
        np.savez(file, **columns)


def _table(columns: Columns) -> Any:
    """Arrays of more than one dimension become lists of a fixed size that know their shape."""
    import pyarrow

    fields, arrays = [], []
    for name, values in columns.items():
        flat = pyarrow.array(np.ascontiguousarray(values).reshape(-1))
        shape = values.shape[1:]
        if shape:
            flat = pyarrow.FixedSizeListArray.from_arrays(flat, int(np.prod(shape)))
        text = ",".join(map(str, shape))
        fields.append(pyarrow.field(name, flat.type, metadata={"shape": text}))
        arrays.append(flat)
    return pyarrow.table(arrays, schema=pyarrow.schema(fields))


def _columns(table: Any) -> Columns:
    columns: dict[str, np.ndarray] = {}
    for field, column in zip(table.schema, table.columns):
        values = column.combine_chunks()
        if field.type.num_fields:
            values = values.flatten()
        shape = (field.metadata or {}).get(b"shape", b"").decode()
        columns[field.name] = values.to_numpy(zero_copy_only=False).reshape(
            table.num_rows, *map(int, shape.split(",") if shape else ())
        )
    return columns


def _read_arrow(path: pathlib.Path) -> Columns:
    from pyarrow import feather

    return _columns(feather.read_table(str(path)))


def _write_arrow(path: pathlib.Path, columns: Columns) -> None:
    from pyarrow import feather

    feather.write_feather(_table(columns), str(path), compression="uncompressed")


def _read_parquet(path: pathlib.Path) -> Columns:
    from pyarrow import parquet

    return _columns(parquet.read_table(str(path)))


def _write_parquet(path: pathlib.Path, columns: Columns) -> None:
    from pyarrow import parquet

    parquet.write_table(_table(columns), str(path))


def _write_csv(path: pathlib.Path, columns: Columns) -> None:
    rows = np.column_stack([values.astype("i8") for values in columns.values()])
    np.savetxt(path, rows, fmt="%d", delimiter=",", header=",".join(columns), comments="")


_READERS = {".npz": _read_npz, ".arrow": _read_arrow, ".parquet": _read_parquet}
_WRITERS = {".npz": _write_npz, ".arrow": _write_arrow, ".parquet": _write_parquet}


def _form(path: pathlib.Path, forms: Mapping[str, Callable]) -> Callable:
    if form := forms.get(path.suffix.lower()):
        return form
    known = ", ".join(forms)
    raise InputError(
        f"{path}: the suffix says the form; known are {known}", file=str(path), field="path"
    )


def _write(path: pathlib.Path, array: np.ndarray, forms: Mapping[str, Callable]) -> None:
    """Beside its place first, so that the file is written whole or not at all."""
    write = _form(path, forms)
    beside = path.with_name(f".{path.name}.{os.getpid()}.part")
    with _about(path):
        try:
            write(beside, {name: array[name] for name in array.dtype.names})
            os.replace(beside, path)
        finally:
            beside.unlink(missing_ok=True)


def to_dataframe(registers):
    """The registers as a table of one column a number.

    pandas.DataFrame takes no columns of several dimensions, as `replay`'s matrix is one.

    Parameters
    ----------
    registers : structured array (N,)
        As `replay` returns it.

    Returns
    -------
    pandas.DataFrame
        Columns as the command line names them: c0 to c8 for the matrix, ccm0 to ccm5, color0 to
        color116, "Luma.PY[0]" and so on.

    Examples
    --------
    >>> t = imgtune.Tuning.starter()
    >>> light = {"lv": [100], "cct": [5000], "awb_r": [900], "awb_g": [512], "awb_b": [700]}
    >>> list(imgtune.to_dataframe(imgtune.replay(t, light, fields=["Global.*", "LSP.LSP1"])))[2:5]
    ['Global.S', 'LSP.LSP1[0]', 'LSP.LSP1[1]']
    """
    import pandas

    columns = {}
    for name in registers.dtype.names:
        values = registers[name]
        if values.ndim == 1:
            columns[name] = values
            continue
        short = {"matrix": "c", "ccm": "ccm", "color": "color"}.get(name)
        for k, column in enumerate(values.reshape(len(values), -1).T):
            columns[f"{name}[{k}]" if short is None else f"{short}{k}"] = column
    return pandas.DataFrame(columns)


def load_frames(path):
    """Reads a frame log.

    Parameters
    ----------
    path : path-like
        .npz (one array a column), .arrow or .parquet (with pyarrow), else CSV; '-' is CSV from
        standard input. Columns as `replay` takes them.

    Returns
    -------
    structured array (N,) of FRAME_DTYPE

    Raises
    ------
    InputError
        With file, and line and column where there are such.
    """
    path = pathlib.Path(path)
    if path.suffix.lower() not in _READERS:
        return _core.read_csv(path)
    with _about(path):
        return _core.as_frames(_READERS[path.suffix.lower()](path))


def save_frames(path, frames):
    """Writes a frame log whole or not at all: .csv, .npz, .arrow or .parquet.

    Parameters
    ----------
    path : path-like
    frames : as for `replay`
        Columns named frame or x_... are left out.
    """
    _write(pathlib.Path(path), _core.as_frames(frames), {".csv": _write_csv, **_WRITERS})


def load_registers(path):
    """Reads what `save_registers` wrote.

    Returns
    -------
    structured array (N,)
        As `replay` returned it.

    Raises
    ------
    InputError
        With file, and the column where one is about it.
    """
    path = pathlib.Path(path)
    read = _form(path, _READERS)
    with _about(path):
        columns = read(path)
        count = len(next(iter(columns.values()), ()))
        known = _core.register_dtype("*")
        for name, values in columns.items():
            if name not in known.names:
                raise ValueError(f"no register is called '{name}'")
            base, shape = known[name].base, known[name].shape
            if (values.dtype, values.shape) != (base, (count, *shape)):
                raise ValueError(
                    f"column '{name}' is {values.dtype} {values.shape}, needed is"
                    f" {base} {(count, *shape)}"
                )
        registers = np.empty(count, [(name, known[name]) for name in columns])
        for name, values in columns.items():
            registers[name] = values
    return registers


def save_registers(path, registers):
    """Writes registers whole or not at all, one column a field: .npz, .arrow or .parquet.

    Parameters
    ----------
    path : path-like
    registers : structured array (N,)
        As `replay` returns it.
    """
    _write(pathlib.Path(path), registers, _WRITERS)
