"""The receive buffer of a program that runs, made larger from outside: what a system would grant that allows more.
Needs root of the machine."""

import ctypes
import os
import socket

from harness.traps import TRAP_PORT

from measuring.counters import sockets

SYS_PIDFD_GETFD = 438
SO_RCVBUFFORCE = 33


def _find_descriptor(pid, port):
    inodes = {f"socket:[{fields[9]}]" for fields in sockets(port)}
    for number in os.listdir(f"/proc/{pid}/fd"):
        if os.readlink(f"/proc/{pid}/fd/{number}") in inodes:
            return int(number)
    raise AssertionError(f"process {pid} holds no socket of port {port}")


def enlarge_buffer(pid, octets, port=TRAP_PORT):
    """False: this machine does not allow it."""
    process = os.pidfd_open(pid)
    number = _find_descriptor(pid, port)
    copy = ctypes.CDLL(None, use_errno=True).syscall(SYS_PIDFD_GETFD, process, number, 0)
    os.close(process)
    if copy < 0:
        return False
    with socket.socket(fileno=copy) as shared:
        try:
            shared.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, octets)
        except PermissionError:
            return False
    return True
