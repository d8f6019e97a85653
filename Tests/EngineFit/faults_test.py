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
PUBLIC = "Source/Corvane/Public/"
BODY = "\tGENERATED_BODY()\n"

# file, text to replace ("" = append), its replacement, what must be reported
SYMBOL_FAULTS = [
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
    (LIBRARY, "\tOutCorvaneTarget = getCorvaneTarget();",
        "\tconst bool isShuttingDown = false;\n\tOutCorvaneTarget = isShuttingDown ? nullptr : getCorvaneTarget();",
        "isShuttingDown hides a member of its class"),
    ("Source/Corvane/Private/Files/eventchunk.cpp", None, '#include "Rules/EventChunk.h"', "has the same name"),
    ("Source/Corvane/Corvane.Build.cs", '"Engine", ', "", "belongs to Engine, on which Corvane.Build.cs does not depend"),
    ("Scripts/engine/symbols.txt", "static FString ProjectDir()", "ProjectDir", "FPaths::ProjectDir has no signature"),
]

# What the engine's tool puts into a class must compile there.
MEMBER_FAULTS = [
    (PUBLIC + "UAsyncNodeHttpRequest.h", BODY, BODY + "\n\tTUniquePtr<class FPlantedWorker> planted;\n",
        "UAsyncNodeHttpRequest.gen.cpp: invalid application of 'sizeof' to incomplete type 'FPlantedWorker'"),
    (PUBLIC + "FileFunctionsCorv.h", BODY, BODY + "\n\tint32 execfileExists = 0;\n", "'int32 UFileFunctionsCorv::execfileExists' conflicts with"),
    (PUBLIC + "UAsyncNodeCorv.h", BODY, BODY + "\npublic:\n\texplicit UAsyncNodeCorv(int32 planted);\n",
        "no matching function for call to 'UAsyncNodeCorv::UAsyncNodeCorv()'"),
]

# What a game uses must be exported.
EXPORT_FAULTS = [
    (PUBLIC + "FileFunctionsCorv.h", "class CORVANE_API UFile", "class UFile", "Game.dll: undefined reference to `UFileFunctionsCorv::"),
    (PUBLIC + "CorvaneBPLibrary.h", "struct CORVANE_API Fhttp", "struct Fhttp",
        "Game.dll: undefined reference to `FhttpRequest::"),
]

# The second module stands on the doors of the first, and says so.
SECOND_FAULTS = [
    ("Source/CorvaneTransfers/Private/CorvaneTransfers.cpp", "", "#include \"Corvane.h\"\n#include \"CorvaneBPLibrary.h\"\n"
        "static EHTTPCorvFileUpload plantedFolder() { return EHTTPCorvFileUpload::E_gd; }",
        "CorvaneTransfers.cpp: nothing of CorvaneBPLibrary.h is used"),
    ("Source/CorvaneTransfers/CorvaneTransfers.Build.cs", ', "Corvane"', "",
        "Corvane.h belongs to Corvane, on which CorvaneTransfers.Build.cs does not depend"),
]

ROUNDS = [("check_symbols.py", ["Corvane"], SYMBOL_FAULTS), ("check_symbols.py", ["CorvaneTransfers"], SECOND_FAULTS),
    ("check_modules.py", [], MEMBER_FAULTS), ("check_modules.py", [], EXPORT_FAULTS)]


def copy_project(target):
    for folder in ("Source", "Scripts/engine", "Tests/EngineFit"):
        shutil.copytree(ROOT / folder, target / folder)
    (target / "Host").symlink_to(ROOT / "Host")


def plant(target, faults):
    for name, old, new, _ in faults:
        file = target / name
        text = file.read_text() if old is not None else ""
        if old and old not in text:
            sys.exit(f"{name} no longer holds {old!r}: plant the fault elsewhere")
        file.write_text(text.replace(old, new, 1) if old else f"{text}\n{new}\n")


def play(check, arguments, faults):
    """One line for each fault that was not found and for each that was found without being planted."""
    with tempfile.TemporaryDirectory() as folder:
        target = pathlib.Path(folder)
        copy_project(target)
        plant(target, faults)
        result = subprocess.run([sys.executable, str(target / "Scripts/engine" / check), sys.argv[1], *arguments], capture_output=True, text=True)
    reported = result.stdout.splitlines()
    about = [pathlib.PurePath(name).name for name, *_ in faults]
    yield from (f"not found: {expected}" for *_, expected in faults if not any(expected in line for line in reported))
    yield from (f"not planted: {line}" for line in reported if not any(expected in line for *_, expected in faults)
        and not any(name in line for name in about))
    yield from result.stderr.splitlines()
    if result.returncode != 1:
        yield f"{check} ended with status {result.returncode}"


def main():
    failures = [line for check, arguments, faults in ROUNDS for line in play(check, arguments, faults)]
    for line in failures:
        print(line)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
