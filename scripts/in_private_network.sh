#!/usr/bin/env bash
# Runs a program in a network of its own: ports 161 and 162 are free in it, 127.0.0.1 is all there is, and other runs
# have their own. Processes that the program leaves behind end with it. Returns the program's exit code.
# A machine may refuse such a network, as a container without CAP_SYS_ADMIN does. Where the two ports of the machine's own
# network are free and may be bound, the program runs there instead; the caller sees to it that one runs at a time.
# Usage: scripts/in_private_network.sh PROGRAM [ARGUMENT...]. Needs no root where user namespaces are allowed.
#        scripts/in_private_network.sh --check: only whether a program could run; nothing need be installed for that.
#        scripts/in_private_network.sh --only-private PROGRAM [ARGUMENT...]: exit code 77 where the machine refuses.
set -euo pipefail

if [[ ${1:-} == --inside ]]; then
    shift
    export QUILLMONT_PRIVATE_NETWORK=1
    # ip is in a folder that ordinary users do not search.
    PATH="$PATH:/usr/sbin:/sbin" ip link set lo up
    # No exec: this shell is the first process of its process namespace and collects what others abandon.
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

# Inside everybody is root: what each user has of their own, like a Wine prefix, goes by who they are outside.
export QUILLMONT_USER="${QUILLMONT_USER:-$EUID}"

network=(--net)
if [[ $EUID -ne 0 ]]; then
    network+=(--user --map-root-user)
fi
if ! unshare "${network[@]}" true 2>/dev/null; then
    if [[ $EUID -eq 0 ]]; then
        refusal="This machine refuses a private network, even to root: its container lacks CAP_SYS_ADMIN."
    else
        refusal="This machine refuses ordinary users a private network (user namespaces): be root, or allow them."
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
