#!/usr/bin/python3
"""Plants faults into the modules and tells which of them the tests catch.

All faults are compiled into one build, beside what they change; the environment says which of them shows (Mutant.h). A fault is
tried by the tests that pass its place, first those of its room. Ends with 1 when fewer than 85 in 100 are caught; those that
judged.txt calls the same program in other words do not count.
"""
import argparse
import concurrent.futures
import io
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tarfile
import tempfile
import time
from collections import namedtuple
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
WORK = ROOT / "build/mutants"
TREE, CLEAN = WORK / "tree", WORK / "clean"
BUILD = TREE / "build/default"
MODULES = ("Corvane", "CorvaneTransfers")
PROGRAMS = {"CorvaneTests": "Corvane", "EngineVerbTests": "Corvane", "CorvaneTransfersTests": "CorvaneTransfers", "Orders": "Orders"}
FRONT_ENDS = {"ScriptTests": "Script", "ProgramTests": "Program"} # asked about what the others leave
ROOMS = PROGRAMS | FRONT_ENDS
CONDITIONS = ("", "CORVANE_TEST_COLLECT", "CORVANE_TEST_GAME_THREAD")
WAITS_FOR_THE_END = re.compile(r"EndOfProgram|TheEndOfTheProgram|TheProgramMayEnd|WithoutATick|AtTheEnd|WithTheProgram")
ORDERS = 300
REACH_ORDERS = 20
ENOUGH = 0.85
PLANTED = 60001 # the first of the planted ones

Mutant = namedtuple("Mutant", "number site")
Test = namedtuple("Test", "program name condition")


def add(files, name, mark, text):
    mode, old = files[name]
    files[name] = (mode, old.replace(mark, text, 1) if mark else old + text)


def export(tree, mutants):
    """The committed state with the mutants in it; files that stay the same are not touched, so that little is built again."""
    archive = subprocess.run(["git", "-C", ROOT, "archive", "HEAD"], check=True, capture_output=True).stdout
    with tarfile.open(fileobj=io.BytesIO(archive)) as packed:
        files = {entry.name: (entry.mode, packed.extractfile(entry).read()) for entry in packed if entry.isfile()}
    files["Host/Core/Public/Mutant.h"] = (0o644, (HERE / "Mutant.h").read_bytes())
    add(files, "CMakeLists.txt", b"add_subdirectory(Source/Corvane)", b"add_compile_options(-O0 -g0 -w)\nadd_subdirectory(Source/Corvane)")
    for module, target in zip(MODULES, ("CorvaneModule", "CorvaneTransfersModule")):
        add(files, f"Source/{module}/CMakeLists.txt", b"", b"""
            set_target_properties(%s PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
            set_source_files_properties(Private/Requests/HttpLayer.cpp PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)""" % target.encode())
    changed = {}
    for mutant in mutants:
        changed.setdefault(mutant.site.file, []).extend((start, end, text.replace("{m}", f"Mutant({mutant.number})")) for start, end, text in mutant.site.edits)
    for name, edits in changed.items():
        mode, text = files[name]
        for start, end, other in sorted(edits, reverse=True):
            text = text[:start] + other.encode() + text[end:]
        files[name] = (mode, b'#include "Mutant.h"\n#line 1\n' + text)
    for path in [path for path in tree.rglob("*") if path.is_file() and path.relative_to(tree).parts[0] != "build"]:
        if path.relative_to(tree).as_posix() not in files:
            path.unlink()
    for name, (mode, text) in files.items():
        path = tree / name
        if not path.is_file() or path.read_bytes() != text:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(text)
        path.chmod(mode)


