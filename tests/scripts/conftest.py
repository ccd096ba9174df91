"""The scripts' tests call them as a newcomer would, in a clone of their own (scripts/with_harness.sh runs them)."""

import shutil
import tempfile
from pathlib import Path

import pytest

from clone import Clone, User


def scratch_folder():
    """One that others may look into, unlike pytest's own."""
    folder = Path(tempfile.mkdtemp(prefix="quillmont-scripts-"))
    folder.chmod(0o755)
    return folder


@pytest.fixture(scope="module", params=["root", "ordinary"])
def user(request):
    return User(request.param)


@pytest.fixture(scope="module")
def prefixes(user):
    """Where the user's Wine prefixes are made: the first takes ten seconds."""
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
    """A clone in which everything is built."""
    clone.add_programs()
    clone.hand_over()
    clone.environment["QUILLMONT_WINE_FOLDER"] = str(prefixes)
    user.need_network(clone.folder)
    return clone
