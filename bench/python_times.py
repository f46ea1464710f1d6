#!/usr/bin/env python3
"""Times of the Python module beside pandas and plain csv, on the same rows:

    python_times.py [ROWS]     a million cells are asked for one by one, a filter, a sort;
                               in seconds of the processor

with vekdb on PYTHONPATH; pandas is left out where it is not there.
"""

import csv
import os
import random
import sys
import tempfile
import time

import vekdb

try:
    import pandas
except ImportError:
    pandas = None

ROWS = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000


def rows():
    chance = random.Random(1)
    for n in range(ROWS):
        notes = "boom in shot" if chance.random() < 0.01 else f"note {chance.randrange(10**6)}"
        yield [f"A{n % 900:03}", str(chance.randrange(1, 200)), str(n % 12), notes]


def timed(what, work):
    begin = time.process_time()
    result = work()
    print(f"{what:34}{time.process_time() - begin:9.2f} s", flush=True)
    return result


def of_vekdb(path):
    log = timed("vekdb: open", lambda: vekdb.open(path))
    timed("vekdb: a cell of each row", lambda: [log[n]["Notes"] for n in range(ROWS)])
    timed("vekdb: loop over rows", lambda: [row["Notes"] for row in log])
    timed("vekdb: column at once", lambda: log.column("Notes"))
    view = timed("vekdb: filter", lambda: log.where("Notes=boom"))
    timed("vekdb: sort by Scene, Take", lambda: log.sorted("Scene", "Take"))
    return len(view)


def of_csv(path):
    def read():
        with open(path, newline="") as file:
            return list(csv.DictReader(file))

    table = timed("csv: read into dicts", read)
    timed("csv: a cell of each row", lambda: [table[n]["Notes"] for n in range(ROWS)])
    found = timed("csv: filter", lambda: [row for row in table if "boom" in row["Notes"].lower()])
    timed("csv: sort", lambda: sorted(table, key=lambda row: (int(row["Scene"]), int(row["Take"]))))
    return len(found)


def of_pandas(path):
    frame = timed("pandas: read_csv", lambda: pandas.read_csv(path, dtype=str))
    timed("pandas: a cell of each row", lambda: [frame.at[n, "Notes"] for n in range(ROWS)])
    timed("pandas: column at once", lambda: frame["Notes"].tolist())
    found = timed(
        "pandas: filter",
        lambda: frame[frame["Notes"].str.contains("boom", case=False, regex=False)],
    )
    timed(
        "pandas: sort",
        lambda: frame.sort_values(["Scene", "Take"], kind="stable", key=pandas.to_numeric),
    )
    return len(found)


def main():
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "day.csv")
        with open(path, "w", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(["Reel", "Scene", "Take", "Notes"])
            writer.writerows(rows())
        counts = {of_vekdb(path), of_csv(path)}
        if pandas is not None:
            counts.add(of_pandas(path))
        assert len(counts) == 1, counts


main()
