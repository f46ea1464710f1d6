"""Logs and views as streams of Arrow, and logs made of such streams."""

import ctypes
import gc
import pathlib
import threading
from typing import Any, List, Optional

import pytest

import vekdb
from arrow_reader import (
    GET_ERROR,
    GET_NEXT,
    GET_SCHEMA,
    NAME,
    RELEASE,
    Array,
    Failed,
    Read,
    Schema,
    Stream,
    capsule_around,
    read,
    stream_in,
)


class Given:
    """Gives one capsule, however often it is asked."""

    def __init__(self, capsule: object) -> None:
        self.capsule = capsule
        self.asked: List[object] = []

    def __arrow_c_stream__(self, requested_schema: Optional[object] = None) -> object:
        self.asked.append(requested_schema)
        return self.capsule


def same(a: vekdb.Log, b: vekdb.Log) -> bool:
    columns = [(column.name, column.type) for column in a.columns]
    return (
        columns == [(column.name, column.type) for column in b.columns]
        and a.tuples() == b.tuples()
        and dict(a.parameters) == dict(b.parameters)
    )


def test_a_log_is_handed_over_with_columns_and_parameters(docs: vekdb.Log) -> None:
    seen = read(docs.__arrow_c_stream__())
    assert [field.name for field in seen.fields] == docs.columns.names
    assert {field.format for field in seen.fields} == {"u"}
    assert [field.metadata["vekdb.type"] for field in seen.fields] == [
        column.type for column in docs.columns
    ]
    assert seen.metadata["vekdb.parameter:Project"] == "Night shoot"
    assert len(seen.batches) == 1
    for name in docs.columns.names:
        assert seen.column(name) == docs.column(name)


def test_a_schema_that_is_asked_for_changes_nothing(docs: vekdb.Log) -> None:
    wanted = docs.__arrow_c_stream__(requested_schema=object())
    assert read(wanted) == read(docs.__arrow_c_stream__(None)) == read(docs.__arrow_c_stream__())


def test_removed_rows_are_not_handed_over(docs: vekdb.Log) -> None:
    del docs[1:3]
    docs.append({"Scene": "99"})
    assert read(docs.__arrow_c_stream__()).column("Scene") == ["12", "12", "14", "7", "99"]


def test_a_view_is_handed_over_in_its_order(docs: vekdb.Log) -> None:
    view = docs.where("Scene==12", order="Take", reverse=True)
    seen = read(view.__arrow_c_stream__())
    assert seen.column("Start time") == view.column("Start time")
    assert seen.metadata["vekdb.parameter:FPS"] == "24"
    assert read(docs.where("Scene==none").__arrow_c_stream__()).batches == []


def test_a_view_is_live_until_its_stream_is_asked_for(docs: vekdb.Log) -> None:
    view = docs.where("Scene==12")
    rows = view.to_arrow()
    docs[0]["Notes"] = "before"
    capsule = rows.__arrow_c_stream__()
    docs[0]["Notes"] = "after"
    del view[1:]
    docs.remove_column("Reel")
    seen = read(capsule)
    assert seen.column("Notes")[0] == "before" and len(seen.column("Reel")) == 3
    later = read(rows.__arrow_c_stream__())
    assert later.column("Notes") == ["after"]
    assert "Reel" not in [field.name for field in later.fields]


def test_a_stream_outlives_its_log(samples: pathlib.Path) -> None:
    log = vekdb.open(samples / "docs.vek")
    wanted = log.column("Description")
    closed, dropped = log.__arrow_c_stream__(), log[:].__arrow_c_stream__()
    rows = log.to_arrow()
    log.close()
    with pytest.raises(vekdb.ClosedError):
        rows.__arrow_c_stream__()
    del log, rows
    gc.collect()
    assert read(closed).column("Description") == wanted
    assert vekdb.from_arrow(Given(dropped)).column("Description") == wanted


def test_rows_to_be_handed_over_keep_their_log_alive(samples: pathlib.Path) -> None:
    rows = vekdb.open(samples / "docs.vek").where("Scene==14").to_arrow()
    gc.collect()
    assert read(rows.__arrow_c_stream__()).column("Take") == ["1"]


