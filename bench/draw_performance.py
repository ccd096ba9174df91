"""Draws docs/pictures/performance_datagram.svg with gnuplot: where the time of one datagram goes.

Usage: bench/draw_performance.py NATIVE WINE, two files with the output of bench/datagram_steps.
"""

import pathlib
import subprocess
import sys

PICTURE = pathlib.Path(__file__).resolve().parent.parent / "docs/pictures/performance_datagram.svg"
STEPS = (("receive", "receive"), ("decode", "decode"), ("compose", "compose"), ("octets", "text to octets"),
         ("append", "open, append, close SNMP.txt"), ("log", "log line: stamp, open, append, close"), ("rest", "rest"))
SCRIPT = """
set terminal svg size 900,330 font "sans,13" background "white"
set output "{picture}"
set title "One trap of eight bindings: where its time goes"
set style data histograms
set style histogram rowstacked
set style fill solid 0.9 border -1
set boxwidth 0.6
set bmargin 3
set ylabel "share of the time, percent"
set yrange [0:100]
set key outside right reverse Left
set grid ytics
$figures << END
{table}
END
plot for [column=2:{last}] $figures using column:xtic(1) title columnheader(column)
"""


def read_steps(path):
    steps = {name: float(value) for name, value in (line.split() for line in path.read_text().splitlines())}
    steps["rest"] = max(0.0, steps["whole"] - sum(steps[name] for name in ("decode", "compose", "octets", "append", "log")))
    return steps


def make_row(system, steps):
    total = sum(steps[name] for name, _ in STEPS)
    return f'"{system}"', *(f"{100 * steps[name] / total:.2f}" for name, _ in STEPS)


def main():
    native, wine = (read_steps(pathlib.Path(word)) for word in sys.argv[1:3])
    rows = [("system", *(f'"{title}"' for _, title in STEPS)), make_row("native", native), make_row("Wine", wine)]
    table = "\n".join(" ".join(row) for row in rows)
    script = SCRIPT.format(picture=PICTURE, table=table, last=len(STEPS) + 1)
    PICTURE.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


if __name__ == "__main__":
    main()
