// The shipped program as an operator uses it: its windows, its files, its ports, the system's own dialogs.
// Only for the check, which has moved the user's data folder aside.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/udp_socket.h"
#include "tests/kit/child_process.h"
#include "tests/kit/running_program.h"
#include "tests/support/ber_encoder.h"
#include "tests/support/exclusive_port.h"
#include "tests/support/sample_messages.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr uint32_t kLoopback = 0x7F000001;
constexpr wchar_t kTitle[] = L"Quillmont PRO v1.0 (SNMP v1 and v2c)";
constexpr wchar_t kLog[] = L"log.txt";
constexpr wchar_t kTraps[] = L"SNMP.txt";
constexpr wchar_t kDialog[] = L"#32770";

// The strip's buttons and those of the tool windows.
constexpr int kStartButton = 100;
constexpr int kForwardingButton = 101;
constexpr int kMonitorButton = 102;
constexpr int kLogButton = 103;
constexpr int kStatusButton = 104;
constexpr int kImportButton = 500;
constexpr int kDeleteButton = 501;
constexpr int kSaveButton = 200;
constexpr int kClearMonitorButton = 300;

// Of the system's dialogs.
constexpr int kFileName = 0x47C;

Octets NamedTrap() {
    return EncodeV2Trap({{"1.3.6.1.4.1.99999", EncodeInteger(42)}});
}

class SelfCheck : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { StartSocketLibrary(); }
    static void TearDownTestSuite() { StopSocketLibrary(); }

    void SetUp() override {
        if (GetEnvironmentVariableW(L"QUILLMONT_CHECK", nullptr, 0) == 0) {
            GTEST_SKIP()
                << "this works in the user's data folder: start it through check.cmd, which moves that aside";
        }
        std::filesystem::remove_all(DataFolder());
        StartProgram();
    }

    void StartProgram() {
        program_ = std::make_unique<RunningProgram>();
        main_ = program_->WaitForWindow(L"SNMP_MAIN_WND");
        ASSERT_NE(main_, nullptr) << "no main window";
        ASSERT_TRUE(WaitForText(kLog, "Server started.")) << ReadDataFile(kLog);
        ASSERT_TRUE(WaitForText(kLog, "Trap thread started (UDP 162).")) << ReadDataFile(kLog);
    }

    HWND Open(int button, const wchar_t* className, DWORD milliseconds = 20'000) {
        Click(FindControl(main_, L"Button", button));
        return program_->WaitForWindow(className, {}, milliseconds);
    }

    static void Send(const Octets& octets, uint16_t port = 162) {
        const UdpSocketRef socket = OpenUdpSocket();
        EXPECT_EQ(SendDatagram(*socket, {kLoopback, port}, octets.data(), octets.size()), SendResult::Sent);
        CloseUdpSocket(*socket);
    }

    // A file of a folder of its own, as an operator picks it from a stick.
    std::wstring MakeMib(const wchar_t* name, const char* text) {
        std::filesystem::create_directories(stick_.path());
        const std::filesystem::path file = stick_.path() / name;
        std::ofstream(file, std::ios::binary) << text;
        return file.wstring();
    }

    void Import(HWND status, const std::wstring& path) {
        Click(FindControl(status, L"Button", kImportButton));
        const HWND dialog = program_->WaitForWindow(kDialog, L"Import MIB files");
        ASSERT_NE(dialog, nullptr) << "no file dialog";
        HWND name = nullptr;
        ASSERT_TRUE(WaitUntil([&] { return (name = FindControl(dialog, L"Edit", kFileName)) != nullptr; }));
        // The dialog can still be filling itself: what it shows is what counts.
        ASSERT_TRUE(WaitUntil([&] {
            ReplaceText(name, path);
            return ReadText(name) == path;
        }));
        Click(FindControl(dialog, L"Button", IDOK));
        ASSERT_TRUE(WaitUntil([&] { return !IsWindow(dialog); })) << "the dialog stays open";
    }

    static size_t CountOf(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
            ++count;
        }
        return count;
    }

    ScratchFolder stick_;
    std::unique_ptr<RunningProgram> program_;
    HWND main_ = nullptr;
};

TEST_F(SelfCheck, StartsByItselfAndSaysSo) {
    EXPECT_EQ(ReadText(main_).substr(0, std::size(kTitle) - 1), kTitle);
    EXPECT_EQ(ReadText(FindControl(main_, L"Button", kStartButton)), L"Stop server");
    RECT frame = {};
    GetWindowRect(main_, &frame);
    EXPECT_EQ(frame.right - frame.left, 694);
    EXPECT_EQ(frame.bottom - frame.top, 90);
    EXPECT_NE(ReadDataFile(kLog).find("No config.xml found (or empty). Using defaults."), std::string::npos);
}

