from fractions import Fraction

import pytest

import vekdb
from vekdb import Keycode, Rate, Timecode


def test_rates_are_read_in_every_form() -> None:
    assert Rate("29.97df").drops_frames and Rate("29.97df").fraction == Fraction(30000, 1001)
    assert Rate(25).fraction == 25 and str(Rate("25 fps")) == "25"
    assert Rate("24000/1001") == Rate("23.976") and Rate("24") != Rate("23.976")
    assert len({Rate(25), Rate("25")}) == 1
    with pytest.raises(ValueError):
        Rate("fast")


def test_timecodes_are_counted_in_frames() -> None:
    start = Timecode("01:00:00:00", 25)
    assert start.frames == 90000
    assert str(start + 1) == "01:00:00:01" and str(start - 1) == "00:59:59:24"
    assert start + 30 - start == 30 and start < start + 1 <= start + 1
    assert Timecode("23:59:59:24", 25) + 1 == Timecode("00:00:00:00", 25)
    assert start.seconds == 3600
    assert max(start, start + 5) == start + 5
    with pytest.raises(TypeError):
        start + "1"  # type: ignore[operator]


def test_drop_frame_timecodes_leave_numbers_out() -> None:
    last = Timecode("00:00:59;29", "29.97")
    assert last.drop_frame and str(last + 1) == "00:01:00;02"
    assert Timecode("01:00:00;00", "29.97df").frames == 107892
    with pytest.raises(vekdb.UsageError):
        Timecode("00:01:00;00", "29.97df")
    with pytest.raises(vekdb.UsageError):
        last < Timecode("00:00:59:29", "29.97ndf")


@pytest.mark.parametrize("text", ["", "1:2:3", "00:00:00:25", "later"])
def test_what_is_no_timecode_is_a_value_error(text: str) -> None:
    with pytest.raises(ValueError):
        Timecode(text, 25)


def test_a_clip_may_end_past_midnight() -> None:
    start = Timecode("23:59:50:00", 25)
    assert start.until(Timecode("00:00:10:00", 25)) == 500
    assert Timecode("20:00:00:00", 25).until(Timecode("19:00:00:00", 25)) is None


def test_keycodes_are_counted_in_perforations() -> None:
    start = Keycode("KJ 230004 0213+08")
    assert (start.roll.strip(), start.feet, start.frames) == ("KJ 230004", 213, 8)
    end = Keycode("KJ 230004 0214+08")
    assert start.perforations_until(end) == 64
    assert start.footage_until(end) == "1+00"
    assert end.footage_until(start) is None
    with pytest.raises(ValueError):
        Keycode("nothing")
    with pytest.raises(ValueError):
        start.footage_until(end, "8")
