#!/usr/bin/env python3
"""Asks the tests whether they can fail: plants one small fault at a time into a copy of the tree, builds what it
touches, runs the layers that should see it, cheapest first, and prints the faults that none of them found.

    tests/planted_faults.py --only trap/ --count 50    fifty faults of that folder, the same ones each time
    tests/planted_faults.py                            all faults of the portable code; an hour or two
    tests/planted_faults.py --windows --count 100      of the windows, win_main.cpp and the Windows side of the seam
    tests/planted_faults.py --windows --own ...        asks only the tests of each fault's own file: seconds for each
    tests/planted_faults.py --again                    judges the survivors anew, after a test for them was written
    tests/planted_faults.py --report                   only prints what is known

A run can be broken off at any time; the next one goes on where it ended. A fault that changes nothing anybody could
see belongs into tests/faults/harmless.toml, with the reason. platform/posix/ does not ship and is left out unless
--only names it.
"""

import argparse
import hashlib
import os
import signal
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from faults.judge import FOUND, SURVIVED, Bench, Judge
from faults.mutators import find_faults
from faults.results import Harmless, Results
from faults.tree_copy import TreeCopy

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("config", "core", "mib", "platform", "trap", "ui")


def is_windows_source(path, portable):
    """Whether only the Windows program holds it. A header goes with the source of its name, if there is one."""
    if path.startswith("platform/"):
        return path.startswith("platform/windows/")
    source = str(Path(path).with_suffix(".cpp"))
    return source not in portable and ((ROOT / source).exists() or path.startswith("ui/"))


def list_faults(tree, windows, portable, only):
    paths = [str(path.relative_to(tree)) for folder in FOLDERS for path in sorted((tree / folder).rglob("*.[ch]*"))]
    ships = lambda path: not path.startswith("platform/posix/")
    wanted = ships if not only else lambda path: any(path.startswith(prefix) for prefix in only)
    return [
        fault
        for path in paths
        if is_windows_source(path, portable) == windows and wanted(path)
        for fault in find_faults(path, (tree / path).read_text())
    ]


def choose(faults, count, seed):
    """The same ones each time; a change of the sources replaces no others than those that it touches."""
    return sorted(faults, key=lambda fault: hashlib.sha256(f"{seed} {fault.key}".encode()).digest())[:count]


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", action="append", metavar="PATH", help="files whose path begins like this")
    parser.add_argument("--windows", action="store_true", help="the sources that need Windows, under Wine")
    parser.add_argument("--count", type=int, help="that many faults, chosen by the seed")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--again", action="store_true", help="judge known survivors anew, and nothing else")
    parser.add_argument("--own", action="store_true", help="ask only the tests of the file that holds the fault")
    parser.add_argument("--fast", action="store_true", help="leave out the layers under the sanitizers")
    parser.add_argument("--report", action="store_true", help="judge nothing")
    parser.add_argument("--folder", type=Path, default=ROOT / "build" / "planted_faults", help="for copy and results")
    arguments = parser.parse_args()
    arguments.folder = arguments.folder.resolve()
    return arguments


def say(text):
    print(text, flush=True)


def judge_all(faults, copy, benches, results):
    for bench in benches:
        bench.prepare(say, {fault.path for fault in faults})
    judge = Judge(copy, benches)
    for number, fault in enumerate(faults, 1):
        verdict = judge.judge(fault)
        results.add(fault, verdict)
        by = f" by {verdict.by}" if verdict.outcome == FOUND else ""
        say(f"{number}/{len(faults)} {fault.path}:{fault.line} {fault.kind}: {verdict.outcome}{by}, {verdict.seconds} s")
        if verdict.outcome == SURVIVED:
            say(str(fault))


def main():
    arguments = read_arguments()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("broken off"))
    os.nice(10)
    copy = TreeCopy(ROOT, arguments.folder / "tree")
    copy.refresh()
    portable = copy.configure("faults").compiled_sources()
    faults = list_faults(copy.path, arguments.windows, portable, arguments.only)
    if arguments.count is not None:
        faults = choose(faults, arguments.count, arguments.seed)
    # Neighbours in one file share the rebuilding of it; headers, with all that includes them, come last.
    faults.sort(key=lambda fault: (fault.path.endswith(".h"), fault.path, fault.start))
    results = Results(arguments.folder / "results.jsonl")
    harmless = Harmless(ROOT / "tests" / "faults" / "harmless.toml")
    wanted = (SURVIVED,) if arguments.again else (None,)
    waiting = [fault for fault in faults if results.outcome(fault) in wanted and not harmless.knows(fault)]
    if waiting and not arguments.report:
        presets = ["windows"] if arguments.windows else ["faults"] if arguments.fast else ["faults", "native", "tsan"]
        benches = [Bench(copy, preset, arguments.folder / "scratch", arguments.own) for preset in presets]
        judge_all(waiting, copy, benches, results)
    for line in results.report(faults, harmless):
        say(line)


if __name__ == "__main__":
    main()
