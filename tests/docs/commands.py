"""Holds one command that a document shows: what it starts is there, and what it asks for selects something."""

import json
import os
import re
import shlex
import socket
import subprocess

from documents import ROOT, VERSION

# Words that only lead to the command behind them.
LEADS_ON = {"sudo", "nice", "scripts/in_private_network.sh", "scripts/run_on_private_desktop.sh"}
SHELL_WORDS = {"ulimit", "cd"}
ASSIGNMENT = re.compile(r"[A-Z_]+=\S*")
PLACEHOLDER = re.compile(r"[A-Z_,]+|\d+")

# Windows' own, which no test here can run; looked up in Microsoft's "Windows Commands".
WINDOWS_ONLY = {
    "netstat -ano -p UDP",
    'tasklist /FI "PID eq 1234"',
    f'start "" /wait Quillmont-{VERSION}-setup.exe /S',
    r'start "" /wait "C:\Program Files\Quillmont\uninstall.exe" /S _?=C:\Program Files\Quillmont',
    "echo %ERRORLEVEL%",
    r'del "C:\Program Files\Quillmont\uninstall.exe"',
    r'rmdir "C:\Program Files\Quillmont"',
    f"certutil -hashfile Quillmont-{VERSION}-setup.exe SHA256",
    "powercfg /change standby-timeout-ac 0",
    'schtasks /Create /TN "Quillmont days" /SC DAILY /ST 00:01 /IT /TR "powershell.exe -NoProfile -ExecutionPolicy'
    r' Bypass -WindowStyle Hidden -File \"%USERPROFILE%\Traps\keep-days.ps1\""',
}

# Run by tests/desktop/guide_test.py, in Wine's command prompt.
WINDOWS_TRIED = {
    "for /L %i in (129,1,512) do @echo ifDescr-%i OBJECT IDENTIFIER ::= { ifDescr_ %i }>> more-names.mib",
}


class Refused(Exception):
    """What is wrong with a command."""


def demand(condition, fault):
    if not condition:
        raise Refused(fault)


def output_of(*words, **options):
    result = subprocess.run(words, capture_output=True, text=True, timeout=120, cwd=ROOT, check=False, **options)
    return result.stdout


def presets(kind):
    described = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))
    return {preset["name"] for preset in described[kind]}


def has_target(folder, name):
    """Whether a CMakeLists.txt of the folder or below it makes `name`; ${word} stands for any word of that file."""
    for lists in (ROOT / folder).rglob("CMakeLists.txt"):
        text = lists.read_text(encoding="utf-8")
        for target in re.findall(r"add_(?:executable|library|custom_target)\(([^\s)]+)", text):
            pattern = re.sub(r"\\\$\\\{\w+\\\}", r"(\\w+)", re.escape(target))
            match = re.fullmatch(pattern, name)
            if match and all(re.search(rf"\b{word}\b", text) for word in match.groups()):
                return True
    return False


def hold_cmake(words, build):
    building = "--build" in words
    demand("--preset" in words, "shows cmake without a preset")
    preset = words[words.index("--preset") + 1]
    demand(preset in presets("buildPresets" if building else "configurePresets"), f"there is no preset {preset}")


def hold_ctest(words, build):
    folder = ROOT / words[words.index("--test-dir") + 1]
    demand(folder.name in presets("configurePresets"), f"no preset builds {folder.name}")
    if not (folder / "CTestTestfile.cmake").exists():
        # Built alone, the native build has no other beside it; ./test.sh builds all before it runs this.
        print(f"not looked at, since {folder.name} is not built: {shlex.join(words)}")
        return
    listed = output_of("ctest", "-N", *words[1:])
    demand(re.search(r"Total Tests: [1-9]", listed), "selects no test")


def hold_pytest(words, build):
    listed = output_of("/usr/bin/python3", "-B", *words[1:], "--collect-only", "-q",
                       env={**os.environ, "PYTHONPATH": str(ROOT / "tests")})
    demand("::" in listed, f"collects no test: {listed[-300:]}")


def hold_python(words, build):
    if words[1:3] == ["-m", "pytest"]:
        hold_pytest([word for word in words if word != "-s"], build)
    else:
        hold_script(words[1:], build)


