"""The desktop tests run where run_on_private_desktop.sh puts them: in a network, a display and a Wine prefix of their
own."""

pytest_plugins = ["harness.fixtures"]
