"""The scripts fail at once, with one sentence, if something that they need is missing or refused."""

import os

import pytest

# Too short for an installation or a build.
AT_ONCE_SECONDS = 20


def last_line(output):
    return output.rstrip("\n").rpartition("\n")[2]


@pytest.fixture
def fresh(clone):
    """A clone on a machine without any of the packages."""
    clone.add_command("dpkg-query", "exit 1")
    clone.add_command("cmake", "echo cmake was called; exit 1")
    clone.add_command("ip", "echo ip was called; exit 127")
    clone.add_command("sudo", 'exec "$@"')
    return clone


@pytest.fixture
def allowed(fresh, user):
    """The same. Skips the test if run.sh could not have its network, which it checks first."""
    user.need_network(fresh.folder)
    return fresh


def expect_refusal(clone, sentence, *command):
    code, output = clone.run(*(command or ["./run.sh"]), seconds=AT_ONCE_SECONDS)
    assert code != 0
    assert sentence in last_line(output)
    assert "cmake was called" not in output


def test_refused_user_namespaces_are_reported_before_anything_is_installed(fresh, user):
    if user.name == "root":
        pytest.skip("Root needs none: it may bind the ports of the machine's network.")
    fresh.add_command("unshare", "exit 1")
    # Containers may set this to allow the low ports to all users.
    fresh.add_command("cat", "echo 1024")
    fresh.add_command("apt-get", "echo apt-get was called; exit 1")
    expect_refusal(fresh, "This machine refuses ordinary users a private network (user namespaces)")


def test_the_network_check_needs_no_packages(allowed):
    assert allowed.run("scripts/in_private_network.sh", "--check", seconds=AT_ONCE_SECONDS) == (0, "")


def test_a_missing_sudo_is_reported_with_the_packages(allowed, user):
    if user.name == "root":
        pytest.skip("Root needs no sudo.")
    allowed.hide_command("sudo")
    (allowed.commands / "sudo").unlink()
    expect_refusal(allowed, "There is no sudo here; as root run: apt-get install --no-install-recommends cmake ninja")


@pytest.mark.parametrize("failing", ["update", "install"])
def test_a_failing_apt_is_reported_after_its_own_message(allowed, failing):
    allowed.add_command("apt-get", f'[ "$1" != {failing} ] || {{ echo "E: no network" >&2; exit 100; }}')
    expect_refusal(allowed, "These packages could not be installed; the lines above say why: cmake ninja-build")


def test_a_refused_sudo_is_reported_after_its_own_message(allowed, user):
    if user.name == "root":
        pytest.skip("Root needs no sudo.")
    allowed.add_command("sudo", 'echo "sudo: a password is required" >&2; exit 1')
    expect_refusal(allowed, "These packages could not be installed; the lines above say why: cmake ninja-build")


def test_a_missing_apt_is_reported_with_the_packages(allowed):
    allowed.hide_command("apt-get")
    expect_refusal(allowed, "There is no apt-get here; install with this system's package manager: cmake ninja-build")


def test_a_build_folder_of_another_user_is_reported(clone, user):
    if not user.switch:
        pytest.skip("Only root can build as another user.")
    clone.add_programs()
    clone.hand_over()
    os.chown(clone.folder / "build/windows/Quillmont.exe", 0, 0)
    expect_refusal(clone, "build/windows/Quillmont.exe belongs to root: remove", "scripts/build.sh", "windows")


PRESETS = """{
  "version": 6,
  "configurePresets": [
    {"name": "windows", "generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}"}
  ],
  "buildPresets": [{"name": "windows", "configurePreset": "windows"}]
}
"""


def test_a_clone_that_was_moved_is_rebuilt(clone):
    """With the real CMake and an empty project."""
    (clone.folder / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(moved LANGUAGES NONE)\n")
    (clone.folder / "CMakePresets.json").write_text(PRESETS)
    former = clone.folder
    assert clone.run("scripts/build.sh", "windows")[0] == 0
    clone.folder = former.with_name(former.name + "-moved")
    former.rename(clone.folder)
    try:
        code, output = clone.run("scripts/build.sh", "windows")
        assert code == 0
        assert output.startswith(f"build/windows was made in {former}: removed it for a new build.\n")
        code, output = clone.run("scripts/build.sh", "windows")
        assert code == 0
        assert "new build" not in output
    finally:
        clone.folder.rename(former)


def test_a_missing_locale_is_reported(clone):
    assert clone.run("scripts/with_harness.sh", "true") == (0, "")
    without = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c"]
    code, output = clone.run(*without, "mount -t tmpfs tmpfs /usr/lib/locale")
    if code != 0:
        pytest.skip(f"The system's locales cannot be hidden here: {output}")
    code, output = clone.run(*without, "mount -t tmpfs tmpfs /usr/lib/locale && scripts/with_harness.sh true")
    assert code == 0
    assert "lacks the locale C.UTF-8" in last_line(output)


def test_another_version_of_clang_format_is_not_used(clone):
    clone.add_command("clang-format", '[ "$1" = --version ] && echo "Debian clang-format version 19.1.7 (3)"')
    code, output = clone.run("scripts/check_style.sh", "format")
    assert code == 77
    assert last_line(output).startswith("Skipped: clang-format 19 is installed, but the format is that of 14")
