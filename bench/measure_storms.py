"""Storms against the receiver, as tables; called by storm.sh. The system counts what it drops for each socket, so what
was received is exact. Ends with an error when a promise is broken: what was received must have been recorded whole,
logged and forwarded."""

import argparse
import sys

from harness.driver import Driver

from measuring.places import programs_in, programs_now
from storm.buffers import measure_buffers
from storm.bursts import measure_bursts, measure_flood
from storm.kills import measure_kills
from storm.soak import measure_soak
from storm.sustained import measure_sustained_engine, measure_sustained_program
from storm.windows import measure_windows

PARTS = {
    "bursts": measure_bursts,
    "flood": measure_flood,
    "buffers": measure_buffers,
    "windows": measure_windows,
    "kills": measure_kills,
    "sustained-engine": measure_sustained_engine,
    "sustained-program": measure_sustained_program,
    "soak": measure_soak,
}


class Storm:
    """What each part needs: the driver of the windows, the states of the sources to measure, the options."""

    def __init__(self, options):
        self.options = options
        self.driver = Driver()
        self.states = [programs_now()]
        if options.before:
            self.states.insert(0, programs_in(options.before))


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--long", action="store_true",
                           help="ten minutes of sustained load instead of 20 s, 50 kills instead of 10, and an hour of "
                                "soaking instead of a minute")
    arguments.add_argument("--before", metavar="FOLDER",
                           help="programs of another state, measured beside these (measuring/places.py)")
    arguments.add_argument("--engine-rate", type=int, default=50000,
                           help="traps a second of the sustained load, natively")
    arguments.add_argument("--program-rate", type=int, default=5000, help="the same for Quillmont.exe")
    arguments.add_argument("parts", nargs="*", metavar="PART", help=f"some of {', '.join(PARTS)}; without any, all")
    options = arguments.parse_args()
    storm = Storm(options)
    broken = []
    for name in options.parts or PARTS:
        try:
            PARTS[name](storm)
        except AssertionError as error:
            broken.append(f"{name}: {error}")
            print(f"Broken: {error}", flush=True)
    storm.driver.close()
    print("\n" + ("\n".join(["Broken:", *broken]) if broken else "Every promise was kept."))
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
