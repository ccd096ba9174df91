"""What was judged: one line of JSON a verdict, appended at once, so that a run can be broken off and taken up again."""

import json
import tomllib
from collections import Counter

from faults.judge import FOUND, NOTHING, REFUSED, SURVIVED


class Results:
    def __init__(self, path):
        self._path = path
        self._records = {}
        if path.exists():
            for line in path.read_text().splitlines():
                record = json.loads(line)
                self._records[record["key"]] = record

    def outcome(self, fault):
        record = self._records.get(fault.key)
        return record["outcome"] if record else None

    def add(self, fault, verdict):
        record = {
            "key": fault.key, "path": fault.path, "kind": fault.kind, "before": fault.before, "after": fault.after,
            "outcome": verdict.outcome, "by": verdict.by, "seconds": verdict.seconds,
        }  # fmt: skip
        self._records[fault.key] = record
        self._path.parent.mkdir(parents=True, exist_ok=True)
        with self._path.open("a") as file:
            file.write(json.dumps(record) + "\n")

    def report(self, faults, harmless):
        """The lines of the report on these faults: a table by folder, then the survivors."""
        counts = {}
        survivors = []
        for fault in faults:
            outcome = self.outcome(fault)
            if outcome in (None, REFUSED):
                continue
            folder = fault.path.rsplit("/", 1)[0]
            if outcome == SURVIVED and harmless.knows(fault):
                outcome = NOTHING
            elif outcome == SURVIVED:
                survivors.append(fault)
            counts.setdefault(folder, Counter())[outcome] += 1
        for folder, count in sorted(counts.items()):
            yield _row(folder, count)
        yield _row("all", sum(counts.values(), Counter()))
        if survivors:
            yield "Survivors:"
        for fault in survivors:
            yield str(fault)


def _row(name, count):
    return (
        f"{name:18} {sum(count.values()):5} planted, {count[FOUND]:5} found, "
        f"{count[NOTHING]:5} changing nothing, {count[SURVIVED]:5} survived"
    )


class Harmless:
    """The list of faults that no test can find, since they change nothing that anybody could see; each with its reason."""

    def __init__(self, path):
        self.entries = tomllib.loads(path.read_text()).get("fault", []) if path.exists() else []
        self._known = {(entry["file"], entry["line"], entry["planted"]): entry for entry in self.entries}

    def knows(self, fault):
        entry = self._known.get((fault.path, fault.before, fault.after))
        return entry is not None and fault.occurrence in entry.get("occurrences", [fault.occurrence])
