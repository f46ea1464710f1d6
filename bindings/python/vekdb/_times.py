"""Arithmetic of timecodes, frame rates and keycodes, in whole numbers throughout."""

from fractions import Fraction
from functools import total_ordering
from typing import Any, Optional, Tuple, Union

from . import _core
from ._errors import UsageError


def _refuse(found: str, expected: str) -> UsageError:
    return UsageError(f"{found}, expected {expected}", found=found, expected=expected)


class Rate:
    """A frame rate: Rate('29.97df'), Rate('25'), Rate(24), Rate('24000/1001').

    nominal is the frame numbers of a second, is_slowed whether it runs slower by 1000/1001, and
    counting whether timecodes are said to drop frames, None where it is not said.
    """

    nominal: int
    is_slowed: bool
    counting: Optional[bool]
    _text: str

    def __init__(self, rate: Union["Rate", str, int]) -> None:
        if isinstance(rate, Rate):
            parts = (rate.nominal, rate.is_slowed, rate.counting, rate._text)
        else:
            found = _core.rate_parts(str(rate))
            if found is None:
                raise _refuse(f"no frame rate: {rate!r}", "one such as 24, 25, 23.976 or 29.97df")
            parts = found
        self.nominal, self.is_slowed, self.counting, self._text = parts

    @property
    def drops_frames(self) -> bool:
        """Whether timecodes of the rate are said to drop frames."""
        return self.counting is True

    @property
    def fraction(self) -> Fraction:
        """Frames in a second, exactly: Fraction(30000, 1001) for 29.97."""
        return Fraction(self.nominal * 1000, 1001) if self.is_slowed else Fraction(self.nominal)

    def __str__(self) -> str:
        return self._text

    def __repr__(self) -> str:
        return f"Rate({self._text!r})"

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Rate) and self._text == other._text

    def __hash__(self) -> int:
        return hash(self._text)


@total_ordering
class Timecode:
    """A timecode at a frame rate: Timecode('01:00:00:00', 25), Timecode(90000, 25).

    Adding frames goes round at midnight. The difference of two timecodes is a number of frames;
    frames are those since midnight.
    """

    frames: int
    rate: Rate
    drop_frame: bool

    def __init__(
        self,
        code: Union["Timecode", str, int],
        rate: Union[Rate, str, int],
        drop_frame: Optional[bool] = None,
    ) -> None:
        self.rate = Rate(rate)
        nominal = self.rate.nominal
        if isinstance(code, Timecode):
            code = str(code)
        if isinstance(code, int):
            drops = self.rate.drops_frames if drop_frame is None else drop_frame
            self.drop_frame = drops and _core.can_drop_frames(nominal)
            self.frames = code % _core.frames_in_day(nominal, self.drop_frame)
            return
        self.drop_frame, self.frames = self._read(code, drop_frame)

    def _read(self, text: str, drop_frame: Optional[bool]) -> Tuple[bool, int]:
        parts = _core.timecode_parts(text)
        if parts is None:
            raise _refuse(f"no timecode: {text!r}", "one such as 01:02:03:04")
        said = self.rate.counting if drop_frame is None else drop_frame
        drops = parts[4] if said is None else said
        drops = drops and _core.can_drop_frames(self.rate.nominal)
        parts = (*parts[:4], drops)
        if not _core.is_counted(parts, self.rate.nominal):
            raise _refuse(f"{text} names no frame", f"one that is counted at {self.rate}")
        return drops, _core.frames_of(parts, self.rate.nominal)

    def _moved(self, frames: int) -> "Timecode":
        return Timecode(self.frames + frames, self.rate, self.drop_frame)

    def _order(self, other: "Timecode") -> int:
        if self.rate.nominal != other.rate.nominal or self.drop_frame != other.drop_frame:
            raise _refuse(f"{self} at {self.rate} and {other} at {other.rate}", "one counting")
        return other.frames

    def __add__(self, frames: int) -> "Timecode":
        return self._moved(frames) if isinstance(frames, int) else NotImplemented

    __radd__ = __add__

    def __sub__(self, other: Any) -> Any:
        if isinstance(other, Timecode):
            return self.frames - self._order(other)
        return self._moved(-other) if isinstance(other, int) else NotImplemented

    def until(self, end: "Timecode") -> Optional[int]:
        """Frames to an end, past midnight where that makes less than twelve hours; or None."""
        day = _core.frames_in_day(self.rate.nominal, self.drop_frame)
        frames = self._order(end) - self.frames
        return frames if frames >= 0 else frames + day if frames + day < day // 2 else None

    @property
    def seconds(self) -> Fraction:
        """Seconds since midnight of real time, exactly."""
        return self.frames / self.rate.fraction

    def __str__(self) -> str:
        return _core.timecode_text(self.frames, self.rate.nominal, self.drop_frame)

    def __repr__(self) -> str:
        return f"Timecode({str(self)!r}, {str(self.rate)!r})"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Timecode):
            return NotImplemented
        return (self.frames, self.rate.nominal, self.drop_frame) == (
            other.frames,
            other.rate.nominal,
            other.drop_frame,
        )

    def __lt__(self, other: "Timecode") -> bool:
        return self.frames < self._order(other)

    def __hash__(self) -> int:
        return hash((self.frames, self.rate.nominal, self.drop_frame))


class Keycode:
    """A number along the edge of film: Keycode('KJ 230004 0213+08').

    It has a roll, feet and frames. A gauge is 35 (the rule), 35-3, 35-2, 16 or 65.
    """

    text: str
    roll: str
    feet: int
    frames: int

    def __init__(self, text: str) -> None:
        parts = _core.keycode_parts(text)
        if parts is None:
            raise _refuse(f"no keycode: {text!r}", "one such as KJ 230004 0213+08")
        self.text = text
        self.roll, self.feet, self.frames = parts

    def perforations_until(self, end: "Keycode", gauge: str = "35") -> Optional[int]:
        """Perforations to an end on the same roll; None where there are none."""
        return _core.perforations_between(self.text, end.text, gauge)

    def footage_until(self, end: "Keycode", gauge: str = "35") -> Optional[str]:
        """Feet and frames to an end on the same roll, as '53+13'."""
        count = self.perforations_until(end, gauge)
        return None if count is None else _core.footage_text(count, gauge)

    def __str__(self) -> str:
        return self.text

    def __repr__(self) -> str:
        return f"Keycode({self.text!r})"