TEST_F(SelfCheck, RecordsEverySampleOctetForOctet) {
    std::string expected;
    size_t sent = 0;
    for (const SampleMessage& sample : SampleMessages()) {
        Send(sample.octets);
        ++sent;
        ASSERT_TRUE(WaitUntil([&] {
            return CountOf(ReadDataFile(kLog), "Trap received (127.0.0.1).") == sent;
        })) << sample.name;
        expected.append(23, 'T').append("       FROM: 127.0.0.1\r\r\n");
        for (const wchar_t character : BuildExpectedBody(sample)) {
            expected.append(character == L'\n' ? "\r" : "").push_back(static_cast<char>(character));
        }
    }
    std::string found = ReadDataFile(kTraps);
    constexpr std::string_view from = "       FROM: ";
    for (size_t at = found.find(from); at != std::string::npos; at = found.find(from, at + 1)) {
        ASSERT_GE(at, 23U);
        found.replace(at - 23, 23, 23, 'T');
    }
    EXPECT_EQ(found, expected);
}

TEST_F(SelfCheck, Notes161AndAnswersNothing) {
    Send({0x30, 0x00}, 161);
    EXPECT_TRUE(WaitForText(kLog, "Datagram on UDP 161 from 127.0.0.1."));
    EXPECT_EQ(ReadDataFile(kTraps), "");
}

TEST_F(SelfCheck, StopsFreesBothPortsAndStartsAgain) {
    const HWND button = FindControl(main_, L"Button", kStartButton);
    Click(button);
    ASSERT_TRUE(WaitForText(kLog, "Server stopped."));
    EXPECT_EQ(ReadText(button), L"Start server");
    EXPECT_TRUE(ExclusivePort(162).held());
    EXPECT_TRUE(ExclusivePort(161).held());
    Click(button);
    ASSERT_TRUE(WaitUntil([&] { return CountOf(ReadDataFile(kLog), "Server started.") == 2; }));
    Send(FindSample("v2_link_down").octets);
    EXPECT_TRUE(WaitForText(kTraps, "FROM: 127.0.0.1"));
}

TEST_F(SelfCheck, ShowsInBothViewsWhatArrivesAndEmptiesThem) {
    const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND");
    const HWND log = Open(kLogButton, L"SNMP_LOG_WND");
    ASSERT_NE(monitor, nullptr);
    ASSERT_NE(log, nullptr);
    Send(FindSample("v2_link_down").octets);
    const HWND view = FindControl(monitor, L"Edit", 0);
    const HWND logView = FindControl(log, L"Edit", 0);
    EXPECT_TRUE(WaitUntil([&] { return ReadText(view).find(L"FROM: 127.0.0.1") != std::wstring::npos; }));
    EXPECT_TRUE(WaitUntil([&] { return ReadText(logView).find(L"Trap received") != std::wstring::npos; }));
    Click(FindControl(monitor, L"Button", kClearMonitorButton));
    EXPECT_TRUE(WaitForText(kLog, "SNMP.txt cleared."));
    EXPECT_EQ(ReadDataFile(kTraps), "");
    EXPECT_TRUE(WaitUntil([&] { return ReadText(view).empty(); }));
}

TEST_F(SelfCheck, NamesWhatAnImportedFileDefinesAndDeletesItAgain) {
    const std::wstring file =
        MakeMib(L"check.mib", "checkValue OBJECT IDENTIFIER ::= { enterprises 99999 }\n");
    const HWND status = Open(kStatusButton, L"SNMP_STATUS_WND");
    ASSERT_NE(status, nullptr);
    Import(status, file);
    ASSERT_TRUE(WaitForText(kLog, "MIBs loaded. OID mappings: 1")) << ReadDataFile(kLog);
    Send(NamedTrap());
    EXPECT_TRUE(WaitForText(kTraps, "---> [1] 1.3.6.1.4.1.99999 (checkValue)  INTEGER = 42"));
    // Nothing of the stick is in use any more, its folder included.
    std::error_code error;
    std::filesystem::remove_all(stick_.path(), error);
    EXPECT_FALSE(std::filesystem::exists(stick_.path())) << error.message();

    Click(FindControl(status, L"Button", kDeleteButton));
    const HWND question = program_->WaitForWindow(kDialog, L"Delete MIBs");
    ASSERT_NE(question, nullptr) << "no question";
    Click(FindControl(question, L"Button", IDYES));
    EXPECT_TRUE(WaitUntil([] { return !std::filesystem::exists(DataFolder() + L"\\mibs\\check.mib"); }));
}

