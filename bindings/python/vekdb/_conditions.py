"""Conditions built of their parts, for texts that may hold any sign."""

from typing import NamedTuple, Union

Text = Union[str, bytes]


class Condition(NamedTuple):
    """A condition on a column: what Log.where takes beside texts."""

    column: str
    operator: str
    text: Text


class col:
    """A column in a condition: col('Take') >= '3', col('Notes').matches('sound|boom').

    Numbers and timecodes compare by their value, texts without their case; == and != go byte by
    byte. An empty cell is neither less nor greater.
    """

    __hash__ = None  # type: ignore[assignment]

    def __init__(self, name: str) -> None:
        self.name = name

    def __repr__(self) -> str:
        return f"col({self.name!r})"

    def __eq__(self, text: Text) -> Condition:  # type: ignore[override]
        return Condition(self.name, "==", text)

    def __ne__(self, text: Text) -> Condition:  # type: ignore[override]
        return Condition(self.name, "!=", text)

    def __lt__(self, text: Text) -> Condition:
        return Condition(self.name, "<", text)

    def __le__(self, text: Text) -> Condition:
        return Condition(self.name, "<=", text)

    def __gt__(self, text: Text) -> Condition:
        return Condition(self.name, ">", text)

    def __ge__(self, text: Text) -> Condition:
        return Condition(self.name, ">=", text)

    def contains(self, text: Text) -> Condition:
        """Cells that contain the text, case ignored; ranges and timecodes as the table asks."""
        return Condition(self.name, "=", text)

    def matches(self, expression: Text) -> Condition:
        """Cells in which a regular expression is found."""
        return Condition(self.name, "~", expression)

    def is_empty(self) -> Condition:
        """Empty cells."""
        return Condition(self.name, "empty", "")
