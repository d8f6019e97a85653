#!/usr/bin/env python3
"""Holds a module to the list of engine interfaces beside this script, and finds includes that nobody uses.

The module is parsed as one unit with libclang. Every name in it that leads out of it must stand in the list, or in a public
header of another module here, and be brought by a header that the file asks for, itself or through a header of the module;
every include must bring something that the file uses. Names that the engine's other compilers refuse are found on the way.
usage: check_symbols.py BUILD-DIRECTORY MODULE (the directory holds the generated headers)

Prints one line per fault and ends with status 1 when there is any.
"""

import ctypes
import pathlib
import re
import sys

from clang import cindex  # Debian's python3-clang
from clang.cindex import CursorKind
from symbol_list import LIST, EngineList

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
MODULE = ROOT / "Source" / sys.argv[2]
# Where headers of this project are looked up: the module's own rooms, and the doors of all modules.
ROOMS = [MODULE / "Public", MODULE / "Private", *(other / "Public" for other in sorted((ROOT / "Source").iterdir()) if other != MODULE)]
INCLUDE = re.compile(r'^#include\s+["<]([^">]+)[">]', re.MULTILINE)
FORWARD = re.compile(r"^(?:class|struct) (\w+);", re.MULTILINE)
FUNCTIONS = (CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR)
CLASSES = (CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL)
LOCALS = (CursorKind.PARM_DECL, CursorKind.VAR_DECL)
UNNAMED = (CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR, CursorKind.CONVERSION_FUNCTION)

ALWAYS_INCLUDED = {"CoreMinimal.h"}

# Names that headers of the Windows system or of the engine define as macros, or types in the way of locals.
TAKEN_NAMES = {"ERROR", "IN", "OUT", "near", "far", "min", "max", "GetObject", "SendMessage", "byte", "check", "verify", "ensure", "PI"}


def place(path):
    return path.relative_to(ROOT).as_posix()


def module_files():
    return sorted(p for p in MODULE.rglob("*") if p.suffix in (".h", ".cpp"))


