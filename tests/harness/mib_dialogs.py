"""Importing and deleting MIB files through the windows: the system's file dialog and the deletion question."""

from harness.places import windows_path
from harness.tool_windows import DELETE_BUTTON, IMPORT_BUTTON
from harness.waiting import wait_until
from harness.win32 import DIALOG_CLASS, ID_CANCEL, ID_FILE_NAME, ID_FILTER, ID_LOOK_IN, ID_OK, ID_YES
from harness.window import Window

IMPORT_TITLE = "Import MIB files"
QUESTION_TITLE = "Delete MIBs"

MAPPINGS = "MIBs loaded. OID mappings: "


def mib(name, number):
    return f"{name} OBJECT IDENTIFIER ::= {{ enterprises {number} }}\n".encode()


class Samples:
    """A folder of files to import."""

    def __init__(self, folder):
        self.folder = folder
        self.windows_folder = windows_path(folder)

    def add(self, name, octets):
        (self.folder / name).write_bytes(octets)
        return self.path(name)

    def path(self, name):
        return f"{self.windows_folder}\\{name}"


class FileDialog:
    def __init__(self, program, status):
        status.control(IMPORT_BUTTON).click()
        self.program = program
        self.window = program.wait_for_window(DIALOG_CLASS, IMPORT_TITLE)
        self._file_name()

    def _descendant(self, class_name, number):
        """A control of the dialog. Some are created only after the dialog has become visible."""

        def find():
            for facts in self.window.descendants():
                if (facts.__dict__["class"], facts.id, facts.visible) == (class_name, number, True):
                    return Window(self.program.driver, facts.handle)
            return None

        return wait_until(find, f"{class_name} {number:#x} of the dialog")

    def _file_name(self):
        return self._descendant("Edit", ID_FILE_NAME)

    def type_name(self, text):
        field = self._file_name()
        field.set_text(text)
        assert field.text == text

    def press_open(self):
        self._descendant("Button", ID_OK).click()

    def go_to(self, folder):
        """Shows the folder: types its path and presses Open."""
        self.type_name(folder)
        self.press_open()
        self._descendant("ComboBox", ID_LOOK_IN).wait_text(folder.rsplit("\\", 1)[1])

    def choose(self, *paths):
        """Chooses one file (its path), or several of one folder (the folder, then file names)."""
        if len(paths) == 1:
            self.type_name(paths[0])
        else:
            self.go_to(paths[0])
            self.type_name(" ".join(f'"{name}"' for name in paths[1:]))
        self.press_open()
        self.window.wait_closed()

    def cancel(self):
        self._descendant("Button", ID_CANCEL).click()
        self.window.wait_closed()

    @property
    def filter(self):
        return self._descendant("ComboBox", ID_FILTER)


def import_files(program, status, *paths):
    FileDialog(program, status).choose(*paths)
    # The program reloads and refreshes before it handles another message.
    program.settle()


def ask_to_delete(program, status):
    status.control(DELETE_BUTTON).click()
    return program.wait_for_window(DIALOG_CLASS, QUESTION_TITLE)


def delete_all(program, status):
    question = ask_to_delete(program, status)
    question.control(ID_YES).click()
    question.wait_closed()
    program.settle()


def new_messages(data, before):
    return data.log_messages()[before:]


def listed(status):
    """The status window's list of MIB files."""
    return status.child("ListBox").list_items()


def counts(status):
    return status.line("Loaded MIB files:").text
