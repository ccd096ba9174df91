// The check of Quillmont on a real Windows machine: runs the programs beside it, one after the other, and
// writes report.txt for somebody to send back. Started by check.cmd; needs nothing but Windows.
//
// Exit codes: 0 everything passed, 1 something failed, 2 the check did not start.
#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <string>

#include "platform/udp_socket.h"
#include "platform/windows/windows_headers.h"
#include "tests/kit/child_process.h"
#include "tests/kit/data_folder_aside.h"
#include "tests/kit/report.h"
#include "tests/support/exclusive_port.h"

// Behind the system's own header, whose types it uses.
#include <shlobj.h>

namespace {

constexpr DWORD kMinute = 60'000;

struct CheckedProgram {
    const wchar_t* name;
    const wchar_t* arguments;
    bool talliesTests;  // prints GoogleTest's closing lines; otherwise its exit code is the one result
    DWORD limit;        // milliseconds
};

// From the quickest and most basic on, so that what fails first explains what fails later.
constexpr CheckedProgram kPrograms[] = {
    {L"quillmont_unit_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_attribute_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_file_transfer_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_socket_calls_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_thread_calls_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_failure_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_file_layer_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_broken_search_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_start_up_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_memory_tests.exe", L"", true, 10 * kMinute},
    {L"quillmont_window_memory_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_corpus_replay.exe", L"corpus", false, 10 * kMinute},
    {L"quillmont_receiver_steps_tests.exe", L"", true, 5 * kMinute},
    {L"quillmont_engine_tests.exe", L"", true, 10 * kMinute},
    {L"quillmont_windows_questions.exe", L"", true, 5 * kMinute},
    {L"quillmont_self_check.exe", L"", true, 20 * kMinute},
};

std::wstring OwnFolder() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::filesystem::path(path.data()).parent_path().wstring();
}

std::wstring UsersDataFolder() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return std::wstring(folder) + L"\\Quillmont";
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

// Empty: the check may start.
std::string FindHindrance() {
    if (FindWindowW(L"SNMP_MAIN_WND", nullptr) != nullptr) {
        return "Quillmont is running. Close it and start the check again.";
    }
    for (const uint16_t port : {uint16_t{161}, uint16_t{162}}) {
        if (!ExclusivePort(port).held()) {
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

// The number in front of " test" in a line that begins with `mark`; 0 when there is none.
int ReadTally(const std::string& line, const std::string& mark) {
    return line.starts_with(mark) && line.find(" test", mark.size()) != std::string::npos
               ? std::atoi(line.c_str() + mark.size())
               : 0;
}

// What a GoogleTest program printed: its counts into the totals, its failures and facts into the report.
void TakeTestOutput(const std::string& output, const ProgramResult& result, const std::string& name,
                    Report& report) {
    int passed = 0;
    int failed = 0;
    int skipped = 0;
    std::istringstream lines(output);
    std::string block;  // what the test that is running printed
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        passed += ReadTally(line, "[  PASSED  ] ");
        failed += ReadTally(line, "[  FAILED  ] ");
        skipped += ReadTally(line, "[  SKIPPED ] ");
        if (line.starts_with("fact: ")) {
            report.Say(line);
        }
        const bool ends = line.starts_with("[  FAILED  ] ") || line.starts_with("[  SKIPPED ] ");
        if (ends && !block.empty()) {
            report.Note(block + line);
        }
        const bool begins = line.starts_with("[ RUN      ]") || line.starts_with("[       OK ]") || ends;
        block = begins ? "" : block + line + "\r\n";
    }
    report.Count(passed, failed);
    report.Say(name + ": " + std::to_string(passed) + " passed, " + std::to_string(failed) + " failed, " +
               std::to_string(skipped) + " skipped");
    if (failed == 0 && result.exitCode != DWORD{0}) {
        report.Fail(name + " ends by itself with code 0", result.ending);
        report.Note(output);
    }
}

void RunChecked(const CheckedProgram& program, const std::wstring& folder, Report& report) {
    const std::string name = Narrow(program.name);
    const std::wstring commandLine = L"\"" + folder + L"\\" + program.name + L"\" " + program.arguments;
    const ProgramResult result = RunProgram(commandLine, folder, program.limit);
    if (program.talliesTests) {
        TakeTestOutput(result.output, result, name, report);
    } else if (result.exitCode == DWORD{0}) {
        report.Pass(name);
        report.Say(name + ": passed");
    } else {
        report.Fail(name + " ends with code 0", result.output);
    }
}

// So that closing the console, or Ctrl+C, puts the user's folder back too. The folder is not moved while
// this runs.
DataFolderAside* movedAside = nullptr;

BOOL WINAPI OnConsoleEnd(DWORD) {
    if (movedAside != nullptr) {
        movedAside->PutBack();
    }
    return FALSE;
}

int RunCheck(const std::wstring& folder, const std::set<std::wstring>& only, DataFolderAside& aside,
             Report& report) {
    if (!aside.MoveAside()) {
        report.Say("The data folder cannot be moved aside: something uses it.");
        return 2;
    }
    // Wine starts its desktop with the first window that anybody makes; one of a checked program's would end
    // with it.
    CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    movedAside = &aside;
    SetConsoleCtrlHandler(OnConsoleEnd, TRUE);
    SetEnvironmentVariableW(L"QUILLMONT_CHECK", L"1");
    for (const CheckedProgram& program : kPrograms) {
        if (only.empty() || only.contains(program.name)) {
            RunChecked(program, folder, report);
        }
    }
    movedAside = nullptr;
    if (!aside.PutBack()) {
        report.Fail("The data folder is as it was before",
                    "something still uses it; the next check puts it back");
    }
    return report.Close();
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring folder = OwnFolder();
    Report report(std::filesystem::path(folder).parent_path().wstring() + L"\\report.txt");
    if (!report.opened()) {
        std::cout << "report.txt cannot be written here. Unpack the kit into a folder of your own.\n";
        return 2;
    }
    DescribeMachine(report);
    DataFolderAside aside(UsersDataFolder());
    if (aside.foundLeftover()) {
        report.Say(
            "A check before this one did not end; the data folder that it had moved aside was put back "
            "first.");
    }
    StartSocketLibrary();
    const std::string hindrance = FindHindrance();
    if (!hindrance.empty()) {
        report.Say(hindrance);
        return 2;
    }
    return RunCheck(folder, {arguments + 1, arguments + count}, aside, report);
}
