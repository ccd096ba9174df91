"""The receiver in the shipped program: what it writes and logs for real traffic."""

import socket

import pytest

from harness.data_folder import config, record
from harness.traps import (
    LISTENER_PORT,
    LOOPBACK,
    TRAP_PORT,
    V2C_HEAD,
    integer_binding,
    integer_line,
    message,
    occupy_port,
    send_get_request,
    send_inform,
    send_raw,
    send_v1,
    send_v2c,
    udp_socket,
)
from harness.waiting import DEFAULT_SECONDS

TINY_MIB = """
tinyRoot OBJECT IDENTIFIER ::= { enterprises 9999 }
tinyValue OBJECT IDENTIFIER ::= { tinyRoot 1 }
"""
NOT_DECODED = "DECODED VARBINDS: (not decoded)"


def test_a_version_2c_trap_becomes_a_record_byte_for_byte(program, data):
    send_v2c("1.3.6.1.2.1.2.2.1.1.7", "i", "7", "1.3.6.1.2.1.2.2.1.2.7", "s", "eth7")
    data.wait_for_traps(1)
    assert data.masked_traps() == record(
        *V2C_HEAD,
        "---> [3] 1.3.6.1.2.1.2.2.1.1.7  INTEGER = 7",
        '---> [4] 1.3.6.1.2.1.2.2.1.2.7  OCTET STRING = "eth7"',
    )
    assert data.log_messages()[-1] == "Trap received (127.0.0.1)."


def test_a_version_1_trap_shows_its_bindings_but_not_its_header(program, data):
    send_v1("1.3.6.1.2.1.2.2.1.1.7", "i", "-7")
    data.wait_for_traps(1)
    assert data.masked_traps() == record("---> [1] 1.3.6.1.2.1.2.2.1.1.7  INTEGER = -7")


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


def test_a_mib_name_is_shown_for_exactly_its_identifier(data, start):
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
    [b"", b"\x30", b"\x31\x00", b"not a message", message()],
    ids=["zero_length", "one_octet", "wrong_outer_tag", "words", "empty_binding_list"],
)
def test_an_undecodable_datagram_is_recorded_as_not_decoded(program, data, octets):
    send_raw(octets)
    data.wait_for_traps(1)
    assert data.masked_traps() == record(NOT_DECODED)


def test_the_senders_address_is_shown_and_logged(program, data):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
        udp.bind(("127.4.5.6", 0))
        udp.sendto(message(integer_binding(1)), (LOOPBACK, TRAP_PORT))
        data.wait_for_log("Trap received (127.4.5.6).")
    assert data.masked_traps() == record(integer_line(1), sender="127.4.5.6")


def test_a_stopped_receiver_frees_both_ports_and_records_nothing(program, data):
    program.stop()
    with occupy_port(TRAP_PORT) as trap, occupy_port(LISTENER_PORT):
        trap.settimeout(DEFAULT_SECONDS)
        send_raw(message(integer_binding(1)))
        assert trap.recv(65535) == message(integer_binding(1))
    assert data.trap_octets() == b""


def test_a_request_to_port_161_is_logged_and_gets_no_reply(program, data):
    data.wait_for_start()
    assert not send_get_request()
    data.wait_for_log("Datagram on UDP 161 from 127.0.0.1.")
    assert data.log_messages().count("Datagram on UDP 161 from 127.0.0.1.") == 1
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


def test_the_target_in_the_settings_file_receives_each_datagram_unchanged(data, start):
    with udp_socket() as target:
        data.write_config(config(1, LOOPBACK, target.getsockname()[1]))
        start().wait_running()
        for octets in (b"", b"\x00\xff not a message", message(integer_binding(1)), b"z" * 65507):
            send_raw(octets)
            assert target.recv(65535) == octets
