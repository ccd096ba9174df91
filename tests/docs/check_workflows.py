"""Checks what can be checked of .github/workflows/ without the machines it is for: that it is YAML, has what a workflow
needs, says that nobody has run it, and starts only what is there. Usage: check_workflows.py NATIVE_BUILD_FOLDER
"""

import shlex
import sys
from pathlib import Path

import yaml

from commands import Refused, hold
from documents import ROOT

WORKFLOWS = ROOT / ".github" / "workflows"
NOT_RUN = "# Not yet run anywhere"


def commands_of(text):
    """The words of each line that starts something of ours: a script, or CMake with one of our presets."""
    for line in text.splitlines():
        if line.startswith(("./", "cmake ", "scripts/", "packaging/", "tests/")):
            yield shlex.split(line)


def faults_of_job(name, job, jobs, build):
    if not isinstance(job.get("runs-on"), str) or not job.get("timeout-minutes"):
        yield f"{name}: does not say where it runs or when it is given up"
    if job.get("needs", name) not in jobs:
        yield f"{name}: needs {job['needs']}, which is no job"
    for step in job.get("steps", []):
        if ("uses" in step) == ("run" in step):
            yield f"{name}: a step either uses or runs: {step}"
        try:
            for words in commands_of(step.get("run", "")):
                # CMake's definitions are nobody's argument.
                hold([word for word in words if not word.startswith("-D")], build)
        except Refused as refused:
            yield f"{name}: {step['run']}: {refused}"
    if not any("run" in step for step in job.get("steps", [])):
        yield f"{name}: runs nothing"


def faults_of(path, build):
    text = path.read_text(encoding="utf-8")
    if not text.startswith(NOT_RUN):
        yield f"does not begin with '{NOT_RUN}'"
    try:
        workflow = yaml.safe_load(text)
    except yaml.YAMLError as error:
        yield f"is no YAML: {error}"
        return
    # The key "on" reads as true in YAML 1.1.
    if not workflow.get(True) or not workflow.get("jobs"):
        yield "names no events or no jobs"
        return
    for name, job in workflow["jobs"].items():
        yield from faults_of_job(name, job, workflow["jobs"], build)


def main():
    build = Path(sys.argv[1]).resolve()
    paths = sorted(WORKFLOWS.glob("*.yml"))
    assert {path.stem for path in paths} >= {"linux", "windows"}, "the workflows were not read"
    faults = [f"{path.name}: {fault}" for path in paths for fault in faults_of(path, build)]
    print("\n".join(faults), end="\n" if faults else "")
    print(f"{len(paths)} workflows held.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
