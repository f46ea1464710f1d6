"""Whatever is given to whatever there is, it ends with a value or with an exception that Python has
for it, never with the end of the interpreter.

The whole surface is found by looking at it. As a crash would take the tests along, the calls are made
in a process of their own: `python test_misuse.py FOLDER`."""

import copy
import faulthandler
import itertools
import os
import pathlib
import pickle
import subprocess
import sys
import threading
from typing import Any, Callable, Dict, Iterator, List, Tuple

import pytest

import vekdb

SAMPLES = pathlib.Path(__file__).resolve().parents[3] / "samples"

# What a caller can be told. A RuntimeError or SystemError would say nothing.
MEANT = (
    vekdb.Error,
    TypeError,
    ValueError,
    LookupError,
    AttributeError,
    ArithmeticError,
    StopIteration,
    OSError,
    MemoryError,
)


class Odd:
    """Has every method that is asked for, and none of them answers."""

    def __index__(self) -> int:
        raise ValueError("no index")

    def __str__(self) -> str:
        raise ValueError("no text")

    def __bool__(self) -> bool:
        raise ValueError("no truth")

    def __iter__(self) -> Iterator[Any]:
        raise ValueError("no items")

    def keys(self) -> Any:
        return 3


class Liar(Dict[str, str]):
    """A mapping that changes the log while its items are read."""

    def __init__(self, log: vekdb.Log) -> None:
        super().__init__(Scene="1")
        self.log = log

    def keys(self) -> Any:
        if len(self.log) > 2:
            del self.log[0]
        return super().keys()


def things(folder: pathlib.Path) -> "Dict[str, Any]":
    """One of each kind of object, new each time."""
    log = vekdb.open(SAMPLES / "docs.vek")
    view = log.where("Scene=12")
    path = folder / "box.rak"
    if not path.exists():
        clip = "00112233445566778899aabbccddeeff00014d"
        vekdb.write_container(path, [(clip, {"X": "10"})], name="Day", columns=["X"])
    box = vekdb.Container(path)
    closed = vekdb.open(SAMPLES / "docs.vek")
    row, column, walk = closed[0], closed["Scene"], iter(closed)
    closed_view = closed.where("Scene=12")
    view_walk = iter(closed_view)
    closed.close()
    stale = vekdb.open(SAMPLES / "docs.vek")
    gone, gone_column = stale[0], stale["Notes"]
    del stale[0]
    stale.remove_column("Notes")
    return {
        "log": log, "view": view, "row": log[0], "column": log["Scene"], "part": view["Take"],
        "columns": log.columns, "parameters": log.parameters, "walk": iter(log),
        "view walk": iter(view), "cells": iter(log["Take"]), "arrow": log.to_arrow(),
        "box": box, "item": box[0], "condition": vekdb.col("Take") >= "1", "col": vekdb.col("A"),
        "rate": vekdb.Rate("25"), "timecode": vekdb.Timecode("01:00:00:00", 25),
        "keycode": vekdb.Keycode("KJ 230004 0213+08"), "problems": log.problems,
        "closed log": closed, "closed row": row, "closed column": column, "closed walk": walk,
        "closed view": closed_view, "closed view walk": view_walk, "stale row": gone,
        "stale column": gone_column,
    }  # fmt: skip


def bad(folder: pathlib.Path) -> "List[Any]":
    own = things(folder)
    return [
        None, True, -1, 0, 10**6, 2**31, 2**63, -(2**70), 1.5, float("nan"), 1j, "", "Scene", "\udc80",
        "\ud800", "a\0b", b"", b"Scene", b"\xff\0", [], [None], [1], (), (1, 2), ("a", "=", "b"), {},
        {"Scene": None}, {None: "1"}, {"Scene": "x", "none": "y"}, set(), object(), Odd(), Liar(own["log"]),
        slice(None), slice(None, None, -1), slice(-(2**70), 2**70, 2**70), slice("a"), slice(0, 5, 0),
        type, vekdb.Log, len, lambda *words: None, iter([]), range(3), Ellipsis, memoryview(b"x"),
        *own.values(),
    ]  # fmt: skip


