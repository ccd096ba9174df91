"""Storms against the receiver, as tables: what was sent, received, recorded, logged and forwarded.

Called by run.sh. The kernel counts what it drops for each socket, so received = sent - dropped is exact. Ends with
an error when a promise is broken: what was received must have been recorded whole, logged and forwarded.
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import threading
import time

from receivers import DEFAULT_BUFFER, FORWARDING_PORT, NativeReceiver, WindowsProgram, WineReceiver

from harness.data_folder import LINE_END, STAMP
from harness.driver import Driver
from harness.processes import memory_kilobytes, thread_count
from harness.tool_windows import LOG, MONITOR, STATUS
from harness.traps import LISTENER_PORT, TRAP_PORT, udp_socket
from harness.waiting import wait_until

RECORD = re.compile(
    LINE_END.join(
        [
            STAMP + rb"       FROM: 127\.0\.0\.1",
            rb"---> \[1\] 1\.3\.6\.1\.4\.1\.9999\.1  Gauge32 = (\d+)",
            rb"---> \[2\] 1\.3\.6\.1\.6\.3\.1\.1\.4\.1\.0  OID = 1\.3\.6\.1\.6\.3\.1\.1\.5\.3",
            rb"---> \[3\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.1\.7  INTEGER = 7",
            rb"---> \[4\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.7\.7  INTEGER = 1",
            rb'---> \[5\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.2\.7  OCTET STRING = "GigabitEthernet0/7"',
            b"",
            b"",
        ]
    )
)
BURSTS = (1000, 10000, 50000)
FLOOD_161 = 50000
TRAP_LINE = b"Trap received (127.0.0.1)."
REQUEST_LINE = b"Datagram on UDP 161 from 127.0.0.1."
DRAIN_SECONDS = 300


def dropped(port):
    """What the kernel has dropped at the socket of this port because its buffer was full."""
    total = 0
    with open("/proc/net/udp", encoding="ascii") as table:
        for line in list(table)[1:]:
            fields = line.split()
            if int(fields[1].split(":")[1], 16) == port:
                total += int(fields[-1])
    return total


def granted_buffer(port):
    """The receive buffer of the port's socket in octets, as the kernel counts it."""
    command = ["/usr/bin/ss", "-uamnH", f"sport = :{port}"]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return int(re.search(r"\brb(\d+)", text).group(1))


def send(count, rate=0, port=TRAP_PORT):
    command = [os.environ["QUILLMONT_SENDER"], str(count), str(rate), str(port)]
    return subprocess.Popen(command, stdout=subprocess.PIPE)


def seconds_taken(sender):
    output, _ = sender.communicate()
    assert sender.returncode == 0
    return float(output)


class ForwardingTarget:
    """Counts what is forwarded: what it takes out and what the kernel had to drop before it came to that."""

    def __init__(self):
        self._socket = udp_socket(FORWARDING_PORT)
        self._socket.settimeout(0.2)
        self._taken = 0
        self._ended = False
        self._thread = threading.Thread(target=self._take)
        self._thread.start()

    def _take(self):
        while not self._ended:
            try:
                self._socket.recv(65535)
                self._taken += 1
            except TimeoutError:
                pass

    @property
    def count(self):
        return self._taken + dropped(FORWARDING_PORT)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._ended = True
        self._thread.join()
        self._socket.close()


class Counter:
    """Counts a text in a growing file, reading each octet once."""

    def __init__(self, path, text):
        self._path, self._text = path, text
        self._offset = 0
        self.count = 0

    def look(self):
        with open(self._path, "rb") as file:
            file.seek(self._offset)
            octets = file.read()
        end = octets.rfind(b"\n") + 1
        self.count += octets.count(self._text, 0, end)
        self._offset += end
        return self.count


def whole_records(data):
    """The number in each record, of a file of any size; an error if anything in it is no whole record."""
    rest = b""
    with open(data.traps, "rb") as file:
        while piece := file.read(1 << 24):
            records, end, rest = (rest + piece).rpartition(LINE_END * 2)
            assert RECORD.sub(b"", records + end) == b"", "something in SNMP.txt is no whole record"
            yield from map(int, RECORD.findall(records + end))
    assert rest == b"", "the last record is cut"


