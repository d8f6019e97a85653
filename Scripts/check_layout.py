#!/usr/bin/env python3
"""Checks which room includes which, and that every header of the host is needed by somebody.

Prints one line per fault and ends with status 1 when there is any.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)

HOST_LIBRARIES = ["Host/Core", "Host/CoreUObject", "Host/Engine", "Host/HTTP"]

# Room -> the rooms whose headers it may include, besides its own.
MAY_INCLUDE = {
    "Host/Core": [],
    "Host/CoreUObject": ["Host/Core"],
    "Host/Engine": ["Host/Core", "Host/CoreUObject"],
    "Host/HTTP": ["Host/Core", "Host/CoreUObject"],
    "Host/Launch": ["Host/Core", "Host/CoreUObject", "Host/HTTP"],
    "Tools/HeaderTool": [],
    "Tools/Reflect": ["Host/Core", "Host/CoreUObject", "Host/Engine"],
    "Tools/Lua": [],
    "Tools/Mutants": [],
    "Tools/Script": ["Host/Core", "Host/CoreUObject", "Host/Engine", "Tools/Reflect", "Tools/Lua"],
    "Tools/Lab": ["Tools/Lua"],
    "Tools/Program": HOST_LIBRARIES + ["Host/Launch", "Tools/Reflect", "Tools/Script", "Tools/Lab", "Source/Corvane/Public",
        "Source/CorvaneTransfers/Public"],
    "Source/Corvane/Public": HOST_LIBRARIES,
    "Source/Corvane/Private": HOST_LIBRARIES + ["Source/Corvane/Public"],
    "Source/CorvaneTransfers/Public": HOST_LIBRARIES,
    "Source/CorvaneTransfers/Private": HOST_LIBRARIES + ["Source/Corvane/Public", "Source/CorvaneTransfers/Public"],
}

# Room -> the only header of it that other rooms may include.
DOORS = {"Tools/Script": "Tools/Script/ScriptState.h"}

# Inside a folder: a room may include itself and what stands to its right. Files at the top bind the rooms together.
INNER_ROOMS = {
    "Source/Corvane/Private/": {
        "Nodes": ["Requests", "Downloads", "Uploads", "Pages", "Runs", "Rules"],
        "Requests": ["Downloads", "Uploads", "Pages", "Runs", "Rules"],
        "Downloads": ["Runs", "Rules"],
        "Uploads": ["Runs", "Threads", "Rules"],
        "Pages": ["Runs", "Rules"],
        "Runs": ["Threads", "Rules"],
        "Files": ["Threads", "Rules"],
        "Threads": [],
        "Rules": [],
    },
    "Source/CorvaneTransfers/Private/": {
        "Queue": ["Attempts", "Files", "Pace"],
        "Download": ["Attempts", "Files", "Pace", "Threads"],
        "Drive": ["Attempts"],
        "Upload": ["Attempts", "Files", "Pace", "Threads"],
        "Tus": ["Upload", "Attempts", "Files", "Pace", "Threads"],
        "Events": ["Attempts", "Threads"],
        "Attempts": [],
        "Pace": ["Threads"],
        "Files": ["Threads"],
        "Threads": [],
    },
    "Tools/Lab/": {
        "Script": ["Cassettes", "Behaviours", "Plans"],
        "Cassettes": ["Wire", "Plans"],
        "Behaviours": ["Plans"],
        "Wire": ["Plans"],
        "Plans": [],
    },
}

# Where an include is looked up, besides beside the including file.
INCLUDE_ROOTS = [
    *(library + "/Public" for library in HOST_LIBRARIES),
    "Tools", "Host/Launch", "Tools/HeaderTool", "Tools/Reflect", "Tools/Script", "Tools/Program",
    *("Tools/Program/" + room for room in ("Call", "Console", "Demo", "Input", "Reference")),
    "Source/Corvane/Public", "Source/Corvane/Private", "Source/CorvaneTransfers/Public", "Source/CorvaneTransfers/Private",
]


def sources(*rooms):
    for room in rooms:
        yield from sorted(p for p in (ROOT / room).rglob("*") if p.suffix in (".h", ".cpp"))


def resolve(file, name):
    for base in [file.parent, *(ROOT / root for root in INCLUDE_ROOTS)]:
        if (base / name).is_file():
            return (base / name).resolve()
    return None  # a library's or a generated header


def includes(file):
    return [found for name in INCLUDE.findall(file.read_text()) if (found := resolve(file, name))]


def place(file):
    return file.relative_to(ROOT).as_posix()


def room_of(file, rooms):
    return next((room for room in rooms if place(file).startswith(room + "/")), None)


def inner_room(file):
    """The folder with rooms and the one of them that a file stands in; None at the top and elsewhere."""
    for folder in INNER_ROOMS:
        room, slash, _ = place(file).removeprefix(folder).partition("/")
        if place(file).startswith(folder) and slash:
            return folder, room
    return None


def check_directions():
    for file in sources("Host", "Source", "Tools"):
        room = room_of(file, MAY_INCLUDE)
        if room is None:
            yield f"{place(file)}: stands in no known room"
            continue
        for target in includes(file):
            other = room_of(target, MAY_INCLUDE)
            if other != room and other not in MAY_INCLUDE[room]:
                yield f"{place(file)}: {room} may not include {place(target)}"
            if other in HOST_LIBRARIES and other != room and "/Public/" not in place(target):
                yield f"{place(file)}: {place(target)} is private to {other}"
            if other != room and DOORS.get(other, place(target)) != place(target):
                yield f"{place(file)}: {place(target)} is private to {other}"
            if room.startswith("Source/") and "/Public/Host/" in place(target):
                yield f"{place(file)}: the engine has no {place(target)}"
            mine, theirs = inner_room(file), inner_room(target)
            if mine and theirs and mine[0] == theirs[0] and mine != theirs and theirs[1] not in INNER_ROOMS[mine[0]].get(mine[1], []):
                yield f"{place(file)}: {mine[1]} may not include {theirs[1]} ({place(target)})"


def needs():
    """The headers that somebody asks for from outside their own room; tests may ask for the host's own doors only."""
    for file in sources("Source", "Host", "Tools"):
        yield from (target for target in includes(file) if room_of(target, MAY_INCLUDE) != room_of(file, MAY_INCLUDE))
    for file in sources("Tests", "Benchmarks"):
        yield from (target for target in includes(file) if "/Public/Host/" in place(target))


def check_host_surface():
    needed = set()
    queue = list(needs())
    while queue:
        file = queue.pop()
        if file not in needed:
            needed.add(file)
            queue.extend(includes(file))
    for header in sources(*(library + "/Public" for library in HOST_LIBRARIES)):
        if header.resolve() not in needed:
            yield f"{place(header)}: nobody needs this host header"


def check_one_source():
    for file in sources("Source"):
        for number, line in enumerate(file.read_text().splitlines(), 1):
            if re.match(r"\s*#\s*(if|ifdef|ifndef|elif)\b", line) and line != "#ifdef CORVANE_CHECK_LOCKS":
                yield f"{place(file)}:{number}: the module may not ask where it runs"


def main():
    faults = [*check_directions(), *check_host_surface(), *check_one_source()]
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
