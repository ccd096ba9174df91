// The check of Quillmont on a real Windows machine: runs the test programs in its own folder, one after the
// other, and writes report.txt. Started by check.cmd; needs nothing but Windows.
// Arguments: the programs to run. Without arguments it runs all.
//
// Exit codes: 0 everything passed, 1 something failed, 2 the check did not start.
#include <algorithm>
#include <array>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/udp_socket.h"
#include "platform/windows/windows_headers.h"
#include "tests/kit/child_process.h"
#include "tests/kit/data_folder_aside.h"
#include "tests/kit/report.h"
#include "tests/support/exclusive_port.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD kMinute = 60'000;
constexpr DWORD kTimeLimit = 30 * kMinute;  // for each program
constexpr wchar_t kCorpusReplay[] = L"quillmont_corpus_replay.exe";

std::wstring OwnFolder() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return fs::path(path.data()).parent_path().wstring();
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t character : text) {
        narrow.push_back(character < 0x80 ? static_cast<char>(character) : '?');
    }
    return narrow;
}

std::string ReadRegistryText(const wchar_t* value) {
    wchar_t text[256] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", value, RRF_RT_REG_SZ,
                 nullptr, text, &size);
    return Narrow(text);
}

// Returns the test programs in the folder: first the unit tests, whose failures explain others, last the
// tests of the whole program.
std::vector<std::wstring> FindPrograms(const std::wstring& folder) {
    const auto rank = [](const std::wstring& name) {
        return name == L"quillmont_unit_tests.exe" ? 0 : name == L"quillmont_self_check.exe" ? 2 : 1;
    };
    std::vector<std::wstring> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::wstring name = entry.path().filename().wstring();
        if (name.starts_with(L"quillmont_") && name.ends_with(L".exe") && name != L"quillmont_check.exe") {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end(), [&](const std::wstring& left, const std::wstring& right) {
        return std::pair(rank(left), left) < std::pair(rank(right), right);
    });
    return names;
}

// Returns why the check cannot start, or an empty text if it can.
std::string FindObstacle() {
    if (FindWindowW(L"SNMP_MAIN_WND", nullptr) != nullptr) {
        return "Quillmont is running. Close it and start the check again.";
    }
    for (const uint16_t port : {uint16_t{161}, uint16_t{162}}) {
        if (!ExclusivePort(port).bound()) {
            return "UDP port " + std::to_string(port) +
                   " is in use, perhaps by the SNMP or SNMP Trap service. Free it and start the check again.";
        }
    }
    return {};
}

void DescribeMachine(Report& report) {
    report.Say("Windows: " + ReadRegistryText(L"ProductName") + ", " + ReadRegistryText(L"DisplayVersion") +
               ", build " + ReadRegistryText(L"CurrentBuildNumber"));
    report.Say("code pages: ANSI " + std::to_string(GetACP()) + ", OEM " + std::to_string(GetOEMCP()));
    report.Say("processors: " + std::to_string(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)));
}

constexpr std::string_view kRunning = "[ RUN      ] ";
constexpr std::string_view kPassed = "[       OK ] ";
constexpr std::string_view kFailed = "[  FAILED  ] ";
constexpr std::string_view kSkipped = "[  SKIPPED ] ";

// Returns "Suite.Test" from a line that begins with one of these marks.
std::string TestName(const std::string& line) {
    const std::string name = line.substr(kRunning.size());
    return name.substr(0, name.find(" ("));
}

