import io
import pathlib
from typing import Callable, List

import pytest

import vekdb
from vekdb import col

# What writes them is installed or not; the variable names it.
BY_ENGINES = {"parquet": "VEK_DUCKDB", "arrow": "VEK_ARROW"}


def test_a_log_is_a_sequence_of_rows(docs: vekdb.Log) -> None:
    assert len(docs) == 6
    assert docs[0]["Reel"] == "A001"
    assert docs[-1]["Scene"] == "7"
    assert [row["Take"] for row in docs] == ["1", "2", "1", "2", "1", "1"]
    assert docs[2] in docs
    assert docs.format == "vekdb"


@pytest.mark.parametrize("place", [6, -7, 2**62])
def test_a_place_that_is_not_there_is_an_index_error(docs: vekdb.Log, place: int) -> None:
    with pytest.raises(IndexError):
        docs[place]


def test_a_row_is_a_mapping(docs: vekdb.Log) -> None:
    from collections.abc import Mapping

    row = docs[1]
    assert isinstance(row, Mapping)
    assert len(row) == 8 == len(list(row))
    assert row["notes"] == 'He said "cut"\nthen left'
    assert "Scene" in row and "Scen" not in row and 3 not in row
    assert row.get("Nothing") is None and row.get("Nothing", "x") == "x"
    assert dict(row)["Take"] == "2"
    assert row == dict(row) and row != dict(row, Take="3")
    assert list(row.items()) == list(zip(row.keys(), row.values()))


def test_an_unknown_column_is_a_key_error_that_says_what_is_near(docs: vekdb.Log) -> None:
    with pytest.raises(KeyError, match="did you mean Scene") as caught:
        docs[0]["Scen"]
    error = caught.value
    assert isinstance(error, vekdb.ColumnError) and isinstance(error, vekdb.Error)
    assert error.file.endswith("docs.vek")
    assert error.advice == "did you mean Scene?"


def test_cells_are_texts_alone(docs: vekdb.Log) -> None:
    with pytest.raises(TypeError, match="int"):
        docs[0]["Take"] = 3  # type: ignore[assignment]
    assert docs[0]["Take"] == "1"


def test_an_update_stores_all_cells_or_none(docs: vekdb.Log) -> None:
    with pytest.raises(KeyError):
        docs[0].update({"Scene": "99", "Nothing": "1"})
    assert docs[0]["Scene"] == "12"
    docs[0].update({"Scene": "99"}, Take="7")
    assert (docs[0]["Scene"], docs[0]["Take"]) == ("99", "7")


def test_bytes_that_are_no_utf8_are_kept() -> None:
    log = vekdb.loads(b"Name\tNotes\na\xff\tb\n", "x.tsv", encoding="utf-8")
    made = vekdb.Log(["A"], [{"A": b"x\xffy"}])
    assert made[0]["A"] == "x\udcffy"
    made[0]["A"] = made[0]["A"] + "\udcfe"
    assert made[0]["A"].encode("utf-8", "surrogateescape") == b"x\xffy\xfe"
    assert b"x\xffy\xfe" in made.to_bytes("vekdb")
    assert len(log) == 1


def test_the_second_of_a_name_is_found_by_its_number() -> None:
    log = vekdb.loads("Reel,Reel,,\na,b,c,d\n", "x.csv")
    names = log.columns.names
    assert names[:2] == ["Reel#1", "Reel#2"]
    assert [log[0][name] for name in names] == ["a", "b", "c", "d"][: len(names)]
    with pytest.raises(KeyError):
        log[0]["Reel"]


def test_rows_are_added_and_removed(docs: vekdb.Log) -> None:
    added = docs.append({"Scene": "77"}, Take="4")
    assert len(docs) == 7 and docs[-1] == added and added.line == 0
    third = docs[2]
    del docs[0]
    del docs[0:2]
    assert len(docs) == 4
    assert third.is_stale and added.index == 3
    with pytest.raises(vekdb.StaleError):
        third["Scene"]
    docs.remove(docs.where("Scene=77"))
    assert [row["Scene"] for row in docs] == ["12", "14", "7"]
    docs.remove(docs[0])
    assert len(docs) == 2
    with pytest.raises(KeyError):
        docs.append({"Nothing": "1"})
    assert len(docs) == 2


def test_rows_of_another_log_are_not_removed(docs: vekdb.Log, dailies: vekdb.Log) -> None:
    with pytest.raises(ValueError):
        docs.remove(dailies[0])


