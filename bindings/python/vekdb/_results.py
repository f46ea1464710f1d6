"""What operations answer, as plain values."""

from typing import List, NamedTuple, Optional


class Problem(NamedTuple):
    """Something odd that was found in a file which could be read all the same."""

    line: int
    column: str
    found: str
    expected: str
    outcome: str
    is_damage: bool
    text: str


class Loss(NamedTuple):
    """A kind of thing that a format did not hold: how many, and where the first one is."""

    what: str
    count: int
    first_place: str


class Saved(NamedTuple):
    """What there is to say of a log that was written, or would be."""

    losses: List[Loss]
    notes: List[str]

    @property
    def is_whole(self) -> bool:
        """Whether nothing was lost, and there is nothing to say."""
        return not self.losses and not self.notes


class Conflict(NamedTuple):
    """Two values for one cell, or a key that one log has twice."""

    kind: str
    file: str
    line: int
    column: str
    value: str
    kept: str
    row: Optional[int]
    text: str


class Merged(NamedTuple):
    """What there is to say of logs that were joined."""

    conflicts: List[Conflict]
    cells: int
    keys: int
    notes: List[str]

    @property
    def is_whole(self) -> bool:
        """Whether there was no conflict, and there is nothing to say."""
        return not self.cells and not self.keys and not self.notes


class CellDifference(NamedTuple):
    """A cell that has another text in the second log."""

    column: str
    before: str
    after: str


class RowDifference(NamedTuple):
    """A row that was removed, added or changed; a and b are its places in the two logs."""

    kind: str
    a: Optional[int]
    b: Optional[int]
    key: str
    cells: List[CellDifference]


class Differences(NamedTuple):
    """How two logs differ; false where they do not."""

    only_in_first: List[str]
    only_in_second: List[str]
    rows: List[RowDifference]
    notes: List[str]

    def __bool__(self) -> bool:
        return bool(self.only_in_first or self.only_in_second or self.rows)
