"""Judging one fault: does it compile, does it change the program, and which layer finds it, the cheapest asked first."""

import json
import shutil
import time
from dataclasses import dataclass

from faults.layers import own_tests, read_layers, run_layer
from faults.tree_copy import BuildError, fingerprint

REFUSED = "does not compile"
NOTHING = "changes nothing"
FOUND = "found"
SURVIVED = "survived"


@dataclass(frozen=True)
class Verdict:
    outcome: str
    by: str = ""  # the layer that found it
    seconds: float = 0.0


class Bench:
    """One build of the copy and the layers that run on it."""

    def __init__(self, copy, preset, scratch, only_own=False):
        """`only_own`: nobody is asked but the tests of the file that holds the fault."""
        self.build = copy.configure(preset)
        self.layers = []
        self._tree = copy.path
        self._tree_fingerprint = copy.fingerprint
        self._scratch = scratch
        self._only_own = only_own
        self._bounded_memory = preset == "faults"  # a sanitizer and Wine reserve more than any limit
        self._right = {}

    def prepare(self, say, paths):
        """Builds everything and runs once what will judge faults in these files: what fails without one can judge none."""
        self.build.make(["all"])
        unknown = {path for path in paths if path.endswith(".cpp")} - self.build.compiled_sources().keys()
        if unknown:
            raise SystemExit(f"No part of the program that {self.build.name} makes: {sorted(unknown)}")
        self.layers = read_layers(self.build)
        if self._only_own:
            asked = {layer.name for path in paths for layer, _ in own_tests(path, self._tree, self.layers)}
            self.layers = [layer for layer in self.layers if layer.name in asked]
        self.right_program = self.build.program_fingerprint()
        note = self.build.folder / "passed.json"
        passed = json.loads(note.read_text()) if note.exists() else {}
        passed = passed if passed.get("tree") == self._tree_fingerprint else {"tree": self._tree_fingerprint}
        for layer in self.layers:
            layer.seconds = passed.setdefault(layer.name, 0) or self._time(layer, say)
            passed[layer.name] = layer.seconds
            note.write_text(json.dumps(passed))
            self._right[layer.name] = self._fingerprint(layer)
        self.layers.sort(key=lambda layer: layer.seconds)

    def _time(self, layer, say):
        layer.seconds = 120.0
        run = self._run(layer)
        if not run.passed:
            raise SystemExit(f"{layer.name} fails without any fault:\n{run.output}")
        say(f"{self.build.name}: {layer.name} passes in {run.seconds:.1f} s")
        return run.seconds

    def find(self, path):
        """Which layer fails with what is planted now, and whether it hung; None: all of them pass."""
        asked = set()
        judges = list(own_tests(path, self._tree, self.layers))
        if not self._only_own:
            judges += [(layer, None) for layer in self.layers]
        for layer, filter_ in judges:
            try:
                if (layer.name, filter_) in asked or not self._sees_it(layer):
                    continue
            except BuildError:
                return layer.name + " (its build, which lists its tests)"
            asked.add((layer.name, filter_))
            run = self._run(layer, filter_)
            if not run.passed and (run.hung or self._fails_again(layer, filter_, run)):
                return layer.name + (" (hangs)" if run.hung else "")
        return None

    def _fails_again(self, layer, filter_, run):
        """So that a test that fails now and then, or on a busy machine, finds nothing. Its one test is asked first."""
        failed = run.failed_test()
        return bool(failed) and not self._run(layer, failed).passed or not self._run(layer, filter_).passed

    def _sees_it(self, layer):
        """Whether what the layer runs is another program than it is without the fault."""
        self.build.make(layer.targets)
        return not layer.targets or self._fingerprint(layer) != self._right[layer.name]

    def _fingerprint(self, layer):
        return fingerprint([self.build.folder / target for target in layer.targets])

    def _run(self, layer, filter_=None):
        shutil.rmtree(self._scratch, ignore_errors=True)
        self._scratch.mkdir(parents=True)
        return run_layer(layer, self._scratch, filter_, self._bounded_memory)


class Judge:
    def __init__(self, copy, benches):
        self._copy = copy
        self._benches = benches

    def judge(self, fault):
        started = time.monotonic()
        with self._copy.planted(fault):
            outcome, by = self._judge_planted(fault)
        return Verdict(outcome, by, round(time.monotonic() - started, 1))

    def _judge_planted(self, fault):
        for bench in self._benches:
            try:
                bench.build.make_program()
                if bench.build.program_fingerprint() == bench.right_program:
                    if bench is self._benches[0]:
                        return NOTHING, ""
                    continue
                found = bench.find(fault.path)
            except BuildError:
                return REFUSED, ""
            if found:
                return FOUND, f"{bench.build.name}: {found}"
        return SURVIVED, ""
