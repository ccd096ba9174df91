#!/usr/bin/env bash
# Runs a program in a network of its own: ports 161 and 162 are free in it, 127.0.0.1 is all there is, and runs
# beside it have theirs. Processes that the program leaves behind end with it. Returns the program's exit code.
# Usage: scripts/in_private_network.sh PROGRAM [ARGUMENT...]. Needs no root where user namespaces are allowed.
#        scripts/in_private_network.sh --check: only whether the machine allows it; nothing need be installed for that.
set -euo pipefail

if [[ ${1:-} == --inside ]]; then
    shift
    # ip is in a folder that ordinary users do not search.
    PATH="$PATH:/usr/sbin:/sbin" ip link set lo up
    # No exec: this shell is the first process of its process namespace and collects what others abandon.
    code=0
    "$@" || code=$?
    exit "$code"
fi

# Inside everybody is root: what each user has of their own, like a Wine prefix, goes by who they are outside.
export QUILLMONT_USER="${QUILLMONT_USER:-$EUID}"

network=(--net)
if [[ $EUID -ne 0 ]]; then
    network+=(--user --map-root-user)
fi
processes=(--pid --fork --kill-child --mount-proc)
if ! unshare "${network[@]}" true 2>/dev/null; then
    if [[ $EUID -eq 0 ]]; then
        echo "This machine refuses a private network, even to root: its container lacks CAP_SYS_ADMIN." >&2
    else
        echo "This machine refuses ordinary users a private network (user namespaces): be root, or allow them." >&2
    fi
    exit 125
fi
if [[ ${1:-} == --check ]]; then
    exit 0
fi
# Some containers forbid mounting /proc; then only the network is private.
if ! unshare "${network[@]}" "${processes[@]}" true 2>/dev/null; then
    processes=()
fi
exec unshare "${network[@]}" "${processes[@]}" -- "$0" --inside "$@"
