#!/usr/bin/env bash
# Runs a program after adding lines to hosts that do not exist to the private network:
#   10.77.1.2  over 64 kbit/s: a few large datagrams block it for the rest of the test
#   10.77.1.3  over the same line, without an answer to ARP
#   10.77.2.2  over 20 Mbit/s: slower than a program can send, fast enough to wait for
# Adds nothing outside a private network, since the lines would remain there.
# Usage: scripts/in_private_network.sh scripts/with_slow_lines.sh PROGRAM [ARGUMENT...]
set -euo pipefail
PATH="$PATH:/usr/sbin:/sbin"

if [[ -z ${QUILLMONT_PRIVATE_NETWORK:-} ]]; then
    exec "$@"
fi

# AddLine NAME NETWORK RATE: packets sent into NAME arrive at its other end, where they are dropped.
AddLine() {
    ip link add "$1" type veth peer name "$1-end"
    ip address add "$2.1/24" dev "$1"
    ip link set "$1" up
    ip link set "$1-end" up
    # A permanent entry, since no host at the other end answers ARP.
    ip neighbour add "$2.2" lladdr 02:00:00:00:00:02 dev "$1"
    tc qdisc add dev "$1" root tbf rate "$3" burst 4kb limit 64mb
}

AddLine slow 10.77.1 64kbit
AddLine quick 10.77.2 20mbit
exec "$@"
