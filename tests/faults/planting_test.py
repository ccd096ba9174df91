"""The planting of faults itself: what is planted, that it goes again, and that the verdicts are true."""

import re
import subprocess
import sys
import time
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tests"))

from faults import layers
from faults.fault import make_fault
from faults.judge import FOUND, NOTHING, REFUSED, SURVIVED, Bench, Judge, Verdict
from faults.mutators import find_faults
from faults.results import Harmless, Results
from faults.tree_copy import TreeCopy
from planted_faults import choose


def planted(text, kind):
    """What the lines read that faults of the kind would leave in this function body."""
    body = f"void Work() {{\n{text}\n}}\n"
    return [fault.after for fault in find_faults("a.cpp", body) if fault.kind == kind]


@pytest.mark.parametrize(
    "kind, text, expected",
    [
        ("comparison", "return size < end;", ["return size <= end;"]),
        ("operator", "return a && b + 1;", ["return a || b + 1;", "return a && b - 1;"]),
        ("constant", "Send(true);", ["Send(false);"]),
        ("sign", "return !open;", ["return open;"]),
        ("number", "Sleep(0x1F);", ["Sleep(0x20);", "Sleep(0x1E);"]),
        ("number", "Sleep(0U);", ["Sleep(1U);"]),
        ("text", 'Log(L"stop");', ['Log(L"");', 'Log(L"stxp");']),
        ("character", "Add(L':');", ["Add(L'_');"]),
        ("flag", "Open(GENERIC_READ | GENERIC_WRITE);", ["Open(GENERIC_WRITE);", "Open(GENERIC_READ);"]),
        ("statement left out", "int a = 1;\nRun(a);", [""]),
        ("statement left out", "const std::lock_guard lock(FileLock);", [""]),
        ("order", "First();\nSecond(2);", ["Second(2); First();"]),
        ("order", "First();\nif (a) {\n}\nSecond(2);", []),
        ("order", "one = First();\ntwo = Second();\nthree = two;", ["three = two; two = Second();"]),
        ("order", "*one = {};\n*two = -1;", []),
        ("branch", "if (a == b) {", ["if (!(a == b)) {", "if (true) {", "if (false) {"]),
        ("branch", "while (Next()) {", ["while (!(Next())) {", "while (false) {"]),
        ("choice", "x = on ? L1(1, 2) : std::min(a, b);", ["x = on ? std::min(a, b) : L1(1, 2);"]),
        ("return value", "return name;", ["return {};"]),
        ("case", "case Kind::Two:\nRun();", [""]),
    ],
)
def test_each_kind_of_fault_is_planted_where_it_can_stand(kind, text, expected):
    close = "\n}" if text.endswith("{") else ""
    assert sorted(planted(text + close, kind)) == sorted(expected)


@pytest.mark.parametrize(
    "text",
    ["// if (a < b) Run();", "/* a < b;\n a == b; */", "#include <a> // 1", "#define LIMIT 5 < 6", 'R"(a < b; 1)";'],
)
def test_nothing_is_planted_into_comments_and_directives(text):
    assert find_faults("a.cpp", f"{text}\n") == []


def test_nothing_is_planted_into_room_that_is_set_aside():
    assert planted("text.reserve(size + 2);\nline->reserve(1);\nAdd();", "order") == []
    assert planted("text.reserve(size + 2);", "number") == []


def test_a_text_keeps_its_escapes_and_its_neighbours():
    assert planted('Log(L"\\u00C3\\r\\n");', "text") == ['Log(L"");']
    assert planted('Log("a < b; c");', "comparison") == []


def test_a_fault_changes_one_place_of_a_real_source_and_nothing_else():
    text = (ROOT / "trap" / "ber_reader.cpp").read_text()
    faults = find_faults("trap/ber_reader.cpp", text)
    assert len(faults) > 50
    assert len({fault.key for fault in faults}) == len(faults)
    for fault in faults:
        changed = fault.plant(text)
        assert changed != text
        assert changed.startswith(text[: fault.start])
        assert changed.endswith(text[fault.end :])


def test_a_fault_is_known_again_after_other_lines_have_changed():
    text = "int F() {\n    return 1 + 2;\n}\n"
    later = find_faults("a.cpp", "int more;\n\n" + text)
    assert [fault.key for fault in find_faults("a.cpp", text)] == [fault.key for fault in later]