def attempt(call: Callable[..., Any], *words: Any, **named: Any) -> Any:
    """What came of it; what may not come is raised."""
    try:
        return call(*words, **named)
    except MEANT as error:
        return error


def calls_of(value: Any) -> "List[Tuple[str, Callable[..., Any]]]":
    kind = type(value)
    names = [
        name
        for name in dir(kind)
        if name not in ("__class__", "__subclasshook__", "__init_subclass__", "__getattribute__")
        # What every object of Python has is nobody's here.
        and getattr(kind, name) is not getattr(object, name, None)
    ]
    return [(name, getattr(kind, name)) for name in names if callable(getattr(kind, name))]


def drain(value: Any) -> None:
    if hasattr(value, "__next__"):
        attempt(lambda: list(itertools.islice(value, 100)))


def every_method_of(kind: str, folder: pathlib.Path) -> None:
    given = bad(folder)
    for name, method in calls_of(things(folder)[kind]):
        own = things(folder)[kind]
        drain(attempt(method, own))
        for word in given:
            attempt(method, word)
            drain(attempt(method, own, word))
            own = things(folder)[kind] if "close" in kind or name == "close" else own
        for first, second in zip(given, given[7:] + given[:7]):
            drain(attempt(method, own, first, second))
        for word in given:
            for option in ("key", "order", "limit", "columns", "format", "name", "reverse", "tags"):
                attempt(method, own, **{option: word})
                attempt(method, own, "csv", **{option: word})


def every_property_of(kind: str, folder: pathlib.Path) -> None:
    own = things(folder)[kind]
    for name in dir(type(own)):
        attempt(getattr, own, name)
        if name.startswith("__") or callable(getattr(type(own), name)):
            continue
        attempt(lambda: getattr(type(own), name).__get__(None, type(own)))
        getter = getattr(getattr(type(own), name), "fget", None)
        setter = getattr(getattr(type(own), name), "fset", None)
        for word in bad(folder):
            attempt(setattr, own, name, word)
            if getter is not None:
                attempt(getter, word)
            if setter is not None:
                attempt(setter, word, "x")
        attempt(delattr, own, name)


def every_function(folder: pathlib.Path) -> None:
    for name in vekdb.__all__:
        function = getattr(vekdb, name)
        attempt(function)
        for word in bad(folder):
            attempt(function, word)
            attempt(function, word, word)
            attempt(function, "A\n1\n", word)
            for option in ("name", "edit", "delimiter", "max_bytes", "skip_lines", "sheet", "rows"):
                attempt(function, "log.csv", **{option: word})


def what_was_never_made(folder: pathlib.Path) -> None:
    for kind, value in things(folder).items():
        made = type(value)
        empty = attempt(made.__new__, made)
        attempt(object.__new__, made)
        attempt(made)
        if isinstance(empty, Exception):
            continue
        for name, method in calls_of(value):
            attempt(method, empty)
            attempt(method, empty, "Scene")
        for name in dir(made):
            attempt(getattr, empty, name)

        def forgets(self: Any, *words: Any) -> None:
            pass

        try:
            derived = type("Derived", (made,), {"__init__": forgets})
        except TypeError:
            continue
        attempt(derived)
        attempt(len, attempt(derived.__new__, derived))


def copies(folder: pathlib.Path) -> None:
    works: "List[Callable[..., Any]]" = [
        copy.copy, copy.deepcopy, pickle.dumps, hash, repr, str, bool, len, iter, list
    ]  # fmt: skip
    for value in things(folder).values():
        for work in works:
            attempt(work, value)
        for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
            attempt(value.__reduce_ex__, protocol)


