"""Forwarding in the shipped program: what arrives at the target, and what is logged when nothing can."""

import pytest

from harness.data_folder import config
from harness.traps import LOOPBACK, integer_binding, message, send_raw, udp_socket

# The most that UDP over IPv4 carries.
LARGEST_DATAGRAM = 65507


@pytest.fixture
def target():
    """A socket that traps can be forwarded to."""
    with udp_socket() as udp:
        yield udp


@pytest.fixture
def forwarding_to_target(data, start, target):
    """The running program with forwarding to the target switched on."""
    data.write_config(config(1, LOOPBACK, target.getsockname()[1]))
    return start().wait_running()


@pytest.mark.parametrize(
    "octets",
    [b"", b"\x00\xff undecodable", message(integer_binding(1)), b"z" * LARGEST_DATAGRAM],
    ids=["zero_length", "undecodable", "a_trap", "the_largest"],
)
def test_a_datagram_is_forwarded_octet_for_octet(forwarding_to_target, data, target, octets):
    send_raw(octets)
    assert target.recv(65535) == octets
    data.wait_for_traps(1)


def expect_nothing_forwarded(data, target):
    # Sent when the first is announced, the second has a turn of its own: its announcement comes after the first has
    # been through forwarding.
    for count in (1, 2):
        send_raw(message(integer_binding(count)))
        data.wait_for_traps(count)
    target.setblocking(False)
    with pytest.raises(BlockingIOError):
        target.recv(65535)


def test_forwarding_that_is_off_sends_nothing(data, start, target):
    data.write_config(config(0, LOOPBACK, target.getsockname()[1]))
    start().wait_running()
    expect_nothing_forwarded(data, target)


@pytest.mark.parametrize(
    "address", [" 127.0.0.1", "127.0.0.1 ", "localhost", "::1", "", "127.1", "0127.0.0.1"]
)
def test_a_target_that_is_no_ipv4_address_is_passed_over_in_silence(data, start, target, address):
    data.write_config(config(1, address, target.getsockname()[1]))
    start().wait_running()
    expect_nothing_forwarded(data, target)
    assert "Forwarding failed (sendto error)." not in data.log_messages()


def test_a_failed_send_is_logged_once_for_each_datagram(data, start):
    # A broadcast: the system refuses it to a socket that has not asked for it, whatever the network.
    data.write_config(config(1, "255.255.255.255", 9999))
    start().wait_running()
    for count in (1, 2, 3):
        send_raw(message(integer_binding(count)))
        data.wait_for_log("Forwarding failed (sendto error).", count)
    assert data.log_messages().count("Forwarding failed (sendto error).") == 3
    assert data.masked_traps().count(b"FROM: ") == 3