def parse(build):
    roots = ROOMS + [ROOT / "Host" / library / "Public" for library in ("Core", "CoreUObject", "Engine", "HTTP")]
    roots += [*build.glob("Source/*/Generated/*/"), build / "Host/Engine/Generated/Engine"]
    definitions = [f"-D{other.name.upper()}_API=" for other in (ROOT / "Source").iterdir()]
    unit = "".join(f'#include "{file}"\n' for file in module_files())
    definitions += ["-DCORVANE_HTTP_SENDS_ALL_VERBS=0", "-DCORVANE_FLUSHES_READ_FILES=0"]
    parsed = cindex.Index.create().parse("unit.cpp", ["-std=c++20", *definitions, *(f"-I{root}" for root in roots)],
        [("unit.cpp", unit)], cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    faults = [d for d in parsed.diagnostics if d.severity >= cindex.Diagnostic.Error]
    if faults:
        sys.exit("\n".join(str(fault) for fault in faults))
    return parsed


class Places:
    """Where a cursor stands in the text, also when it is an argument of a macro; pathlib paths once per file."""

    def __init__(self):
        self.paths = {}

    def of(self, cursor):
        file, line, offset = cindex.c_object_p(), ctypes.c_uint(), ctypes.c_uint()
        cindex.conf.lib.clang_getFileLocation(
            cursor.location, ctypes.byref(file), ctypes.byref(line), None, ctypes.byref(offset))
        return self.path(cindex.File(file).name if file else None), line.value, offset.value

    def path(self, name):
        if name not in self.paths:
            self.paths[name] = pathlib.Path(name).resolve() if name else None
        return self.paths[name]


def full_name(cursor):
    """Class::member, without the names that need not be written: those of unscoped enumerations."""
    names = [] if cursor.kind in UNNAMED else [cursor.spelling]
    parent = cursor.semantic_parent
    while parent is not None and parent.kind != CursorKind.TRANSLATION_UNIT:
        is_transparent = parent.kind == CursorKind.ENUM_DECL and not parent.is_scoped_enum()
        if parent.spelling and not is_transparent:
            names.append(re.sub(r"^__(\w+)_base$", r"\1", parent.spelling))  # what the standard library builds on
        parent = parent.semantic_parent
    return "::".join(reversed(names))


def data_members(owner):
    """The names of the variables of a class and its bases."""
    names = set()
    for child in owner.get_children() if owner.kind in CLASSES else ():
        if child.kind in (CursorKind.FIELD_DECL, CursorKind.VAR_DECL):
            names.add(child.spelling)
        elif child.kind == CursorKind.CXX_BASE_SPECIFIER and child.referenced is not None:
            names |= data_members(child.referenced.get_definition() or child.referenced)
    return names


class Uses:
    """Which names each file of the module uses: those of the module by the file that declares them, all others by name."""

    def __init__(self, unit):
        self.engine = {}  # file -> {name: line}
        self.own = {}  # file -> files that declare what it uses
        self.declared = []  # (file, line, name)
        self.hiding = []  # (file, line, name) of parameters and locals called like a member of the class around them
        self.places = Places()
        self.macros = {}  # (file, offset) of every use of a macro: what its text refers to is the macro's affair
        cursors = list(unit.cursor.get_children())
        for cursor in cursors:
            if cursor.kind == CursorKind.MACRO_INSTANTIATION:
                self.see_macro(cursor)
        for cursor in cursors:
            if cursor.kind not in (CursorKind.MACRO_INSTANTIATION, CursorKind.MACRO_DEFINITION, CursorKind.INCLUSION_DIRECTIVE):
                if self.is_module(self.places.of(cursor)[0]):
                    self.walk(cursor)

    @staticmethod
    def is_module(path):
        return path is not None and MODULE in path.parents

    def see_macro(self, cursor):
        path, line, offset = self.places.of(cursor)
        if self.is_module(path):
            self.macros[path, offset] = cursor.spelling
            definition = cursor.get_definition()
            if definition is not None:
                self.note(path, line, cursor.spelling, self.places.of(definition)[0])

    def walk(self, cursor, members=frozenset()):
        path, line, offset = self.places.of(cursor)
        is_written_here = self.is_module(path) and (path, offset) not in self.macros
        if is_written_here and cursor.kind.is_declaration():
            self.declared.append((path, line, cursor.spelling))
            if cursor.kind in LOCALS and cursor.spelling in members:
                self.hiding.append((path, line, cursor.spelling))
        if cursor.kind in FUNCTIONS and cursor.is_definition():
            members = data_members(cursor.semantic_parent)
        if is_written_here and not cursor.kind.is_declaration() and cursor.referenced is not None:
            self.refer(path, line, cursor)
        for child in cursor.get_children():
            self.walk(child, members)

    def refer(self, path, line, cursor):
        # A forward declaration in the module is not where a class comes from, and a function comes from its header.
        target = cursor.referenced
        target = target.canonical if target.kind in FUNCTIONS else target.get_definition() or target
        if cursor.kind == CursorKind.CALL_EXPR and target.kind != CursorKind.CONSTRUCTOR:
            return  # its parts name the function
        name = full_name(target)
        is_operator = target.spelling.startswith("operator") and (name == target.spelling or name.startswith("std::"))
        if not is_operator and target.kind not in (CursorKind.TEMPLATE_TYPE_PARAMETER, CursorKind.NAMESPACE):
            self.note(path, line, name, self.places.of(target)[0])

    def note(self, path, line, name, origin):
        if self.is_module(origin) or origin is not None and origin.parent in ROOMS:
            self.own.setdefault(path, set()).add(origin)
        elif origin is not None and name:
            self.engine.setdefault(path, {}).setdefault(name, line)


class Includes:
    """Who includes what inside the module, and which listed headers a file gets to see that way."""

    def __init__(self):
        files = [*module_files(), *(header for room in ROOMS for header in room.glob("*.h") if MODULE not in header.parents)]
        self.named = {file: INCLUDE.findall(file.read_text()) for file in files}
        self.forward = {file: set(FORWARD.findall(file.read_text())) for file in files}

    def of_module(self):
        """The files of the module with the headers that each includes."""
        return [(file, self.named[file]) for file in module_files()]

    def own(self, file):
        return [found for name in self.named[file] if (found := self.find(name))]

    @staticmethod
    def find(name):
        return next((room / name for room in ROOMS if (room / name).is_file()), None)

    def reached(self, file):
        """The file and all headers of this project that it includes, on any road."""
        seen, queue = set(), [file]
        while queue:
            current = queue.pop()
            if current not in seen:
                seen.add(current)
                queue.extend(self.own(current))
        return seen


def check_includes_known(includes, engine, build_rules):
    for file, names in includes.of_module():
        for name in names:
            own = includes.find(name)
            if own and MODULE not in own.parents and f'"{own.parent.parent.name}"' not in build_rules:
                yield f"{place(file)}: {name} belongs to {own.parent.parent.name}, on which {MODULE.name}.Build.cs does not depend"
            if own or name == f"{file.stem}.generated.h":
                continue
            if name not in engine.modules:
                yield f"{place(file)}: the list of engine interfaces has no header {name}"
            elif engine.modules[name] != "std" and f'"{engine.modules[name]}"' not in build_rules:
                yield f"{place(file)}: {name} belongs to {engine.modules[name]}, on which {MODULE.name}.Build.cs does not depend"


def check_names(uses, includes, engine):
    for file, names in sorted(uses.engine.items()):
        reached = includes.reached(file)
        seen = set().union(*(includes.named[other] for other in reached))
        forward = set().union(*(includes.forward[other] for other in reached))
        for name, line in names.items():
            header = engine.header_of.get(name)
            if header is None:
                yield f"{place(file)}:{line}: {name} does not stand in the list of engine interfaces"
            elif name not in forward and not any(engine.brings(include, header) for include in seen):
                yield f"{place(file)}:{line}: {name} needs {header}"


def check_unused_includes(uses, includes, engine):
    for file, names in includes.of_module():
        wanted = {header for name in uses.engine.get(file, {}) if (header := engine.header_of.get(name))}
        for name in names:
            own = includes.find(name)
            if own:
                is_used = own in uses.own.get(file, ()) or own.stem == file.stem
            else:
                is_used = name in ALWAYS_INCLUDED or any(engine.brings(name, header) for header in wanted)
            if not is_used and not name.endswith(".generated.h"):
                yield f"{place(file)}: nothing of {name} is used"


def check_first_includes(includes):
    for file, names in includes.of_module():
        expected = "CoreMinimal.h" if file.parent.name == "Public" else f"{file.stem}.h"
        first = names[0] if names else ""
        exists = file.parent.name == "Public" or any(other.name == expected for other in includes.named)
        if exists and file.suffix != ".h" and first.rpartition("/")[2] != expected or file.parent.name == "Public" and first != expected:
            yield f"{place(file)}: the first include must be {expected}, not {first}"


def check_base_names():
    seen = {}
    for file in module_files():
        other = seen.setdefault((file.stem.lower(), file.suffix), file)
        if other != file:
            yield f"{place(file)}: {place(other)} has the same name, and files of one module share their object names"


def check_taken_names(uses):
    for file, line, name in uses.declared:
        if name in TAKEN_NAMES and file.suffix == ".cpp":
            yield f"{place(file)}:{line}: {name} is a macro or a type of the Windows headers or of the engine"


def check_hiding(uses):
    """MSVC finds these in static functions and constructors as well, where other compilers let them pass."""
    for file, line, name in uses.hiding:
        yield f"{place(file)}:{line}: {name} hides a member of its class"


def check_asserted(uses, engine):
    """Every function of the engine that the module calls stands in the list with its signature."""
    asserted = engine.asserted()
    called = {name for names in uses.engine.values() for name in names if "::" in name and "::operator" not in name}
    for name in sorted(called):
        if not name.startswith(("std::", "ELogVerbosity::")) and name.split("::")[-1] not in asserted:
            yield f"{place(LIST)}: {name} has no signature"


def main():
    engine = EngineList(LIST.read_text())
    uses = Uses(parse(pathlib.Path(sys.argv[1]).resolve()))
    includes = Includes()
    build_rules = (MODULE / f"{MODULE.name}.Build.cs").read_text()
    faults = [*check_includes_known(includes, engine, build_rules), *check_names(uses, includes, engine),
        *check_unused_includes(uses, includes, engine), *check_first_includes(includes), *check_base_names(), *check_taken_names(uses),
        *check_hiding(uses), *check_asserted(uses, engine)]
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
