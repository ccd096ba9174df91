"""Prints tables: rows of figures, and ratios over several rounds."""

import statistics


def table(title, *columns):
    print(f"\n{title}")
    row(*columns)


def row(*cells):
    first, *others = (str(cell) for cell in cells)
    print("  ".join([f"{first:<22}", *(f"{cell:>13}" for cell in others)]), flush=True)


class RatioTable:
    """One row for each comparison. Each round gives one ratio, ours divided by theirs."""

    def __init__(self):
        self.rows = {}

    def add(self, title, unit, ours, theirs):
        found = self.rows.setdefault(title, {"unit": unit, "ours": [], "theirs": []})
        found["ours"].append(ours)
        found["theirs"].append(theirs)

    def lines(self):
        yield "| what | ours | theirs | ratio: median (range) |"
        yield "|---|---|---|---|"
        for title, found in self.rows.items():
            middle = [f"{statistics.median(found[side]):,.4g} {found['unit']}" for side in ("ours", "theirs")]
            ratios = [ours / theirs for ours, theirs in zip(found["ours"], found["theirs"]) if theirs]
            shown = f"{statistics.median(ratios):.3g} ({min(ratios):.3g} to {max(ratios):.3g})" if ratios else "-"
            yield f"| {title} | {middle[0]} | {middle[1]} | {shown} |"
