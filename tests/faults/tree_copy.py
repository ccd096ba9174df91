"""A copy of the tree with build folders of its own, in which one file at a time is made wrong."""

import contextlib
import hashlib
import json
import os
import re
import shutil
import subprocess
from pathlib import Path


class BuildError(Exception):
    """What the build printed."""


class TreeCopy:
    def __init__(self, root, copy):
        self.root = Path(root)
        self.path = Path(copy)
        self.fingerprint = None  # of all that was copied
        self.environment = dict(os.environ)
        if shutil.which("ccache"):
            for language in ("C", "CXX"):
                self.environment.setdefault(f"CMAKE_{language}_COMPILER_LAUNCHER", "ccache")

    def refresh(self):
        """Makes the copy like the tree, files that git does not know yet included; what is built stays."""
        listed = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=self.root, check=True, capture_output=True, text=True,
        )  # fmt: skip
        names = {name for name in listed.stdout.split("\0") if name and (self.root / name).is_file()}
        note = self.path / "build" / "copied.json"
        for name in set(json.loads(note.read_text()) if note.exists() else []) - names:
            (self.path / name).unlink(missing_ok=True)
        for name in names:
            source, target = self.root / name, self.path / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        note.parent.mkdir(parents=True, exist_ok=True)
        note.write_text(json.dumps(sorted(names)))
        self.fingerprint = fingerprint([self.path / name for name in sorted(names)])

    @contextlib.contextmanager
    def planted(self, fault):
        """Inside, the fault stands in its file; afterwards the file is what it was, and newer, so it is built again."""
        path = self.path / fault.path
        octets = path.read_bytes()
        try:
            path.write_bytes(fault.plant(octets.decode()).encode())
            # What a wrong file compiles to is asked for once; only right ones are worth keeping.
            self.environment["CCACHE_READONLY"] = "1"
            yield
        finally:
            del self.environment["CCACHE_READONLY"]
            path.write_bytes(octets)

    def configure(self, preset):
        self._run(["cmake", "--preset", preset])
        return Build(self, self.path / "build" / preset)

    def _run(self, command):
        run = subprocess.run(
            command, cwd=self.path, env=self.environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
        )  # fmt: skip
        if run.returncode != 0:
            raise BuildError(run.stdout[-2000:])


class Build:
    """One build folder of the copy."""

    def __init__(self, copy, folder):
        self._copy = copy
        self.folder = folder
        self.name = folder.name
        self._programs = [name for name in ("libquillmont_engine.a", "quillmont_windows") if self._knows(name)]

    def _knows(self, target):
        listed = subprocess.run(["ninja", "-C", self.folder, "-t", "query", target], capture_output=True)
        return listed.returncode == 0

    def make(self, targets):
        self._copy._run(["ninja", "-C", str(self.folder), *map(str, targets)])

    def make_program(self):
        """Builds what ships, up to its last link."""
        self.make(self._programs)

    def compiled_sources(self):
        """The source files, as paths inside the tree, that what ships is made of here, each with its object file."""
        sources = {}
        folder = r"CMakeFiles/(?:quillmont_(?:engine|windows)|Quillmont)\.dir"
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            output = re.search(rf" -o ({folder}/\S+)", entry["command"])
            if output and entry["file"].endswith(".cpp"):
                sources[str(Path(entry["file"]).relative_to(self._copy.path))] = self.folder / output[1]
        return sources

    def program_fingerprint(self):
        """Equal for two builds whose machine code is the same."""
        return fingerprint(sorted(self.compiled_sources().values()))


def fingerprint(paths):
    return hashlib.sha256(b"".join(hashlib.sha256(path.read_bytes()).digest() for path in paths)).hexdigest()
