#!/usr/bin/env python3
"""Holds what tests have not reached of the library against the list of what they cannot reach, gaps.tsv.

usage: gaps.py LINES.info BRANCHES.json      as llvm-cov exports them

A gap is known by its file, its function, the text of its line, and what is not reached there, so that it stays known
when lines move. Fails if there is one that is not listed, or if one is listed that is none.
"""

import bisect
import collections
import csv
import json
import pathlib
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parents[2]
LIST = pathlib.Path(__file__).with_name("gaps.tsv")
LIBRARY = "Common"
# A gap that the list calls so may be reached at times.
BY_LUCK = "by luck"

Gap = collections.namedtuple("Gap", "file function text missing")


def flat(text):
    return " ".join(text.split())


class Source:
    """One source of the library: its text, the functions in it, and how often lines and conditions were reached."""

    def __init__(self, path):
        self.name = path
        self.text = (PROJECT / path).read_text(encoding="utf-8").splitlines()
        self.functions = {}  # first line: name
        self.lines = {}  # number: how often
        self.conditions = collections.defaultdict(lambda: [0, 0])  # place: how often true, and false

    def function_at(self, line):
        starts = sorted(self.functions)
        index = bisect.bisect_right(starts, line)
        return self.functions[starts[index - 1]] if index else ""

    def gap(self, line, missing):
        return Gap(self.name, self.function_at(line), flat(self.text[line - 1]), missing)

    def between(self, line, column, last_line, last_column):
        text = "\n".join(self.text[line - 1:last_line])
        rest = len(self.text[last_line - 1]) - last_column + 1
        return flat(text[column - 1:len(text) - rest]) or "what a macro asks"

    def gaps(self):
        yield from self.gaps_of_lines()
        for place, (true, false) in sorted(self.conditions.items()):
            if self.lines.get(place[0]) == 0:
                continue
            for count, value in ((true, "true"), (false, "false")):
                if count == 0:
                    yield self.gap(place[0], f"{self.between(*place)} is never {value}")

    def gaps_of_lines(self):
        """Lines in a row are one gap."""
        first = None
        unreached = [line for line, count in sorted(self.lines.items()) if count == 0]
        for index, line in enumerate(unreached):
            first = line if first is None else first
            if index + 1 == len(unreached) or unreached[index + 1] != line + 1:
                yield self.gap(first, "the line" if first == line else f"{line - first + 1} lines")
                first = None


def own_name(path):
    """The path within the project, if it is there."""
    return str(path).removeprefix(f"{PROJECT}/")


def plain_names(mangled):
    """The functions' names, without scopes, templates and parameters."""
    names = [name.rpartition(":")[2] for name in mangled]
    demangled = subprocess.run(["c++filt", "--no-params"], input="\n".join(names), capture_output=True, check=True,
                               text=True).stdout.split("\n")
    return [name.split("<")[0].rpartition("::")[2] or name for name in demangled]


def read_lines(path, sources):
    source = None
    for row in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        kind, _, rest = row.partition(":")
        if kind == "SF":
            source = sources[own_name(rest)]
        elif kind == "DA":
            line, count = map(int, rest.split(",")[:2])
            source.lines[line] = count


def read_report(lines, branches):
    report = json.loads(pathlib.Path(branches).read_text(encoding="utf-8"))["data"][0]
    sources = {own_name(file["filename"]): Source(own_name(file["filename"])) for file in report["files"]}
    for file in report["files"]:
        conditions = sources[own_name(file["filename"])].conditions
        for branch in file["branches"]:
            counts = conditions[tuple(branch[:4])]
            counts[0] += branch[4]
            counts[1] += branch[5]
    names = plain_names([function["name"] for function in report["functions"]])
    for function, name in zip(report["functions"], names):
        source = sources.get(own_name(function["filenames"][0]))
        if source:
            source.functions.setdefault(function["regions"][0][0], name)
    read_lines(lines, sources)
    return sources


def unmeasured(sources):
    """Sources that no program has been built from."""
    files = sorted((PROJECT / LIBRARY).rglob("*.cpp"))
    return [Gap(own_name(file), "", "", "the file") for file in files if own_name(file) not in sources]


def listed():
    """What is known: {gap: class}, and how often each is expected."""
    with open(LIST, newline="", encoding="utf-8") as file:
        rows = [row for row in csv.reader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
                if row and not row[0].startswith("#")]
    malformed = [row for row in rows if len(row) != 6 or not row[5].strip()]
    if malformed:
        sys.exit(f"{LIST.name}: each row has six columns, the last one with a reason: {malformed}")
    return collections.Counter(Gap(*row[:4]) for row in rows), {Gap(*row[:4]) for row in rows if row[4] == BY_LUCK}


def show(title, gaps):
    for gap in sorted(gaps.elements()):
        print(title, "\t".join(gap), sep="\t")


def totals(counts):
    counts = list(counts)
    return f"{sum(1 for count in counts if count > 0)} of {len(counts)}"


def main():
    sources = read_report(*sys.argv[1:])
    found = collections.Counter(gap for source in sources.values() for gap in source.gaps())
    found.update(unmeasured(sources))
    known, by_luck = listed()
    new, gone = found - known, known - found
    for gap in by_luck:
        del gone[gap]
    show("not reached:", new)
    show("listed, but reached or gone:", gone)
    lines = totals(count for source in sources.values() for count in source.lines.values())
    branches = totals(count for source in sources.values() for counts in source.conditions.values() for count in counts)
    print(f"lines {lines}, branches {branches}, {known.total()} gaps listed")
    return 1 if new or gone or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
