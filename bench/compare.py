"""The side-by-side runs behind compare.sh.

Every comparison is made in rounds, one side right after the other, and each round gives one ratio; the table shows
the median and the range of the ratios. Absolute figures of a shared machine mean little.
"""

import argparse
import json
import tempfile
from pathlib import Path

from harness.driver import Driver

from comparisons import receiving, steps
from measuring.places import NATIVE_BUILD, native_tool
from measuring.tables import RatioTable

RESULT = NATIVE_BUILD / "compare.json"
MADE_FILES = 500

COMPARISONS = {
    "datagrams": steps.compare_datagrams,
    "native": receiving.compare_native_rates,
    "wine": receiving.compare_wine_rates,
    "native-work": receiving.compare_native_work,
    "wine-work": receiving.compare_wine_work,
    "native-latency": receiving.compare_native_latency,
    "wine-latency": receiving.compare_wine_latency,
    "footprints": receiving.compare_footprints,
    "bursts": receiving.compare_bursts,
    "mibs": steps.compare_mibs,
    "mibs-peer": steps.compare_mibs_peer,
    "sizes": steps.compare_sizes,
}
ONCE = {"bursts", "mibs-peer", "sizes"}  # slow, or always the same


def read_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--before", metavar="FOLDER",
                        help="programs of another state to be held against these too (measuring/places.py)")
    parser.add_argument("--traps", type=int, default=100000, help="of a storm, natively and at a steady rate")
    parser.add_argument("--wine-traps", type=int, default=50000, help="of a storm under Wine")
    parser.add_argument("--rate", type=int, default=100000, help="traps a second of native-work")
    parser.add_argument("--wine-rate", type=int, default=40000, help="the same of wine-work")
    parser.add_argument("--mibs", type=Path, help="folder of MIB files; without it one is made")
    parser.add_argument("--only", default=",".join(COMPARISONS), help="comma-separated: " + ", ".join(COMPARISONS))
    return parser.parse_args()


def main():
    options = read_options()
    table = RatioTable()
    # Stays all the time, and with it the prefix's services and desktop: they are in nobody's start-up time.
    options.driver = Driver()
    options.driver("foreground")
    with tempfile.TemporaryDirectory() as made:
        if options.mibs is None:
            options.mibs = Path(made)
            steps.run(native_tool("make_mib_folder"), made, MADE_FILES)
        options.mibs = options.mibs.resolve()
        for number in range(options.rounds):
            for name in options.only.split(","):
                if number == 0 or name not in ONCE:
                    print(f"round {number + 1}: {name}", flush=True)
                    COMPARISONS[name](table, options)
    options.driver.close()
    RESULT.write_text(json.dumps(table.rows, indent=1), encoding="ascii")
    print("\n".join(table.lines()))


if __name__ == "__main__":
    main()
