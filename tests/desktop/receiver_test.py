"""The receiver in the shipped program: what it writes and logs for real traffic."""

import socket

import pytest

from harness.data_folder import mask_stamps, record
from harness.traps import (
    LISTENER_PORT,
    LOOPBACK,
    SYS_UPTIME,
    TRAP_PORT,
    V2C_HEAD,
    hold_port,
    integer_binding,
    integer_line,
    message,
    request_from_listener,
    send_inform,
    send_raw,
    send_v1,
    send_v2c,
    udp_socket,
)
from harness.waiting import DEFAULT_SECONDS, stays_true

TINY_MIB = """
tinyRoot OBJECT IDENTIFIER ::= { enterprises 9999 }
tinyValue OBJECT IDENTIFIER ::= { tinyRoot 1 }
"""
NOT_DECODED = "DECODED VARBINDS: (not decoded)"
# The most that UDP over IPv4 carries.
LARGEST_DATAGRAM = 65507


def test_a_version_2c_trap_becomes_a_record_byte_for_byte(program, data):
    send_v2c("1.3.6.1.2.1.2.2.1.1.7", "i", "7", "1.3.6.1.2.1.2.2.1.2.7", "s", "eth7")
    data.wait_for_traps(1)
    assert data.masked_traps() == record(
        *V2C_HEAD,
        "---> [3] 1.3.6.1.2.1.2.2.1.1.7  INTEGER = 7",
        '---> [4] 1.3.6.1.2.1.2.2.1.2.7  OCTET STRING = "eth7"',
    )
    assert data.log_messages()[-1] == "Trap received (127.0.0.1)."


def test_a_version_1_trap_shows_its_bindings_and_nothing_of_its_header(program, data):
    send_v1("1.3.6.1.2.1.2.2.1.1.7", "i", "-7")
    data.wait_for_traps(1)
    assert data.masked_traps() == record("---> [1] 1.3.6.1.2.1.2.2.1.1.7  INTEGER = -7")


def test_version_1_and_2c_with_the_same_bindings_give_the_same_lines(program, data):
    bindings = ["1.3.6.1.4.1.9.1", "a", "192.168.1.20", "1.3.6.1.4.1.9.2", "o", "1.3.6.1.4.1.9"]
    lines = ["1.3.6.1.4.1.9.1  IpAddress = 192.168.1.20", "1.3.6.1.4.1.9.2  OID = 1.3.6.1.4.1.9"]
    send_v1(*bindings)
    data.wait_for_traps(1)
    send_v2c(*bindings)
    data.wait_for_traps(2)
    assert data.masked_traps() == record(*(f"---> [{i}] {line}" for i, line in enumerate(lines, 1))) + record(
        *V2C_HEAD, *(f"---> [{i}] {line}" for i, line in enumerate(lines, 3))
    )


def test_an_inform_is_recorded_like_a_trap_and_never_acknowledged(program, data):
    assert not send_inform("1.3.6.1.4.1.9.1", "u", "4000000000")
    data.wait_for_traps(1)
    assert data.masked_traps() == record(*V2C_HEAD, "---> [3] 1.3.6.1.4.1.9.1  Gauge32 = 4000000000")


def test_every_value_type_of_snmptrap_has_its_label(program, data):
    send_v2c(
        *("1.3.6.1.4.1.9.1", "c", "4294967295"),
        *("1.3.6.1.4.1.9.2", "C", "18446744073709551615"),
        *("1.3.6.1.4.1.9.3", "t", "99"),
        *("1.3.6.1.4.1.9.4", "n", ""),
        *("1.3.6.1.4.1.9.5", "x", "00 01"),
        *("1.3.6.1.4.1.9.6", "s", ""),
        *("1.3.6.1.4.1.9.7", "i", "-2147483648"),
    )
    data.wait_for_traps(1)
    assert data.masked_traps() == record(
        *V2C_HEAD,
        "---> [3] 1.3.6.1.4.1.9.1  Counter32 = 4294967295",
        "---> [4] 1.3.6.1.4.1.9.2  Counter64 = 18446744073709551615",
        "---> [5] 1.3.6.1.4.1.9.3  TimeTicks = 99",
        "---> [6] 1.3.6.1.4.1.9.4  NULL = NULL",
        "---> [7] 1.3.6.1.4.1.9.5  OCTET STRING = 0x0001",
        "---> [8] 1.3.6.1.4.1.9.6  OCTET STRING = 0x",
        "---> [9] 1.3.6.1.4.1.9.7  INTEGER = -2147483648",
    )


def test_a_name_from_the_mibs_folder_stands_behind_exactly_its_identifier(data, start):
    data.add_mib("tiny.mib", TINY_MIB)
    start().wait_running()
    send_v2c("1.3.6.1.4.1.9999.1", "i", "1", "1.3.6.1.4.1.9999.1.0", "i", "2")
    data.wait_for_traps(1)
    assert data.masked_traps() == record(
        *V2C_HEAD,
        "---> [3] 1.3.6.1.4.1.9999.1 (tinyValue)  INTEGER = 1",
        "---> [4] 1.3.6.1.4.1.9999.1.0  INTEGER = 2",
    )


