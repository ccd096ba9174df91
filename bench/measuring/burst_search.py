"""How large a burst a receive buffer takes."""

from measuring.records import BINDINGS
from measuring.senders import send

LARGEST_BURST = 200000


def find_capacity(receiver, bindings=BINDINGS):
    """How many traps, back to back, the buffer takes while the receiver gets no turn at all. They are recorded then."""
    before = receiver.recorded()
    receiver.pause()
    try:
        sent = send("fill", bindings=bindings)
    finally:
        receiver.go_on()
    receiver.wait_for_records(before + sent.received)
    return sent.received


def loses(receiver, count):
    """Whether a burst of this size loses traps at a receiver that runs."""
    before = receiver.recorded()
    sent = send("burst", count=count, bindings=BINDINGS)
    receiver.wait_for_records(before + sent.received)
    return sent.lost > 0


def find_first_loss(receiver):
    """The burst at which loss begins, to a tenth; None when the largest loses nothing."""
    low, high = 0, 100
    while not loses(receiver, high):
        low, high = high, high * 2
        if high > LARGEST_BURST:
            return None
    while high - low > high / 10:
        middle = (low + high) // 2
        low, high = (low, middle) if loses(receiver, middle) else (middle, high)
    return high
