#!/usr/bin/env python3
"""Plants faults of order into the modules, one at a time, and tells which of them the scheduler finds.

usage: Tests/Orders/planted.py [BUILD] [RUNS]   (default: build/default, 6000 random orders of each scenario)

It changes the sources while it runs, and restores them and the build: use a checkout that nobody works in. Ends with 1 unless all
are found.
"""
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# what goes wrong, file, text, what stands in its place, scenarios that may show it
FAULTS = [
    ("a wake-up is lost", "Source/Corvane/Private/Runs/CorvThread.cpp",
     "while (isPaused && isRunning && jobQueue.IsEmpty())", "while (isPaused && isRunning)", "get"),
    ("the end is read behind the work", "Source/Corvane/Private/Threads/QueueThread.h",
     "const bool bLastRound = bIsEnding; // read first: a job queued before the end is still found\n\t\t\tworkOff(pause);",
     "workOff(pause);\n\t\t\tconst bool bLastRound = bIsEnding;", "upload/end"),
    ("a mark is set behind the post", "Source/Corvane/Private/Runs/Run.cpp",
     "beginEnd(InRequest);\n\tCorvaneDelivery::completion(corvaneBPLibrary, node, MoveTemp(InResult));",
     "CorvaneDelivery::completion(corvaneBPLibrary, node, MoveTemp(InResult));\n\tbeginEnd(InRequest);", "get/again"),
    ("a late unroot hits the next run", "Source/Corvane/Private/Runs/Run.cpp",
     "if (Alive && Alive->run().number() == InRunNumber)", "if (Alive)", "get/again"),
    ("a letter is announced before it is there", "Source/CorvaneTransfers/Private/Threads/Mailbox.cpp",
     "Letters.Enqueue(MoveTemp(Letter));\n\tPosted->Trigger();\n\tAsyncTask(ENamedThreads::GameThread, [Self = AsShared()] { Self->Open(); });",
     "AsyncTask(ENamedThreads::GameThread, [Self = AsShared()] { Self->Open(); });\n\tPosted->Trigger();\n\tLetters.Enqueue(MoveTemp(Letter));", "transfer"),
    ("a strand sleeps while a step comes", "Source/CorvaneTransfers/Private/Threads/Strand.cpp",
     "const FScopeLock Lock(&Guard);\n\tbWorking = Steps.Dequeue(Step);\n\treturn bWorking;",
     "const bool bTaken = Steps.Dequeue(Step);\n\tconst FScopeLock Lock(&Guard);\n\tbWorking = bTaken;\n\treturn bTaken;", "transfer"),
    ("an answer is judged before it is known that it was sent", "Source/CorvaneTransfers/Private/Attempts/Exchange.cpp",
     "const FScopeLock Lock(&Guard); // the end, on whatever thread it comes, waits until it is known whether there was a beginning\n", "", "transfer"),
    ("a file is marked as blocked behind the job that frees it", "Source/Corvane/Private/Uploads/TruncateUploadedFileThread.cpp",
     "changedFiles.waitForRepair(InRecord.filePath);\n\taddJob(MoveTemp(InRecord));",
     "const FString Path = InRecord.filePath;\n\taddJob(MoveTemp(InRecord));\n\tchangedFiles.waitForRepair(Path);", "upload"),
    ("an event is told behind the end", "Source/CorvaneTransfers/Private/Events/FollowRun.cpp",
     "while (Machine.MayTell() && HasBytes())", "while (HasBytes())", "follow"),
    ("an end that is on its way counts as told", "Source/CorvaneTransfers/Private/Events/FollowRun.h",
     "virtual bool IsOver() const override { return bTold; }", "virtual bool IsOver() const override { return Machine.IsOver(); }", "follow/end"),
    ("a second step is forgotten when the module goes", "Source/Corvane/Private/Runs/FollowUp.cpp",
     " || FollowUp.cancelState->programEnds)", ")", "drive/unload"),
    ("a place in the queue is given back twice", "Source/CorvaneTransfers/Private/Queue/QueueMachine.cpp",
     "else if (Entry.HasPlace())", "else", "queue/pause"),
    ("what waits in a queue begins before it is cancelled", "Source/CorvaneTransfers/Private/Queue/QueueRun.cpp",
     "\tRun->Cancel();\n\tif (!bHasBegun) // so it tells its outcome, and sends nothing\n\t{\n\t\tMachine.Remove(Ticket);\n\t\tRun->Start();\n\t}\n",
     "\tif (!bHasBegun)\n\t{\n\t\tMachine.Remove(Ticket);\n\t\tRun->Start();\n\t}\n\tRun->Cancel();\n", "queue/cancel"),
    ("an upload's end is told before its file is closed", "Source/CorvaneTransfers/Private/Upload/BodyStream.cpp",
     "\tFile.Reset();\n\tFCorvaneBodyEnd End;", "\tFCorvaneBodyEnd End;", "upload-file"),
    ("a stop before the request is lost", "Source/CorvaneTransfers/Private/Tus/TusRun.cpp",
     "\tif (bStopWanted)\n\t{\n\t\treturn OnSent(FCorvaneTusEnd());\n\t}\n", "", "resumable/cancel"),
    ("a request is named for cancels when it has been sent", "Source/Corvane/Private/Runs/RunList.cpp",
     "if (FRun* Run = runs.Find(RunNumber))\n\t{\n\t\tRun->request = Request;", "if (FRun* Run = runs.Find(RunNumber - 1))\n\t{\n\t\tRun->request = Request;", "get/unload"),
]


def make(build: Path) -> None:
    subprocess.run(["ninja", "-C", str(build), "Orders"], check=True, stdout=subprocess.DEVNULL)


def orders(build: Path, runs: str, scenario: str) -> str:
    """The first line of what it says against the planted fault; empty = nothing."""
    make(build)
    try:
        ended = subprocess.run([str(build / "Tests/Orders/Orders"), "--scenario", scenario, "--runs", runs], capture_output=True, text=True, timeout=600)
    except subprocess.TimeoutExpired:
        return "it hangs"
    if ended.returncode == 0:
        return ""
    lines = ended.stderr.splitlines()
    return " | ".join(line.removeprefix("Run it again with: ") for line in lines[:2]) or f"ended with {ended.returncode}"


def plant_all(build: Path, runs: str) -> int:
    """How many are not found."""
    missed = 0
    for what, name, text, planted, scenario in FAULTS:
        path = ROOT / name
        original = path.read_text()
        if original.count(text) != 1:
            print(f"NOT PLANTED: {what}: {name} has changed")
            missed += 1
            continue
        try:
            path.write_text(original.replace(text, planted))
            found = orders(build, runs, scenario)
        finally:
            path.write_text(original)
        missed += not found
        print(f"{'found ' if found else 'MISSED'}  {what}: {found}", flush=True)
    return missed


def main() -> int:
    build = ROOT / (sys.argv[1] if len(sys.argv) > 1 else "build/default")
    runs = sys.argv[2] if len(sys.argv) > 2 else "6000"
    try:
        missed = plant_all(build, runs)
    finally:
        make(build)  # no program with a fault in it stays behind
    print(f"{len(FAULTS) - missed} of {len(FAULTS)} found")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