def test_a_seed_goes_on_choosing_the_same_faults_when_others_come_and_go():
    faults = find_faults("core/step.cpp", STEP)
    chosen = choose(faults, 5, 1)
    assert len(chosen) == 5
    assert choose(faults, 5, 2) != chosen
    assert [fault for fault in choose(faults, 6, 1) if fault in chosen] == chosen
    assert choose([fault for fault in faults if fault in chosen or fault.line > 6], 5, 1) == chosen


# ---- A small tree of its own, with a test that sees the one function and not the other

STEP = """\
int Step(int value) {
    return value < 10 ? value + 1 : value;
}
int Unseen(int value) {
    return value + 2;
}
int Loop(int value) {
    while (value > 3) {
        --value;
    }
    return value;
}
int Nothing(unsigned value) {
    return value > 0 ? 1 : 0;
}
"""
TESTS = """\
int Step(int), Unseen(int), Loop(int), Nothing(unsigned);
int main() { return Step(1) == 2 && Step(10) == 10 && Loop(5) == 3 && Nothing(1) == 1 && Nothing(0) == 0 ? 0 : 1; }
"""
CMAKE = """\
cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
add_library(quillmont_engine STATIC core/step.cpp)
add_executable(tests tests.cpp)
target_link_libraries(tests quillmont_engine)
enable_testing()
add_test(NAME unit COMMAND tests)
"""
PRESETS = """\
{"version": 6, "configurePresets": [{"name": "faults", "generator": "Ninja", "binaryDir": "${sourceDir}/build/faults",
 "cacheVariables": {"CMAKE_CXX_FLAGS": "-O1 -Wall -Werror"}}]}
"""


@pytest.fixture(scope="module")
def small(tmp_path_factory):
    root = tmp_path_factory.mktemp("small")
    (root / "core").mkdir()
    for name, text in [
        ("core/step.cpp", STEP), ("tests.cpp", TESTS), ("CMakeLists.txt", CMAKE), ("CMakePresets.json", PRESETS)
    ]:  # fmt: skip
        (root / name).write_text(text)
    subprocess.run(["git", "init", "--quiet", root], check=True)
    copy = TreeCopy(root, tmp_path_factory.mktemp("copy") / "tree")
    copy.refresh()
    bench = Bench(copy, "faults", copy.path.parent / "scratch")
    bench.prepare(lambda text: None, [])
    return copy, Judge(copy, [bench])


def judge(small, old, new):
    copy, judge = small
    start = STEP.index(old)
    fault = make_fault("core/step.cpp", "test", STEP, start, start + len(old), new)
    verdict = judge.judge(fault)
    assert (copy.path / "core" / "step.cpp").read_text() == STEP
    return verdict


def test_a_fault_that_a_test_sees_is_found_by_it(small):
    verdict = judge(small, "value + 1", "value - 1")
    assert (verdict.outcome, verdict.by) == (FOUND, "faults: unit")


def test_a_fault_that_no_test_sees_survives(small):
    assert judge(small, "value + 2", "value + 3").outcome == SURVIVED


def test_the_same_machine_code_is_no_fault(small):
    assert judge(small, "value > 0 ? 1 : 0", "value >= 1 ? 1 : 0").outcome == NOTHING


def test_what_does_not_compile_does_not_count(small):
    assert judge(small, "value + 1", "other + 1").outcome == REFUSED


def test_a_run_that_hangs_is_killed_and_counts_as_found(small, monkeypatch):
    monkeypatch.setattr(layers.Layer, "limit", lambda layer, part: 1)
    assert judge(small, "--value;", '__asm__ volatile("");').by == "faults: unit (hangs)"


def test_a_run_that_hangs_leaves_nothing_behind(tmp_path, monkeypatch):
    monkeypatch.setattr(layers.Layer, "limit", lambda layer, part: 1)
    layer = layers.Layer("endless", ["sh", "-c", "sleep 300 & echo $!; wait"], {}, str(tmp_path))
    run = layers.run_layer(layer, tmp_path)
    assert run.hung and not run.passed
    deadline = time.monotonic() + 10
    while is_alive(int(run.output)):
        assert time.monotonic() < deadline


def is_alive(pid):
    try:
        return ") Z " not in Path("/proc", str(pid), "stat").read_text()
    except FileNotFoundError:
        return False


def test_the_file_is_right_again_when_the_judging_breaks_off(small):
    copy, _ = small
    fault = make_fault("core/step.cpp", "test", STEP, 0, 3, "nonsense")
    with pytest.raises(KeyboardInterrupt):
        with copy.planted(fault):
            assert (copy.path / "core" / "step.cpp").read_text().startswith("nonsense")
            raise KeyboardInterrupt
    assert (copy.path / "core" / "step.cpp").read_text() == STEP


