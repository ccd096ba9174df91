// What an operator does with the program.
#include "tests/kit/self_check.h"

#include <filesystem>

#include "tests/kit/child_process.h"
#include "tests/support/exclusive_port.h"
#include "tests/support/sample_messages.h"

namespace {

constexpr wchar_t kTitle[] = L"Quillmont PRO v1.0 (SNMP v1 and v2c)";

TEST_F(SelfCheck, StartsTheReceiverWithoutAClick) {
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
        ASSERT_TRUE(WaitForTraps(sent)) << sample.name;
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

TEST_F(SelfCheck, LogsPort161AndRecordsNothing) {
    Send({0x30, 0x00}, 161);
    EXPECT_TRUE(WaitForText(kLog, "Datagram on UDP 161 from 127.0.0.1."));
    EXPECT_EQ(ReadDataFile(kTraps), "");
}

TEST_F(SelfCheck, StopsFreesBothPortsAndStartsAgain) {
    const HWND button = FindControl(main_, L"Button", kStartButton);
    Click(button);
    ASSERT_TRUE(WaitForText(kLog, "Server stopped."));
    EXPECT_EQ(ReadText(button), L"Start server");
    EXPECT_TRUE(ExclusivePort(162).bound());
    EXPECT_TRUE(ExclusivePort(161).bound());
    Click(button);
    ASSERT_TRUE(WaitUntil([] { return CountLogLines("Server started.") == 2; }));
    Send(FindSample("v2_link_down").octets);
    EXPECT_TRUE(WaitForText(kTraps, "FROM: 127.0.0.1"));
}

TEST_F(SelfCheck, ShowsNewTextInBothViewsAndEmptiesThem) {
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

TEST_F(SelfCheck, UsesTheNamesOfAnImportedFileAndDeletesIt) {
    const HWND status = Open(kStatusButton, L"SNMP_STATUS_WND");
    ASSERT_NE(status, nullptr);
    Import(status, {MakeMib(L"check.mib")});
    ASSERT_TRUE(WaitForText(kLog, "MIBs loaded. OID mappings: 1")) << ReadDataFile(kLog);
    Send(NamedTrap());
    EXPECT_TRUE(WaitForText(kTraps, "---> [1] 1.3.6.1.4.1.99999 (checkValue)  INTEGER = 42"));
    // The program must no longer use the folder of the imported file.
    std::error_code error;
    std::filesystem::remove_all(scratch_.path(), error);
    EXPECT_FALSE(std::filesystem::exists(scratch_.path())) << error.message();

    DeleteAllMibs(status);
    EXPECT_TRUE(WaitUntil([] { return !std::filesystem::exists(DataFile(L"mibs\\check.mib")); }));
}

TEST_F(SelfCheck, ForwardsTheOctetsUnchangedAndSavesTheSettings) {
    const LoopbackClient target;
    Forward(L"127.0.0.1", std::to_wstring(target.port()));
    ASSERT_TRUE(WaitForText(kLog, "Forwarding updated."));
    const Octets& trap = FindSample("v2_link_down").octets;
    Send(trap);
    EXPECT_EQ(target.Receive(), trap);
    EXPECT_NE(ReadDataFile(L"config.xml").find("<forwardingPort>" + std::to_string(target.port())),
              std::string::npos);
}

TEST_F(SelfCheck, EndsWithCodeZeroAndSavesItsSettings) {
    EXPECT_EQ(program_->Close(), 0U);
    EXPECT_TRUE(WaitForText(kLog, "Config saved."));
    EXPECT_NE(ReadDataFile(L"config.xml").find("<config>"), std::string::npos);
}

// The guide's scripts that send a test trap and read the records.
class GuideScripts : public SelfCheck {
  protected:
    static ProgramResult RunScript(const std::wstring& path) {
        return RunProgram(L"powershell.exe -NoProfile -ExecutionPolicy Bypass -File \"" + path + L"\"", L".",
                          60'000);
    }
};

TEST_F(GuideScripts, SendATrapAndReadTheRecords) {
    // A policy can allow PowerShell but forbid scripts, or restrict their language.
    const std::wstring probe = scratch_.Join(L"probe.ps1");
    WriteOctets(probe, "if ($ExecutionContext.SessionState.LanguageMode -eq 'FullLanguage') { exit 42 }\r\n");
    if (RunScript(probe).exitCode != DWORD{42}) {
        GTEST_SKIP() << "PowerShell is not installed, or a policy does not let it run scripts.";
    }
    const ProgramResult sent = RunScript(L"send-a-trap.ps1");
    EXPECT_EQ(sent.exitCode, DWORD{0}) << sent.output;
    ASSERT_TRUE(WaitForText(kTraps, "FROM: 127.0.0.1")) << sent.output;
    const ProgramResult read = RunScript(L"read-records.ps1");
    EXPECT_EQ(read.exitCode, DWORD{0}) << read.output;
    EXPECT_NE(read.output.find("127.0.0.1 1.3.6.1.6.3.1.1.5.1"), std::string::npos) << read.output;
}

}  // namespace
