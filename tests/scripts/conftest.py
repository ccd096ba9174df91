"""Fixtures for the tests of the scripts, which run in a clone as a new user would run them. The tests themselves run
under scripts/with_harness.sh."""

import shutil
import tempfile
from pathlib import Path

import pytest

from clone import Clone, User


def scratch_folder():
    """Makes a folder that, unlike pytest's, other users may read."""
    folder = Path(tempfile.mkdtemp(prefix="quillmont-scripts-"))
    folder.chmod(0o755)
    return folder


@pytest.fixture(scope="module", params=["root", "ordinary"])
def user(request):
    return User(request.param)


@pytest.fixture(scope="module")
def prefixes(user):
    """The folder for the user's Wine prefixes. The tests share it, since the first prefix needs ten seconds."""
    folder = scratch_folder()
    user.own(folder)
    yield folder
    shutil.rmtree(folder)


@pytest.fixture
def clone(user):
    folder = scratch_folder()
    yield Clone(folder, user)
    shutil.rmtree(folder)


@pytest.fixture
def ready(clone, user, prefixes):
    """A clone with the built programs."""
    clone.add_programs()
    clone.hand_over()
    clone.environment["QUILLMONT_WINE_FOLDER"] = str(prefixes)
    user.need_network(clone.folder)
    return clone
