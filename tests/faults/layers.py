"""The layers of the tests, as CTest lists them for one build folder, and the running of one."""

import contextlib
import json
import os
import re
import shlex
import signal
import subprocess
import time
from dataclasses import dataclass, field
from pathlib import Path

# Judges are the layers that run what is built, and those that hold the documents against the sources. The packages and
# the kit are made of what the other layers have judged, and the scripts only start it.
_JUDGES_UNBUILT = re.compile(r"docs\.")
_NO_JUDGES = re.compile(r"packages|scripts\.|desktop\.check_kit")

# The sources whose tests are not called like them, in the order in which they are asked; those that are called like the
# source come first unless they are named here too. Behind a colon: which tests of that file, as pytest's -k takes it.
_TESTED_BY = {
    "utf8": ["text_decoding"],
    "text": ["text_decoding", "windows_runtime"],
    "posix_paths": ["files", "folders"],
    "files": ["file_transfer", "attributes", "files", "file_sharing"],
    "folders": ["broken_search", "folders", "startup"],
    "data_files": ["file_layer"],
    "app_paths": ["file_layer"],
    "mib_folder": ["file_layer"],
    "mib_text": ["file_layer"],
    "text_pool": ["name_store"],
    "text_table": ["name_store", "memory"],
    "ipv4_text": ["trap_record", "snmp_message"],
    "varbind_list": ["trap_record", "snmp_message", "memory"],
    "receive_loop": ["receiver_steps", "turn", "trap_reception", "posix_fault", "exception"],
    "listener_thread": ["receiver_steps", "turn", "listener"],
    "server_control": ["receiver_steps", "server_control"],
    "trap_thread": ["turn", "trap_reception", "exception", "memory"],
    "trap_turn": ["turn"],
    "forwarding": ["slow_line"],
    "udp_socket": ["socket_calls", "udp_socket", "server_control", "start_up", "slow_line"],
    "server_state": ["server_control", "race"],
    "scoped_descriptor": ["udp_socket", "files"],
    "scoped_handle": ["socket_calls", "file_transfer", "udp_socket", "files"],
    "thread": ["thread_calls", "thread_failure", "server_control"],
    "clock": ["activity_log"],
    "forwarding_window": ["tool_windows:forwarding", "forwarding_window", "window_memory"],
    "main_window": ["start_up", "main_window"],
    "mib_import": ["mib_dialog", "mib_deletion", "window_memory"],
    "status_window": ["tool_windows:status", "status_window", "mib_dialog:low_half", "window_memory"],
    "viewer_window": ["tool_windows:monitor or log", "viewer", "viewer_clearing"],
    "window_helpers": ["start_up", "tool_windows", "main_window"],
    "ui_resources": ["start_up", "main_window", "tool_windows"],
    "scoped_gdi": ["main_window"],
    "win_main": ["start_up", "startup"],
    "exception_guard": ["window_memory"],
}

_LARGEST_MEMORY = 4 << 30
# Seconds in which a desktop test gives up waiting. Far too few to fail a build by; here a failure counts when it is there
# twice, and a window that never comes is waited for again and again.
_PATIENCE = 15


@dataclass
class Layer:
    name: str
    command: list
    environment: dict
    folder: str
    targets: list = field(default_factory=list)  # what it runs, relative to the build folder
    seconds: float = 0.0  # how long it takes when nothing is wrong
    gtest: bool = False

    def limit(self, part=False):
        """Seconds. A machine that is busy with other things may take this long; whoever takes longer hangs."""
        return 20 + (1 if part else 5) * self.seconds


def _property(test, name, default):
    return next((entry["value"] for entry in test.get("properties", []) if entry["name"] == name), default)


