"""Sending traps: real ones with snmptrap, and raw datagrams."""

import os
import socket
import subprocess

from harness.waiting import DEFAULT_SECONDS, wait_until

LOOPBACK = "127.0.0.1"
TRAP_PORT = 162
LISTENER_PORT = 161

UPTIME = "123456"
SYS_UPTIME = "1.3.6.1.2.1.1.3.0"
SNMP_TRAP_OID = "1.3.6.1.6.3.1.1.4.1.0"
LINK_DOWN = "1.3.6.1.6.3.1.1.5.3"
ENTERPRISE = "1.3.6.1.4.1.8072.2.3"

# The first lines of a record of a version 2c trap.
V2C_HEAD = [f"---> [1] {SYS_UPTIME}  TimeTicks = {UPTIME}", f"---> [2] {SNMP_TRAP_OID}  OID = {LINK_DOWN}"]


def run_snmp_tool(*command):
    # Independent of the machine's settings and MIB files.
    environment = dict(os.environ, SNMPCONFPATH="/nonexistent", MIBS="")
    return subprocess.run(command, env=environment, capture_output=True, text=True, timeout=60, check=False)


def send_v1(*bindings):
    """Sends a linkDown with agent address 10.9.8.7. bindings: oid, type letter, value, oid, ..."""
    result = run_snmp_tool(
        "snmptrap", "-v1", "-cpublic", LOOPBACK, ENTERPRISE, "10.9.8.7", "2", "0", UPTIME, *bindings
    )
    assert result.returncode == 0, result.stderr


def send_v2c(*bindings):
    result = run_snmp_tool("snmptrap", "-v2c", "-cpublic", LOOPBACK, UPTIME, LINK_DOWN, *bindings)
    assert result.returncode == 0, result.stderr


def send_inform(*bindings):
    """Sends an inform once. Returns whether it was answered within half a second."""
    result = run_snmp_tool(
        "snmptrap", "-Ci", "-v2c", "-cpublic", "-r0", "-t0.5", LOOPBACK, UPTIME, LINK_DOWN, *bindings
    )
    return result.returncode == 0


def send_get_request():
    """Sends a get request to port 161. Returns whether it was answered within half a second."""
    result = run_snmp_tool("snmpget", "-v2c", "-cpublic", "-r0", "-t0.5", LOOPBACK, SYS_UPTIME)
    return result.returncode == 0


def udp_socket(port=0):
    """A socket on the loopback address, without address reuse: no other socket can bind its port."""
    udp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    udp.bind((LOOPBACK, port))
    udp.settimeout(DEFAULT_SECONDS)
    return udp


def occupy_port(port):
    """Binds the port on all addresses, so that the program cannot. Retries, since Wine frees a program's port a moment
    after the program has ended."""
    udp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)

    def is_bound():
        try:
            udp.bind(("0.0.0.0", port))
        except OSError:
            return False
        return True

    wait_until(is_bound, f"port {port} to be free")
    return udp


def send_raw(octets, port=TRAP_PORT):
    with udp_socket() as udp:
        udp.sendto(octets, (LOOPBACK, port))


def _length(size):
    if size < 128:
        return bytes([size])
    octets = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(octets)]) + octets


def tlv(tag, content):
    return bytes([tag]) + _length(len(content)) + content


def integer_binding(value):
    """A binding of 1.3.6.1.4.1.9.1 with a non-negative INTEGER of four octets."""
    return tlv(0x30, tlv(0x06, bytes([0x2B, 6, 1, 4, 1, 9, 1])) + tlv(0x02, value.to_bytes(4, "big")))


def integer_line(value, number=1):
    """The record's line for integer_binding(value)."""
    return f"---> [{number}] 1.3.6.1.4.1.9.1  INTEGER = {value}"


def message(*bindings):
    """A version 2c trap message with these bindings and no others."""
    pdu = tlv(0x02, b"\x01") + tlv(0x02, b"\x00") + tlv(0x02, b"\x00") + tlv(0x30, b"".join(bindings))
    return tlv(0x30, tlv(0x02, b"\x01") + tlv(0x04, b"public") + tlv(0xA7, pdu))