def changes_while_iterating(folder: pathlib.Path) -> None:
    log = vekdb.open(SAMPLES / "docs.vek")
    for row in log:
        del log[0]
        attempt(lambda: row["Scene"])
    assert len(log) < 6
    log = vekdb.open(SAMPLES / "docs.vek")
    log.extend(log)
    assert len(log) == 12
    log.extend(log.where("Scene=12"))
    view = log.where("Scene=12")
    walk, cells, column = iter(view), iter(view["Take"]), view["Notes"]
    for row in view:
        row["Scene"] = "gone"
        view.refresh()
        log.remove(row)
    for left in (walk, cells, column):
        attempt(list, left)
    log.remove_column("Take")
    attempt(next, cells)
    log.close()
    for left in (walk, cells, column, view, log):
        attempt(list, left)


def threads(folder: pathlib.Path) -> None:
    shared = things(folder)
    wrong: "List[BaseException]" = []

    def work(turn: int) -> None:
        try:
            for _ in range(30):
                for kind in list(shared)[turn:] + list(shared)[:turn]:
                    for name, method in calls_of(shared[kind]):
                        if not name.startswith("__") or name in ("__len__", "__next__", "__repr__"):
                            attempt(method, shared[kind])
        except BaseException as error:
            wrong.append(error)

    running = [threading.Thread(target=work, args=(turn,)) for turn in range(4)]
    for thread in running:
        thread.start()
    for thread in running:
        thread.join()
    if wrong:
        raise wrong[0]


def main(folder: pathlib.Path) -> None:
    faulthandler.enable()
    os.chdir(folder)
    sys.stdin = open(os.devnull)
    steps: "List[Tuple[str, Callable[[], None]]]" = [
        ("functions", lambda: every_function(folder)),
        ("never made", lambda: what_was_never_made(folder)),
        ("copies", lambda: copies(folder)),
        ("iterating", lambda: changes_while_iterating(folder)),
        ("threads", lambda: threads(folder)),
    ]
    for kind in things(folder):
        steps.append((f"methods of {kind}", lambda kind=kind: every_method_of(kind, folder)))  # type: ignore[misc]
        steps.append((f"properties of {kind}", lambda kind=kind: every_property_of(kind, folder)))  # type: ignore[misc]
    for name, step in steps:
        print(name, flush=True)
        step()
    print("whole")


def test_nothing_that_is_given_ends_the_interpreter(tmp_path: pathlib.Path) -> None:
    ran = subprocess.run(
        [sys.executable, __file__, str(tmp_path)], capture_output=True, text=True, timeout=600
    )
    assert ran.returncode == 0 and ran.stdout.endswith("whole\n"), ran.stdout + ran.stderr


def test_nothing_is_pickled_by_any_protocol(tmp_path: pathlib.Path) -> None:
    log = vekdb.open(SAMPLES / "docs.vek")
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        for value in (log, log[0], log.where("Scene=12"), iter(log), log.columns):
            with pytest.raises(TypeError, match="neither pickled nor copied"):
                pickle.dumps(value, protocol)


def test_what_is_wrong_is_told_in_words_of_python() -> None:
    log: Any = vekdb.open(SAMPLES / "docs.vek")
    told: "Dict[str, Callable[[], Any]]" = {
        "a Log is joined to a log, not NoneType": lambda: log.merge(None),
        "a Row or a View is removed from a log, not int": lambda: log.remove(3),
        "limit is a whole number, not str": lambda: log.where(limit="3"),
        "limit is a whole number from 0 on": lambda: log.where(limit=-1),
        "a row is a mapping, not None": lambda: log.append(None),
        "the name of a column is a text": lambda: log[None],
        "cannot fit 'int' into an index-sized integer": lambda: log[2**70],
        "Row is made by a log": lambda: vekdb.Row(),
    }
    for text, work in told.items():
        error = attempt(work)
        assert isinstance(error, (TypeError, ValueError, IndexError)) and text in str(error), error


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
