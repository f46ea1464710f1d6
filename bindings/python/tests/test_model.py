"""Random operations on a log and views of it, beside the same on plain lists."""

import os
import random
from typing import Dict, List, Union

import pytest

import vekdb

SEED = int(os.environ.get("VEKDB_TEST_SEED", random.randrange(2**32)))
STEPS = int(os.environ.get("VEKDB_TEST_STEPS", "2000"))
TEXTS = ["", "a", "A b", "\u00e4", "x\udcff", 'q"uote', "line\nend", "12", "7", "tab\t"]


class Model:
    """A log, and what it should hold: rows as dicts, views as lists of such rows."""

    def __init__(self, chance: random.Random) -> None:
        self.chance = chance
        self.columns = ["A", "B", "C"]
        self.log = vekdb.Log(self.columns)
        self.rows: List[Dict[str, str]] = []
        self.views: List[List[Dict[str, str]]] = []
        self.bases: List[int] = []
        self.real: List[vekdb.View] = []
        self.names = 0

    def text(self) -> str:
        return self.chance.choice(TEXTS)

    def append(self) -> None:
        row = {name: self.text() for name in self.columns if self.chance.random() < 0.8}
        self.log.append(row)
        self.rows.append({name: row.get(name, "") for name in self.columns})

    def edit(self) -> None:
        if not self.rows:
            return
        place = self.chance.randrange(-len(self.rows), len(self.rows))
        name, text = self.chance.choice(self.columns), self.text()
        self.log[place][name] = text
        self.rows[place][name] = text

    def edit_view(self) -> None:
        which = self.chance.randrange(len(self.views)) if self.views else -1
        if which < 0 or not self.views[which]:
            return
        place = self.chance.randrange(len(self.views[which]))
        name, text = self.chance.choice(self.columns), self.text()
        self.real[which][place][name] = text
        self.views[which][place][name] = text

    def slice(self) -> slice:
        start, stop = self.chance.randrange(-12, 12), self.chance.randrange(-12, 12)
        step = self.chance.choice([None, 1, 2, -1, -3])
        some = self.chance.random() < 0.5
        return slice(start if some else None, stop if self.chance.random() < 0.5 else None, step)

    def remove(self) -> None:
        if len(self.rows) > 60 or self.chance.random() < 0.1:
            part = self.slice()
            self.forget(self.rows[part])
            del self.log[part]
        elif self.rows:
            place = self.chance.randrange(len(self.rows))
            self.forget([self.rows[place]])
            del self.log[place]

    def forget(self, gone: List[Dict[str, str]]) -> None:
        ids = {id(row) for row in gone}
        for rows in [self.rows, *self.views]:
            rows[:] = [row for row in rows if id(row) not in ids]

    def take_out(self) -> None:
        if not self.views:
            return
        which = self.chance.randrange(len(self.views))
        part = self.slice()
        ids = {id(row) for row in self.views[which][part]}
        del self.real[which][part]
        above = {which}
        for i, base in enumerate(self.bases):
            if base in above:
                above.add(i)
        for i in above:
            self.views[i][:] = [row for row in self.views[i] if id(row) not in ids]

    def show(self) -> None:
        base = self.chance.randrange(-1, len(self.views))
        rows = self.rows if base < 0 else self.views[base]
        real: Union[vekdb.Log, vekdb.View] = self.log if base < 0 else self.real[base]
        if self.chance.random() < 0.5:
            part = self.slice()
            chosen, view = rows[part], real[part]
        else:
            name, text = self.chance.choice(self.columns), self.text()
            chosen = [row for row in rows if row[name] == text]
            view = real.where(vekdb.col(name) == text)
        if len(self.views) < 8:
            self.views.append(list(chosen))
            self.real.append(view)
            self.bases.append(base)
        assert view.tuples(*self.columns) == [tuple(row[n] for n in self.columns) for row in chosen]

    def sort(self) -> None:
        if not self.views:
            return
        which = self.chance.randrange(len(self.views))
        before = [tuple(row) for row in self.real[which].tuples(*self.columns)]
        self.real[which].sort(self.chance.choice(self.columns))
        assert sorted(before) == sorted(self.real[which].tuples(*self.columns))
        self.views[which] = [self.rows[row.index] for row in self.real[which]]

    def column(self) -> None:
        if self.chance.random() < 0.5 and len(self.columns) < 6:
            self.names += 1
            name = f"N{self.names}"
            self.log.add_column(name)
            self.columns.append(name)
            for row in self.rows:
                row[name] = ""
        elif len(self.columns) > 2:
            name = self.columns.pop(self.chance.randrange(len(self.columns)))
            self.log.remove_column(name)
            for row in self.rows:
                del row[name]

    def drop_view(self) -> None:
        if len(self.views) > 4:
            self.views.clear()
            self.real.clear()
            self.bases.clear()

    def check(self) -> None:
        assert self.log.columns.names == self.columns
        assert self.log.tuples() == [tuple(row[n] for n in self.columns) for row in self.rows]
        for rows, view in zip(self.views, self.real):
            assert len(view) == len(rows)
            assert view.tuples() == [tuple(row[n] for n in self.columns) for row in rows]


@pytest.mark.parametrize("round", range(2))
def test_a_log_and_its_views_are_as_plain_lists_are(round: int) -> None:
    print("VEKDB_TEST_SEED", SEED + round)
    model = Model(random.Random(SEED + round))
    steps = [model.append, model.append, model.edit, model.edit_view, model.remove, model.take_out]
    steps += [model.show, model.sort, model.column, model.append, model.drop_view]
    for step in range(STEPS // 2):
        model.chance.choice(steps)()
        if step % 7 == 0:
            model.check()
    model.check()
    again = vekdb.loads(model.log.to_bytes("jsonl"), "a.jsonl") if model.rows else model.log
    assert len(again) == len(model.rows)