TEST_F(SelfCheck, TakesAHiddenReadOnlyFileTwiceAndDeletesIt) {
    const std::wstring file =
        MakeMib(L"hidden.mib", "checkValue OBJECT IDENTIFIER ::= { enterprises 99999 }\n");
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY);
    const HWND status = Open(kStatusButton, L"SNMP_STATUS_WND");
    ASSERT_NE(status, nullptr);
    for (size_t time = 1; time <= 2; ++time) {
        Import(status, file);
        EXPECT_TRUE(WaitUntil([&] {
            return CountOf(ReadDataFile(kLog), "MIBs loaded. OID mappings: 1") == time;
        })) << ReadDataFile(kLog);
    }
    EXPECT_EQ(CountOf(ReadDataFile(kLog), "MIB import failed."), 0U);
    Click(FindControl(status, L"Button", kDeleteButton));
    const HWND question = program_->WaitForWindow(kDialog, L"Delete MIBs");
    ASSERT_NE(question, nullptr) << "no question";
    Click(FindControl(question, L"Button", IDYES));
    EXPECT_TRUE(WaitUntil([] { return !std::filesystem::exists(DataFolder() + L"\\mibs\\hidden.mib"); }));
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(SelfCheck, ForwardsTheOctetsUnchangedAndKeepsTheSettings) {
    const UdpSocketRef target = OpenUdpSocket();
    uint16_t port = 40000;
    while (!BindToAllAddresses(*target, port)) {
        ++port;
    }
    const HWND forwarding = Open(kForwardingButton, L"SNMP_FWD_WND");
    ASSERT_NE(forwarding, nullptr);
    const HWND address = FindControl(forwarding, L"Edit", 0);
    const HWND portField = FindWindowExW(forwarding, address, L"Edit", nullptr);
    const HWND check = FindControl(forwarding, L"Button", 0);
    ASSERT_NE(portField, nullptr);
    ReplaceText(address, L"127.0.0.1");
    ReplaceText(portField, std::to_wstring(port));
    SendMessageW(check, BM_SETCHECK, BST_CHECKED, 0);
    Click(FindControl(forwarding, L"Button", kSaveButton));
    ASSERT_TRUE(WaitForText(kLog, "Forwarding updated."));
    const Octets& trap = FindSample("v2_link_down").octets;
    Send(trap);
    Octets octets(65535);
    size_t size = 0;
    Ipv4Endpoint sender;
    ASSERT_TRUE(WaitUntil([&] {
        return TakeDatagram(*target, octets.data(), octets.size(), &size, &sender) == ReceiveResult::Datagram;
    }));
    octets.resize(size);
    EXPECT_EQ(octets, trap);
    CloseUdpSocket(*target);
    EXPECT_NE(ReadDataFile(L"config.xml").find("<forwardingPort>" + std::to_string(port)), std::string::npos);
}

TEST_F(SelfCheck, EndsWithCodeZeroAndSavesItsSettings) {
    EXPECT_EQ(program_->Close(), 0U);
    EXPECT_TRUE(WaitForText(kLog, "Config saved."));
    EXPECT_NE(ReadDataFile(L"config.xml").find("<config>"), std::string::npos);
}

TEST_F(SelfCheck, ItsFilesMayBeDeletedAndMovedWhileItRuns) {
    Send(FindSample("v2_link_down").octets);
    ASSERT_TRUE(WaitForText(kTraps, "FROM: 127.0.0.1"));
    EXPECT_TRUE(DeleteFileW((DataFolder() + L"\\SNMP.txt").c_str())) << GetLastError();
    EXPECT_TRUE(MoveFileW((DataFolder() + L"\\log.txt").c_str(), (DataFolder() + L"\\moved.txt").c_str()))
        << GetLastError();
    Send(FindSample("v1_link_down").octets);
    EXPECT_TRUE(WaitForText(kLog, "Trap received (127.0.0.1)."));
    EXPECT_EQ(CountOf(ReadDataFile(kTraps), "FROM: "), 1U);
}