def test_batches_are_of_bounded_size(docs: vekdb.Log) -> None:
    by_rows = read(docs.to_arrow(rows_per_batch=4).__arrow_c_stream__())
    assert [len(batch[0]) for batch in by_rows.batches] == [4, 2]
    by_bytes = read(docs.to_arrow(bytes_per_batch=1).__arrow_c_stream__())
    assert [len(batch[0]) for batch in by_bytes.batches] == [1] * 6
    assert by_rows.column("Notes") == by_bytes.column("Notes") == docs.column("Notes")
    large = read(docs.to_arrow(bytes_per_batch=2**31).__arrow_c_stream__())
    assert large.fields[0].format == "U" and large.column("Notes") == docs.column("Notes")


def test_tags_come_as_booleans(docs: vekdb.Log) -> None:
    seen = read(docs.to_arrow(tags=True).__arrow_c_stream__())
    assert seen.fields[-1].format == "b" and seen.fields[-1].metadata == {"vekdb.tag": "flags"}
    tags = [batch[-1] for batch in seen.batches][0]
    assert tags == [row.tagged for row in docs] and any(tags) and not all(tags)
    view = docs[::-1].to_arrow(tags=True)
    assert read(view.__arrow_c_stream__()).batches[0][-1] == tags[::-1]


def test_bytes_that_are_no_text_are_refused_unless_said(docs: vekdb.Log) -> None:
    docs[1]["Notes"] = b"caf\xe9"
    with pytest.raises(Failed, match='row 2, column 7 "Notes": byte 4 of the cell, 0xE9'):
        read(docs.__arrow_c_stream__())
    with pytest.raises(vekdb.ReadError, match="day: the stream failed: row 2, column 7"):
        vekdb.from_arrow(docs, "day")
    replaced = read(docs.to_arrow(bytes="replace").__arrow_c_stream__())
    assert replaced.column("Notes")[1] == "caf\ufffd"
    binary = read(docs.to_arrow(bytes="binary").__arrow_c_stream__())
    assert binary.column("Notes")[1] == b"caf\xe9" and binary.fields[0].format == "z"
    assert same(vekdb.from_arrow(docs.to_arrow(bytes="binary")), docs)


@pytest.mark.parametrize(
    "options, raised",
    [
        ({"bytes": "drop"}, ValueError),
        ({"rows_per_batch": 0}, ValueError),
        ({"rows_per_batch": 2**40}, ValueError),
        ({"bytes_per_batch": 0}, ValueError),
        ({"colour": 1}, TypeError),
    ],
)
def test_options_that_are_none_are_refused(docs: vekdb.Log, options: Any, raised: Any) -> None:
    with pytest.raises(raised):
        docs.to_arrow(**options)


def test_a_log_comes_back_as_it_went(docs: vekdb.Log, dailies: vekdb.Log) -> None:
    docs[0]["Notes"] = "caf\u00e9 \u4e16"
    for log in (docs, dailies):
        assert same(vekdb.from_arrow(log), log)
        assert same(vekdb.from_arrow(log.to_arrow(rows_per_batch=3)), log)
    some = vekdb.from_arrow(docs.where("Scene=12", order="Take"), "some.vek")
    assert some.name == "some.vek" and some.column("Take") == ["1", "1", "2", "2"]
    some[0]["Notes"] = "its own"
    assert "its own" not in docs.column("Notes")


def test_what_came_can_be_saved(docs: vekdb.Log, tmp_path: pathlib.Path) -> None:
    vekdb.from_arrow(docs).save_as(tmp_path / "again.vek")
    assert same(vekdb.open(tmp_path / "again.vek"), docs)


def test_tags_without_a_column_become_one(docs: vekdb.Log) -> None:
    tagged = [row.tagged for row in docs]
    rows = docs.to_arrow(tags=True)
    assert [row.tagged for row in vekdb.from_arrow(rows)] == tagged
    plain = vekdb.from_arrow(docs)
    plain.remove_column("Tag")
    assert "Tag" not in vekdb.from_arrow(plain.to_arrow(tags=True)).columns


def test_a_capsule_that_nobody_takes_releases_its_stream(samples: pathlib.Path) -> None:
    log = vekdb.open(samples / "docs.vek")
    capsule = log.__arrow_c_stream__()
    released: List[int] = []
    stream = stream_in(capsule)
    real = RELEASE(ctypes.cast(stream.release, ctypes.c_void_p).value or 0)

    def release(which: Any) -> None:
        released.append(1)
        real(which)

    stream.release = counted = RELEASE(release)
    del stream, capsule
    gc.collect()
    assert counted and released == [1]


def test_a_capsule_is_used_once(docs: vekdb.Log) -> None:
    given = Given(docs.__arrow_c_stream__())
    assert same(vekdb.from_arrow(given), docs)
    assert not stream_in(given.capsule).release
    with pytest.raises(vekdb.ReadError, match="the stream was released already"):
        vekdb.from_arrow(given, "twice")
    assert same(vekdb.from_arrow(docs.__arrow_c_stream__()), docs)  # type: ignore[arg-type]