def check_records(data, expected):
    """Every record whole, in the order of sending, and as many as expected."""
    numbers = list(whole_records(data))
    assert len(numbers) == expected, f"{len(numbers)} records instead of {expected}"
    assert all(a < b for a, b in zip(numbers, numbers[1:])), "records are out of order"
    return len(numbers)


def table(title, *columns):
    print(f"\n{title}")
    print("  ".join(f"{column:>13}" for column in columns), flush=True)


def row(*cells):
    print("  ".join(f"{cell:>13}" for cell in cells), flush=True)


def burst(receiver, count, flood=False):
    """One burst against a fresh receiver; a row of the table."""
    traps = Counter(receiver.data.log, TRAP_LINE)
    requests = Counter(receiver.data.log, REQUEST_LINE)
    with ForwardingTarget() as target:
        flooder = send(FLOOD_161, 0, LISTENER_PORT) if flood else None
        start = time.monotonic()
        sending = seconds_taken(send(count))
        if flooder:
            seconds_taken(flooder)
        received = count - dropped(TRAP_PORT)
        what = f"{received} log lines"
        wait_until(lambda: traps.look() >= received, lambda: f"{what}, seen {traps.count}", DRAIN_SECONDS)
        handling = time.monotonic() - start
        wait_until(lambda: target.count >= received, lambda: f"{received} forwarded, seen {target.count}")
        recorded = check_records(receiver.data, received)
        noted = "-"
        if flood:
            on_161 = FLOOD_161 - dropped(LISTENER_PORT)
            wait_until(lambda: requests.look() >= on_161, f"{on_161} lines for port 161", DRAIN_SECONDS)
            noted = f"{requests.count}/{FLOOD_161}"
        forwarded = target.count
        assert traps.look() == received and forwarded == received
    rate = f"{count / sending:,.0f}/s"
    handled = f"{received / handling:,.0f}/s"
    row(receiver.name, count, rate, received, recorded, traps.count, forwarded, noted, handled)


def capacity(receiver):
    """How many back-to-back traps the buffer takes while the receiver gets no turn at all."""
    enough = 20000
    os.kill(receiver.pid, signal.SIGSTOP)
    seconds_taken(send(enough))
    held = enough - dropped(TRAP_PORT)
    os.kill(receiver.pid, signal.SIGCONT)
    traps = Counter(receiver.data.log, TRAP_LINE)
    wait_until(lambda: traps.look() == held, f"{held} log lines", DRAIN_SECONDS)
    check_records(receiver.data, held)
    return held


def loses(receiver, count):
    """Whether a burst of this size loses traps at a receiver that runs."""
    before = dropped(TRAP_PORT)
    traps = Counter(receiver.data.log, TRAP_LINE)
    old = traps.look()
    seconds_taken(send(count))
    lost = dropped(TRAP_PORT) - before
    wait_until(lambda: traps.look() - old == count - lost, "the burst to be handled", DRAIN_SECONDS)
    return lost > 0


def first_loss(receiver):
    """The burst at which loss begins, to a tenth; None when 200,000 lose nothing."""
    low, high = 0, 100
    while not loses(receiver, high):
        low, high = high, high * 2
        if high > 200000:
            return None
    while high - low > high / 10:
        middle = (low + high) // 2
        low, high = (low, middle) if loses(receiver, middle) else (middle, high)
    return high


def measure_bursts(driver, _):
    table(
        "Bursts, back to back",
        *("receiver", "sent", "sent at", "received", "recorded", "logged", "forwarded", "161 noted", "handled at"),
    )
    for make in (NativeReceiver, lambda: WindowsProgram(driver)):
        for flood in (False, True):
            for count in BURSTS:
                receiver = make()
                burst(receiver, count, flood)
                receiver.close()