@pytest.mark.parametrize(
    "octets",
    [b"", b"\x30", b"\x31\x00", b"no message at all", message()],
    ids=["zero_length", "one_octet", "wrong_outer_tag", "words", "empty_binding_list"],
)
def test_what_cannot_be_decoded_is_recorded_as_not_decoded(program, data, octets):
    send_raw(octets)
    data.wait_for_traps(1)
    assert data.masked_traps() == record(NOT_DECODED)


def test_the_largest_datagram_arrives_whole(program, data):
    bindings = [integer_binding(number) for number in range(3600)]
    octets = message(*bindings)
    octets += b"\0" * (LARGEST_DATAGRAM - len(octets))
    send_raw(octets)
    data.wait_for_traps(1)
    lines = (integer_line(number, number + 1) for number in range(3600))
    assert data.masked_traps() == record(*lines)


def test_two_source_ports_of_one_host_give_the_same_from_text(program, data):
    send_raw(message(integer_binding(1)))
    send_raw(message(integer_binding(2)))
    data.wait_for_traps(2)
    assert data.masked_traps() == record(integer_line(1)) + record(integer_line(2))


def test_the_senders_address_is_shown_and_logged(program, data):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
        udp.bind(("127.4.5.6", 0))
        udp.sendto(message(integer_binding(1)), (LOOPBACK, TRAP_PORT))
        data.wait_for_log("Trap received (127.4.5.6).")
    assert data.masked_traps() == record(integer_line(1), sender="127.4.5.6")


def test_a_burst_of_500_traps_is_recorded_whole_and_in_order(program, data):
    with udp_socket() as udp:
        # In portions that the smallest receive buffer holds.
        for portion in range(0, 500, 100):
            for number in range(portion, portion + 100):
                udp.sendto(message(integer_binding(number)), (LOOPBACK, TRAP_PORT))
            data.wait_for_traps(portion + 100)
    assert data.masked_traps() == b"".join(record(integer_line(number)) for number in range(500))


def test_a_stopped_receiver_frees_both_ports_and_records_nothing(program, data):
    program.stop()
    with hold_port(TRAP_PORT) as trap, hold_port(LISTENER_PORT):
        trap.settimeout(DEFAULT_SECONDS)
        send_raw(message(integer_binding(1)))
        assert trap.recv(65535) == message(integer_binding(1))
    assert data.trap_octets() == b""


def test_stop_and_start_at_once_rebinds_and_records_again(program, data):
    program.toggle()
    program.toggle()
    data.wait_for_log("Server started.", 2)
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    assert data.masked_traps() == record(integer_line(1))


def test_a_request_to_port_161_is_logged_and_gets_no_reply(program, data):
    data.wait_for_start()
    assert not request_from_listener()
    data.wait_for_log("Datagram on UDP 161 from 127.0.0.1.")
    assert data.log_messages().count("Datagram on UDP 161 from 127.0.0.1.") == 1
    assert data.trap_octets() == b""


def test_every_datagram_on_port_161_gives_one_line(program, data):
    data.wait_for_start()
    for size in (0, 1, 4096, 4097, 65507):
        send_raw(b"x" * size, LISTENER_PORT)
    for _ in range(95):
        send_raw(b"x", LISTENER_PORT)
    data.wait_for_log("Datagram on UDP 161 from 127.0.0.1.", 100)
    assert data.log_messages().count("Datagram on UDP 161 from 127.0.0.1.") == 100
    assert data.trap_octets() == b""


def test_files_can_be_deleted_while_the_receiver_runs(program, data):
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    data.traps.unlink()
    data.log.unlink()
    send_raw(message(integer_binding(2)))
    data.wait_for_traps(1)
    assert data.masked_traps() == record(integer_line(2))
    assert data.log_messages() == ["Trap received (127.0.0.1)."]


def test_files_can_be_moved_away_and_cleared_while_the_receiver_runs(program, data):
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    moved = data.traps.rename(data.folder / "moved.txt").read_bytes()
    data.log.write_bytes(b"")
    send_raw(message(integer_binding(2)))
    data.wait_for_traps(1)
    assert mask_stamps(moved) == record(integer_line(1))
    assert data.masked_traps() == record(integer_line(2))
    assert data.log_messages() == ["Trap received (127.0.0.1)."]


def test_nothing_is_ever_answered_to_the_sender_of_a_trap(program, data):
    with udp_socket() as udp:
        udp.sendto(message(integer_binding(1)), (LOOPBACK, TRAP_PORT))
        udp.sendto(message(integer_binding(2)), (LOOPBACK, TRAP_PORT))
        data.wait_for_traps(2)
        udp.setblocking(False)

        def silent():
            try:
                udp.recv(65535)
            except BlockingIOError:
                return True
            return False

        assert stays_true(silent, 0.5)
    assert SYS_UPTIME.encode() not in data.trap_octets()
