"""Views of a tuning's words that nothing but whole numbers in range gets into."""

from typing import Any

import numpy as np

from ._errors import InputError


def _checked(value: Any, dtype: np.dtype) -> np.ndarray:
    given = np.asarray(value)
    if given.dtype.kind not in "iub":
        raise InputError(
            f"{given.dtype} is no whole number; values are whole numbers as they are stored"
            " (a gain of 1.0 is 512): round to them first, or write 1.34 in the YAML form"
        )
    limits = np.iinfo(dtype)
    if given.size and (int(given.min()) < limits.min or int(given.max()) > limits.max):
        outside = given.min() if int(given.min()) < limits.min else given.max()
        raise InputError(f"{outside} does not fit; allowed are {limits.min}..{limits.max}")
    return given


class FieldArray(np.ndarray):
    """Words of a tuning. What is computed from it is a plain array."""

    def __setitem__(self, index: Any, value: Any) -> None:
        super().__setitem__(index, _checked(value, self.dtype))

    def fill(self, value: Any) -> None:
        super().fill(_checked(value, self.dtype))

    def __array_ufunc__(
        self, ufunc: np.ufunc, method: str, *inputs: Any, out: Any = None, **options: Any
    ) -> Any:
        plain = [x.view(np.ndarray) if isinstance(x, FieldArray) else x for x in inputs]
        if out is None:
            return getattr(ufunc, method)(*plain, **options)
        into = tuple(x.view(np.ndarray) if isinstance(x, FieldArray) else x for x in out)
        getattr(ufunc, method)(*plain, out=into, **options)
        return out[0] if len(out) == 1 else out