def test_columns_are_sequences_that_keep_their_place(docs: vekdb.Log) -> None:
    take = docs["Take"]
    assert take.type == "long" and take.index == 2 and len(take) == 6
    assert take[0] == "1" and take[-1] == "1" and take[1:3] == ["2", "1"]
    assert list(take) == take.to_list() == docs.column("take")
    docs.remove_column("Reel")
    assert take.index == 1 and take[1] == "2"
    take[1] = "5"
    assert docs[1]["Take"] == "5"
    take.name = "Number"
    assert "Number" in docs.columns and docs[1]["Number"] == "5"
    docs.remove_column("Number")
    with pytest.raises(vekdb.StaleError):
        take[0]
    assert docs.add_column("New").index == len(docs.columns) - 1
    with pytest.raises(vekdb.UsageError):
        docs.add_column("new")


def test_columns_of_a_log_without_rows_are_edited() -> None:
    log = vekdb.Log(["A", "B"])
    log.rename_column("A", "C")
    log.remove_column("B")
    assert log.columns.names == ["C"]


def test_parameters_are_a_mapping(docs: vekdb.Log) -> None:
    assert dict(docs.parameters) == {"Project": "Night shoot", "FPS": "24"}
    docs.parameters["FPS"] = "25"
    assert docs.parameters["fps"] == "25"
    with pytest.raises(KeyError):
        docs.parameters["Nothing"]
    with pytest.raises(vekdb.UsageError):
        docs.parameters["a:b"] = "c"


def test_conditions_are_texts_and_built(docs: vekdb.Log) -> None:
    assert len(docs.where("Scene==12")) == 3
    assert len(docs.where("Scene==12", "Take==2")) == 2
    assert len(docs.where("Scene==7", "Take==2", any=True)) == 3
    assert len(docs.where(col("Take") >= "2")) == 2
    assert len(docs.where(col("Notes").matches("boom|head"))) == 2
    assert len(docs.where(col("Notes").is_empty())) == 2
    assert len(docs.where(col("Scene") != "12", col("Reel") == "A002")) == 1
    assert [r["Reel"] for r in docs.where(at="02:00:20:00")] == ["B001"]
    assert len(docs.where(tagged=True)) == 2 == len(docs.tagged)
    assert docs.where(unique="Scene").column("Scene") == ["12", "12A", "14", "7"]
    page = docs.where(order=["Reel", "Scene"], limit=2, offset=1)
    assert len(page) == 2 and page.matched == 6


def test_a_column_that_is_not_there_is_a_column_error(docs: vekdb.Log) -> None:
    calls: List[Callable[[], object]] = [
        lambda: docs.where("Nothing=1"),
        lambda: docs.where(col("Nothing") == "1"),
        lambda: docs.where(order="Scene,Nothing"),
        lambda: docs.where(unique="Nothing"),
        lambda: docs.diff(docs.copy(), "Nothing"),
        lambda: docs.merge(docs.copy(), key="Nothing"),
        lambda: docs.to_text("csv", columns=["Nothing"]),
    ]
    for call in calls:
        with pytest.raises(vekdb.ColumnError, match="Nothing"):
            call()
    with pytest.raises(vekdb.UsageError) as error:
        docs.where("Scene~(")
    assert not isinstance(error.value, vekdb.ColumnError)


def test_a_former_name_finds_no_column(docs: vekdb.Log) -> None:
    row = docs[0]
    docs.rename_column("Scene", "Szene")
    assert "Scene" not in row and "Scene" not in docs.columns and row.get("Scene") is None
    assert "Scene" not in dict(row) and row["Szene"] == "12"
    with pytest.raises(vekdb.ColumnError):
        docs.where("Scene=12")
    docs.rename_column("Take", "Scene")
    docs.rename_column("Szene", "Take")
    assert (row["Take"], row["Scene"]) == ("12", "1")


@pytest.mark.parametrize("condition", ["Scene", "Scene~(", "Nothing=1"])
def test_a_condition_that_cannot_be_read_is_a_usage_error(docs: vekdb.Log, condition: str) -> None:
    with pytest.raises(vekdb.UsageError):
        docs.where(condition)


def test_options_that_are_not_there_are_type_errors(docs: vekdb.Log) -> None:
    with pytest.raises(TypeError):
        docs.where(ordre="Take")  # type: ignore[call-arg]
    with pytest.raises(TypeError):
        docs.to_bytes("csv", colums=[])
    with pytest.raises(ValueError):
        docs.where(("Scene", "<>", "1"))
    with pytest.raises(ValueError):
        docs.where(limit=-1)


def test_tags_are_set_and_cleared(docs: vekdb.Log) -> None:
    docs[0].tagged = True
    docs.where("Scene==14").tag(False)
    assert [row.tagged for row in docs] == [True, True, False, False, False, False]
    log = vekdb.Log(["A"], [{"A": "1"}, {"A": "2"}])
    log[1].tagged = True
    assert "Tag" in log.columns and log.tagged.column("A") == ["2"]


