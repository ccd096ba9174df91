# Shell pieces for running a Windows program: a Wine prefix, a virtual display, and the end of both. For sourcing;
# the caller has set -euo pipefail and calls StopWine and StopDisplay from its exit trap.
#
# A prefix belongs to one network: Wine's sockets live in the prefix's server process, so a run in a private
# network needs a prefix whose server was started inside it.

project_root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# Of one user: Wine refuses another's prefix, and in a private network everybody goes by the name of root.
wine_folder="${QUILLMONT_WINE_FOLDER:-$project_root/build/wine/${QUILLMONT_USER:-$EUID}}"

# Where every Python script finds the harness package.
export PYTHONPATH="$project_root/tests"
# Wine names no file beyond ASCII in a system without a locale, as a bare container is; this one is always there.
export LC_ALL=C.UTF-8
if [[ "$(locale charmap 2>/dev/null)" != UTF-8 ]]; then
    echo "This system lacks the locale C.UTF-8: names beyond ASCII will fail under Wine." >&2
fi
export WINEDEBUG="${WINEDEBUG:--all}"
# Without these a fresh prefix asks to install .NET and a browser engine, programs make menu entries, and a crashed one
# is ended by the debugger, one time in ten with the exit code 0: a test program that crashed had passed.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"

# Makes the prefix that all others are copied from, once. About ten seconds.
MakeTemplatePrefix() {
    mkdir -p "$wine_folder"
    (
        flock 9
        if [[ -d "$wine_folder/template" ]]; then
            exit 0
        fi
        echo "Making a Wine prefix..." >&2
        rm -rf "$wine_folder/template.part"
        export WINEPREFIX="$wine_folder/template.part"
        unset DISPLAY
        wine wineboot --init >/dev/null 2>&1
        # Segoe UI is not to be had here; Open Sans is the closest in Debian.
        wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'Segoe UI' /d 'Open Sans' /f >/dev/null 2>&1
        wineserver -w
        # The signs on the caption's buttons. Debian's Wine does not look where Debian's fonts-wine puts its fonts.
        mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
        cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts"
        mv "$WINEPREFIX" "$wine_folder/template"
    ) 9>"$wine_folder/lock"
}

# CopyPrefix FOLDER: a prefix of its own in FOLDER, which must not exist. The system's own files are hard links
# (they are hundreds of megabytes and nobody writes them); what a program may change is copied.
CopyPrefix() {
    local template="$wine_folder/template"
    mkdir -p "$1/drive_c"
    cp -a "$template"/*.reg "$template"/.update-timestamp "$template"/dosdevices "$1"
    cp -al "$template/drive_c/windows" "$template/drive_c/Program Files"* "$1/drive_c"
    cp -a "$template/drive_c/users" "$template/drive_c/ProgramData" "$1/drive_c"
}

# UsePrefix FOLDER: programs started from now on run in it; made when missing.
UsePrefix() {
    MakeTemplatePrefix
    if [[ ! -d "$1" ]]; then
        CopyPrefix "$1"
    fi
    export WINEPREFIX="$1"
    prefix_in_use="$1"
}

# UseTemporaryPrefix: the same with a folder that RemoveTemporaryPrefix deletes. Its windows live inside Wine's own
# desktop, where they get a frame and can be brought to the front without a window manager.
UseTemporaryPrefix() {
    mkdir -p "$wine_folder"
    temporary_prefix="$(mktemp -d "$wine_folder/run.XXXXXX")"
    UsePrefix "$temporary_prefix/prefix"
    cat >>"$WINEPREFIX/user.reg" <<'REGISTRY'

[Software\\Wine\\Explorer] 1
"Desktop"="Default"

[Software\\Wine\\Explorer\\Desktops] 1
"Default"="1280x900"
REGISTRY
}

RemoveTemporaryPrefix() {
    if [[ -n "${temporary_prefix:-}" ]]; then
        rm -rf "$temporary_prefix"
    fi
}

# Ends every Windows process of the prefix and waits until they are gone. Not those of a prefix that was the caller's
# before.
StopWine() {
    if [[ -n "${prefix_in_use:-}" ]]; then
        wineserver -k >/dev/null 2>&1 || true
        wineserver -w >/dev/null 2>&1 || true
    fi
}

# Starts a virtual display on a free number and exports DISPLAY. Without a socket or a lock file in /tmp: a display of
# a private network is nobody else's, and its server, which sees no process but its own, would take those of the
# user's display for abandoned and replace them.
StartDisplay() {
    local channel
    channel="$(mktemp -u)"
    mkfifo "$channel"
    Xvfb -displayfd 7 -screen 0 1280x900x24 -nolisten tcp -nolisten unix -nolock 7>"$channel" >/dev/null 2>&1 &
    display_pid=$!
    local number
    read -r number <"$channel"
    rm -f "$channel"
    export DISPLAY=":$number"
}

StopDisplay() {
    if [[ -n "${display_pid:-}" ]]; then
        kill "$display_pid" 2>/dev/null || true
        wait "$display_pid" 2>/dev/null || true
        display_pid=
    fi
}
