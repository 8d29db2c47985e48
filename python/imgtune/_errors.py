"""The exception that everything unusable ends in."""

import re
from collections.abc import Iterable
from typing import Any, Optional

_PLACE = re.compile(r"^(?P<file>[^\n]*?):(?P<line>\d+): (?:column '(?P<field>[^']*)')?")


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

    def __init__(self, message: str, findings: Iterable[dict[str, Any]] = ()) -> None:
        super().__init__(message)
        self.findings = list(findings)
        self.file: Optional[str] = None
        self.line: Optional[int] = None
        self.field: Optional[str] = None
        if self.findings:
            first = next((f for f in self.findings if f["severity"] == "error"), self.findings[0])
            self.file = first.get("file") or None
            self.line = first.get("line") or None
            self.field = first.get("path") or None
        elif place := _PLACE.match(message):
            self.file = place["file"]
            self.line = int(place["line"])
            self.field = place["field"]
