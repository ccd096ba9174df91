#!/usr/bin/env bash
# Gives the private network that it runs in two lines to hosts that nobody is, and runs a program there:
#   10.77.1.2  over 64 kbit/s: a few large datagrams keep it busy for the rest of the test
#   10.77.2.2  over 20 Mbit/s: slower than a program can send, quick enough to wait for
# and 10.77.1.3, which the slow line should reach but where no neighbour answers.
# Without a private network, whose lines would stay behind, the program runs without them.
# Usage: scripts/in_private_network.sh scripts/with_slow_lines.sh PROGRAM [ARGUMENT...]
set -euo pipefail
PATH="$PATH:/usr/sbin:/sbin"

if [[ -z ${QUILLMONT_PRIVATE_NETWORK:-} ]]; then
    exec "$@"
fi

# AddLine NAME NETWORK RATE: what enters the line at NAME leaves it at its other end, where it is counted and dropped.
AddLine() {
    ip link add "$1" type veth peer name "$1-end"
    ip address add "$2.1/24" dev "$1"
    ip link set "$1" up
    ip link set "$1-end" up
    # Permanent, so that nobody needs to answer for the host at the far end.
    ip neighbour add "$2.2" lladdr 02:00:00:00:00:02 dev "$1"
    tc qdisc add dev "$1" root tbf rate "$3" burst 4kb limit 64mb
}

AddLine slow 10.77.1 64kbit
AddLine quick 10.77.2 20mbit
exec "$@"
