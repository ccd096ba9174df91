"""The side-by-side runs behind bench/compare.sh, which prepares what they need: a private network, a display, a Wine
prefix and the programs.

Every comparison is made in rounds, one side right after the other, and each round gives one ratio; the table shows
the median and the range of the ratios. Absolute figures of a shared machine mean little.
"""

import argparse
import json
import os
import pathlib
import re
import shutil
import signal
import statistics
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
NATIVE = pathlib.Path(os.environ.get("QUILLMONT_BENCH_NATIVE", ROOT / "build/bench"))
WINDOWS = pathlib.Path(os.environ.get("QUILLMONT_BENCH_WINDOWS", ROOT / "build/bench-windows"))
RESULT = ROOT / "build/bench/compare.json"

TICKS = os.sysconf("SC_CLK_TCK")
BUFFER = 8 * 1024 * 1024
BINDINGS = 2  # of the traps in a storm: the fewest that a v2c trap has, and the hardest for who opens two files
LOG_LINE_OCTETS = len("2026-03-07 09:05:02.047  Trap received (127.0.0.1).\r\r\n")
DEADLINE = 60  # seconds for anything that should happen at once


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True, **options).stdout


def numbers(text):
    return [float(word) for word in text.split()]


def wait_until(condition, what):
    deadline = time.monotonic() + DEADLINE
    while not condition():
        if time.monotonic() > deadline:
            raise TimeoutError(what)
        time.sleep(0.001)


def listens_on_162():
    return any(line.split()[1].endswith(":00A2") for line in open("/proc/net/udp").readlines()[1:])


def granted_buffer():
    return int(re.search(r"rb(\d+)", run("ss", "--udp", "--listening", "--numeric", "--memory", "sport", "=", ":162"))[1])


