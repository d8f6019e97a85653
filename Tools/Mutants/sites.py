"""Where a fault can be planted in a module, and what the text becomes there so that it is chosen when the program runs."""
import ctypes
import re
from bisect import bisect_right
from collections import namedtuple

from clang import cindex  # Debian's python3-clang
from clang.cindex import CursorKind as K

# edits: (start, end, text) in bytes of the file, "{m}" = the question whether this fault is the chosen one.
Site = namedtuple("Site", "file line last kind what edits key")

BORDERS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
SIGNS = {"+": "-", "-": "+"}
NOT_DROPPED = re.compile(rb"(UE_LOG|check|ensure|verify)|.*\bReserve\(", re.DOTALL)  # what only tells, or only saves time
CONSTANT = re.compile(rb"\b(constexpr|consteval|static_assert|enum)\b")
SKIPPED = (K.STATIC_ASSERT, K.ENUM_DECL, K.PARM_DECL, K.TEMPLATE_TYPE_PARAMETER, K.TEMPLATE_NON_TYPE_PARAMETER, K.ANNOTATE_ATTR)
FUNCTIONS = (K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.FUNCTION_TEMPLATE, K.LAMBDA_EXPR, K.CONVERSION_FUNCTION)
JUMPS = {K.RETURN_STMT: "return", K.CONTINUE_STMT: "continue", K.BREAK_STMT: "break"}


