#!/usr/bin/env python3
"""Writes the tables of simulated runs in docs/performance.md from the benchmarks' comma-separated values.

Usage: bench/tables.py RESULTS_FOLDER PAGE
Each table stands between the lines "<!-- table NAME -->" and "<!-- end -->"; what is between them is replaced.
"""

import csv
import pathlib
import re
import sys

HOME, LONGEST = "9 + 12 bytes", "32 + 64 bytes"


def unique(rows, column):
    return list(dict.fromkeys(row[column] for row in rows))


def markdown(headings, lines, numbers=False):
    rule = "|---" + ("|---:" if numbers else "|---") * (len(headings) - 1) + "|"
    texts = ["| " + " | ".join(line) + " |" for line in [headings, *lines]]
    return "\n".join([texts[0], rule, *texts[1:]])


def by_loss(rows, labels, cell):
    """A line for each combination of the labels, a column for each loss."""
    losses = unique(rows, "loss %")
    lines = {}
    for row in rows:
        lines.setdefault(tuple(row[label] for label in labels), {})[row["loss %"]] = cell(row)
    return markdown(labels + [loss + " %" for loss in losses],
                    [[*key, *(cells.get(loss, "") for loss in losses)] for key, cells in lines.items()])


def times(row):
    return f'{row["median s"]} / {row["p95 s"]}'


def to_bound(row):
    return f'{times(row)} ({row["median to bound"]} / {row["p95 to bound"]})'


def to_quiet(row):
    return f'{times(row)} ({row["median to quiet"]} [{row["low"]}, {row["high"]}] / {row["p95 to quiet"]})'


def to_best(row):
    return f'{times(row)} ({row["median to best peer"]} [{row["low"]}, {row["high"]}] / {row["p95 to best peer"]})'


class Results:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)

    def rows(self, name, **wanted):
        with open(self.folder / f"{name}.csv", newline="") as file:
            rows = list(csv.DictReader(file))
        wanted = {column.replace("_", " "): values for column, values in wanted.items()}
        return [row for row in rows if all(row[column] in values for column, values in wanted.items())]

    def tables(self):
        for packet, name in ((HOME, "home"), (LONGEST, "longest")):
            rows = self.rows("provision", packet=[packet])
            yield f"provision-{name}", by_loss(rows, ["air", "sent"], to_bound)
        rows = [row | {"air": f'{row["air"]}, {row["loss %"]} % lost'} for row in self.rows("airs")]
        sent = unique(rows, "sent")
        cells = {(row["air"], row["sent"]): to_quiet(row) for row in rows}
        yield "airs", markdown(["air", *sent], [[air, *(cells.get((air, one), "") for one in sent)]
                                                for air in unique(rows, "air")])
        rows = self.rows("peers", listens=["any time"])
        quiet = [row for row in rows if row["air"] == "one by one"]
        yield "peers", by_loss(quiet, ["sender"], to_best)
        yield "peers-frames", by_loss(quiet, ["sender"], lambda row: row["frames"])
        yield "peers-airs", by_loss([row for row in rows if row["air"] != "one by one"], ["air", "sender"], times)
        yield "peers-from-start", by_loss(self.rows("peers", listens=["from start"]), ["sender"], to_best)
        rows = self.rows("wrong-credentials")
        yield "wrong", markdown(list(rows[0]), [list(row.values()) for row in rows], numbers=True)
        quiet = self.rows("paces", air=["one by one"], sent=["both"])
        yield "paces", by_loss(quiet, ["packet", "pace"], to_bound)
        yield "paces-cost", by_loss([row for row in quiet if row["packet"] == HOME], ["pace"],
                                    lambda row: f'{row["frames"]} / {row["air ms"]} / {row["mJ"]}')
        load = {row["pace"]: {} for row in quiet}
        for row in quiet:
            load[row["pace"]][row["packet"]] = f'{row["frames/s"]} / {row["air time %"]} %'
        yield "paces-load", markdown(["pace", HOME, LONGEST], [[pace, *cells.values()] for pace, cells in load.items()])
        yield "paces-airs", by_loss(self.rows("paces", packet=[HOME]), ["air", "sent", "pace"], times)


def main():
    folder, page = sys.argv[1:]
    text = pathlib.Path(page).read_text()
    for name, table in Results(folder).tables():
        pattern = rf"(<!-- table {name} -->\n).*?(\n?<!-- end -->)"
        text, count = re.subn(pattern, lambda match: match[1] + "\n" + table + "\n\n" + match[2].lstrip(), text,
                              flags=re.DOTALL)
        if count != 1:
            sys.exit(f"{page}: there are {count} places for the table {name}, not 1")
    pathlib.Path(page).write_text(text)


if __name__ == "__main__":
    main()
