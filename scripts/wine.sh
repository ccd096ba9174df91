# Shell functions for running a Windows program: a Wine prefix, a virtual display, and the cleanup of both. To be
# sourced; the caller has set -euo pipefail and calls StopWine and StopDisplay from its exit trap.
#
# Wine's sockets belong to the prefix's server process, so a run in a private network needs a prefix whose server was
# started in that network.

project_root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# A folder per user: Wine refuses a prefix of another user, and in a private network every user is root.
wine_folder="${QUILLMONT_WINE_FOLDER:-$project_root/build/wine/${QUILLMONT_USER:-$EUID}}"

# Lets Python scripts import the harness package.
export PYTHONPATH="$project_root/tests"
# Without a UTF-8 locale, as in a bare container, Wine cannot use non-ASCII file names. Debian always has this one.
export LC_ALL=C.UTF-8
if [[ "$(locale charmap 2>/dev/null)" != UTF-8 ]]; then
    echo "This system lacks the locale C.UTF-8: non-ASCII file names will fail under Wine." >&2
fi
export WINEDEBUG="${WINEDEBUG:--all}"
# Otherwise a new prefix asks to install .NET and a browser engine, and programs make menu entries. Wine's debugger
# sometimes ends a crashed program with exit code 0, so a crashed test program would pass.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"

# RemoveServerFolder PREFIX: without /run/user, Debian's Wine 8 makes a folder for the server of each prefix, notes its
# name in the prefix and never deletes it.
RemoveServerFolder() {
    local server_folder
    server_folder="$(cat "$1/wineserver" 2>/dev/null || true)"
    if [[ "$server_folder" == wine-?????? ]]; then
        rm -rf "${TMPDIR:-/tmp}/$server_folder"
    fi
    rm -f "$1/wineserver"
}

# Makes the prefix that all others are copied from, unless it exists. Needs about ten seconds.
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
        # Segoe UI is not free; Open Sans is the closest font in Debian.
        wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'Segoe UI' /d 'Open Sans' /f >/dev/null 2>&1
        wineserver -w
        # The symbols of the caption buttons. Debian's Wine does not search the folder of Debian's fonts-wine.
        mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
        cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts"
        RemoveServerFolder "$WINEPREFIX"
        mv "$WINEPREFIX" "$wine_folder/template"
    ) 9>"$wine_folder/lock"
}

# CopyPrefix FOLDER: makes a prefix in FOLDER, which must not exist. Makes hard links to the system's files, which are
# large and never written to. Copies everything that a program may change.
CopyPrefix() {
    local template="$wine_folder/template"
    mkdir -p "$1/drive_c"
    cp -a "$template"/*.reg "$template"/.update-timestamp "$template"/dosdevices "$1"
    cp -al "$template/drive_c/windows" "$template/drive_c/Program Files"* "$1/drive_c"
    cp -a "$template/drive_c/users" "$template/drive_c/ProgramData" "$1/drive_c"
}

# UsePrefix FOLDER: programs started from now on run in this prefix, which is made if it is missing.
UsePrefix() {
    MakeTemplatePrefix
    if [[ ! -d "$1" ]]; then
        CopyPrefix "$1"
    fi
    export WINEPREFIX="$1"
    prefix_in_use="$1"
}

# UseTemporaryPrefix: the same with a folder that RemoveTemporaryPrefix deletes. Its windows are on Wine's own desktop,
# where they have a frame and can be in the foreground without a window manager.
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
        RemoveServerFolder "$temporary_prefix/prefix"
        rm -rf "$temporary_prefix"
    fi
}

# Ends every Windows process of the prefix that UsePrefix chose and waits until they are gone.
StopWine() {
    if [[ -n "${prefix_in_use:-}" ]]; then
        wineserver -k >/dev/null 2>&1 || true
        wineserver -w >/dev/null 2>&1 || true
    fi
}

# Starts a virtual display on a free number and exports DISPLAY.
# -nolisten unix and -nolock: the server sees only the processes of its private network, so it would replace the socket
# and the lock file of the user's own display in /tmp as abandoned.
# -noreset: a reset after the last window has closed drops programs that are just connecting.
StartDisplay() {
    local channel
    channel="$(mktemp -u)"
    mkfifo "$channel"
    Xvfb -displayfd 7 -screen 0 1280x900x24 -nolisten tcp -nolisten unix -nolock -noreset 7>"$channel" >/dev/null 2>&1 &
    display_pid=$!
    local number
    read -r number <"$channel"
    rm -f "$channel"
    export DISPLAY=":$number"
}

# Starts the desktop of the temporary prefix and waits for it; it stays open until StopWine. Otherwise the first program
# with a window starts it and waits only ten seconds, so on a slow machine no program could open a window.
StartDesktop() {
    wine explorer /desktop=Default,1280x900 </dev/null >/dev/null 2>&1 &
    disown  # so that the shell does not report that StopWine killed it
    local end=$((SECONDS + 120))
    # The title depends on the version of Wine.
    until xwd -silent -name "Default - Wine desktop" >/dev/null 2>&1 ||
        xwd -silent -name "Wine Desktop" >/dev/null 2>&1; do
        if ((SECONDS > end)); then
            echo "Wine's desktop did not appear within two minutes." >&2
            return 1
        fi
        sleep 0.1
    done
}

StopDisplay() {
    if [[ -n "${display_pid:-}" ]]; then
        kill "$display_pid" 2>/dev/null || true
        wait "$display_pid" 2>/dev/null || true
        display_pid=
    fi
}