def test_a_log_that_was_read_is_not_saved_into_its_file(docs: vekdb.Log) -> None:
    with pytest.raises(vekdb.UsageError, match="opened to be changed") as error:
        docs.save()
    assert "openToChange" not in str(error.value)


def test_a_log_is_saved_into_its_file(tmp_path: pathlib.Path, samples: pathlib.Path) -> None:
    path = tmp_path / "a.vek"
    path.write_bytes((samples / "docs.vek").read_bytes())
    with vekdb.open(path, edit=True) as log:
        log[0]["Scene"] = "100"
        with pytest.raises(vekdb.WriteError):
            vekdb.open(path, edit=True)
        assert log.save(keep_old=True).is_whole
        with pytest.raises(vekdb.UsageError):
            log.save()
    assert vekdb.open(str(path))[0]["Scene"] == "100"
    assert (tmp_path / "a.vek.bak").read_bytes() == (samples / "docs.vek").read_bytes()


def test_closing_lets_go_of_the_file(tmp_path: pathlib.Path, samples: pathlib.Path) -> None:
    path = tmp_path / "a.vek"
    path.write_bytes((samples / "docs.vek").read_bytes())
    log = vekdb.open(path, edit=True)
    row, view, column = log[0], log[1:], log["Scene"]
    log.close()
    log.close()
    assert log.closed
    asks: "list[Callable[[], object]]" = [lambda: row["Scene"], lambda: len(view)]
    asks += [lambda: column[0], lambda: len(log)]
    for ask in asks:
        with pytest.raises(vekdb.ClosedError):
            ask()
    vekdb.open(path, edit=True).close()


def test_a_missing_file_is_a_file_not_found_error(tmp_path: pathlib.Path) -> None:
    with pytest.raises(FileNotFoundError) as caught:
        vekdb.open(tmp_path / "none.vek")
    assert isinstance(caught.value, vekdb.ReadError)
    assert caught.value.file == str(tmp_path / "none.vek")


def test_a_file_that_is_no_log_is_a_read_error_with_its_line() -> None:
    with pytest.raises(vekdb.ReadError) as caught:
        vekdb.loads('[{"a": "1"},\n {"a": 1,,}]', "x.json")
    assert caught.value.file == "x.json"
    assert caught.value.line == 2
    assert str(caught.value).startswith("x.json:2")


def test_problems_say_their_line() -> None:
    log = vekdb.loads("A,B\n1,2\n3\n", "x.csv")
    assert [problem.line for problem in log.problems] == [3]
    assert log.problems[0].text.startswith("x.csv:3")


def test_every_format_is_written_and_read(docs: vekdb.Log, tmp_path: pathlib.Path) -> None:
    docs.parameters["FPS"] = "24"
    for name in vekdb.formats_written():
        if name in BY_ENGINES:
            continue
        path = tmp_path / ("log." + name)
        docs.save_as(path, name, rate="24")
        assert path.stat().st_size > 0
        if name in vekdb.formats_read():
            again = vekdb.open(path, format=name)
            assert len(again) == 6, name
            assert again.format == name


