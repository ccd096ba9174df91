"""Start-up and the end: the data directory, the settings file, the first lines of the log."""

import struct

import pytest

from harness.data_folder import LINE_END, DataFolder, config, local_application_data, mask_stamps
from harness.places import drive_c, program_file
from harness.program import START_LINES
from harness.traps import TRAP_PORT, hold_port

NO_CONFIG = "No config.xml found (or empty). Using defaults."
NO_MIBS = "MIBs loaded. OID mappings: 0"


@pytest.fixture
def start_idle(start):
    """Starts the program with port 162 taken, so that it only loads, waits and saves."""
    with hold_port(TRAP_PORT):
        yield start


def test_a_first_start_makes_the_folders_and_empty_files_but_no_config(program, data):
    assert data.folder.is_dir()
    assert data.mibs.is_dir()
    assert list(data.mibs.iterdir()) == []
    assert data.trap_octets() == b""
    assert data.traps.exists()
    assert not data.config.exists()
    assert sorted(path.name for path in data.folder.iterdir()) == ["SNMP.txt", "log.txt", "mibs"]


def test_a_first_start_logs_the_defaults_and_the_empty_name_store(program, data):
    data.wait_for_start()
    messages = data.log_messages()
    assert messages[:3] == [NO_CONFIG, NO_MIBS, "Starting server..."]
    assert sorted(messages[2:]) == START_LINES


def test_log_lines_are_stamp_two_blanks_message_and_the_three_byte_line_end(program, data):
    lines = mask_stamps(data.log_octets()).split(LINE_END)
    assert lines[0] == b"#" * 23 + b"  No config.xml found (or empty). Using defaults."
    assert lines[1] == b"#" * 23 + b"  MIBs loaded. OID mappings: 0"


def test_a_second_start_changes_no_byte_that_was_there(data, start):
    data.folder.mkdir(parents=True)
    data.traps.write_bytes(b"kept \xe9\x1a\n without an end")
    data.log.write_bytes(b"2026-03-07 09:05:02.047  Config saved.\r\r\n")
    start().wait_running()
    assert data.trap_octets() == b"kept \xe9\x1a\n without an end"
    assert data.log_octets().startswith(b"2026-03-07 09:05:02.047  Config saved.\r\r\n")
    data.wait_for_log("Server started.")


def test_a_data_path_outside_ascii_is_kept_exactly(data, start):
    del data
    name = "Grüße \u0416\u4e2d"
    parent = drive_c() / name
    parent.mkdir(exist_ok=True)
    with local_application_data("C:\\" + name):
        elsewhere = DataFolder(parent)
        program = start().wait_running()
        assert elsewhere.mibs.is_dir()
        assert program.close() == 0
        assert elsewhere.config.read_bytes() == config()
        assert elsewhere.log_messages()[-1] == "Config saved."


def test_a_data_directory_that_cannot_be_made_stops_nothing(data, start):
    data.folder.parent.mkdir(parents=True, exist_ok=True)
    data.folder.write_bytes(b"a file in the way")
    program = start().wait_running()
    assert program.close() == 0
    assert data.folder.read_bytes() == b"a file in the way"


def test_a_second_copy_runs_beside_the_first(data, start):
    first = start().wait_running()
    second = start().wait_running()
    assert first.process != second.process
    assert first.close() == 0
    assert second.close() == 0
    assert data.log_messages().count("Config saved.") == 2


def test_mib_files_in_the_folder_are_counted_at_the_start(data, start_idle):
    data.add_mib("tiny.mib", "first OBJECT IDENTIFIER ::= { enterprises 9999 }\n")
    data.add_mib("not_read.xml", "second OBJECT IDENTIFIER ::= { enterprises 9998 }\n")
    (data.mibs / "folder.mib").mkdir()
    program = start_idle()
    data.wait_for_log("MIBs loaded. OID mappings: 1")
    assert program.close() == 0


SETTINGS = {
    "its_own_form": (config(1, "10.1.2.3", 8162), config(1, "10.1.2.3", 8162)),
    "carriage_return_line_feed": (config(1, "10.1.2.3", 8162, b"\r\n"), config(1, "10.1.2.3", 8162)),
    "enabled_true_is_off": (config("true"), config(0)),
    "an_empty_address_and_port_0": (config(1, "", 0), config(1, "", 162)),
    "a_single_word": (b"word", config()),
}


@pytest.mark.parametrize("before, after", SETTINGS.values(), ids=SETTINGS.keys())
def test_settings_are_loaded_at_start_and_saved_at_exit(data, start_idle, before, after):
    data.write_config(before)
    program = start_idle()
    data.wait_for_log("Config loaded.")
    assert data.config.read_bytes() == before
    assert program.close() == 0
    assert data.config.read_bytes() == after
    assert NO_CONFIG not in data.log_messages()


@pytest.mark.parametrize(
    "content", [b"", b"\x1a" + config(1, "10.1.2.3", 99)], ids=["empty", "begins_with_1a"]
)
def test_an_empty_settings_file_gives_the_defaults(data, start_idle, content):
    data.write_config(content)
    program = start_idle()
    data.wait_for_log(NO_CONFIG)
    assert program.close() == 0
    assert data.config.read_bytes() == config()
    assert "Config loaded." not in data.log_messages()


RELOCATIONS_STRIPPED = 0x0001
LARGE_ADDRESS_AWARE = 0x0020
HIGH_ENTROPY_VA = 0x0020
DYNAMIC_BASE = 0x0040
NX_COMPAT = 0x0100
TERMINAL_SERVER_AWARE = 0x8000
BASE_RELOCATIONS = 5  # of the header's directories


class Header:
    """The header of the shipped file, as the loader reads it."""

    def __init__(self):
        octets = program_file().read_bytes()
        (start,) = struct.unpack_from("<I", octets, 0x3C)
        assert octets[start : start + 4] == b"PE\0\0"
        optional = start + 24
        assert struct.unpack_from("<H", octets, optional) == (0x20B,), "no 64-bit program"
        (self.characteristics,) = struct.unpack_from("<H", octets, start + 22)
        self.promises, self.stack_reserve, self.stack_commit = struct.unpack_from("<HQQ", octets, optional + 70)
        directory = optional + 112 + 8 * BASE_RELOCATIONS
        _, self.relocations_size = struct.unpack_from("<II", octets, directory)


def test_each_thread_has_the_stack_of_its_receive_buffer_from_the_start():
    header = Header()
    assert header.stack_reserve == 2 * 1024 * 1024
    # Backed later, page by page, it would end the process when memory is short.
    assert header.stack_commit == 256 * 1024


def test_the_program_runs_at_any_address_never_runs_data_and_serves_a_terminal_server():
    header = Header()
    assert header.promises == HIGH_ENTROPY_VA | DYNAMIC_BASE | NX_COMPAT | TERMINAL_SERVER_AWARE
    # Without these two the first two promises are empty.
    assert header.characteristics & (RELOCATIONS_STRIPPED | LARGE_ADDRESS_AWARE) == LARGE_ADDRESS_AWARE
    assert header.relocations_size > 0
