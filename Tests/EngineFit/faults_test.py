#!/usr/bin/env python3
"""Plants one fault of every kind in a copy of the module and expects each of them to be found, and nothing else.

usage: faults_test.py BUILD-DIRECTORY (with the generated headers in it)
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
RULES = "Source/Corvane/Private/Rules/"
LIBRARY = "Source/Corvane/Private/CorvaneBPLibrary.cpp"

# file, text to replace ("" = append), its replacement, what must be reported
FAULTS = [
    (RULES + "EventChunk.cpp", '#include "Rules/EventChunk.h"', '#include "Rules/EventChunk.h"\n\n#include "Misc/Paths.h"',
        "EventChunk.cpp: nothing of Misc/Paths.h is used"),
    (RULES + "Multipart.cpp", "", "static bool planted() { return FPaths::FileExists(TEXT(\"a\")); }",
        "FPaths::FileExists needs Misc/Paths.h"),
    (RULES + "UploadTail.cpp", "", "static FDateTime plantedTime() { return FDateTime::FromUnixTimestamp(0); }",
        "FDateTime::FromUnixTimestamp does not stand in the list"),
    (RULES + "DownloadRules.cpp", "", "#include <vector>\nstatic std::vector<int32> plantedList;",
        "DownloadRules.cpp: the list of engine interfaces has no header vector"),
    (RULES + "PageReading.cpp", '#include "', '#include "Rules/Multipart.h"\n#include "', "the first include must be"),
    (RULES + "MimeRows.cpp", "", "static int32 plantedLocal() { int32 near = 0; return near; }", "near is a macro or a type"),
    (LIBRARY, "\tUCorvaneBPLibrary* Library = getCorvaneTarget();",
        "\tconst bool isShuttingDown = false;\n\tUCorvaneBPLibrary* Library = isShuttingDown ? nullptr : getCorvaneTarget();",
        "isShuttingDown hides a member of its class"),
    ("Source/Corvane/Private/Files/eventchunk.cpp", None, '#include "Rules/EventChunk.h"', "has the same name"),
    ("Source/Corvane/Corvane.Build.cs", '"Engine", ', "", "belongs to Engine, on which Corvane.Build.cs does not depend"),
    ("Tests/EngineFit/Signatures.cpp", "\tGIVES(FString, FPaths::ProjectDir());\n", "", "nothing is asserted of FPaths::ProjectDir"),
]


def copy_project(target):
    for folder in ("Source", "Scripts/engine", "Tests/EngineFit"):
        shutil.copytree(ROOT / folder, target / folder)
    (target / "Host").symlink_to(ROOT / "Host")


def plant(target):
    for name, old, new, _ in FAULTS:
        file = target / name
        text = file.read_text() if old is not None else ""
        if old and old not in text:
            sys.exit(f"{name} no longer holds {old!r}: plant the fault elsewhere")
        file.write_text(text.replace(old, new, 1) if old else f"{text}\n{new}\n")


def main():
    with tempfile.TemporaryDirectory() as folder:
        target = pathlib.Path(folder)
        copy_project(target)
        plant(target)
        check = subprocess.run([sys.executable, str(target / "Scripts/engine/check_symbols.py"), sys.argv[1]],
            capture_output=True, text=True)
    reported = check.stdout.splitlines()
    missed = [f"not found: {expected}" for *_, expected in FAULTS if not any(expected in line for line in reported)]
    about = [pathlib.PurePath(name).name for name, *_ in FAULTS]
    surplus = [f"not planted: {line}" for line in reported if not any(expected in line for *_, expected in FAULTS)
        and not any(name in line for name in about)]
    for line in missed + surplus + check.stderr.splitlines():
        print(line)
    return 1 if missed or surplus or check.returncode != 1 else 0


if __name__ == "__main__":
    sys.exit(main())
