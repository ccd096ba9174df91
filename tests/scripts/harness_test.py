"""The harness as root and as an ordinary user, who is root inside a private network. The environment has only PATH,
HOME and USER, so no locale."""

import pytest

from harness.places import windows_path

PYTEST = ["/usr/bin/python3", "-B", "-m", "pytest", "-q"]
FIRST_START = [*PYTEST, "tests/desktop/startup_test.py", "-k", "first_start_logs"]


@pytest.mark.parametrize("user", ["ordinary"], indirect=True)
@pytest.mark.parametrize("name", ["somebody", None], ids=["with_a_name", "without_a_name"])
def test_a_desktop_test_finds_the_data_folder(ready, name):
    if name is None:
        del ready.environment["USER"]
    code, output = ready.run("scripts/run_on_private_desktop.sh", *FIRST_START)
    assert code == 0
    assert "1 passed" in output


# Suspends the real server for longer than Wine waits for its desktop.
SLOW_DISPLAY = """\
/usr/bin/Xvfb "$@" &
trap "kill $!" TERM
sleep 0.5
kill -STOP $!
sleep 20
kill -CONT $!
wait"""


@pytest.mark.parametrize("user", ["ordinary"], indirect=True)
def test_a_slow_display_does_not_fail_the_desktop_tests(ready):
    ready.run("scripts/run_under_wine.sh", "cmd", "/c", "exit")  # makes the first Wine prefix, which is slow too
    ready.add_command("Xvfb", SLOW_DISPLAY)
    code, output = ready.run("scripts/run_on_private_desktop.sh", *FIRST_START)
    assert code == 0
    assert "1 passed" in output


def test_non_ascii_file_names_work_without_the_users_locale(ready):
    folder = ready.folder / "home" / "Gr\u00fc\u00dfe \u4e2d"
    code, _ = ready.run("scripts/run_under_wine.sh", "cmd", "/c", "mkdir", windows_path(folder))
    assert code == 0
    assert folder.is_dir()


def test_each_user_has_a_separate_folder_for_wine_prefixes(clone, user):
    clone.hand_over()
    user.need_private_network(clone.folder)
    script = 'source scripts/wine.sh; echo "$wine_folder"'
    code, output = clone.run("scripts/in_private_network.sh", "bash", "-c", script)
    assert (code, output) == (0, f"{clone.folder}/build/wine/{user.number}\n")


def test_a_private_display_is_reachable_only_from_its_own_network(ready, user):
    """A socket in the file system would be open to all, and could replace that of the user's own display."""
    user.need_private_network(ready.folder)
    command = ["grep", "--only-matching", "@*/tmp/.X11-unix/.*", "/proc/net/unix"]
    code, output = ready.run("scripts/run_on_private_desktop.sh", *command)
    assert code == 0
    assert {line for line in output.splitlines() if "X11" in line} == {"@/tmp/.X11-unix/X0"}