def read_layers(build):
    """The layers of the build folder. Tests that differ in their GoogleTest filter only are one layer."""
    listed = subprocess.run(
        ["ctest", "--test-dir", build.folder, "--show-only=json-v1"], check=True, capture_output=True
    )
    layers = {}
    for test in json.loads(listed.stdout)["tests"]:
        command = [part for part in test["command"] if not part.startswith("--gtest_")]
        name = test["name"] if command == test["command"] else test["name"].split(".")[0]
        environment = dict(entry.split("=", 1) for entry in _property(test, "ENVIRONMENT", []))
        layer = Layer(name, command, environment, _property(test, "WORKING_DIRECTORY", str(build.folder)))
        paths = [Path(part) for part in [*command, *environment.values()] if Path(part).is_relative_to(build.folder)]
        layer.targets = [path.relative_to(build.folder) for path in paths if path.is_file()]
        layer.gtest = any(path.stem.startswith("quillmont_") and path.stem.endswith("_tests") for path in paths)
        if (layer.targets or _JUDGES_UNBUILT.match(name)) and not _NO_JUDGES.match(name):
            layers.setdefault(tuple(command), layer)
    return list(layers.values())


def own_tests(source, tree, layers):
    """The layers, each with the filter of its tests or None, that are there for this source file: asked first."""
    stem = Path(source).stem
    names = _TESTED_BY.get(stem, [])
    for name in names if stem in names else [stem, *names]:
        name, _, choice = name.partition(":")
        named = [layer for layer in layers if layer.name.split(".")[-1] in (f"{name}_test", name)]
        yield from ((layer, choice or None) for layer in named)
        if any(layer.gtest for layer in named):
            continue  # a program of its own
        for path in sorted((tree / "tests").glob(f"*/{name}_test.cpp")):
            suites = re.findall(r"^\s*(?:TYPED_)?TEST(?:_[FP])?\((\w+)\s*,", path.read_text(), re.MULTILINE)
            patterns = ":".join(f"{suite}.*:*/{suite}.*:{suite}/*" for suite in dict.fromkeys(suites))
            for layer in layers:
                if suites and layer.gtest and layer.name.split(".")[-1] == path.parent.name:
                    yield layer, patterns


def _limits(bounded_memory):
    import resource  # not there on Windows, where nothing of this runs

    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if bounded_memory:
        resource.setrlimit(resource.RLIMIT_AS, (_LARGEST_MEMORY, _LARGEST_MEMORY))


_FAILED = re.compile(r"^\[  FAILED  \] ([\w./]+)|^(?:FAILED|ERROR) \S+?::(\w+)", re.MULTILINE)


@dataclass(frozen=True)
class Run:
    passed: bool
    hung: bool
    seconds: float
    output: str

    def failed_test(self):
        """As a filter; None: the output names none."""
        named = _FAILED.search(self.output)
        return named and (named[1] or named[2])


def _environment(layer, scratch, filter_):
    """Of a run that stops at its first failure."""
    environment = dict(os.environ, **layer.environment, TMPDIR=str(scratch), QUILLMONT_PATIENCE=str(_PATIENCE))
    environment.update(GTEST_FAIL_FAST="1", GTEST_BRIEF="1", GTEST_FILTER="*", PYTEST_ADDOPTS="-x")
    if filter_ and layer.gtest:
        environment["GTEST_FILTER"] = filter_
    elif filter_:
        environment["PYTEST_ADDOPTS"] += f" -k {shlex.quote(filter_)}"
    return environment


def run_layer(layer, scratch, filter_=None, bounded_memory=False):
    """Runs the layer, or the tests of it that the filter takes. Whatever it starts is gone afterwards."""
    note = Path(scratch) / "output.txt"
    started = time.monotonic()
    with note.open("wb") as output:
        process = subprocess.Popen(
            layer.command, cwd=layer.folder, env=_environment(layer, scratch, filter_), stdin=subprocess.DEVNULL,
            stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
            preexec_fn=lambda: _limits(bounded_memory),
        )  # fmt: skip
        hung = False
        try:
            process.wait(layer.limit(part=filter_ is not None))
        except subprocess.TimeoutExpired:
            hung = True
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
    text = note.read_bytes()[-4000:].decode(errors="replace")
    return Run(process.returncode == 0 and not hung, hung, time.monotonic() - started, text)