def measure_buffers(driver, _):
    table("Receive buffer", "receiver", "asked for", "granted", "holds", "first loss")
    for name, make in (
        ("8 MiB", NativeReceiver),
        ("the default", lambda: NativeReceiver(DEFAULT_BUFFER)),
        ("8 MiB", lambda: WindowsProgram(driver)),
        ("the default", lambda: WineReceiver(driver, DEFAULT_BUFFER)),
    ):
        receiver = make()
        granted = granted_buffer(TRAP_PORT)
        held = capacity(receiver)
        receiver.close()
        receiver = make()
        row(receiver.name, name, granted, held, first_loss(receiver) or "none")
        receiver.close()


def measure_windows(driver, _):
    """The same burst with the windows closed and open, and how long a message waits meanwhile."""
    table("Windows open in a storm", "windows", "sent", "received", "longest wait", "answers in")
    for windows in ((), (MONITOR, LOG, STATUS)):
        receiver = WindowsProgram(driver)
        for tool in windows:
            tool.open(receiver.program)
        traps = Counter(receiver.data.log, TRAP_LINE)
        count = BURSTS[1]
        sender = send(count, 2000)
        longest = driver("longest_answer", receiver.program.main.handle, 1000 * count // 2000)
        seconds_taken(sender)
        received = count - dropped(TRAP_PORT)
        wait_until(lambda: traps.look() == received, f"{received} log lines", DRAIN_SECONDS)
        check_records(receiver.data, received)
        start = time.monotonic()
        receiver.program.settle()
        settled = time.monotonic() - start
        row("open" if windows else "closed", count, received, f"{longest / 1000:.0f} ms", f"{settled * 1000:.0f} ms")
        receiver.close()


def sustain(receiver, rate, seconds):
    table(f"Sustained load of {rate:,}/s", "receiver", "second", "logged", "dropped", "memory kB", "threads")
    traps = Counter(receiver.data.log, TRAP_LINE)
    memory = []

    def report(second):
        memory.append(memory_kilobytes(receiver.pid))
        row(receiver.name, second, traps.look(), dropped(TRAP_PORT), memory[-1], thread_count(receiver.pid))

    step = min(60, seconds // 4)
    with ForwardingTarget() as target:
        sender = send(rate * seconds, rate)
        for second in range(step, seconds + 1, step):
            try:
                sender.wait(step)
            except subprocess.TimeoutExpired:
                pass
            report(second)
        seconds_taken(sender)
        sent = rate * seconds
        wait_until(lambda: traps.look() == sent, lambda: f"{sent} lines, seen {traps.count}", DRAIN_SECONDS)
        wait_until(lambda: target.count >= sent, lambda: f"{sent} forwarded, seen {target.count}")
        report("end")
        forwarded = target.count
    recorded = sum(1 for _ in whole_records(receiver.data))
    assert recorded == sent and dropped(TRAP_PORT) == 0, f"{recorded} recorded, {dropped(TRAP_PORT)} dropped"
    print(f"sent {sent}, recorded {recorded}, logged {traps.count}, forwarded {forwarded}")
    assert memory[-1] <= memory[0] * 1.05 + 512, "memory grows"


# Traps a second, well below what each keeps up with on two idle cores.
ENGINE_RATE = int(os.environ.get("QUILLMONT_ENGINE_RATE", "2000"))
PROGRAM_RATE = int(os.environ.get("QUILLMONT_PROGRAM_RATE", "500"))


def measure_sustained_engine(_, seconds):
    receiver = NativeReceiver()
    sustain(receiver, ENGINE_RATE, seconds)
    receiver.close()


def measure_sustained_program(driver, seconds):
    receiver = WindowsProgram(driver)
    sustain(receiver, PROGRAM_RATE, seconds)
    receiver.close()


PARTS = {
    "bursts": measure_bursts,
    "buffers": measure_buffers,
    "windows": measure_windows,
    "sustained-engine": measure_sustained_engine,
    "sustained-program": measure_sustained_program,
}


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--long", action="store_true", help="ten minutes of sustained load instead of 20 s")
    arguments.add_argument("parts", nargs="*", metavar="PART", help=f"some of {', '.join(PARTS)}")
    options = arguments.parse_args()
    driver = Driver()
    for name in options.parts or PARTS:
        PARTS[name](driver, 600 if options.long else 20)
    driver.close()
    print("\nEvery promise was kept.")


if __name__ == "__main__":
    sys.exit(main())
