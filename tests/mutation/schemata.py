"""Writes sources that hold all their mutants at once, one of which can be chosen at run time."""

import bisect
import collections
import dataclasses
import re

from source import CONSTANT

# What is mutated at run time is no constant any more. Mutants that only a static assertion can catch need a
# build of their own.
NO_ASSERTIONS = "#define static_assert(...) static_assert(true)"
# Every alternative stands on lines of a file of its own name, so that what the compiler says about it can be
# told from all else.
MARKER = re.compile(r"\b(mutant|variable)-(\d+)\b")


@dataclasses.dataclass
class Node:
    """A piece of the source and what may stand in its place."""
    start: int
    end: int
    form: str
    variants: list = dataclasses.field(default_factory=list)   # (mutant's number, text)
    mutant: object = None
    is_condition: bool = False   # what decides a branch: may be anything that becomes a bool
    children: list = dataclasses.field(default_factory=list)


class Writer:
    def __init__(self, name, source, mutants, variable_numbers, header, uses):
        self.name = name
        self.uses = uses
        self.source = source
        self.header = header
        self.mutants = [mutant for mutant in mutants if not mutant.needs_build and not mutant.enumerator]
        self.variable_numbers = variable_numbers
        self.line_starts = [0] + [match.end() for match in re.finditer(b"\n", source)]
        self.marker = name

    def write(self):
        """The instrumented source."""
        root = Node(0, len(self.source), "file")
        for node in sorted(self.nodes(), key=lambda node: (node.start, -node.end)):
            self.insert(root, node)
        return f'#include "{self.header}"\n{NO_ASSERTIONS}\n#line 1 "{self.name}"\n' + self.inside(root)

    def nodes(self):
        nodes = {}
        for mutant in self.mutants:
            for start, end, text in mutant.edits:
                form = "expression" if mutant.form == "condition" else mutant.form
                node = nodes.setdefault((start, end, form), Node(start, end, form, mutant=mutant))
                node.variants.append((mutant.number, text))
                node.is_condition = node.is_condition or mutant.form == "condition"
            if mutant.variable is not None:
                start, end, _ = mutant.variable
                nodes.setdefault((start, end, "variable"), Node(start, end, "variable", mutant=mutant))
        for start, end, number, text in self.uses:
            nodes[start, end, "expression"].variants.append((number, text))
        return nodes.values()

    def insert(self, parent, node):
        for child in reversed(parent.children):
            if child.start <= node.start and node.end <= child.end:
                self.insert(child, node)
                return
            if child.end > node.start:
                raise ValueError(f"{self.name}: {child.start}-{child.end} and {node.start}-{node.end} overlap")
        parent.children.append(node)

    # Rendering.

    def original(self, start, end):
        return self.source[start:end].decode()

    def inside(self, node, start=None, end=None):
        """The node's own text with its children rendered."""
        position = node.start if start is None else start
        end = node.end if end is None else end
        parts = []
        for child in node.children:
            if child.start < position or child.end > end:
                continue
            parts += [self.original(position, child.start), self.render(child)]
            position = child.end
        return "".join(parts) + self.original(position, end)

    def back(self, offset):
        return f'\n#line {bisect.bisect_right(self.line_starts, offset)} "{self.marker}"\n'

    def chosen(self, number, mutant):
        return f"mutation::{'IsChosenAtRunTime' if mutant.in_constexpr else 'IsChosen'}({number})"

    def render(self, node):
        return getattr(self, "render_" + node.form)(node)

    def render_expression(self, node):
        choices = "".join(f'\n#line 1 "mutant-{number}"\n{self.chosen(number, node.mutant)} ? ({text}) :'
                          for number, text in node.variants)
        cast = "static_cast<bool>" if node.is_condition else ""
        return f"({choices}{self.back(node.start)}{cast}({self.inside(node)}))"

    def render_statement(self, node):
        number = node.variants[0][0]
        return (f'{{\n#line 1 "mutant-{number}"\nif (!{self.chosen(number, node.mutant)})'
                f"{self.back(node.start)}{{ {self.inside(node)} }}}}")

    def render_guard(self, node):
        number = node.variants[0][0]
        written, name, start, end = node.mutant.guard
        arguments = self.inside(node, start, end) if end > start else ""
        kind = f"decltype({written}({self.original(start, end)}))" if arguments else written
        return (f'\n#line 1 "mutant-{number}"\nstd::optional<{kind}> {name}; '
                f"if (!{self.chosen(number, node.mutant)}) {name}.emplace({arguments});{self.back(node.end)}")

    def render_variable(self, node):
        """The variable as one that is made at run time."""
        number = self.variable_numbers[(self.name, node.start, node.end)]
        outer, self.marker = self.marker, f"variable-{number}"
        keyword = re.search(rb"\bconstexpr\b", self.source[node.start:node.end])
        start, end = node.start + keyword.start(), node.start + keyword.end()
        text = self.original(node.start, start) + self.inside(node, end, node.end)
        text = self.back(node.start) + text
        self.marker = outer
        return text + self.back(node.end)


def variable_of(mutant):
    return (mutant.file, *mutant.variable[:2]) if mutant.variable is not None else None


def number_variables(mutants):
    """A number for each compile-time variable that holds mutants."""
    places = {variable_of(mutant) for mutant in mutants if mutant.variable is not None}
    return {place: number for number, place in enumerate(sorted(places))}


def uses_of_enumerators(mutants):
    """Where the mutants of enumerators' numbers are chosen: {file: [(start, end, number, text)]}. These are the places
    where another enumerator is tried. What cannot be chosen at each of them needs a build of its own."""
    places, uses = collections.defaultdict(list), collections.defaultdict(list)
    for mutant in mutants:
        if mutant.operator == "enumerator":
            places["::".join(mutant.original.split("::")[-2:])].append(mutant)
    for mutant in mutants:
        its = places[mutant.enumerator] if mutant.enumerator else []
        if mutant.enumerator and (not its or any(place.needs_build for place in its)):
            mutant.needs_build = CONSTANT
        for place in its if not mutant.needs_build else []:
            text = f"static_cast<decltype({place.original})>({mutant.replacement})"
            uses[place.file].append((*place.edits[0][:2], mutant.number, text))
    return uses


def instrument(name, source, mutants, variable_numbers, header, uses=()):
    return Writer(name, source, mutants, variable_numbers, header, uses).write()


def apply(mutant, source):
    """The source with this one change."""
    for start, end, text in sorted(mutant.edits, reverse=True):
        source = source[:start] + text.encode() + source[end:]
    return source


COMPLAINT = re.compile(r"^([^:\s]+):(\d+):\d+: (?:fatal )?error: ")


def culprits(output):
    """The numbers of the mutants and variables that the compiler complains about, and the complaints that
    name neither."""
    mutants, variables, unclear = set(), set(), set()
    block = []
    for line in output.splitlines() + ["x: error: "]:
        if re.search(r": (fatal )?error: ", line) and block:
            found = MARKER.findall(block[0]) or [pair for part in block for pair in MARKER.findall(part)]
            if not found:
                unclear.add(block[0])
            for kind, number in found:
                (mutants if kind == "mutant" else variables).add(int(number))
            block = []
        if block or re.search(r": (fatal )?error: ", line):
            block.append(line)
    return mutants, variables, unclear
