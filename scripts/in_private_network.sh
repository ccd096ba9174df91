#!/usr/bin/env bash
# Runs a program in a private network, where ports 161 and 162 are free and the loopback interface is the only one.
# Terminates processes that the program leaves running. Returns the program's exit code.
# A machine may refuse such a network, as a container without CAP_SYS_ADMIN does. If the two ports of the machine's own
# network are free and may be bound, the program runs there instead; the caller must then run only one at a time.
# Usage: scripts/in_private_network.sh PROGRAM [ARGUMENT...]. Needs no root if user namespaces are allowed.
#        scripts/in_private_network.sh --check: only checks whether a program could run; needs no packages.
#        scripts/in_private_network.sh --only-private PROGRAM [ARGUMENT...]: exit code 77 if the machine refuses.
set -euo pipefail

if [[ ${1:-} == --inside ]]; then
    shift
    export QUILLMONT_PRIVATE_NETWORK=1
    # ip is in a folder that is not in the path of ordinary users.
    PATH="$PATH:/usr/sbin:/sbin" ip link set lo up
    # No exec: this shell is the first process of its process namespace and reaps orphaned processes.
    code=0
    "$@" || code=$?
    exit "$code"
fi

MayBindLowPorts() {
    local capabilities bind_service=10
    capabilities="$(sed -n 's/^CapEff:[[:space:]]*//p' /proc/self/status)"
    (((16#$capabilities >> bind_service & 1) == 1)) ||
        [[ "$(cat /proc/sys/net/ipv4/ip_unprivileged_port_start)" -le 161 ]]
}

PortsAreFree() {
    ! grep -qE '^ *[0-9]+: [0-9A-F]{8}:00A[12] ' /proc/net/udp
}

# A program that has just ended may need a moment to free its ports.
WaitForPorts() {
    local tries=100
    until PortsAreFree; do
        if ((--tries == 0)); then
            return 1
        fi
        sleep 0.1
    done
}

# Inside, every user is root; folders of one user, such as Wine prefixes, are named after the id outside.
export QUILLMONT_USER="${QUILLMONT_USER:-$EUID}"

network=(--net)
if [[ $EUID -ne 0 ]]; then
    network+=(--user --map-root-user)
fi
if ! unshare "${network[@]}" true 2>/dev/null; then
    if [[ $EUID -eq 0 ]]; then
        refusal="This machine refuses a private network, even to root: its container lacks CAP_SYS_ADMIN."
    else
        refusal="This machine refuses ordinary users a private network (user namespaces): run as root, or allow them."
    fi
    if [[ ${1:-} == --only-private ]]; then
        echo "Skipped: $refusal"
        exit 77
    fi
    if ! MayBindLowPorts; then
        echo "$refusal" >&2
        exit 125
    fi
    if ! WaitForPorts; then
        echo "$refusal The UDP ports 161 and 162 of its own network are in use." >&2
        exit 125
    fi
    if [[ ${1:-} == --check ]]; then
        exit 0
    fi
    exec "$@"
fi
case "${1:-}" in
    --check) exit 0 ;;
    --only-private) shift ;;
esac
processes=(--pid --fork --kill-child --mount-proc)
# Some containers forbid mounting /proc; then only the network is private.
if ! unshare "${network[@]}" "${processes[@]}" true 2>/dev/null; then
    processes=()
fi
exec unshare "${network[@]}" "${processes[@]}" -- "$0" --inside "$@"
