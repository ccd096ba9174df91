// Drives the shipped program as an operator would, through its windows and the system's dialogs. Only for
// the check, which has moved the user's data folder aside.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/kit/fact.h"
#include "tests/kit/running_program.h"
#include "tests/support/ber_encoder.h"
#include "tests/support/loopback_client.h"
#include "tests/support/scratch_folder.h"

constexpr wchar_t kLog[] = L"log.txt";
constexpr wchar_t kTraps[] = L"SNMP.txt";
constexpr wchar_t kDialog[] = L"#32770";

// The main window's buttons.
constexpr int kStartButton = 100;
constexpr int kForwardingButton = 101;
constexpr int kMonitorButton = 102;
constexpr int kLogButton = 103;
constexpr int kStatusButton = 104;

constexpr int kClearMonitorButton = 300;

class SelfCheck : public ::testing::Test {
  protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    // Starts the program with an empty data folder.
    void SetUp() override;
    void StartProgram();

    // Clicks a button of the main window and waits for the window that it opens.
    HWND Open(int button, const wchar_t* className, std::chrono::milliseconds limit = 20s) const;

    void Send(const Octets& octets, uint16_t port = kTrapPort) const { client_.Send(octets, port); }

    // Waits until log.txt has `count` lines for traps.
    static bool WaitForTraps(size_t count);

    // Returns a trap whose one binding is named checkValue once MakeMib's file is imported.
    static Octets NamedTrap();
    // Writes a MIB file outside the data folder. Returns its path.
    std::wstring MakeMib(const wchar_t* name) const;

    // Clicks Import in the status window and returns the system's file dialog.
    HWND OpenFileDialog(HWND status) const;
    // Types a name into the dialog and presses Open.
    static void TypeName(HWND dialog, const std::wstring& text);
    // Imports through the dialog, into which each text is typed: one path, or a folder and quoted file names.
    void Import(HWND status, const std::vector<std::wstring>& texts) const;
    // Clicks the Delete button and then Yes.
    void DeleteAllMibs(HWND status) const;

    // Opens the forwarding window, fills in both fields, switches forwarding on and saves.
    void Forward(const std::wstring& address, const std::wstring& port) const;

    static size_t CountOf(const std::string& text, const std::string& part);
    static size_t CountLogLines(const std::string& message) { return CountOf(ReadDataFile(kLog), message); }

    ScratchFolder scratch_;
    LoopbackClient client_;
    std::unique_ptr<RunningProgram> program_;
    HWND main_ = nullptr;
};