def cmake(*arguments, **options):
    environment = {**os.environ, "CCACHE_BASEDIR": str(TREE), "CCACHE_NOHASHDIR": "1"}
    if shutil.which("ccache"):
        environment["CMAKE_CXX_COMPILER_LAUNCHER"] = "ccache"
    return subprocess.run(["nice", "-n", "5", "cmake", *arguments], cwd=TREE, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


def all_sites(modules):
    """Of the clean sources; the headers that the build writes must be there."""
    import sites # needs Debian's python3-clang

    export(CLEAN, [])
    if not (BUILD / "build.ninja").exists():
        export(TREE, [])
        cmake("--preset", "default", check=True)
    cmake("--build", BUILD, "--target", "HostEngineReflection", "CorvaneModuleReflection", "CorvaneTransfersModuleReflection", check=True)
    return [site for module in modules for site in sites.find(CLEAN, BUILD, module)], sites.planted(CLEAN, HERE / "planted.txt")


def fits(site, others):
    """Whether it can stand beside the others: one fault a line, and no text that is written twice has another one in it."""
    for other in others:
        if other.file != site.file:
            continue
        if other.line == site.line:
            return False
        for a, b, _ in site.edits:
            for c, d, _ in other.edits:
                if a == c or b == d or (a < d and c < b) or (a == b and c < a < d) or (c == d and a < c < b):
                    return False
    return True


def draw(arguments):
    """The mutants of a seed that compile, built. What does not is noted by its place, and the next one drawn instead."""
    found, planted = all_sites([arguments.module] if arguments.module else MODULES)
    random.Random(arguments.seed).shuffle(found)
    refused_file = WORK / "refused.json"
    refused = set(json.loads(refused_file.read_text())) if refused_file.exists() else set()
    while True:
        mutants, chosen = [], list(planted)
        for number, site in enumerate(found, 1):
            if len(mutants) < arguments.count and site.key not in refused and fits(site, chosen):
                mutants.append(Mutant(number, site))
                chosen.append(site)
        mutants += [Mutant(PLANTED + number, site) for number, site in enumerate(planted)]
        export(TREE, mutants)
        built = cmake("--build", BUILD, "--target", *PROGRAMS, "--", "-k0", "-j", str(arguments.jobs))
        if built.returncode == 0:
            return mutants
        faults = set(re.findall(r"(Source/[\w/.]+):(\d+):\d+: (?:fatal )?error", built.stdout))
        guilty = {mutant.site.key for mutant in mutants for name, line in faults if mutant.site.file == name and mutant.site.line <= int(line) <= mutant.site.last}
        if not guilty:
            raise SystemExit(built.stdout[-4000:])
        print(f"{len(guilty)} do not compile", file=sys.stderr)
        refused |= guilty
        refused_file.write_text(json.dumps(sorted(refused)))


def all_tests(programs):
    tests = []
    for program, room in programs.items():
        binary = BUILD / "Tests" / room / program
        if program == "Orders":
            said = subprocess.run([binary, "--runs", "1"], capture_output=True, text=True, check=True).stdout
            tests += [Test(program, line.split()[0], "") for line in said.splitlines()]
            continue
        suite = ""
        for line in subprocess.run([binary, "--gtest_list_tests"], capture_output=True, text=True, check=True).stdout.splitlines()[1:]:
            name = line.split("#")[0].strip()
            suite, tests = (suite, [*tests, Test(program, suite + name, "")]) if line.startswith(" ") else (name, tests)
    return [test for test in tests if "DISABLED_" not in test.name]


def play(tests, seconds, orders=ORDERS, **environment):
    """Runs tests of one program and condition. @return whether they passed, the test that failed, and what they said."""
    program = tests[0].program
    binary = BUILD / "Tests" / ROOMS[program] / program
    arguments = ["--scenario", tests[0].name, "--runs", str(orders)] if program == "Orders" else ["--gtest_filter=" + ":".join(test.name for test in tests), "--gtest_fail_fast"]
    room = tempfile.mkdtemp(dir=WORK, prefix="run-")
    os.chmod(room, 0o755) # some tests are another user for a while
    environment = {**os.environ, "TMPDIR": room, **({tests[0].condition: "1"} if tests[0].condition else {}), **environment}

    def bounds():
        os.nice(5)
        resource.setrlimit(resource.RLIMIT_AS, (6 << 30, 6 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    with tempfile.TemporaryFile(dir=WORK) as output: # no pipe: what the program has started may outlive it
        process = subprocess.Popen([binary, *arguments], env=environment, cwd=room, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=bounds)
        try:
            passed, ending = process.wait(timeout=seconds) == 0, ""
        except subprocess.TimeoutExpired:
            passed, ending = False, "\nit hangs"
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
        output.seek(0)
        said = output.read().decode(errors="replace") + ending
    shutil.rmtree(room, ignore_errors=True)
    begun = re.findall(r"\[ RUN      \] (\S+)", said)
    failed = next((test for test in tests if not passed and begun and test.name == begun[-1]), tests[0])
    return passed, failed, said


def reached(tests, jobs):
    """Which mutants each test passes, and how long it takes."""
    def one(test):
        with tempfile.NamedTemporaryFile(dir=WORK, prefix="passed-") as file:
            file.truncate(1 << 16)
            for _ in range(3):
                begin = time.monotonic()
                if play([test], 120, REACH_ORDERS, CORVANE_MUTANTS_PASSED=file.name)[0]:
                    slower = ORDERS / REACH_ORDERS if test.program == "Orders" else 1
                    return test, (time.monotonic() - begin) * slower, {number for number, is_passed in enumerate(Path(file.name).read_bytes()) if is_passed}
            return test, None, set()

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(one, tests))
    for test, seconds, _ in results:
        if seconds is None:
            print(f"left out, fails without a fault: {test.program} {test.name}", file=sys.stderr)
    return {test: (seconds, passed) for test, seconds, passed in results if seconds is not None}


def batches(mutant, reach, conditions):
    """The tests that pass the place: those of its room first, the quick ones first; a few at a time while they are quick."""
    home = mutant.site.file.split("/")[1]

    def rank(test):
        return ROOMS[test.program] != home, test.program != "Orders", reach[test][0]

    tests = sorted((test for test in reach if mutant.number in reach[test][1]), key=rank)
    for condition in conditions:
        batch, seconds = [], 0.0
        for test in tests if not condition else [test for test in tests if test.program == home + "Tests" and not WAITS_FOR_THE_END.search(test.name)]:
            if batch and (test.program != batch[0].program or test.program == "Orders" or seconds + reach[test][0] > 1.5):
                yield batch, seconds
                batch, seconds = [], 0.0
            batch.append(test._replace(condition=condition))
            seconds += reach[test][0]
        if batch:
            yield batch, seconds


def hunt(mutant, reach, conditions):
    """What catches it, empty = nothing. A test that fails but once, perhaps because the machine is busy, has caught nothing."""
    for batch, seconds in batches(mutant, reach, conditions):
        limit = 6 + 8 * seconds
        while batch:
            passed, failed, said = play(batch, limit, CORVANE_MUTANT=str(mutant.number))
            if passed:
                break
            hangs = said.endswith("it hangs")
            if not play([failed], limit, CORVANE_MUTANT=str(mutant.number))[0]:
                return " ".join(filter(None, (failed.condition[13:], failed.name, "(hangs)" if hangs else "")))
            batch = [test for test in batch if test != failed]
    return ""


def judged():
    """key -> why no test can tell it from the module as it is."""
    entries = (HERE / "judged.txt").read_text().splitlines() if (HERE / "judged.txt").exists() else []
    return dict(entry.rsplit(" => ", 1) for entry in entries if entry and not entry.startswith("#"))


def tell(mutant, verdict):
    print(f"{mutant.number:5} {mutant.site.file.removeprefix('Source/')}:{mutant.site.line}  {mutant.site.kind}: {mutant.site.what}  {verdict}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=220)
    parser.add_argument("--only", type=int, nargs="+", help="try these numbers of the draw")
    parser.add_argument("--module", choices=MODULES)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--all", action="store_true", help="what is left meets the two test conditions and the tests of scripts and the command, too")
    parser.add_argument("--show", action="store_true", help="list the draw, with the keys that judged.txt takes, and try nothing")
    arguments = parser.parse_args()
    WORK.mkdir(parents=True, exist_ok=True)
    begin = time.monotonic()
    mutants = draw(arguments)
    mutants = [mutant for mutant in mutants if not arguments.only or mutant.number in arguments.only]
    if arguments.show:
        print("\n".join(f"{mutant.number:5} {mutant.site.line:4} {mutant.site.key}" for mutant in mutants))
        return 0
    print(f"built after {time.monotonic() - begin:.0f} s", file=sys.stderr)
    reasons = judged()
    left = [mutant for mutant in mutants if mutant.site.key not in reasons]
    same = len(mutants) - len(left)
    for mutant in [mutant for mutant in mutants if mutant not in left]:
        tell(mutant, f"the same: {reasons[mutant.site.key]}")
    passing = dict.fromkeys((mutant.number for mutant in left), 0)
    for programs in (PROGRAMS, FRONT_ENDS):
        if not left or programs is FRONT_ENDS and not arguments.all:
            break
        cmake("--build", BUILD, "--target", *programs, check=True)
        conditions = CONDITIONS if arguments.all else CONDITIONS[:1]
        reach = reached(all_tests(programs), arguments.jobs)
        print(f"{len(reach)} tests, reach known after {time.monotonic() - begin:.0f} s", file=sys.stderr)
        with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
            hunts = {pool.submit(hunt, mutant, reach, conditions): mutant for mutant in left}
            for ended in concurrent.futures.as_completed(hunts):
                mutant, catcher = hunts[ended], ended.result()
                passing[mutant.number] += sum(mutant.number in passed for _, passed in reach.values())
                if catcher:
                    left.remove(mutant)
                    tell(mutant, f"caught by {catcher}")
                elif programs is FRONT_ENDS or not arguments.all:
                    tell(mutant, f"SURVIVED {passing[mutant.number]} tests")
    counted = len(mutants) - same
    caught = counted - len(left)
    print(f"{len(mutants)} mutants of seed {arguments.seed}: {caught} of {counted} caught ({100 * caught / max(1, counted):.1f} %), {same} the same program; {time.monotonic() - begin:.0f} s")
    return caught < ENOUGH * counted


if __name__ == "__main__":
    sys.exit(main())