def cpu_seconds(pid):
    fields = open(f"/proc/{pid}/stat").read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def resident_kib(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", open(f"/proc/{pid}/status").read())[1])


def settled_resident_kib(pid):
    """Once a thousand looks, more than a second, saw the same: a program listens before its window is painted."""
    readings = []

    def is_settled():
        readings.append(resident_kib(pid))
        return len(readings) >= 1000 and len(set(readings[-1000:])) == 1

    wait_until(is_settled, "memory to stay the same")
    return readings[-1]


def find_process(name):
    """The process whose command line names the Windows program; Wine's own command does not stay."""
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            first = (entry / "cmdline").read_bytes().split(b"\0")[0].decode(errors="replace")
        except OSError:
            continue
        if first.replace("\\", "/").endswith("/" + name) or first == name:
            return int(entry.name)
    return None


class Receiver:
    """A program that listens on UDP 162, from its start to its end."""

    name = ""
    wine = False

    def command(self):
        raise NotImplementedError

    def environment(self):
        return dict(os.environ)

    def prepare(self):
        pass

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="quillmont-compare-"))
        self.prepare()
        wait_until(lambda: not listens_on_162(), "port 162 to be free")
        start = time.monotonic()
        self.process = subprocess.Popen([str(word) for word in self.command()], env=self.environment(),
                                        stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(listens_on_162, f"{self.name} to listen")
        self.start_seconds = time.monotonic() - start
        self.pid = self.find_pid()
        return self

    def __exit__(self, *_):
        os.kill(self.pid, signal.SIGKILL)
        self.process.stdin.close()
        self.process.wait()
        wait_until(lambda: not listens_on_162(), f"{self.name} to end")
        shutil.rmtree(self.folder)

    def find_pid(self):
        return self.process.pid

    def cpu(self):
        return cpu_seconds(self.pid)

    def recorded(self):
        raise NotImplementedError

    def storm(self, kind, *arguments):
        """Traps sent, traps that the system's buffer lost, seconds until the buffer was empty."""
        return numbers(run(NATIVE / "bench/trap_storm", kind, *arguments))


def count_in_file(path, mark):
    return path.read_bytes().count(mark) if path.exists() else 0


class Quillmont(Receiver):
    name = "Quillmont, natively and without windows"

    def command(self):
        return [NATIVE / "tests/storm/quillmont_storm_receiver"]

    def environment(self):
        return dict(os.environ, QUILLMONT_DATA_HOME=str(self.folder))

    def recorded(self):
        return count_in_file(self.folder / "Quillmont/SNMP.txt", b"FROM: ")


class Floor(Receiver):
    name = "floor program"
    record_octets = 163

    def command(self):
        return [NATIVE / "bench/floor_receiver", self.folder, self.record_octets, LOG_LINE_OCTETS]

    def recorded(self):
        return count_in_file(self.folder / "SNMP.txt", b"\n")


class Snmptrapd(Receiver):
    name = "snmptrapd, file kept open, the same buffer"
    buffer = BUFFER

    def command(self):
        return ["snmptrapd", "-f", "-n", "-On", "-m", "", "-C", "-c", self.folder / "snmptrapd.conf", "-Lf",
                self.folder / "traps.txt", "udp:162"]

    def prepare(self):
        (self.folder / "snmptrapd.conf").write_text(
            f"disableAuthorization yes\n[snmp] serverRecvBuf {self.buffer}\n")

    def recorded(self):
        return count_in_file(self.folder / "traps.txt", b".1.3.6.1.6.3.1.1.4.1.0 =")


class WineReceiver(Receiver):
    wine = True
    program = ""

    def command(self):
        return ["wine", WINDOWS / self.program, *self.arguments()]

    def arguments(self):
        return []

    def prepare(self):
        self.data_folder = next((pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c/users").glob("[!P]*"))
        self.data_folder = self.data_folder / "AppData/Local/Quillmont"
        shutil.rmtree(self.data_folder, ignore_errors=True)
        self.data_folder.mkdir(parents=True)

    def find_pid(self):
        wait_until(lambda: find_process(pathlib.Path(self.program).name), self.name)
        return find_process(pathlib.Path(self.program).name)

    def cpu(self):
        # Half of a Windows program's work under Wine is done by its server.
        return cpu_seconds(self.pid) + cpu_seconds(find_server())


def find_server():
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if (entry / "comm").read_text().startswith("wineserver"):
                return int(entry.name)
        except OSError:
            continue
    raise ProcessLookupError("wineserver")


class QuillmontUnderWine(WineReceiver):
    name = "Quillmont.exe under Wine, main window only"
    program = "Quillmont.exe"

    def recorded(self):
        return count_in_file(self.data_folder / "SNMP.txt", b"FROM: ")


class FloorUnderWine(WineReceiver):
    name = "floor program under Wine"
    program = "bench/floor_receiver.exe"
    record_octets = Floor.record_octets

    def arguments(self):
        return ["C:\\users\\" + self.data_folder.parts[-4] + "\\AppData\\Local\\Quillmont", self.record_octets,
                LOG_LINE_OCTETS]

    def recorded(self):
        return count_in_file(self.data_folder / "SNMP.txt", b"\n")


class FloorWithWindowUnderWine(FloorUnderWine):
    name = "floor program with an empty window under Wine"
    program = "bench/floor_receiver_window.exe"


class Table:
    """Rows of ratios, one a round, always first side by second side."""

    def __init__(self):
        self.rows = {}

    def add(self, key, title, unit, first, second, target=""):
        row = self.rows.setdefault(key, {"title": title, "unit": unit, "target": target, "first": [], "second": []})
        row["first"].append(first)
        row["second"].append(second)

    def note(self, key, value):
        self.rows.setdefault("notes", {}).setdefault(key, []).append(value)

    def lines(self):
        yield "| what | ours | theirs | ratio: median (range) | target |"
        yield "|---|---|---|---|---|"
        for key, row in self.rows.items():
            if key == "notes":
                continue
            ratios = [first / second for first, second in zip(row["first"], row["second"]) if second]
            middle = [f"{statistics.median(row[side]):,.4g} {row['unit']}" for side in ("first", "second")]
            shown = f"{statistics.median(ratios):.3g} ({min(ratios):.3g} to {max(ratios):.3g})" if ratios else "-"
            yield f"| {row['title']} | {middle[0]} | {middle[1]} | {shown} | {row['target']} |"


def compare_datagrams(table, _):
    for bindings, rounds in ((2, 300000), (8, 100000), (50, 20000)):
        ours = float(run(NATIVE / "bench/quillmont_datagrams", bindings, rounds))
        theirs = float(run(NATIVE / "bench/netsnmp_datagrams", bindings, rounds // 10))
        target = "at most 0.10" if bindings == 8 else ""
        table.add(f"datagram_{bindings}", f"decode and print, {bindings} bindings: net-snmp's library", "ns", ours, theirs,
                  target)


def measure_storm(receiver_type, count, high_mark):
    with receiver_type() as receiver:
        before = receiver.cpu()
        sent, lost, seconds = receiver.storm("keep-busy", count, BINDINGS, high_mark)
        wait_until(lambda: receiver.recorded() >= sent - lost, "the last record")
        used = receiver.cpu() - before
        result = {"rate": sent / seconds, "cpu": used * 100000 / sent, "resident": resident_kib(receiver.pid) / 1024,
                  "start": receiver.start_seconds * 1000, "buffer": granted_buffer()}
        if lost or receiver.recorded() != sent:
            raise RuntimeError(f"{receiver.name}: {sent} sent, {lost} lost, {receiver.recorded()} recorded")
    return result


def compare_storms(table, key, first_type, second_type, count, targets):
    results = [measure_storm(kind, count, BUFFER // 2) for kind in (first_type, second_type)]
    rows = (("rate", "sustained traps/s without loss", "/s"), ("cpu", "CPU seconds per 100,000 traps", "s"),
            ("resident", "resident memory", "MiB"), ("start", "start to listening", "ms"))
    for name, title, unit in rows:
        table.add(f"{key}_{name}", f"{title}: {second_type.name}", unit, results[0][name], results[1][name],
                  targets.get(name, ""))


def compare_native_storms(table, options):
    compare_storms(table, "snmptrapd", Quillmont, Snmptrapd, options.traps,
                   {"rate": "at least 2", "cpu": "below 1"})


def compare_native_floor(table, options):
    compare_storms(table, "floor", Quillmont, Floor, options.traps, {})


def compare_wine_floor(table, options):
    compare_storms(table, "wine", QuillmontUnderWine, FloorUnderWine, options.wine_traps,
                   {"rate": "at least 0.90", "start": "ours under 300 ms", "resident": "at most 4 MiB more"})
    resident = []
    for kind in (QuillmontUnderWine, FloorWithWindowUnderWine):
        with kind() as receiver:
            resident.append(settled_resident_kib(receiver.pid) / 1024)
    table.add("wine_window_resident", f"resident memory: {FloorWithWindowUnderWine.name}", "MiB", *resident,
              "at most 4 MiB more")


def measure_burst(receiver_type, open_windows=False):
    """What the buffer holds, found with the program stopped; then a burst of that size with the program running."""
    with receiver_type() as receiver:
        if open_windows:
            subprocess.run(["wine", WINDOWS / "bench/open_windows.exe"], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        os.kill(receiver.pid, signal.SIGSTOP)
        sent, lost, _ = receiver.storm("fill", BINDINGS)
        os.kill(receiver.pid, signal.SIGCONT)
        held = sent - lost
        wait_until(lambda: receiver.recorded() >= held, "the burst to be recorded")
        _, lost_running, _ = receiver.storm("burst", int(held), BINDINGS)
        wait_until(lambda: receiver.recorded() >= 2 * held - lost_running, "the second burst to be recorded")
        if receiver.recorded() != 2 * held:
            raise RuntimeError(f"{receiver.name}: {2 * held} bursts held, {receiver.recorded()} recorded")
    return held


class SnmptrapdAsInstalled(Snmptrapd):
    name = "snmptrapd, default buffer"
    buffer = 0

    def prepare(self):
        (self.folder / "snmptrapd.conf").write_text("disableAuthorization yes\n")


def compare_bursts(table, _):
    table.add("burst_equal", "burst without loss: snmptrapd, the same buffer", "traps", measure_burst(Quillmont),
              measure_burst(Snmptrapd))
    table.add("burst_default", "burst without loss: snmptrapd, default buffer", "traps", measure_burst(Quillmont),
              measure_burst(SnmptrapdAsInstalled))
    table.add("burst_wine", "burst without loss, three windows open: floor program under Wine", "traps",
              measure_burst(QuillmontUnderWine, open_windows=True), measure_burst(FloorUnderWine))


def load_mibs(options):
    with tempfile.TemporaryDirectory() as home:
        (pathlib.Path(home) / "Quillmont").mkdir()
        (pathlib.Path(home) / "Quillmont/mibs").symlink_to(options.mibs)
        return numbers(run(NATIVE / "bench/quillmont_mibs", env=dict(os.environ, QUILLMONT_DATA_HOME=home)))


def compare_mibs(table, options):
    # In turn, the best of three on each side: a load is over in a fifth of a second, and what else the machine does
    # only ever adds.
    loads, scans = zip(*((load_mibs(options), numbers(run(NATIVE / "bench/floor_folder_scan", options.mibs)))
                         for _ in range(3)))
    floor = [min(column) for column in zip(*scans)]
    seconds, names, text, before, peak, after = min(loads)
    folder = f"MIB folder, {floor[2]:,.0f} files, {floor[3] / 1e6:,.0f} MB"
    table.add("mibs_lines", f"{folder}: reading and finding lines", "s", seconds, floor[0], "at most 2.5")
    table.add("mibs_values", f"{folder}: the same and looking for values", "s", seconds, floor[1], "at most 2.5")
    table.add("mibs_memory", f"memory after it: the text of its {names:,.0f} names", "MiB", (after - before) / 1024,
              text / 1024 / 1024, "at most 2.5")
    table.note("mibs_peak_mib", peak / 1024)


def compare_mibs_peer(table, options):
    ours = load_mibs(options)
    theirs = numbers(run(NATIVE / "bench/netsnmp_mibs", options.mibs))
    table.add("mibs_netsnmp", "MIB folder: net-snmp's library", "s", ours[0], theirs[0], "at most 0.05")
    table.add("mibs_netsnmp_peak", "memory while loading: net-snmp's library", "MiB", ours[4] / 1024, theirs[2] / 1024,
              "ours under 300 MiB")


def compare_sizes(table, _):
    """What has to be on the disk to receive traps, the system's C library left out on both sides."""
    program = shutil.which("snmptrapd") or "/usr/sbin/snmptrapd"
    libraries = [line.split("=>")[1].split()[0] for line in run("ldd", program).splitlines() if "netsnmp" in line]
    theirs = sum(os.path.getsize(os.path.realpath(path)) for path in [program, *libraries])
    table.add("size", "size on disk: snmptrapd and its own libraries", "KB",
              os.path.getsize(WINDOWS / "Quillmont.exe") / 1000, theirs / 1000)


ALL = {
    "datagrams": compare_datagrams,
    "snmptrapd": compare_native_storms,
    "floor": compare_native_floor,
    "wine": compare_wine_floor,
    "bursts": compare_bursts,
    "mibs": compare_mibs,
    "mibs-peer": compare_mibs_peer,
    "sizes": compare_sizes,
}
ONCE = {"bursts", "mibs-peer", "sizes"}  # slow, or always the same


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--traps", type=int, default=100000, help="of a storm, natively")
    parser.add_argument("--wine-traps", type=int, default=20000, help="of a storm under Wine")
    parser.add_argument("--mibs", type=pathlib.Path, help="folder of MIB files; without it one is made")
    parser.add_argument("--only", default=",".join(ALL), help="comma-separated: " + ", ".join(ALL))
    options = parser.parse_args()
    wanted = options.only.split(",")
    table = Table()
    with tempfile.TemporaryDirectory() as made:
        if options.mibs is None:
            options.mibs = pathlib.Path(made)
            run(NATIVE / "bench/make_mib_folder", made, 500)
        options.mibs = options.mibs.resolve()
        if {"wine", "bursts"} & set(wanted):
            # The prefix's first programs start Wine's services and its desktop: nobody's start-up time. The desktop
            # stays, as it does on Windows, until the caller ends the prefix.
            subprocess.Popen(["wine", "explorer", "/desktop=Default,1280x900"], stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
            with QuillmontUnderWine():
                pass
        for number in range(options.rounds):
            for name in wanted:
                if number == 0 or name not in ONCE:
                    print(f"round {number + 1}: {name}", flush=True)
                    ALL[name](table, options)
    RESULT.parent.mkdir(parents=True, exist_ok=True)
    RESULT.write_text(json.dumps(table.rows, indent=1))
    print("\n".join(table.lines()))


if __name__ == "__main__":
    main()
