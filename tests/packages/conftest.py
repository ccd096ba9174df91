"""Fixtures of the packages' tests. They run where run_on_private_desktop.sh put them, with the packages in the folder
that QUILLMONT_PACKAGES names and the stand-ins (netsh_stub.cpp, sealed_program.cpp) in that of QUILLMONT_STAND_INS."""

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
