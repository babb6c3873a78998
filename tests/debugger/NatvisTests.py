# What the description for Visual Studio's debugger names, held against what gdb knows of the library's classes. gdb
# runs it, beside a program with the library's debug information. Visual Studio itself is not asked.
import os
import re
import xml.etree.ElementTree

import gdb

description = os.environ["NATVIS"]
faults = []
checked = 0


def expressions(node):
    """What the debugger evaluates in an element of a type's description."""
    if "Condition" in node.attrib:
        yield node.attrib["Condition"]
    text = node.text or ""
    if node.tag == "DisplayString":
        yield from re.findall(r"\{([^{}]*)\}", text)
    else:
        yield text


def type_of(kind, name):
    """The type of a class's data member, its own or inherited; None if there is none."""
    kind = kind.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_PTR:
        kind = kind.target().strip_typedefs()
    if kind.code != gdb.TYPE_CODE_STRUCT:
        return None
    for field in kind.fields():
        found = type_of(field.type, name) if field.is_base_class else field.type
        if found is not None and (field.is_base_class or field.name == name):
            return found
    return None


def check(kind, members):
    """A member, or a member of that one."""
    global checked
    checked += 1
    place = kind
    for member in re.split(r"->|\.", members):
        place = type_of(place, member)
        if place is None:
            faults.append(f"{kind}: {members}: there is no {member}")
            return


def check_type(kind):
    # Of a template, one that the program uses.
    name = kind.attrib["Name"].replace("<*>", "<VelNet::Socket>")
    try:
        described = gdb.lookup_type(name)
    except gdb.error as error:
        faults.append(f"{name}: {error}")
        return
    for node in kind.iter():
        for expression in expressions(node):
            without_casts = re.sub(r"\(\w+ ?\*?\)", "", expression)
            for member in re.findall(r"(?<![\w>.])[a-z]\w*_(?:(?:->|\.)\w+)*", without_casts):
                check(described, member)


try:
    namespace = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
    root = xml.etree.ElementTree.parse(description).getroot()
    for node in root.iter():
        if not node.tag.startswith(namespace):
            faults.append(f"{node.tag} is of no debugger")
        node.tag = node.tag.removeprefix(namespace)
    kinds = root.findall("Type")
    for kind in kinds:
        check_type(kind)
    if len(kinds) < 10 or checked < 20:
        faults.append(f"there are only {len(kinds)} types with {checked} members")
except Exception as error:
    faults.append(str(error))

print("\n".join(faults) if faults else f"{len(kinds)} types with {checked} members exist")
gdb.execute(f"quit {1 if faults else 0}")
