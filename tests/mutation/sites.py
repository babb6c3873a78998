"""Finds in C++ sources what can be mutated: the places, by libclang, and what to write there."""

import pathlib

from clang.cindex import CursorKind, Index

from conditions import ConditionFinder
from literals import NUMBERS, LiteralFinder
from source import CONSTANT, Mutant, Source
from statements import FUNCTIONS, StatementFinder
from words import EQUALITY_OF_NUMBERS, REPLACEMENTS, as_bool, plain_type


class Finder(ConditionFinder, LiteralFinder, StatementFinder):
    """Collects the mutants of one file of one translation unit."""

    def __init__(self, source, path, name):
        self.source = source
        self.path = path
        self.name = name
        self.mutants = []
        self.declarations = []
        self.stack = []      # the cursors above the current one
        self.left_alone = []   # ranges of static assertions and of the assembler's texts

    # Walking.

    def find(self, unit):
        self.declarations = [child for child in unit.cursor.get_children()
                             if child.location.file is not None and child.location.file.name == self.path]
        for declaration in self.declarations:
            self.visit(declaration)
        self.change_texts()

    def visit(self, cursor):
        if cursor.kind in (CursorKind.STATIC_ASSERT, CursorKind.ASM_STMT):
            self.left_alone.append((cursor.extent.start.offset, cursor.extent.end.offset))
            return
        self.examine(cursor)
        self.stack.append(cursor)
        for child in cursor.get_children():
            self.visit(child)
        self.stack.pop()

    def examine(self, cursor):
        kind = cursor.kind
        if self.is_statement(cursor):
            self.drop_statement(cursor)
        if kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.replace_operator(cursor)
        elif kind == CursorKind.CALL_EXPR:
            self.replace_operator(cursor)
            self.swap_neighbours(cursor, list(cursor.get_arguments()))
        elif kind == CursorKind.INIT_LIST_EXPR:
            self.swap_neighbours(cursor, list(cursor.get_children()))
        elif kind == CursorKind.UNARY_OPERATOR:
            self.change_unary(cursor)
        elif kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.DO_STMT, CursorKind.FOR_STMT,
                      CursorKind.CONDITIONAL_OPERATOR):
            self.negate_condition(cursor)
        elif kind == CursorKind.RETURN_STMT:
            self.negate_result(cursor)
        elif kind == CursorKind.INTEGER_LITERAL:
            self.change_number(cursor)
        elif kind == CursorKind.CHARACTER_LITERAL:
            self.change_character(cursor)
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            text = self.text_of(cursor)
            if text in ("true", "false"):
                self.add_expression(cursor, "boolean", "false" if text == "true" else "true")
        elif kind == CursorKind.DECL_REF_EXPR:
            self.replace_constant(cursor)
        elif kind == CursorKind.DECL_STMT:
            self.drop_guard(cursor)

    # Making mutants.

    def text_of(self, cursor):
        return self.source.text(cursor.extent.start.offset, cursor.extent.end.offset)

    def add(self, start, operator, original, replacement, edits, form, guard=None):
        variable = None
        constexpr = False
        needs_build = enumerator = function = ""
        for above in reversed(self.stack):
            if above.kind in FUNCTIONS:
                function = above.spelling if above.kind != CursorKind.LAMBDA_EXPR else function
                head = self.head_of(above)
                constexpr = constexpr or "constexpr" in head
                if "consteval" in head:
                    needs_build = "runs at compile time only"
                if function:
                    break
            if above.kind == CursorKind.ENUM_CONSTANT_DECL and above.semantic_parent.is_scoped_enum():
                enumerator = f"{above.semantic_parent.spelling}::{above.spelling}"
            elif above.kind == CursorKind.ENUM_CONSTANT_DECL or self.is_in_bound(start, above):
                needs_build = CONSTANT
            if above.kind in (CursorKind.VAR_DECL, CursorKind.FIELD_DECL) and variable is None:
                if "constexpr" in self.head_of(above):
                    variable = [above.extent.start.offset, above.extent.end.offset, above.spelling]
        self.mutants.append(Mutant(self.name, self.source.line(start), function, operator, original, replacement,
                                   edits, form, variable, constexpr, guard, self.source.column(start),
                                   enumerator, needs_build=needs_build))

    def is_in_bound(self, offset, variable):
        """Whether the place stands in the bound of an array."""
        if variable.kind not in (CursorKind.FIELD_DECL, CursorKind.VAR_DECL):
            return False
        token = self.source.first_token(variable.location.offset) + 1
        return self.source.spelling[token] == "[" and \
            "]" not in self.source.spelling[token:self.source.first_token(offset)]

    def add_expression(self, cursor, operator, replacement, form="expression"):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if start < end:
            self.add(start, operator, self.source.text(start, end), replacement, [(start, end, replacement)], form)

    def head_of(self, declaration):
        """The words of a declaration before its name."""
        words = []
        for index in self.source.tokens_between(declaration.extent.start.offset, declaration.extent.end.offset):
            word = self.source.spelling[index]
            if word in (declaration.spelling, "{", "(", "="):
                break
            words.append(word)
        return words

    # Operators.

    def operator_token(self, cursor, children):
        """The index of the operator between two operands."""
        between = [index for index in self.source.tokens_between(children[0].extent.end.offset,
                                                                 children[1].extent.start.offset)
                   if self.source.spelling[index] not in ("(", ")")]
        return between[0] if len(between) == 1 else None

    def replace_operator(self, cursor):
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.CALL_EXPR:
            if not cursor.spelling.startswith("operator") or len(children) != 3:
                return
            children = [children[0], children[2]]
        if len(children) != 2 or children[0].extent.start.offset != cursor.extent.start.offset:
            return
        token = self.operator_token(cursor, children)
        if token is None:
            return
        spelling = self.source.spelling[token]
        left, right = (self.text_of(child) for child in children)
        for operator, table in REPLACEMENTS.items():
            others = list(table.get(spelling, ()))
            if operator == "equality" and children[0].type.get_canonical().kind in NUMBERS:
                others += EQUALITY_OF_NUMBERS.get(spelling, ())
            for other in others:
                self.replace_token(cursor, token, operator, other)
        if spelling in ("&&", "||"):
            self.add_expression(cursor, "logical operand", as_bool(left))
            self.add_expression(cursor, "logical operand", as_bool(right))

    def replace_token(self, cursor, token, operator, other):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        left = self.source.text(start, self.source.starts[token])
        right = self.source.text(self.source.ends[token], end)
        self.add_expression(cursor, operator, f"({left.strip()}) {other} ({right.strip()})")

    def change_unary(self, cursor):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        tokens = list(self.source.tokens_between(start, end))
        if not tokens:
            return
        first, last = self.source.spelling[tokens[0]], self.source.spelling[tokens[-1]]
        for step, back in (("++", "--"), ("--", "++")):
            if first == step:
                operand = self.source.text(self.source.ends[tokens[0]], end)
                self.add_expression(cursor, "increment", back + operand)
                self.add_expression(cursor, "increment dropped", operand)
            elif last == step:
                operand = self.source.text(start, self.source.starts[tokens[-1]])
                self.add_expression(cursor, "increment", operand + back)
                self.add_expression(cursor, "increment dropped", operand)
        if first in ("!", "-", "~"):
            operand = self.source.text(self.source.ends[tokens[0]], end).strip()
            self.add_expression(cursor, "unary dropped", as_bool(operand) if first == "!" else operand)

    # Arguments.

    def swap_neighbours(self, cursor, arguments):
        if cursor.kind == CursorKind.CALL_EXPR and cursor.spelling.startswith("operator"):
            return
        end = cursor.extent.end.offset
        for one, other in zip(arguments, arguments[1:]):
            if one is None or other is None:
                continue
            places = [(argument.extent.start.offset, argument.extent.end.offset) for argument in (one, other)]
            texts = [self.source.text(*place) for place in places]
            kinds = [plain_type(argument.type) for argument in (one, other)]
            if texts[0] == texts[1] or not all(texts) or places[0][1] > places[1][0] or places[1][1] > end:
                continue
            if kinds[0] != kinds[1]:
                continue
            if one.kind in (CursorKind.INIT_LIST_EXPR, CursorKind.LAMBDA_EXPR) or texts[0].startswith("."):
                continue
            self.add(places[0][0], "arguments swapped", f"{texts[0]}, {texts[1]}", f"{texts[1]}, {texts[0]}",
                     [(*places[0], texts[1]), (*places[1], texts[0])], "expression")


def find_mutants(root, folders, compile_commands):
    """All mutants of the sources and headers in the folders, in the order of file and place.

    compile_commands: (source, flags) for each translation unit."""
    found, seen = {}, set()
    index = Index.create()
    for path, flags in compile_commands:
        unit = index.parse(str(path), args=flags)
        errors = [str(diagnostic) for diagnostic in unit.diagnostics if diagnostic.severity >= 3]
        if errors:
            raise SystemExit(f"{path} does not parse:\n" + "\n".join(errors))
        files = {str(path)} | {str(include.include.name) for include in unit.get_includes()}
        for file in sorted(files):
            real = pathlib.Path(file).resolve()
            if not real.is_relative_to(root):
                continue
            name = str(real.relative_to(root))
            if name in seen or not any(name.startswith(folder + "/") for folder in folders):
                continue
            seen.add(name)
            finder = Finder(Source(unit, file), file, name)
            finder.find(unit)
            for mutant in finder.mutants:
                found.setdefault(mutant.key, mutant)
    mutants = sorted(found.values(), key=lambda mutant: (mutant.file, mutant.edits[0][0], mutant.operator,
                                                         mutant.replacement))
    for number, mutant in enumerate(mutants):
        mutant.number = number
    return mutants