def test_a_stream_may_be_taken_in_the_midst(docs: vekdb.Log) -> None:
    capsule = docs.to_arrow(rows_per_batch=4).__arrow_c_stream__()
    stream, batch = stream_in(capsule), Array()
    assert stream.get_next(ctypes.byref(stream), ctypes.byref(batch)) == 0
    assert vekdb.from_arrow(Given(capsule)).column("Scene") == docs.column("Scene")[4:]
    del stream, capsule
    assert batch.length == 4
    batch.release(ctypes.byref(batch))


class Made:
    """A stream that is made in Python: a schema of one column, and then what is wanted."""

    def __init__(self, format: bytes, fails: bytes = b"", name: bytes = NAME) -> None:
        self.releases = 0
        self.name = name
        self.child = Schema(format=format, name=b"Shot", release=type(Schema().release)(_ends))
        self.children = (ctypes.POINTER(Schema) * 1)(ctypes.pointer(self.child))
        self.error = ctypes.create_string_buffer(fails)
        self.calls = (
            GET_SCHEMA(self.schema),
            GET_NEXT(lambda stream, batch: 5 if fails else 0),
            GET_ERROR(lambda stream: ctypes.addressof(self.error) if fails else None),
            RELEASE(self.release),
        )
        self.stream = Stream(*self.calls)

    def schema(self, stream: Any, out: Any) -> int:
        out[0].format = b"+s"
        out[0].n_children = 1
        out[0].children = ctypes.cast(self.children, type(out[0].children))
        out[0].release = self.child.release
        return 0

    def release(self, stream: Any) -> None:
        self.releases += 1
        stream[0].release = RELEASE(0)

    def __arrow_c_stream__(self, requested_schema: Optional[object] = None) -> object:
        return capsule_around(self.stream, self.name)


def _ends(schema: Any) -> None:
    schema[0].release = type(schema[0].release)()


def test_streams_of_others_are_read_and_released() -> None:
    made = Made(b"l")
    log = vekdb.from_arrow(made)
    assert (log.columns.names, len(log), made.releases) == (["Shot"], 0, 1)


def test_a_stream_that_fails_says_why() -> None:
    made = Made(b"u", fails=b"the disk is gone")
    with pytest.raises(vekdb.ReadError, match="far.arrow: the stream failed: the disk is gone"):
        vekdb.from_arrow(made, "far.arrow")
    assert made.releases == 1


def test_a_type_that_is_no_text_is_refused_with_its_column() -> None:
    made = Made(b"+l")
    with pytest.raises(vekdb.ReadError, match='column 1 "Shot"') as raised:
        vekdb.from_arrow(made, "day")
    assert raised.value.file == "day" and raised.value.found and made.releases == 1


def test_what_gives_no_stream_is_refused() -> None:
    with pytest.raises(TypeError, match="__arrow_c_stream__, and dict has none"):
        vekdb.from_arrow({})  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="a capsule named arrow_array_stream"):
        vekdb.from_arrow(Given(42))
    wrong = Made(b"u", name=b"arrow_schema")
    with pytest.raises(TypeError, match="a capsule named arrow_array_stream"):
        vekdb.from_arrow(wrong)
    assert wrong.releases == 0


def test_an_error_of_the_source_comes_through() -> None:
    class Refuses:
        def __arrow_c_stream__(self, requested_schema: Optional[object] = None) -> object:
            raise RuntimeError("not today")

    with pytest.raises(RuntimeError, match="not today"):
        vekdb.from_arrow(Refuses())


def test_threads_read_streams_while_the_log_is_edited() -> None:
    log = vekdb.loads("Scene,Notes\n" + "".join(f"{n},first\n" for n in range(3000)), "a.csv")
    found: List[Read] = []

    def reads(capsule: object) -> None:
        found.append(read(capsule))

    rows = log.to_arrow(rows_per_batch=100)
    threads = [threading.Thread(target=reads, args=(rows.__arrow_c_stream__(),)) for _ in range(3)]
    for thread in threads:
        thread.start()
    for row in log:
        row["Notes"] = "second"
    for thread in threads:
        thread.join(60)
    assert [set(seen.column("Notes")) for seen in found] == [{"first"}] * 3
    assert set(read(rows.__arrow_c_stream__()).column("Notes")) == {"second"}
