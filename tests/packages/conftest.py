"""Fixtures of the packages' tests. packaging/test_packages.sh runs them: QUILLMONT_PACKAGES is the folder with the
packages and QUILLMONT_STUBS the one with the stubs (netsh_stub.cpp, sealed_program.cpp)."""

import pytest
from installation import Installation, put_netsh_in_place

pytest_plugins = ["harness.fixtures"]


@pytest.fixture(scope="session")
def netsh():
    return put_netsh_in_place()


@pytest.fixture
def installation(netsh):
    netsh.begin()
    installation = Installation()
    yield installation
    if installation.folder.exists():
        installation.uninstall()
