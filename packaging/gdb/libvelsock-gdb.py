# Shows the library's values in gdb as a reader wants to see them: addresses with dots, strings as strings, failures with
# number and symbol, sockets with state and endpoints.
#
# gdb loads this by itself if it lies in its auto-load folder under the library's path with "-gdb.py" behind it, as the
# packages install it; otherwise: source libvelsock-gdb.py. What only the library's own debug information describes
# (the contents of Exception, SocketAddress and Address, and what a socket is) is shown as unknown without it.

import gdb
import gdb.printing

UNKNOWN = "unknown without the library's debug symbols"
MOST_UNITS = 4096


def narrow(pointer):
    return "" if int(pointer) == 0 else pointer.string(errors="replace", length=-1)


def wide(pointer):
    """The text of 16-bit units up to the first zero."""
    if int(pointer) == 0:
        return ""
    units = bytearray()
    for index in range(MOST_UNITS):
        unit = int(pointer[index]) & 0xFFFF
        if unit == 0:
            break
        units += unit.to_bytes(2, "little")
    return units.decode("utf-16-le", errors="replace")


def standard_string(value):
    """The text of a std::string of g++'s standard library."""
    return value["_M_dataplus"]["_M_p"].string(errors="replace", length=int(value["_M_string_length"]))


def is_complete(pointer):
    """Whether the debug information describes what the pointer leads to."""
    return len(pointer.type.target().strip_typedefs().fields()) > 0


def dotted(octets):
    address = octets["bytes_"]
    return ".".join(str(int(address[index])) for index in range(4))


def endpoint(address):
    record = address["record_"]
    if int(record) == 0 or not is_complete(record):
        return UNKNOWN
    return "%s port %d" % (dotted(record["address"]), int(record["port"]))


def symbol(enumerator):
    """An enumerator without its namespace."""
    return str(enumerator).rsplit("::", 1)[-1]


class Text:
    def __init__(self, value):
        self.value = value

    def display_hint(self):
        return "string"


class ReturnString(Text):
    def to_string(self):
        return narrow(self.value["text_"])


class ReturnWString(Text):
    def to_string(self):
        return wide(self.value["text_"])


class ReturnPtrI:
    """The object itself, in its own class where that is known."""

    def __init__(self, value):
        self.object = value["object_"]

    def to_string(self):
        if int(self.object) == 0:
            return "empty"
        return "owner of %s at %#x" % (self.shown().type, int(self.object))

    def children(self):
        if int(self.object) != 0 and self.shown().type != self.object.type.target():
            yield "object", self.shown()

    def shown(self):
        try:
            return self.object.cast(self.object.dynamic_type).dereference()
        except gdb.error:
            return self.object.dereference()


class Octets:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return dotted(self.value)


class SocketAddress:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return endpoint(self.value)


class Address:
    def __init__(self, value):
        self.record = value["record_"]

    def to_string(self):
        if not is_complete(self.record):
            return UNKNOWN
        name = standard_string(self.record["machineName"])
        return "%s (%s) port %d" % (name, dotted(self.record["octets"]), int(self.record["port"]))


class Message:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = wide(self.value["text_"]["text_"])
        return "%s (domain %d, id %d)" % (text, int(self.value["domain_"]), int(self.value["id_"]))


class Exception:
    """The number of the system's error is one character in the text."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        if not self.value.type.strip_typedefs().fields():
            return UNKNOWN
        text = wide(self.value["text_"][0].address)
        code = self.value["code_"]
        before, lead_in, after = text.rpartition("errno = ")
        if lead_in and after:
            text = before + lead_in + str(ord(after[0])) + after[1:]
        return "%s (%d %s)" % (text, int(code), symbol(code))


def state(value):
    return symbol(value["state_"]).replace("STATE_", "").lower()


class SocketImpl:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "IPv4 socket, %s, handle %d, %s -> %s" % (
            state(self.value),
            int(self.value["handle_"]),
            endpoint(self.value["local_"]),
            endpoint(self.value["remote_"]),
        )


class SocketXtImpl:
    def __init__(self, value):
        self.value = value

    def end(self, side):
        host = standard_string(self.value[side + "Host_"])
        if not host:
            return "none"
        return "%s port %s" % (host, standard_string(self.value[side + "Port_"]))

    def to_string(self):
        family = {1: "IPv4", 2: "IPv6"}.get(int(self.value["family_"]), "unknown")
        return "%s extended socket, %s, handle %d, %s -> %s" % (
            family,
            state(self.value),
            int(self.value["handle_"]),
            self.end("local"),
            self.end("remote"),
        )


class OctetsCollectionImpl:
    def __init__(self, value):
        room = value["elements_"]["_M_impl"]
        self.first = room["_M_start"]
        self.count = int(room["_M_finish"] - self.first)

    def to_string(self):
        return "%d addresses" % self.count

    def display_hint(self):
        return "array"

    def children(self):
        for index in range(self.count):
            yield "[%d]" % index, self.first[index]


class SocketCollectionImpl:
    def __init__(self, value):
        self.entries = value["entries_"]

    def nodes(self):
        end = self.entries["_M_impl"]["_M_node"].address
        node_type = gdb.lookup_type("std::_List_node<%s>" % self.entries.type.strip_typedefs().template_argument(0))
        node = end.dereference()["_M_next"]
        while int(node) != int(end):
            yield node.cast(node_type.pointer()).dereference()
            node = node["_M_next"]

    def to_string(self):
        return "%d entries" % len(list(self.nodes()))

    def children(self):
        entry_type = self.entries.type.strip_typedefs().template_argument(0)
        names = {0: "accept", 1: "read", 2: "write", 3: "close"}
        for index, node in enumerate(self.nodes()):
            entry = node["_M_storage"].address.cast(entry_type.pointer()).dereference()
            event = int(entry["event"])
            yield "[%d] %s" % (index, names.get(event, event)), ReturnPtrI(entry["socket"]).shown()


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("velsock")
    for name in ("ReturnString", "ReturnWString", "Message"):
        printers.add_printer(name, "^VelBase::%s$" % name, globals()[name])
    printers.add_printer("ExceptionImpl", "^VelBase::ExceptionImpl<VelBase::Message>$", Message)
    printers.add_printer("ReturnPtrI", "^VelBase::ReturnPtrI<.*>$", ReturnPtrI)
    for name in (
        "Octets",
        "SocketAddress",
        "Address",
        "Exception",
        "SocketImpl",
        "SocketXtImpl",
        "OctetsCollectionImpl",
        "SocketCollectionImpl",
    ):
        printers.add_printer(name, "^VelNet::%s$" % name, globals()[name])
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build(), replace=True)
