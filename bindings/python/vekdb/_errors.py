"""What can go wrong. Every exception says where: in which file, line and column."""

from typing import Any, Dict


class Error(Exception):
    """The base of all exceptions of this module.

    Its text is "FILE:LINE:COLUMN: found, expected ...; advice", as far as there is something to
    say; the parts are attributes.
    """

    def __init__(
        self,
        message: str = "",
        *,
        file: str = "",
        line: int = 0,
        column: str = "",
        found: str = "",
        expected: str = "",
        advice: str = "",
    ) -> None:
        super().__init__(message)
        self.message = message
        self.file = file
        self.line = line
        self.column = column
        self.found = found
        self.expected = expected
        self.advice = advice

    def __str__(self) -> str:
        return self.message

    def __reduce__(self) -> Any:
        return _again, (type(self), self.message, dict(self.__dict__))


def _again(kind: "type[Error]", message: str, parts: Dict[str, Any]) -> Error:
    error = kind(message)
    error.__dict__.update(parts)
    return error


class ReadError(Error):
    """A file that cannot be read, or that is no log."""


class NotFoundError(ReadError, FileNotFoundError):
    """A file that is not there."""


class WriteError(Error):
    """What cannot be written, or what a file has no room for; the old file is whole."""


class UsageError(Error, ValueError):
    """What was asked for cannot be: a condition that cannot be read, for example."""


class ColumnError(UsageError, KeyError):
    """A column that is not there, or a name that several columns have."""


class ConflictError(Error):
    """Logs that do not go together."""


class StaleError(Error):
    """A row or column that was removed from its log."""


class ClosedError(Error, ValueError):
    """A log that was closed."""


class InUseError(Error):
    """A log that is asked for something in the midst of another operation of the same thread."""
