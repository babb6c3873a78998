"""What stands in for what: operators, characters, and questions about declarations."""

import hashlib
import pathlib

from clang.cindex import CursorKind

REPLACEMENTS = {
    "relational": {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"]},
    "equality": {"==": ["!="], "!=": ["=="]},
    "arithmetic": {"+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"], "%": ["*"],
                   "+=": ["-="], "-=": ["+="], "*=": ["+="], "/=": ["*="]},
    "logical": {"&&": ["||"], "||": ["&&"]},
    "bitwise": {"&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
                "&=": ["|="], "|=": ["&="], "^=": ["|="], "<<=": [">>="], ">>=": ["<<="]},
}
# Numbers that are compared for equality may be ordered wrongly.
EQUALITY_OF_NUMBERS = {"==": ["<=", ">="], "!=": []}


def plain_type(kind):
    """A type's name without its own const."""
    name = kind.get_canonical().spelling
    return name if "*" in name or "&" in name else name.removeprefix("const ")


def as_bool(text):
    """Of the same type as what it stands in for: a bool beside an optional would become an optional."""
    return f"static_cast<bool>({text})"


def is_text(spelling):
    return '"' in spelling[:3]


def is_named_constant(variable):
    if not variable.type.is_const_qualified():
        return False
    return variable.semantic_parent.kind in (CursorKind.NAMESPACE, CursorKind.TRANSLATION_UNIT,
                                             CursorKind.STRUCT_DECL, CursorKind.CLASS_DECL)


def has_destructor(record):
    return any(child.kind == CursorKind.DESTRUCTOR for child in record.get_children()) or \
        any(child.kind == CursorKind.CXX_BASE_SPECIFIER for child in record.get_children()) or \
        "lock_guard" in record.spelling


def declares_no_return(function):
    file = function.location.file
    if file is None:
        return False
    text = pathlib.Path(file.name).read_bytes()
    before = text[max(0, function.extent.start.offset - 20):function.location.offset]
    return b"noreturn" in before


def other_character(character):
    if character.isdigit():
        return chr((ord(character) - ord("0") + 1) % 10 + ord("0"))
    if character.isalpha():
        other = chr(ord(character) ^ 1) if character.lower() != "z" else chr(ord(character) - 1)
        return other if other.isalpha() else chr(ord(character) + 1)
    return {" ": "_", ".": ",", ":": ";", "%": "$"}.get(character, "x")


def change_one_character(literal, seed):
    """The literal with one of its characters, chosen by the seed, replaced by another."""
    begin, end = literal.index('"') + 1, literal.rindex('"')
    content = literal[begin:end]
    places, index = [], 0
    while index < len(content):
        if content[index] == "\\":
            index += 2
            continue
        places.append(index)
        index += 1
    if not places:
        return f'{literal[:begin]}x{literal[end:]}'
    place = places[int(hashlib.sha256(seed.encode()).hexdigest(), 16) % len(places)]
    changed = content[:place] + other_character(content[place]) + content[place + 1:]
    return literal[:begin] + changed + literal[end:]
