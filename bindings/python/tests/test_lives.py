"""Objects keep alive what they need, in whatever order they go, and threads take turns."""

import gc
import os
import pathlib
import random
import threading
import weakref
from typing import Callable, Iterator, List, Sequence, Tuple, Union

import pytest

import vekdb

SEED = int(os.environ.get("VEKDB_TEST_SEED", random.randrange(2**32)))


def pieces(log: vekdb.Log) -> "list[object]":
    view = log.where("Scene=12", order="Take")
    above = view.where("Reel=A001")
    found: "list[object]" = [log, view, above, above[0:1], log["Scene"], view["Take"]]
    found += [log[0], view[0], above[-1], log.columns, log.parameters]
    found += [iter(log), iter(view), iter(log["Scene"]), iter(above["Take"])]
    return found


def use(piece: object) -> None:
    if isinstance(piece, vekdb.Row):
        assert piece["Scene"].startswith("12") and piece.columns["Take"].name == "Take"
    elif isinstance(piece, (vekdb.Log, vekdb.View)):
        assert all(row["Scene"] for row in piece)
        piece.tuples()
    elif isinstance(piece, vekdb.Column):
        assert piece.to_list() == list(piece)
    elif hasattr(piece, "__next__"):
        next(piece, None)
    else:
        list(piece)  # type: ignore[call-overload]


@pytest.mark.parametrize("round", range(10))
def test_pieces_may_go_in_any_order(samples: pathlib.Path, round: int) -> None:
    chance = random.Random(SEED + round)
    print("seed", SEED + round)
    left = pieces(vekdb.open(samples / "docs.vek"))
    chance.shuffle(left)
    while left:
        left.pop()
        if chance.random() < 0.2:
            gc.collect()
        for piece in left:
            use(piece)


def test_a_log_in_a_circle_is_collected(samples: pathlib.Path) -> None:
    class Holder:
        pass

    holder = Holder()
    holder.log = vekdb.open(samples / "docs.vek")  # type: ignore[attr-defined]
    holder.row = holder.log[0]  # type: ignore[attr-defined]
    holder.own = holder  # type: ignore[attr-defined]
    del holder
    gc.collect()


def big(rows: int) -> vekdb.Log:
    text = "Scene,Take,Notes\n" + "".join(f"{n % 977},{n},note {n}\n" for n in range(rows))
    return vekdb.loads(text, "big.csv")


def run(*works: Callable[[], None]) -> None:
    failures: "list[BaseException]" = []

    def guarded(work: Callable[[], None]) -> None:
        try:
            work()
        except BaseException as failure:
            failures.append(failure)

    threads = [threading.Thread(target=guarded, args=(work,)) for work in works]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
        assert not thread.is_alive()
    if failures:
        raise failures[0]


def test_threads_share_a_log() -> None:
    log = big(1000)
    ends = threading.Event()

    def sorts() -> None:
        for n in range(5):
            view = log.sorted("Scene", "Take", reverse=n % 2 == 1)
            view.to_bytes("csv")
        ends.set()

    def edits() -> None:
        n = 0
        while not ends.is_set():
            log[n % 900]["Notes"] = str(n)
            log.append({"Scene": "1"})
            del log[-1]
            n += 1

    def asks() -> None:
        while not ends.is_set():
            view = log.where("Scene=12")
            for row in view[:50]:
                row["Take"]
            del view

    run(sorts, edits, asks)
    assert len(log) == 1000


def test_single_cells_are_read_while_another_thread_has_the_log() -> None:
    log = big(20000)
    row, column = log[7], log["Take"]
    ends = threading.Event()

    def sorts() -> None:
        for n in range(10):
            log.sorted("Scene", "Take", reverse=n % 2 == 1).to_bytes("csv")
            log.append({"Take": str(20000 + n)})
            row["Notes"] = "much longer than it was " * n
        ends.set()

    def asks() -> None:
        while not ends.is_set():
            assert row["Take"] == log[7]["Take"] == column[7] == "7"
            assert row["Notes"] == "note 7" or "longer" in row["Notes"] or row["Notes"] == ""
            assert next(iter(log)).index == 0
            assert next(iter(column)) == "0"

    run(sorts, asks, asks)


