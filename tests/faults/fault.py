"""One planted fault: a small change at one place of one file."""

import hashlib
import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Fault:
    path: str  # inside the tree
    kind: str
    line: int
    start: int
    end: int
    replacement: str
    before: str  # the lines that it touches as they are, blanks run together
    after: str  # and as it leaves them
    occurrence: int = 0  # among the faults of this file that read the same

    @property
    def key(self):
        """Stays the same while other lines of the file change."""
        told = "\0".join([self.path, self.before, self.after, str(self.occurrence)])
        return hashlib.sha256(told.encode()).hexdigest()[:12]

    def plant(self, text):
        return text[: self.start] + self.replacement + text[self.end :]

    def __str__(self):
        return f"{self.path}:{self.line}: {self.kind}\n    - {self.before}\n    + {self.after or '(nothing)'}"


def make_fault(path, kind, text, start, end, replacement):
    first = text.rfind("\n", 0, start) + 1
    last = text.find("\n", end)
    last = len(text) if last < 0 else last
    run_together = lambda lines: re.sub(r"\s+", " ", lines).strip()
    return Fault(
        path,
        kind,
        text.count("\n", 0, start) + 1,
        start,
        end,
        replacement,
        run_together(text[first:last]),
        run_together(text[first:start] + replacement + text[end:last]),
    )
