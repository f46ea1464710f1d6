import gc
import pathlib

import pytest

import vekdb

FIRST = "00112233445566778899aabbccddeeff" + "0001" + "4d"
SECOND = "ffeeddccbbaa99887766554433221100" + "0002" + "42"


def test_a_container_is_written_and_read(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "bin.rak"
    vekdb.write_container(
        path,
        [(FIRST, {"X": "10", "Y": "a\udcffb"}), (SECOND, {})],
        name="Day 1",
        columns=["X", "Y"],
        attributes={"Colour": "blue"},
        permanent=True,
    )
    box = vekdb.Container(path)
    assert (box.name, box.permanent, len(box), box.is_whole) == ("Day 1", True, 2, True)
    assert box.attributes["Colour"] == "blue"
    assert box.columns == ["Cookie", "X", "Y"]
    assert [item.identity for item in box] == [FIRST, SECOND]
    assert FIRST in box and "nothing" not in box
    item = box[0]
    del box
    gc.collect()
    assert item["X"] == "10" and item["Y"] == "a\udcffb" and item.get("Z") is None
    with pytest.raises(KeyError):
        item["Z"]


def test_an_empty_container_is_written(tmp_path: pathlib.Path) -> None:
    vekdb.write_container(tmp_path / "a", [], name="Empty")
    box = vekdb.Container(tmp_path / "a", header_only=True)
    assert len(box) == 0 and box.name == "Empty"
    with pytest.raises(IndexError):
        box[0]


def test_what_is_no_container_is_a_read_error(tmp_path: pathlib.Path) -> None:
    with pytest.raises(FileNotFoundError):
        vekdb.Container(tmp_path / "none")
    (tmp_path / "text").write_text("no container\n")
    with pytest.raises(vekdb.ReadError) as caught:
        vekdb.Container(tmp_path / "text")
    assert caught.value.file == str(tmp_path / "text")


def test_what_cannot_be_written_is_an_error_and_the_old_file_whole(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a"
    vekdb.write_container(path, [(FIRST, {})], name="Old")
    with pytest.raises(ValueError):
        vekdb.write_container(path, [("nothing", {})], name="New")
    with pytest.raises(KeyError):
        vekdb.write_container(path, [(FIRST, {"Z": "1"})], name="New")
    with pytest.raises(vekdb.WriteError):
        vekdb.write_container(tmp_path / "none" / "a", [], name="New")
    assert vekdb.Container(path).name == "Old"
