"""Finds conditions and results that can be turned into their opposite."""

from clang.cindex import CursorKind, TypeKind


class ConditionFinder:
    """A part of Finder."""

    def condition_of(self, cursor):
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.DO_STMT:
            return children[-1]
        if cursor.kind == CursorKind.FOR_STMT:
            return self.condition_of_for(cursor, children)
        declared = [child for child in children if child.kind in (CursorKind.DECL_STMT, CursorKind.VAR_DECL)]
        for child in children:
            if child.kind.is_expression():
                within = any(one.extent.start.offset <= child.extent.start.offset < one.extent.end.offset
                             for one in declared)
                return None if within else child
        return None

    def condition_of_for(self, cursor, children):
        """What stands between the two semicolons."""
        depth, semicolons = 0, []
        for index in self.source.tokens_between(cursor.extent.start.offset, cursor.extent.end.offset):
            word = self.source.spelling[index]
            depth += (word in "([{") - (word in ")]}")
            if word == ";" and depth == 1:
                semicolons.append(self.source.starts[index])
            if len(semicolons) == 2:
                break
        for child in children:
            if len(semicolons) == 2 and child.kind.is_expression() and \
                    semicolons[0] < child.extent.start.offset < semicolons[1]:
                return child
        return None

    def negates_by_operator(self, cursor):
        """Whether another operator already makes the opposite of the expression."""
        while cursor.kind in (CursorKind.UNEXPOSED_EXPR, CursorKind.PAREN_EXPR):
            children = list(cursor.get_children())
            if len(children) != 1:
                break
            cursor = children[0]
        if cursor.kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            return True
        if cursor.kind == CursorKind.UNARY_OPERATOR:
            return self.text_of(cursor).startswith("!")
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.CALL_EXPR and cursor.spelling.startswith("operator") and len(children) == 3:
            children = [children[0], children[2]]
        if len(children) != 2:
            return False
        token = self.operator_token(cursor, children)
        return token is not None and self.source.spelling[token] in ("==", "!=", "<", ">", "<=", ">=")

    def negate_condition(self, cursor):
        condition = self.condition_of(cursor)
        if condition is not None and not self.negates_by_operator(condition):
            self.add_expression(condition, "condition negated", f"!({self.text_of(condition)})", "condition")

    def negate_result(self, cursor):
        children = list(cursor.get_children())
        if len(children) == 1 and children[0].type.get_canonical().kind == TypeKind.BOOL and \
                not self.negates_by_operator(children[0]):
            self.add_expression(children[0], "result negated", f"!({self.text_of(children[0])})")