def hold_program(words, build):
    """build/PRESET/FOLDER/NAME, as that preset leaves it there."""
    _, preset, *folders, name = words[0].split("/")
    demand(preset in presets("configurePresets"), f"there is no preset {preset}")
    demand(has_target("/".join(folders) or ".", name.removesuffix(".exe")), f"nothing builds {name}")
    filters = [word for word in words[1:] if word.startswith("--gtest_filter=")]
    if filters:
        program = build / "/".join(folders) / name
        demand(program.exists(), f"{program} is not built")
        demand("\n  " in output_of(program, "--gtest_list_tests", *filters), "selects no test")


def text_behind(script):
    """The script and the scripts beside it that it names, as one text."""
    text = script.read_text(encoding="utf-8")
    beside = {script.parent / name for name in re.findall(r"\w+\.(?:sh|py)\b", text)} - {script}
    return "\n".join([text, *(path.read_text(encoding="utf-8") for path in sorted(beside) if path.is_file())])


def hold_script(words, build):
    script = ROOT / words[0]
    demand(script.is_file(), f"there is no {words[0]}")
    demand(script.suffix == ".py" or os.access(script, os.X_OK), f"{words[0]} is not executable")
    arguments = words[1:]
    if words[0] == "scripts/build.sh":
        demand(arguments[0] in presets("configurePresets"), f"there is no preset {arguments[0]}")
        for target in arguments[1:]:
            demand(has_target(".", target), f"there is no target {target}")
        return
    text = text_behind(script)
    for argument in arguments:
        known = PLACEHOLDER.fullmatch(argument) or (ROOT / argument).exists()
        for word in argument.split(","):
            demand(known or re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", text), f"{words[0]} knows no {word}")


def hold_snmptrap(words, build):
    """Sent to a socket of our own instead of the address in the document."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as receiver:
        receiver.bind(("127.0.0.1", 0))
        receiver.settimeout(20)
        port = receiver.getsockname()[1]
        ours = f"udp:127.0.0.1:{port}"
        words = [ours if re.fullmatch(r"\d+(\.\d+){3}", word) else word for word in words]
        sent = subprocess.run(words, capture_output=True, text=True, timeout=20, check=False)
        demand(sent.returncode == 0, f"fails: {sent.stderr.strip().splitlines()[:1]}")
        cold_start = bytes.fromhex("06 09 2b 06 01 06 03 01 01 05 01")
        demand(cold_start in receiver.recv(65535), "does not send the trap that the guide expects")


def hold_windows(command):
    """A command for the operator is one that the installer runs or shows, or one of the list above."""
    sources = [ROOT / "packaging" / "installer.nsi", *sorted((ROOT / "packaging").glob("*.nsh"))]
    installer = "".join(source.read_text(encoding="utf-8") for source in sources)
    installer = re.sub(r" *\\\n *", " ", installer).replace("!insertmacro RunNetsh `", "netsh advfirewall firewall ")
    place = r"C:\Program Files\Quillmont"
    for name, value in {"${RULE}": "Quillmont PRO", "$INSTDIR": place, "${PROGRAM}": "Quillmont.exe"}.items():
        installer = installer.replace(name, value)
    looked_up = command in WINDOWS_ONLY | WINDOWS_TRIED
    demand(looked_up or command in installer, "neither in packaging/ nor looked up")


def hold(words, build):
    """Raises Refused when the command is not what it should be. `build` is the native build's folder."""
    while len(words) > 1 and (ASSIGNMENT.fullmatch(words[0]) or words[0] in LEADS_ON):
        lead, words = words[0], words[1:]
        if "/" in lead and not ASSIGNMENT.fullmatch(lead):
            hold_script([lead], build)
    program = words[0].removeprefix("./")
    by_name = {"cmake": hold_cmake, "ctest": hold_ctest, "snmptrap": hold_snmptrap,
               "python3": hold_python, "/usr/bin/python3": hold_python}
    if program in by_name:
        by_name[program](words, build)
    elif program.startswith("build/"):
        hold_program(words, build)
    elif program not in SHELL_WORDS:
        hold_script([program, *words[1:]], build)
