"""Where the receiver forwards to: everything that arrives is counted, and what there was room for is looked at."""

from harness.traps import udp_socket

from measuring.counters import dropped
from measuring.receivers import FORWARDING_PORT


class ForwardingTarget:
    """Takes nothing out before it is asked: what the socket has no room for costs the receiver no company, and the
    system counts it. So the first few hundred are looked at, and all are counted."""

    def __init__(self):
        self._socket = udp_socket(FORWARDING_PORT)
        self._socket.setblocking(False)
        self._looked_at = []

    @property
    def count(self):
        """Datagrams that have arrived by now."""
        try:
            while True:
                self._looked_at.append(self._socket.recv(65535))
        except BlockingIOError:
            return len(self._looked_at) + dropped(FORWARDING_PORT)

    def check(self):
        """What was looked at are traps of one length in the order of sending: they differ by their rising number."""
        assert self._looked_at == sorted(set(self._looked_at)), "forwarded twice or out of order"
        assert len(set(map(len, self._looked_at))) == 1, "forwarded cut"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()
