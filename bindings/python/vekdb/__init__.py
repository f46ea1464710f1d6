"""Clip logs of film and video: opened, asked, edited and saved, in every format.

    >>> import vekdb
    >>> with vekdb.open("dailies.vek") as log:
    ...     for row in log.where("Scene=12", order="Take"):
    ...         print(row["Take"], row["Notes"])

A Log is a sequence of rows, a Row a mapping from names of columns to texts, a View rows of a log in
an order of their own that stays live under edits. Cells are texts throughout: nothing is ever taken
for a number, rounded or trimmed. Bytes that are no UTF-8 stand in a str as escaping surrogates
("surrogateescape") and are written as they came.
"""

import os
from collections.abc import Mapping as _Mapping
from typing import Any, Iterator, Optional

from . import _core
from ._conditions import Condition, col
from ._containers import write_container
from ._core import ArrowRows, Column, Columns, Container, Item, Log, Row, View
from ._errors import (
    ClosedError,
    ColumnError,
    ConflictError,
    Error,
    InUseError,
    NotFoundError,
    ReadError,
    StaleError,
    UsageError,
    WriteError,
)
from ._results import (
    CellDifference,
    Conflict,
    Differences,
    Loss,
    Merged,
    Problem,
    RowDifference,
    Saved,
)
from ._times import Keycode, Rate, Timecode

__version__ = _core.version()

__all__ = [
    "ArrowRows",
    "CellDifference",
    "ClosedError",
    "Column",
    "ColumnError",
    "Columns",
    "Condition",
    "Conflict",
    "ConflictError",
    "Container",
    "Differences",
    "Error",
    "InUseError",
    "Item",
    "Keycode",
    "Log",
    "Loss",
    "Merged",
    "NotFoundError",
    "Parameters",
    "Problem",
    "Rate",
    "ReadError",
    "Row",
    "RowDifference",
    "Saved",
    "StaleError",
    "Timecode",
    "UsageError",
    "View",
    "WriteError",
    "col",
    "diff",
    "formats",
    "formats_read",
    "formats_written",
    "format_of_path",
    "from_arrow",
    "loads",
    "merge",
    "open",
    "write_container",
]


class Parameters(_Mapping):
    """The entries of a log's heading, such as 'FPS': a live mapping, case ignored."""

    __slots__ = ("_log",)

    def __init__(self, log: Log) -> None:
        self._log = log

    def __getitem__(self, name: str) -> str:
        value = self._log._parameter(name)
        if value is None:
            raise KeyError(name)
        return value

    def __setitem__(self, name: str, value: str) -> None:
        self._log._set_parameter(name, value)

    def __iter__(self):
        return (name for name, _ in self._log._parameters())

    def __len__(self) -> int:
        return len(self._log._parameters())

    def __repr__(self) -> str:
        return f"<vekdb.Parameters {dict(self)!r}>"


def _items(box: Container) -> Iterator[Item]:
    return (box[place] for place in range(len(box)))


Container.__iter__ = _items
Log.parameters = property(Parameters, doc="The entries of the heading: a live mapping.")


def open(file: Any, *, edit: bool = False, **options: Any) -> Log:
    """Opens a log of any format: of a path, or of a file object that is read to its end.

    With edit the log can be saved back into its file, which nobody else who asks the same way
    changes meanwhile. Options: format (found out when not said), encoding, delimiter, skip_lines,
    has_heading, sheet, max_bytes, max_cells.
    """
    return _core.open(file, edit=edit, **options)


def loads(text: Any, name: str = "", **options: Any) -> Log:
    """Reads a log from a str or bytes; the options are those of open."""
    return _core.loads(text, name, **options)


def from_arrow(source: Any, name: str = "") -> Log:
    """Makes a log of what gives a stream of Arrow: an object with a method __arrow_c_stream__.

    All values become texts, nulls empty cells; a log that was handed over comes back as it was. The
    stream is used up. A ReadError for a type that becomes no text, and for a stream that fails.
    """
    return _core.from_arrow(source, name)


def merge(into: Log, *others: Log, **options: Any) -> Merged:
    """Joins further logs to one, which is changed: Log.merge."""
    return into.merge(*others, **options)


def diff(first: Log, second: Log, key: str = "") -> Differences:
    """How two logs differ: Log.diff."""
    return first.diff(second, key)


def formats() -> "list[str]":
    """The names of all formats."""
    return [name for name, _, _ in _core.formats()]


def formats_read() -> "list[str]":
    """The names of the formats that can be read."""
    return [name for name, reads, _ in _core.formats() if reads]


def formats_written() -> "list[str]":
    """The names of the formats that can be written."""
    return [name for name, _, writes in _core.formats() if writes]


def format_of_path(path: "str | bytes | os.PathLike[str]") -> Optional[str]:
    """The format that the ending of a file's name says, or None."""
    return _core.format_of_path(path)
