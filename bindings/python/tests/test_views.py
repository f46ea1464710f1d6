import pathlib

import vekdb


def scenes(view: vekdb.View) -> "list[str]":
    return view.column("Scene")


def test_a_view_shows_what_is_edited_later(docs: vekdb.Log) -> None:
    view = docs.where("Scene==12", order="Start time")
    docs[0]["Notes"] = "new"
    assert view[0]["Notes"] == "new"
    view[1]["Notes"] = "newer"
    assert docs[1]["Notes"] == "newer"
    column = view["Notes"]
    column[2] = "newest"
    assert docs[3]["Notes"] == "newest" and len(column) == 3


def test_slices_are_views(docs: vekdb.Log) -> None:
    assert docs[1:3].column("Take") == ["2", "1"]
    assert docs[::-2].column("Scene") == ["7", "12", "12"]
    assert len(docs[4:100]) == 2 and len(docs[9:]) == 0
    assert docs[1:][1:][0] == docs[2]
    assert docs[-1:][-1]["Scene"] == "7"


def test_removed_rows_go_out_of_all_views(docs: vekdb.Log) -> None:
    below = docs.where(order="Scene", reverse=True)
    above = below.where("Scene=12", order="Take")
    top = above[0:3]
    assert (len(below), len(above), len(top)) == (6, 4, 3)
    gone = docs[0]
    docs.remove(gone)
    assert (len(below), len(above), len(top)) == (5, 3, 2)
    assert gone not in below
    docs.append({"Scene": "12"})
    assert (len(below), len(above), len(top)) == (5, 3, 2)


def test_what_leaves_a_view_leaves_those_above_it(docs: vekdb.Log) -> None:
    below = docs.where(order="Start time")
    above = below.where("Scene=12")
    other = docs.where("Scene=12")
    del below[0]
    del below[-2:]
    assert (len(docs), len(below), len(above), len(other)) == (6, 3, 3, 4)


def test_a_view_that_is_sorted_leaves_those_above_it_as_they_are(docs: vekdb.Log) -> None:
    below = docs[:]
    above = below.where("Scene=12")
    before = above.tuples()
    below.sort("Scene", "Take", reverse=True)
    assert scenes(below) == ["14", "12A", "12", "12", "12", "7"]
    assert above.tuples() == before
    assert docs.column("Scene") == ["12", "12", "12A", "12", "14", "7"]


def test_rows_that_compare_equal_keep_their_order(docs: vekdb.Log) -> None:
    view = docs.sorted("Take")
    view.sort("Scene")
    assert view.tuples("Scene", "Take") == [
        ("7", "1"),
        ("12", "1"),
        ("12", "2"),
        ("12", "2"),
        ("12A", "1"),
        ("14", "1"),
    ]
    backwards = docs[::-1].where("Scene==12")
    assert backwards.column("Reel") == ["B001", "A001", "A001"]
    assert docs[::-1].where(unique="Scene").column("Start time")[1] == "02:03:30:02"


def test_a_view_is_asked_again(docs: vekdb.Log) -> None:
    view = docs.where("Scene==12", order="Take")
    above = view.where("Reel==B001")
    docs[0]["Scene"] = "13"
    docs.append({"Scene": "12", "Take": "0", "Reel": "B001"})
    assert len(view) == 3
    view.refresh()
    assert view.column("Take") == ["0", "2", "2"]
    assert len(above) == 1
    above.refresh()
    assert above.column("Take") == ["0", "2"]


def test_many_cells_are_changed_at_once(docs: vekdb.Log) -> None:
    view = docs.where("Scene==12")
    view.set("Notes", "x-y-x")
    assert view.replace("x", "zz", "Notes") == 3
    assert docs.column("Notes").count("zz-y-zz") == 3
    assert docs[:1].replace("zz", "") == 1


def test_a_view_is_written_alone(docs: vekdb.Log, tmp_path: pathlib.Path) -> None:
    view = docs.where("Scene==12", order="Take", reverse=True)
    view.save_as(tmp_path / "a.csv", columns=["Take", "Scene"], line_ends="crlf")
    assert (tmp_path / "a.csv").read_bytes() == b"Take,Scene\r\n2,12\r\n2,12\r\n1,12\r\n"
    assert any(loss.count for loss in view.would_lose("csv").losses)


def test_a_view_of_views_is_as_deep_as_one_likes(docs: vekdb.Log) -> None:
    view = docs[:]
    for _ in range(2000):
        view = view[:]
    del docs[0]
    assert len(view) == 5
    del view


def test_a_loop_over_rows_that_are_removed_ends(docs: vekdb.Log) -> None:
    seen = 0
    for row in docs:
        docs.remove(row)
        seen += 1
    assert (seen, len(docs)) == (3, 3)
