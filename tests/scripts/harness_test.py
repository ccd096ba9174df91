"""The harness itself, for whoever runs it: an ordinary user, whose private network calls everybody root, in an
environment that holds nothing but PATH, HOME and a name."""

import pytest

DESKTOP_TESTS = ["/usr/bin/python3", "-B", "-m", "pytest", "-q", "tests/desktop/startup_test.py"]


@pytest.mark.parametrize("user", ["ordinary"], indirect=True)
@pytest.mark.parametrize("name", ["somebody", None], ids=["with_a_name", "without_a_name"])
def test_a_desktop_test_finds_the_data_folder_and_names_beyond_ascii(ready, name):
    if name is None:
        del ready.environment["USER"]
    tests = [*DESKTOP_TESTS, "-k", "first_start_logs or outside_ascii"]
    code, output = ready.run("scripts/run_on_private_desktop.sh", *tests)
    assert code == 0
    assert "2 passed" in output
