"""The exception that everything unusable ends in."""

from collections.abc import Iterable
from typing import Any, Optional


class InputError(ValueError):
    """What was given cannot be used.

    Attributes
    ----------
    file : str or None
        Where the first error stands.
    line : int or None
        Its line, from 1.
    field : str or None
        The field, column or argument that it is about.
    findings : list of dict
        Every finding, as `Tuning.check` returns them.
    """

    def __init__(
        self,
        message: str,
        findings: Iterable[dict[str, Any]] = (),
        *,
        file: Optional[str] = None,
        line: Optional[int] = None,
        field: Optional[str] = None,
    ) -> None:
        super().__init__(message)
        self.findings = list(findings)
        if self.findings:
            first = next((f for f in self.findings if f["severity"] == "error"), self.findings[0])
            file, line, field = first.get("file"), first.get("line"), first.get("path")
        self.file = file or None
        self.line = line or None
        self.field = field or None

    def __reduce__(self) -> tuple[Any, ...]:
        return _made, (type(self), self.args, self.__dict__)


def _made(kind: type, args: tuple, attributes: dict[str, Any]) -> InputError:
    """An error as it was in another process."""
    error = kind.__new__(kind, *args)
    error.__dict__.update(attributes)
    return error
