"""Shows the stand-in's strings, containers and pointers in gdb as what they hold: `source Scripts/gdb/corvane.py`.

What stands behind them are standard containers, for which gdb has loaded the views of libstdc++ by itself. Nothing here calls the
program, so a core file shows the same.
"""

import gdb
import gdb.printing


def standard_children(value):
    """What the view of a standard container shows, as pairs of label and value."""
    return list(gdb.default_visualizer(value).children())


def show_object(pointer):
    """An address as gdb takes it, with the class that the object really has: print *(UCorvaneRequestCompleteObject *) 0x..."""
    kind = pointer.cast(pointer.type.target().strip_typedefs().pointer()).dynamic_type
    return f"({kind}) {int(pointer):#x}"


class StringView:
    def __init__(self, value):
        self.text = value["Text"]

    def to_string(self):
        return gdb.default_visualizer(self.text).to_string()

    def display_hint(self):
        return "string"


class ArrayView:
    def __init__(self, value):
        self.data = value["Data"]
        self.count = int(value["Count"])

    def to_string(self):
        return f"length {self.count}"

    def children(self):
        return ((f"[{index}]", self.data[index]) for index in range(self.count))

    def display_hint(self):
        return "array"


class MapView:
    def __init__(self, value):
        self.items = [item for _, item in standard_children(value["Items"])]

    def to_string(self):
        return f"length {len(self.items)}"

    def children(self):
        for index, item in enumerate(self.items):
            yield f"key {index}", item["Key"]
            yield f"value {index}", item["Value"]

    def display_hint(self):
        return "map"


class SetView:
    def __init__(self, value):
        self.items = standard_children(value["Items"])

    def to_string(self):
        return f"length {len(self.items)}"

    def children(self):
        return iter(self.items)

    def display_hint(self):
        return "array"


class OwnerView:
    """TSharedPtr, TSharedRef and TUniquePtr."""

    def __init__(self, value):
        self.pointer = value["Pointer"]

    def to_string(self):
        held = dict(standard_children(self.pointer)).get("get()")
        return show_object(held) if held else "null"


class HandleView:
    """TWeakObjectPtr and TStrongObjectPtr: the object, looked up in the object table."""

    def __init__(self, value):
        self.index = int(value["Handle"]["Index"])
        self.serial = int(value["Handle"]["Serial"])

    def to_string(self):
        if self.index < 0:
            return "null"
        slot = standard_children(object_table()["Slots"])[self.index][1]
        if int(slot["Serial"]) != self.serial or not slot["Object"]:
            return "null, the object was freed"
        return show_object(slot["Object"])


def object_table():
    """A variable inside a function of an unnamed namespace has no name in an expression, so it is looked up from the function's code."""
    _, places = gdb.decode_line("'(anonymous namespace)::theTable'")
    table, _ = gdb.lookup_symbol("Table", gdb.block_for_pc(places[0].pc))
    return table.value()


def views():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("corvane")
    printers.add_printer("FString", "^FString$", StringView)
    printers.add_printer("TArray", "^TArray<.*>$", ArrayView)
    printers.add_printer("TMap", "^TMap<.*>$", MapView)
    printers.add_printer("TSet", "^TSet<.*>$", SetView)
    printers.add_printer("owning pointer", "^T(Shared(Ptr|Ref)|UniquePtr)<.*>$", OwnerView)
    printers.add_printer("object pointer", "^T(Weak|Strong)ObjectPtr<.*>$", HandleView)
    return printers


gdb.printing.register_pretty_printer(None, views(), replace=True)