# ---- Who is asked

def windows_layers():
    names = sorted(set(re.findall(r"NAME (windows\.\w+)", (ROOT / "tests" / "layers.cmake").read_text())))
    names += ["windows.engine", "windows.thread_failure", "windows.turn", "windows.slow_line"]
    names += [f"desktop.{path.stem}" for path in sorted((ROOT / "tests" / "desktop").glob("*_test.py"))]
    return [layers.Layer(name, [], {}, "", gtest=name.startswith("windows.")) for name in names]


def test_a_window_is_judged_by_its_part_of_the_common_tests_and_then_by_its_own():
    asked = layers.own_tests("ui/forwarding_window.cpp", ROOT, windows_layers())
    assert [(layer.name, choice) for layer, choice in asked] == [
        ("desktop.tool_windows_test", "forwarding"),
        ("desktop.forwarding_window_test", None),
        ("windows.window_memory", None),
    ]


def test_every_windows_source_has_tests_of_its_own():
    for folder in ("ui", "platform/windows"):
        for path in (ROOT / folder).glob("*.cpp"):
            assert list(layers.own_tests(str(path.relative_to(ROOT)), ROOT, windows_layers())), path


@pytest.mark.parametrize(
    "output, test",
    [
        ("[ RUN      ] A.B/0\nfile.cpp:1: Failure\n[  FAILED  ] A.B/0, where GetParam() = 1 (3 ms)\n", "A.B/0"),
        ("==\nFAILED tests/desktop/a_test.py::test_it[one] - assert 1 == 2\n", "test_it"),
        ("ERROR tests/desktop/a_test.py::test_it - no program\n", "test_it"),
        ("Segmentation fault\n", None),
    ],
)
def test_a_failed_run_names_the_test_to_ask_again(output, test):
    assert layers.Run(False, False, 1.0, output).failed_test() == test


def test_a_filter_goes_to_who_takes_it(tmp_path):
    asked = lambda gtest: layers.run_layer(
        layers.Layer("a", ["sh", "-c", "echo $GTEST_FILTER/$PYTEST_ADDOPTS"], {}, str(tmp_path), gtest=gtest),
        tmp_path, "one or two",
    ).output  # fmt: skip
    assert asked(gtest=True).strip() == "one or two/-x"
    assert asked(gtest=False).strip().endswith("/-x -k 'one or two'")


# ---- What is kept of it

def test_results_are_there_after_a_run_that_was_broken_off(tmp_path):
    faults = find_faults("core/step.cpp", STEP)[:4]
    results = Results(tmp_path / "results.jsonl")
    for fault, outcome in zip(faults, [FOUND, SURVIVED, REFUSED]):
        results.add(fault, Verdict(outcome))
    again = Results(tmp_path / "results.jsonl")
    assert [again.outcome(fault) for fault in faults] == [FOUND, SURVIVED, REFUSED, None]
    (tmp_path / "none.toml").write_text("")
    report = list(again.report(faults, Harmless(tmp_path / "none.toml")))
    assert report[0].split() == "core 2 planted, 1 found, 0 changing nothing, 1 survived".split()
    assert report[-2:] == ["Survivors:", str(faults[1])]


def test_of_lines_that_read_the_same_those_are_harmless_that_are_named(tmp_path):
    first, second = (f for f in find_faults("a.cpp", "int F() {\n    Run();\n    Run();\n}\n") if not f.after)
    entry = '[[fault]]\nfile = "a.cpp"\nline = "Run();"\nplanted = ""\nwhy = "it changes nothing"\n'
    listed = tmp_path / "harmless.toml"
    for more, known in (("", [True, True]), ("occurrences = [1]\n", [False, True])):
        listed.write_text(entry + more)
        assert [Harmless(listed).knows(fault) for fault in (first, second)] == known


def test_every_fault_in_the_harmless_list_can_still_be_planted():
    entries = Harmless(ROOT / "tests" / "faults" / "harmless.toml").entries
    missing = []
    for path in {entry["file"] for entry in entries}:
        text = (ROOT / path).read_text() if (ROOT / path).exists() else ""
        plantable = {(fault.before, fault.after, fault.occurrence) for fault in find_faults(path, text)}
        for entry in entries:
            if entry["file"] == path:
                assert len(entry["why"]) > 10, "a reason that somebody can judge"
                for occurrence in entry.get("occurrences", [0]):
                    missing += [entry] if (entry["line"], entry["planted"], occurrence) not in plantable else []
    assert missing == []