def test_a_walk_goes_on_where_the_end_of_a_row_walks_too() -> None:
    log = big(10)
    walk = iter(log)
    seen: "list[int]" = []
    watched = [weakref.ref(next(walk), lambda _: seen.append(next(walk).index))]
    rest = [row.index for row in walk]
    assert sorted(seen + rest) == list(range(1, 10))
    assert len(watched) == 1


def test_logs_are_joined_by_threads_in_both_directions() -> None:
    a, b = big(300), big(300)

    def diffs(first: vekdb.Log, second: vekdb.Log) -> Callable[[], None]:
        def work() -> None:
            for _ in range(5):
                assert not first.diff(second, "Take")

        return work

    run(diffs(a, b), diffs(b, a), diffs(a, b))


def test_the_interpreter_runs_while_a_log_is_busy() -> None:
    log = big(30000)
    began = threading.Event()
    ended = threading.Event()

    def works() -> None:
        began.set()
        log.sorted("Scene", "Notes").to_bytes("csv")
        ended.set()

    thread = threading.Thread(target=works)
    thread.start()
    began.wait()
    steps = 0
    while not ended.is_set():
        steps += 1
    thread.join()
    assert steps > 1000


def test_a_log_is_closed_while_others_use_it() -> None:
    log = big(2000)

    def asks() -> None:
        with pytest.raises(vekdb.ClosedError):
            while True:
                log.where("Scene=12").sort("Take")

    run(asks, asks, log.close)


def test_two_files_that_use_each_others_logs_end_with_an_error() -> None:
    a, b = big(200), big(200)
    meet = threading.Barrier(2, timeout=30)

    class Crossing:
        def __init__(self, other: vekdb.Log) -> None:
            self.other = other
            self.met = False

        def write(self, data: bytes, /) -> int:
            if not self.met:
                self.met = True
                meet.wait()
            self.other[0]["Notes"]
            return len(data)

    raised: List[vekdb.InUseError] = []

    def writes(own: vekdb.Log, other: vekdb.Log) -> Callable[[], None]:
        def work() -> None:
            try:
                own.write(Crossing(other), "csv")
            except vekdb.InUseError as error:
                raised.append(error)

        return work

    run(writes(a, b), writes(b, a))
    assert raised


def test_a_row_that_a_loop_handed_out_stays_what_it_was(samples: pathlib.Path) -> None:
    log = vekdb.open(samples / "dailies.vek")
    view = log.where("Take>=1")
    both: "Sequence[Union[vekdb.Log, vekdb.View]]" = (log, view)
    for rows in both:
        kept = [row for row in rows]
        assert [row.index for row in kept] == list(range(len(rows)))
        first = next(iter(rows))
        assert [row["Name"] for row in rows][0] == first["Name"]
        others = [row for row in rows if row.index % 3 == 0]
        assert [row.index for row in others] == list(range(0, len(rows), 3))


def test_a_row_that_is_watched_weakly_goes_with_its_loop_variable(samples: pathlib.Path) -> None:
    seen = []
    for row in vekdb.open(samples / "docs.vek"):
        seen.append((weakref.ref(row), row.index))
    for one, index in seen:
        left = one()
        assert left is None or left.index == index


def test_walks_end_and_stay_ended(samples: pathlib.Path) -> None:
    log = vekdb.open(samples / "docs.vek")
    ends: "List[Tuple[Iterator[object], int]]" = [
        (iter(log), 6), (iter(log.where("Scene=12")), 4), (iter(log["Scene"]), 6)
    ]
    for walk, count in ends:
        assert iter(walk) is walk and len(list(walk)) == count
        assert next(walk, None) is None
        with pytest.raises(StopIteration):
            walk.__next__()


def test_what_is_in_brackets_is_looked_at_however_it_is_asked(samples: pathlib.Path) -> None:
    log = vekdb.open(samples / "docs.vek")
    assert log.__getitem__(0).__getitem__("Scene") == log[0]["Scene"]
    with pytest.raises(TypeError):
        log[0][object()]  # type: ignore[index]
    with pytest.raises(IndexError):
        log[99]
    with pytest.raises(vekdb.ColumnError):
        log["none"]
    with pytest.raises(TypeError):
        vekdb.Row.__new__(vekdb.Row)["Scene"]
