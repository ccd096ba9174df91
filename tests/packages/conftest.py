"""Fixtures for the tests of the packages. packaging/test_packages.sh runs the tests and sets QUILLMONT_PACKAGES, the
folder with the packages, and QUILLMONT_STUBS, the folder with the stubs (netsh_stub.cpp, sealed_program.cpp)."""

import pytest
from installation import Installation, put_netsh_in_place

pytest_plugins = ["harness.fixtures"]


@pytest.fixture(scope="session")
def netsh():
    return put_netsh_in_place()


@pytest.fixture
def installation(netsh):
    netsh.reset()
    installation = Installation()
    yield installation
    if installation.folder.exists():
        installation.uninstall()
