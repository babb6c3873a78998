"""One change of a source, and a source's bytes and tokens."""

import bisect
import dataclasses
import pathlib

from clang.cindex import TokenKind

# Why a mutant cannot be chosen at run time.
CONSTANT = "is a constant of the language"


@dataclasses.dataclass
class Mutant:
    """One change. The edits are what a source looks like with it: (start, end, text), in bytes."""
    file: str
    line: int
    function: str
    operator: str
    original: str
    replacement: str
    edits: list
    # How it is built in beside others: "expression", "condition", "statement" or "guard"; see schemata.py.
    form: str
    # The compile-time variable in whose initializer it stands, if any: its declaration's start and end, its name.
    variable: list = None
    # Whether it stands in a function that may run at compile time.
    in_constexpr: bool = False
    # Of a dropped guard: its type, its name, and where its arguments start and end.
    guard: list = None
    column: int = 0
    # Of an enumerator's number: the enumerator, as it is written where it is used.
    enumerator: str = ""
    number: int = -1
    # Why it cannot be built in beside others, if so: it needs a build of its own.
    needs_build: str = ""

    @property
    def key(self):
        return (self.file, tuple(tuple(edit) for edit in self.edits))


class Source:
    """A file's bytes and its tokens."""

    def __init__(self, unit, path):
        self.bytes = pathlib.Path(path).read_bytes()
        file = unit.get_file(str(path))
        extent = unit.get_extent(str(path), (0, len(self.bytes)))
        self.tokens = [token for token in unit.get_tokens(extent=extent)
                       if token.location.file and token.location.file.name == file.name
                       and token.kind != TokenKind.COMMENT]
        self.spelling = [token.spelling for token in self.tokens]
        self.starts = [token.extent.start.offset for token in self.tokens]
        self.ends = [token.extent.end.offset for token in self.tokens]

    def text(self, start, end):
        return self.bytes[start:end].decode()

    def first_token(self, offset):
        return bisect.bisect_left(self.starts, offset)

    def tokens_between(self, start, end):
        """The indices of the tokens that lie wholly between."""
        index = self.first_token(start)
        while index < len(self.starts) and self.ends[index] <= end:
            yield index
            index += 1

    def line(self, offset):
        return self.bytes.count(b"\n", 0, offset) + 1

    def column(self, offset):
        return offset - self.bytes.rfind(b"\n", 0, offset)
