"""Start and exit: the data folder, the settings file, the first log lines, and the header of the executable."""

import shutil
import struct

import pytest

from harness.data_folder import DataFolder, config, local_application_data, record
from harness.places import drive_c, program_file, unix_path
from harness.program import START_LINES
from harness.traps import integer_binding, integer_line, message, send_raw

NO_CONFIG = "No config.xml found (or empty). Using defaults."
NO_MIBS = "MIBs loaded. OID mappings: 0"


def test_a_first_start_creates_the_folders_and_empty_files_but_no_config(program, data):
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


def long_path(length):
    """A folder on drive C: whose path has this many characters."""
    path = "C:"
    while length - len(path) > 60:
        path += "\\" + "d" * 49
    return path + "\\" + "e" * (length - len(path) - 1)


@pytest.mark.parametrize(
    "path", ["C:\\Gr\u00fc\u00dfe \u0416\u4e2d", *map(long_path, (200, 240, 246))], ids=lambda path: str(len(path))
)
def test_a_data_path_beyond_ascii_or_of_nearly_260_characters_is_used_unchanged(data, start, path):
    parent = unix_path(path)
    parent.mkdir(parents=True)
    with local_application_data(path):
        elsewhere = DataFolder(parent)
        program = start().wait_running()
        elsewhere.wait_for_start()
        send_raw(message(integer_binding(1)))
        elsewhere.wait_for_traps(1)
        assert elsewhere.masked_traps() == record(integer_line(1))
        assert program.close() == 0
    assert elsewhere.config.read_bytes() == config()
    shutil.rmtree(drive_c() / path.split("\\")[1])


def test_a_data_path_beyond_260_characters_does_not_stop_the_program(data, start):
    with local_application_data("C:\\" + "x" * 300):
        assert start().wait_running().close() == 0


def test_a_data_folder_that_cannot_be_created_does_not_stop_the_program(data, start):
    data.folder.parent.mkdir(parents=True, exist_ok=True)
    data.folder.write_bytes(b"a file in the way")
    program = start().wait_running()
    assert program.close() == 0
    assert data.folder.read_bytes() == b"a file in the way"


def test_a_second_copy_runs_at_the_same_time(data, start):
    first = start().wait_running()
    second = start().wait_running()
    assert first.process != second.process
    assert first.close() == 0
    assert second.close() == 0
    assert data.log_messages().count("Config saved.") == 2


def test_settings_are_loaded_at_start_and_saved_at_exit(data, start):
    data.write_config(config(1, "10.1.2.3", 8162, b"\r\n"))
    program = start().wait_running()
    data.wait_for_log("Config loaded.")
    assert NO_CONFIG not in data.log_messages()
    assert program.close() == 0
    assert data.config.read_bytes() == config(1, "10.1.2.3", 8162)


RELOCATIONS_STRIPPED = 0x0001
LARGE_ADDRESS_AWARE = 0x0020
HIGH_ENTROPY_VA = 0x0020
DYNAMIC_BASE = 0x0040
NX_COMPAT = 0x0100
TERMINAL_SERVER_AWARE = 0x8000
BASE_RELOCATIONS = 5  # index of a data directory


class Header:
    """The header of the executable, as the loader reads it."""

    def __init__(self):
        octets = program_file().read_bytes()
        (start,) = struct.unpack_from("<I", octets, 0x3C)
        assert octets[start : start + 4] == b"PE\0\0"
        optional = start + 24
        assert struct.unpack_from("<H", octets, optional) == (0x20B,), "not a 64-bit program"
        (self.characteristics,) = struct.unpack_from("<H", octets, start + 22)
        fields = struct.unpack_from("<HQQ", octets, optional + 70)
        self.dll_characteristics, self.stack_reserve, self.stack_commit = fields
        directory = optional + 112 + 8 * BASE_RELOCATIONS
        _, self.relocations_size = struct.unpack_from("<II", octets, directory)


def test_the_stack_for_the_receive_buffer_is_committed_at_thread_start():
    header = Header()
    assert header.stack_reserve == 2 * 1024 * 1024
    # A page that cannot be committed later, when memory is short, would end the process.
    assert header.stack_commit == 256 * 1024


def test_the_header_enables_aslr_dep_and_terminal_servers():
    header = Header()
    assert header.dll_characteristics == HIGH_ENTROPY_VA | DYNAMIC_BASE | NX_COMPAT | TERMINAL_SERVER_AWARE
    # ASLR also needs relocations and large addresses.
    assert header.characteristics & (RELOCATIONS_STRIPPED | LARGE_ADDRESS_AWARE) == LARGE_ADDRESS_AWARE
    assert header.relocations_size > 0