@pytest.mark.parametrize("name", BY_ENGINES)
def test_formats_of_engines_say_what_to_install(
    docs: vekdb.Log, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    assert name in vekdb.formats_written() and name not in vekdb.formats_read()
    monkeypatch.setenv(BY_ENGINES[name], "/nowhere/engine")
    path = tmp_path / ("log." + name)
    with pytest.raises(vekdb.WriteError, match="install"):
        docs.save_as(path)
    assert not path.exists()


def test_formats_are_found_by_the_ending() -> None:
    assert vekdb.format_of_path(pathlib.Path("a/b.ALE")) == "ale"
    assert vekdb.format_of_path("b.nothing") is None
    assert "fcpxml" in vekdb.formats_read() and "fcpxml" not in vekdb.formats_written()


def test_file_objects_are_read_and_written(docs: vekdb.Log) -> None:
    file = io.BytesIO()
    saved = docs.write(file, "csv")
    assert [loss.count for loss in saved.losses] == [2]
    file.seek(0)
    again = vekdb.open(file)
    assert again.column("Scene") == docs.column("Scene")
    assert docs[:2].to_text("tsv", columns=["Take", "Reel"]) == "Take\tReel\n1\tA001\n2\tA001\n"
    text = vekdb.open(io.StringIO("A,B\n1,2\n"))
    assert text[0]["B"] == "2"


def test_what_a_file_object_raises_comes_out(docs: vekdb.Log) -> None:
    class Full:
        def write(self, data: bytes, /) -> int:
            raise OSError(28, "full")

    class Meddling:
        def write(self, data: bytes, /) -> int:
            docs[0]["Scene"] = "1"
            return len(data)

    with pytest.raises(OSError, match="full"):
        docs.write(Full(), "csv")
    with pytest.raises(vekdb.InUseError):
        docs.write(Meddling(), "csv")
    assert docs[0]["Scene"] == "12"


def test_a_file_object_may_take_a_part_at_a_time(docs: vekdb.Log) -> None:
    class Slow:
        def __init__(self) -> None:
            self.taken = b""

        def write(self, data: bytes, /) -> int:
            self.taken += data[:7]
            return min(len(data), 7)

    file = Slow()
    docs.write(file, "jsonl")
    assert file.taken == docs.to_bytes("jsonl")


def test_a_log_is_made_of_columns_and_rows() -> None:
    log = vekdb.Log([("Start", "timecode"), "Notes"], [{"Start": "01:00:00:00"}, {}])
    assert log.columns["Start"].type == "timecode" and len(log) == 2
    again = vekdb.loads(log.to_bytes("vekdb"))
    assert again.tuples() == [("01:00:00:00", ""), ("", "")]
    with pytest.raises(ValueError):
        vekdb.Log([("A", "nothing")])
    with pytest.raises(vekdb.UsageError):
        vekdb.Log([])


def test_a_copy_is_a_log_of_its_own(docs: vekdb.Log) -> None:
    del docs[0]
    copied = docs.copy()
    assert copied.tuples() == docs.tuples()
    assert copied[0].line == docs[0].line
    copied[0]["Scene"] = "1"
    assert docs[0]["Scene"] == "12"
    assert dict(copied.parameters) == dict(docs.parameters)


def test_logs_are_merged(docs: vekdb.Log) -> None:
    other = vekdb.Log(["Reel", "Extra"], [{"Reel": "C001", "Extra": "x"}])
    merged = docs.merge(other, unlike=True)
    assert merged.is_whole and len(docs) == 7 and docs[-1]["Extra"] == "x"
    a = vekdb.Log(["Key", "V"], [{"Key": "1", "V": "a"}])
    b = vekdb.Log(["Key", "V"], [{"Key": "1", "V": "b"}, {"Key": "2", "V": "c"}], name="b")
    told = vekdb.merge(a, b, key="Key")
    assert told.cells == 1 and told.conflicts[0].value == "b" and told.conflicts[0].kept == "a"
    assert told.conflicts[0].kind == "cell" and told.conflicts[0].row == 0
    assert a.tuples() == [("1", "a"), ("2", "c")]
    a.merge(b, key="Key", prefer="last")
    assert a[0]["V"] == "b"
    with pytest.raises(vekdb.Error):
        a.merge(a)


def test_logs_with_removed_rows_are_merged_and_compared(docs: vekdb.Log) -> None:
    other = docs.copy()
    del other[0]
    assert [(r.kind, r.a) for r in docs.diff(other, "Start time").rows] == [("removed", 0)]
    target = vekdb.Log(["Reel"])
    target.merge(other, unlike=True)
    assert len(target) == 5
    del docs[0]
    del docs[1]
    found = docs.diff(other, "Start time")
    assert [(r.kind, r.a, r.b) for r in found.rows] == [("added", None, 1)]
    docs[-1]["Scene"] = "other"
    told = docs.merge(other, key="Start time", unlike=True)
    assert len(docs) == 5
    assert [(c.kind, c.row) for c in told.conflicts] == [("cell", 3)]
    assert docs[told.conflicts[0].row or 0]["Scene"] == "other"


def test_logs_are_compared(docs: vekdb.Log) -> None:
    other = docs.copy()
    assert not docs.diff(other)
    other[1]["Scene"] = "13"
    other.add_column("New")
    found = vekdb.diff(docs, other, key="Start time")
    assert found and found.only_in_second == ["New"]
    assert found.rows[0].kind == "changed"
    assert found.rows[0].cells == [vekdb.CellDifference("Scene", "12", "13")]
    with pytest.raises(vekdb.Error):
        docs.diff(other, "Nothing")


def test_everything_has_a_docstring() -> None:
    bare = {"keys", "values", "items"}
    for name in vekdb.__all__:
        thing = getattr(vekdb, name)
        assert thing.__doc__, name
        if isinstance(thing, type) and thing.__module__.startswith("vekdb"):
            for part, value in vars(thing).items():
                if not part.startswith("_") and part not in bare:
                    assert value.__doc__, f"{name}.{part}"


def test_errors_are_pickled_whole() -> None:
    import pickle

    with pytest.raises(vekdb.ReadError) as caught:
        vekdb.loads('[{"a": "1"},\n {"a": 1,,}]', "x.json")
    again = pickle.loads(pickle.dumps(caught.value))
    assert type(again) is type(caught.value)
    assert (str(again), again.line, again.file) == (str(caught.value), 2, "x.json")