// The lines that the guide gives for a first test trap and for reading the file, as it gives them.
class GuideLines : public SelfCheck {
  protected:
    static ProgramResult RunPowerShell(const std::wstring& arguments) {
        return RunProgram(L"powershell.exe -NoProfile -ExecutionPolicy Bypass " + arguments, L".", 60'000);
    }
    static bool HasPowerShell() { return RunPowerShell(L"-Command \"exit 42\"").exitCode == DWORD{42}; }
};

TEST_F(GuideLines, SendATrapAndReadTheRecords) {
    if (!HasPowerShell()) {
        GTEST_SKIP() << "there is no PowerShell here";
    }
    const ProgramResult sent = RunPowerShell(L"-File send-a-trap.ps1");
    EXPECT_EQ(sent.exitCode, DWORD{0}) << sent.output;
    ASSERT_TRUE(WaitForText(kTraps, "FROM: 127.0.0.1")) << sent.output;
    const ProgramResult read = RunPowerShell(L"-File read-records.ps1");
    EXPECT_EQ(read.exitCode, DWORD{0}) << read.output;
    EXPECT_NE(read.output.find("127.0.0.1 1.3.6.1.6.3.1.1.5.1"), std::string::npos) << read.output;
}

// ---- Figures: no pass or fail, but what only such a machine can tell

void Fact(const std::string& text) {
    std::cout << "fact: " << text << std::endl;
}

std::string MillisecondsSince(ULONGLONG start) {
    return std::to_string(GetTickCount64() - start) + " ms";
}

class Figures : public SelfCheck {};

TEST_F(Figures, FromTheStartToListening) {
    EXPECT_EQ(program_->Close(), 0U);
    std::filesystem::remove_all(DataFolder());
    const ULONGLONG start = GetTickCount64();
    StartProgram();
    Fact("from the start of the program to listening: " + MillisecondsSince(start));
}

TEST_F(Figures, TrapsASecond) {
    constexpr size_t kSent = 20'000;
    const Octets& trap = FindSample("v2_link_down").octets;
    const UdpSocketRef socket = OpenUdpSocket();
    const ULONGLONG start = GetTickCount64();
    for (size_t sent = 0; sent < kSent; ++sent) {
        SendDatagram(*socket, {kLoopback, 162}, trap.data(), trap.size());
    }
    const ULONGLONG sentAfter = GetTickCount64() - start;
    EXPECT_TRUE(WaitForText(kLog, "Trap received"));
    // Until nothing has come for a second. A machine that pauses longer makes the figure smaller, no failure.
    size_t recorded = 0;
    ULONGLONG last = GetTickCount64();
    ULONGLONG lastGrowth = last;
    while (GetTickCount64() - lastGrowth < 1000) {
        Sleep(50);
        const size_t now = CountOf(ReadDataFile(kLog), "Trap received");
        if (now > recorded) {
            recorded = now;
            lastGrowth = GetTickCount64();
        }
    }
    CloseUdpSocket(*socket);
    Fact(std::to_string(kSent) + " traps back to back in " + std::to_string(sentAfter) + " ms: " +
         std::to_string(recorded) + " recorded within " + std::to_string(lastGrowth - start) + " ms");
    EXPECT_TRUE(WaitUntil([] {
        return CountOf(ReadDataFile(kTraps), "FROM: ") == CountOf(ReadDataFile(kLog), "Trap received");
    }));
}

TEST_F(Figures, OpeningTheMonitorWithTenMegabytes) {
    const std::string record =
        "2026-03-07 09:05:02.047       FROM: 127.0.0.1\r\r\n---> [1] 1.3.6.1.2.1.1.3.0  "
        "TimeTicks = 123456\r\r\n\r\r\n";
    std::ofstream file(std::filesystem::path(DataFolder()) / "SNMP.txt", std::ios::binary | std::ios::app);
    for (size_t written = 0; written < 10'000'000; written += record.size()) {
        file << record;
    }
    file.close();
    const ULONGLONG start = GetTickCount64();
    // Visible once it is filled; Wine takes a second for a megabyte, and more beside other work.
    const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND", 300'000);
    ASSERT_NE(monitor, nullptr);
    EXPECT_GT(ReadTextLength(FindControl(monitor, L"Edit", 0)), 9'000'000U);
    Fact("opening the monitor with 10 MB: " + MillisecondsSince(start));
}

TEST_F(Figures, TakingInALineOfSixtyThousandCharacters) {
    const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND");
    ASSERT_NE(monitor, nullptr);
    const HWND view = FindControl(monitor, L"Edit", 0);
    const ULONGLONG start = GetTickCount64();
    Send(EncodeV2Trap({{"1.3.6.1.4.1.99999", EncodeOctetString(std::string(60'000, 'x'))}}));
    EXPECT_TRUE(WaitUntil([&] { return ReadTextLength(view) > 60'000; }, 120'000));
    Fact("taking in one line of 60,000 characters: " + MillisecondsSince(start));
}

}  // namespace