// Copies the failures, skipped tests and facts that a GoogleTest program printed into the report, and adds
// its tests to the totals.
void ReadTestOutput(const std::string& output, const ProgramResult& result, const std::string& name,
                    Report& report) {
    int passed = 0;
    int failed = 0;
    int skipped = 0;
    bool running = false;
    std::string printed;  // by the running test
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.starts_with(kRunning)) {
            running = true;
            printed.clear();
        } else if (line.starts_with("fact: ")) {
            report.Say(line);
        } else if (running && line.starts_with(kPassed)) {
            ++passed;
            running = false;
        } else if (running && line.starts_with(kFailed)) {
            ++failed;
            report.Say("FAILED: " + TestName(line));
            report.Note(printed);
            running = false;
        } else if (running && line.starts_with(kSkipped)) {
            ++skipped;
            report.Note("skipped: " + TestName(line));
            report.Note(printed);
            running = false;
        } else if (!line.empty() && !line.ends_with(": Skipped")) {
            printed += "    " + line + "\r\n";
        }
    }
    report.Count(passed, failed, skipped);
    report.Say(name + ": " + std::to_string(passed) + " passed, " + std::to_string(failed) + " failed, " +
               std::to_string(skipped) + " skipped");
    if (failed == 0 && result.exitCode != DWORD{0}) {
        report.Fail(name + " ends with code 0", result.ending);
        report.Note(output);
    }
}

void RunChecked(const std::wstring& program, const std::wstring& folder, Report& report) {
    const std::string name = Narrow(program);
    const std::wstring arguments = program == kCorpusReplay ? L" corpus" : L"";
    const ProgramResult result =
        RunProgram(L"\"" + folder + L"\\" + program + L"\"" + arguments, folder, kTimeLimit);
    if (result.output.find("[==========]") != std::string::npos) {
        ReadTestOutput(result.output, result, name, report);
    } else if (result.exitCode == DWORD{0}) {
        report.Pass(name);
    } else {
        report.Fail(name + " ends with code 0", result.ending);
        report.Note(result.output);
    }
}

// Set while the folder is aside, so that it is also put back when the console is closed or by Ctrl+C.
DataFolderAside* movedAside = nullptr;

BOOL WINAPI OnConsoleClosing(DWORD) {
    if (movedAside != nullptr) {
        movedAside->PutBack();
    }
    return FALSE;
}

int RunCheck(const std::wstring& folder, const std::vector<std::wstring>& programs, DataFolderAside& aside,
             Report& report) {
    if (!aside.MoveAside()) {
        report.Say(
            "The data folder cannot be moved aside: another program uses it. Close that program, or the "
            "Explorer window that shows the folder, and start the check again.");
        return 2;
    }
    // Under Wine the first program that needs the desktop starts it. That must not be a test program, since
    // the desktop would end with that program's job.
    GetDesktopWindow();
    movedAside = &aside;
    SetConsoleCtrlHandler(OnConsoleClosing, TRUE);
    SetEnvironmentVariableW(L"QUILLMONT_CHECK", L"1");
    for (const std::wstring& program : programs) {
        RunChecked(program, folder, report);
    }
    movedAside = nullptr;
    if (!aside.PutBack()) {
        report.Fail("the data folder is put back",
                    "another program still uses it; the next check puts it back");
    }
    return report.Close();
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring folder = OwnFolder();
    Report report(fs::path(folder).parent_path().wstring() + L"\\report.txt");
    if (!report.opened()) {
        std::cout << "report.txt cannot be written here. Unpack the kit into a folder of your own.\n";
        return 2;
    }
    report.Say("kit: " + Narrow(fs::path(folder).parent_path().filename().wstring()));
    DescribeMachine(report);
    report.Say(
        "A line that begins with \"fact\" reports how this computer behaves. It is not a test result.");
    DataFolderAside aside(DataFolder());
    if (aside.foundLeftover()) {
        report.Say(
            "The last check was interrupted. Your data folder, which it had moved aside, has been put back.");
    }
    StartSocketLibrary();
    const std::string obstacle = FindObstacle();
    if (!obstacle.empty()) {
        report.Say(obstacle);
        return 2;
    }
    const std::vector<std::wstring> wanted(arguments + 1, arguments + count);
    return RunCheck(folder, wanted.empty() ? FindPrograms(folder) : wanted, aside, report);
}