class Finder:
    def __init__(self, tree, build, module):
        self.room = tree / "Source" / module / "Private"
        self.files = {str(path): path.read_bytes() for path in sorted(self.room.rglob("*")) if path.suffix in (".h", ".cpp")}
        self.names = {path: path[len(str(tree)) + 1:] for path in self.files}
        self.lines = {path: [0, *(found.end() for found in re.finditer(rb"\n", text))] for path, text in self.files.items()}
        self.macros = {path: [] for path in self.files}
        self.sites = {}
        unit = self.parse(tree, build)
        cursors = list(unit.cursor.get_children())
        for cursor in cursors:
            if cursor.kind == K.MACRO_INSTANTIATION:
                path, start, end = self.extent(cursor)
                if path:
                    self.macros[path].append((start, end))
        for cursor in cursors:
            if cursor.kind not in (K.MACRO_INSTANTIATION, K.MACRO_DEFINITION, K.INCLUSION_DIRECTIVE) and self.extent(cursor)[0]:
                self.walk(cursor, None, "")

    def parse(self, tree, build):
        others = sorted(tree.glob("Source/*"))
        roots = [self.room, *(other / "Public" for other in others), *(tree / "Host" / room / "Public" for room in ("Core", "CoreUObject", "Engine", "HTTP"))]
        roots += [*build.glob("Source/*/Generated/*/"), build / "Host/Engine/Generated/Engine"]
        options = ["-std=c++20", "-DCORVANE_HTTP_SENDS_ALL_VERBS=1", "-DCORVANE_FLUSHES_READ_FILES=1"]
        options += [*(f"-D{other.name.upper()}_API=" for other in others), *(f"-I{root}" for root in roots)]
        unit = cindex.Index.create().parse("unit.cpp", options, [("unit.cpp", "".join(f'#include "{path}"\n' for path in self.files))],
            cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        faults = [str(fault) for fault in unit.diagnostics if fault.severity >= cindex.Diagnostic.Error]
        if faults:
            raise SystemExit("\n".join(faults))
        return unit

    def extent(self, cursor):
        where = cursor.extent
        path = where.start.file.name if where.start.file else None
        return (path, where.start.offset, where.end.offset) if path in self.files else (None, 0, 0)

    def walk(self, cursor, parent, result):
        path, start, end = self.extent(cursor)
        if cursor.kind in SKIPPED or (path and cursor.kind.is_declaration() and CONSTANT.search(self.files[path][start:start + 120].split(b"{")[0].split(b"=")[0])):
            return
        if cursor.kind in FUNCTIONS and cursor.kind != K.LAMBDA_EXPR:
            result = cursor.result_type.spelling
        elif cursor.kind == K.LAMBDA_EXPR:
            result = ""
        children = list(cursor.get_children())
        if path:
            self.look(cursor, children, parent, result, path, start, end)
        for at, child in enumerate(children):
            if not (cursor.kind == K.CASE_STMT and at == 0):
                self.walk(child, cursor, result)

    def look(self, cursor, children, parent, result, path, start, end):
        text = self.files[path][start:end]
        kind = cursor.kind
        if kind in (K.IF_STMT, K.CONDITIONAL_OPERATOR) and children[0].kind.is_expression() and not text.startswith(b"if constexpr"):
            self.negate(path, *self.extent(children[0])[1:], "condition")
        elif kind == K.RETURN_STMT and children and result == "bool":
            self.negate(path, *self.extent(children[0])[1:], "result")
        elif kind == K.CXX_BOOL_LITERAL_EXPR:
            self.negate(path, start, end, "truth")
        elif kind == K.INTEGER_LITERAL and re.fullmatch(rb"[0-9][0-9a-fA-FxX']*[uUlL]*", text):
            up = text[:1] == b"0" or start % 2
            self.add(path, start, end, "constant", f"{text.decode()} {'+' if up else '-'} 1", [(start, end, f"({{m}} ? {text.decode()} {'+' if up else '-'} 1 : {text.decode()})")])
        elif kind == K.BINARY_OPERATOR and len(children) == 2:
            self.binary(cursor, children, path, start, end)
        elif kind == K.CALL_EXPR and cursor.spelling in ("operator==", "operator!="):
            self.negate(path, start, end, "equality")
        if kind in JUMPS and not children and parent is not None and parent.kind == K.COMPOUND_STMT and not self.is_last(cursor, parent):
            self.drop(path, start, end, "jump")
        if parent is not None and parent.kind == K.COMPOUND_STMT and self.acts(cursor, children) and not NOT_DROPPED.match(text):
            self.drop(path, start, end, "statement")

    @staticmethod
    def is_last(cursor, parent):
        return cursor.kind == K.BREAK_STMT and list(parent.get_children())[-1] != cursor

    def acts(self, cursor, children):
        if cursor.kind == K.UNEXPOSED_EXPR and len(children) == 1:
            return self.acts(children[0], list(children[0].get_children()))
        if cursor.kind == K.BINARY_OPERATOR:
            return self.operator(cursor, children) == "="
        return cursor.kind in (K.CALL_EXPR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.UNARY_OPERATOR, K.CXX_DELETE_EXPR)

    def operator(self, cursor, children):
        path, _, end = self.extent(children[0])
        other, start, _ = self.extent(children[1])
        return self.files[path][end:start].decode().strip() if path and path == other else ""

    def binary(self, cursor, children, path, start, end):
        sign = self.operator(cursor, children)
        left, right = (self.extent(child)[1:] for child in children)
        if sign in ("&&", "||"):
            edits = [(left[0], left[0], "({m} != (({m} != static_cast<bool>("), (left[1], left[1], "))"), (right[0], right[0], "({m} != static_cast<bool>("), (right[1], right[1], "))))")]
            self.add(path, start, end, "logic", f"{sign} -> {'||' if sign == '&&' else '&&'}", edits)
        elif sign in ("==", "!="):
            self.negate(path, start, end, "equality")
        elif sign in BORDERS or sign in SIGNS and "*" not in cursor.type.spelling:
            other = BORDERS.get(sign) or SIGNS[sign]
            a, b = (self.files[path][s:e].decode() for s, e in (left, right))
            self.add(path, start, end, "border" if sign in BORDERS else "sign", f"{sign} -> {other}", [(start, end, f"({{m}} ? ({a} {other} {b}) : ({a} {sign} {b}))")])

    def negate(self, path, start, end, kind):
        self.add(path, start, end, kind, "the opposite", [(start, start, "({m} != static_cast<bool>("), (end, end, "))")])

    def drop(self, path, start, end, kind):
        if self.files[path][end:end + 1] == b";":
            self.add(path, start, end, kind, "left out", [(start, start, "if (!{m}) { "), (end + 1, end + 1, " }")])

    def add(self, path, start, end, kind, what, edits):
        text = self.files[path][start:end]
        macros = self.macros[path]
        if not text or any(b < start < e or (b == start and e < end or (b, e) == (start, end)) for b, e in macros) or any(text.count(a) != text.count(b) for a, b in (b"()", b"{}")):
            return
        line = bisect_right(self.lines[path], start)
        last = bisect_right(self.lines[path], end - 1)
        shown = " ".join(text.decode().split())
        whole = self.files[path][self.lines[path][line - 1]:].split(b"\n")[0].decode().strip()
        key = f"{self.names[path]} | {whole[:120]} | {kind} `{shown[:60]}` {what}"
        self.sites.setdefault((path, start, end), Site(self.names[path], line, last, kind, f"`{shown[:60]}` {what}", edits, key))


def find(tree, build, module):
    """All sites of a module, in the order of the text."""
    return [site for _, site in sorted(Finder(tree, build, module).sites.items())]


def planted(tree, entries):
    """Those that stand in a file."""
    found = []
    for what, name, old, new in re.findall(r"^(.+)\n(Source/.+)\n- (.+)\n\+ (.+)$", entries.read_text(), re.MULTILINE):
        text = (tree / name).read_text()
        if text.count(old) != 1:
            raise SystemExit(f"{what}: {name} has changed")
        start, line = len(text[:text.index(old)].encode()), text[:text.index(old)].count("\n") + 1
        found.append(Site(name, line, line, "planted", what, [(start, start + len(old.encode()), new)], f"{name} | planted | {what}"))
    return found
