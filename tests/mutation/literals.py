"""Finds numbers, characters, texts and named constants."""

from clang.cindex import CursorKind, TypeKind

from words import change_one_character, is_named_constant, is_text, other_character

NUMBERS = (TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG,
           TypeKind.SHORT, TypeKind.USHORT, TypeKind.UCHAR, TypeKind.SCHAR, TypeKind.CHAR_S, TypeKind.CHAR32)
# Their text is the compiler's, and must be a literal.
TEXTS_OF_ATTRIBUTES = ("visibility", "tls_model", "deprecated")


class LiteralFinder:
    """A part of Finder."""

    def change_number(self, cursor):
        text = self.text_of(cursor)
        if not text or not text[0].isdigit():
            return
        digits = text.rstrip("uUlLzZ").replace("'", "")
        octal = len(digits) > 1 and digits[0] == "0" and digits.isdigit()
        value = int(digits, 8 if octal else 0)
        self.add_expression(cursor, "number", f"{text} + 1")
        if value != 0:
            self.add_expression(cursor, "number", f"{text} - 1")
        if value > 1:
            self.add_expression(cursor, "number", "0" + text[len(text.rstrip("uUlLzZ")):])

    def change_character(self, cursor):
        text = self.text_of(cursor)
        start = text.find("'")
        if text.endswith("'") and len(text) - start == 3:
            self.add_expression(cursor, "character", f"{text[:start]}'{other_character(text[start + 1])}'")
        elif text.endswith("'"):
            self.add_expression(cursor, "character", f"{text[:start]}'x'")

    def replace_constant(self, cursor):
        declared = cursor.referenced
        if declared is None:
            return
        text = self.text_of(cursor)
        if not text.endswith(declared.spelling):
            return
        qualifier = text[:len(text) - len(declared.spelling)]
        if declared.kind == CursorKind.ENUM_CONSTANT_DECL:
            names = [child.spelling for child in declared.semantic_parent.get_children()
                     if child.kind == CursorKind.ENUM_CONSTANT_DECL]
            if len(names) > 1:
                other = names[(names.index(declared.spelling) + 1) % len(names)]
                self.add_expression(cursor, "enumerator", qualifier + other)
        elif declared.kind == CursorKind.VAR_DECL and is_named_constant(declared):
            if declared.type.get_canonical().kind in NUMBERS:
                self.add_expression(cursor, "named constant",
                                    f"static_cast<std::decay_t<decltype({text})>>({text} + 1)")
            siblings = [child.spelling for child in declared.semantic_parent.get_children()
                        if child.kind == CursorKind.VAR_DECL and is_named_constant(child)
                        and child.location.file.name == declared.location.file.name
                        and child.type.get_canonical().spelling == declared.type.get_canonical().spelling]
            if len(siblings) > 1 and declared.spelling in siblings:
                other = siblings[(siblings.index(declared.spelling) + 1) % len(siblings)]
                self.add_expression(cursor, "named constant", qualifier + other)

    def change_texts(self):
        """Text literals, by token: one character each. Neighbours make one literal and are one place."""
        index = 0
        while index < len(self.source.tokens):
            group = []
            while index < len(self.source.tokens) and is_text(self.source.spelling[index]):
                group.append(index)
                index += 1
            if group and not self.is_no_value(group[0]):
                self.change_text(group)
            index += 1

    def is_no_value(self, token):
        start = self.source.starts[token]
        line = self.source.bytes.rfind(b"\n", 0, start) + 1
        if self.source.bytes[line:start].lstrip().startswith(b"#"):
            return True
        if token > 0 and self.source.spelling[token - 1] in ("operator", "sizeof", "extern"):
            return True
        if self.source.spelling[token - 1] == "(" and self.source.spelling[token - 2] in TEXTS_OF_ATTRIBUTES:
            return True
        return any(begin <= start < end for begin, end in self.left_alone)

    def change_text(self, group):
        start, end = self.source.starts[group[0]], self.source.ends[group[-1]]
        for token in group:
            changed = change_one_character(self.source.spelling[token], f"{self.name}:{start}")
            before = self.source.text(start, self.source.starts[token])
            after = self.source.text(self.source.ends[token], end)
            self.stack = self.enclosing(start)
            self.add(self.source.starts[token], "text", self.source.text(start, end), before + changed + after,
                     [(start, end, before + changed + after)], "expression")
            self.stack = []

    def enclosing(self, offset):
        """The declarations that a place stands in, from the outermost."""
        path, children = [], self.declarations
        while children:
            inner = next((child for child in children
                          if child.extent.start.offset <= offset < child.extent.end.offset), None)
            children = list(inner.get_children()) if inner is not None else []
            if inner is not None:
                path.append(inner)
        return path
