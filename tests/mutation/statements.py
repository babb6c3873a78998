"""Finds the statements and guards that a function can go on without."""

from clang.cindex import CursorKind, TypeKind

from words import declares_no_return, has_destructor

FUNCTIONS = (CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
             CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE, CursorKind.LAMBDA_EXPR)
LOOPS = (CursorKind.WHILE_STMT, CursorKind.DO_STMT, CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT)
BRANCHES = LOOPS + (CursorKind.IF_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT)


class StatementFinder:
    """A part of Finder."""

    def is_statement(self, cursor):
        if not self.stack:
            return False
        kind, parent = cursor.kind, self.stack[-1]
        if kind in (CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT, CursorKind.RETURN_STMT):
            return True
        if not kind.is_expression() or kind == CursorKind.LAMBDA_EXPR:
            return False
        if parent.kind == CursorKind.COMPOUND_STMT:
            return True
        if parent.kind not in BRANCHES:
            return False
        end = self.source.first_token(cursor.extent.end.offset)
        if end >= len(self.source.tokens) or self.source.spelling[end] != ";":
            return False
        before = self.source.first_token(cursor.extent.start.offset) - 1
        return self.source.spelling[before] in (")", "else", "do", ":")

    def drop_statement(self, cursor):
        start = cursor.extent.start.offset
        token = self.source.first_token(cursor.extent.end.offset)
        if token >= len(self.source.tokens) or self.source.spelling[token] != ";":
            return
        end = self.source.ends[token]
        if not self.may_be_dropped(cursor):
            return
        operator = {CursorKind.BREAK_STMT: "break dropped", CursorKind.CONTINUE_STMT: "continue dropped",
                    CursorKind.RETURN_STMT: "return dropped"}.get(cursor.kind, "statement dropped")
        self.add(start, operator, self.source.text(start, end), ";", [(start, end, ";")], "statement")

    def may_be_dropped(self, cursor):
        """Whether the function goes on in a defined way without the statement."""
        if cursor.kind in (CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT):
            return True
        function = next((above for above in reversed(self.stack) if above.kind in FUNCTIONS), None)
        if function is None:
            return False
        if self.is_followed(cursor, function):
            return True
        if cursor.kind == CursorKind.RETURN_STMT:
            return False
        return not self.must_not_end(function)

    def is_followed(self, cursor, function):
        below = cursor
        for above in reversed(self.stack):
            if above == function:
                return False
            if above.kind in LOOPS:
                return True
            if above.kind == CursorKind.COMPOUND_STMT:
                if any(child.extent.start.offset >= below.extent.end.offset for child in above.get_children()):
                    return True
            below = above
        return False

    def must_not_end(self, function):
        """Whether the function answers something, or never returns."""
        if function.kind in (CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR):
            return False
        if function.kind == CursorKind.LAMBDA_EXPR:
            return True
        if function.result_type.get_canonical().kind != TypeKind.VOID:
            return True
        return declares_no_return(function) or declares_no_return(function.canonical)

    def drop_guard(self, cursor):
        """A local object that is only there for its end."""
        children = list(cursor.get_children())
        if len(children) != 1 or children[0].kind != CursorKind.VAR_DECL:
            return
        variable = children[0]
        kind = variable.type.get_canonical()
        function = next((above for above in reversed(self.stack) if above.kind in FUNCTIONS), None)
        if kind.kind != TypeKind.RECORD or function is None or self.is_named_again(variable, function):
            return
        if not has_destructor(kind.get_declaration()):
            return
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        words = list(self.source.tokens_between(start, end))
        name = next(index for index in words if self.source.spelling[index] == variable.spelling)
        after = self.source.spelling[name + 1]
        if after not in ("(", "{", ";"):
            return
        inside = [0, 0] if after == ";" else [self.source.ends[name + 1], self.source.starts[words[-2]]]
        written = self.source.text(start, self.source.starts[name]).strip().removeprefix("const ").strip()
        self.add(start, "guard dropped", self.source.text(start, end), ";", [(start, end, ";")], "guard",
                 [written, variable.spelling, *inside])

    def is_named_again(self, variable, function):
        names = [index for index in self.source.tokens_between(function.extent.start.offset,
                                                               function.extent.end.offset)
                 if self.source.spelling[index] == variable.spelling]
        return len(names) != 1
