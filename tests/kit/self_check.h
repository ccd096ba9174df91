// The shipped program as an operator uses it: its windows, its files, its ports, the system's own dialogs.
// Only for the check, which has moved the user's data folder aside.
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

    // Waits until log.txt has this many lines "Trap received".
    static bool WaitForTraps(size_t count);

    // A trap with one binding that has the name checkValue once MakeMib's file is imported.
    static Octets NamedTrap();
    // Writes a MIB file to a separate folder, as if on a USB stick. Returns its path.
    std::wstring MakeMib(const wchar_t* name) const;

    // The system's file dialog, as the Import button of the status window opens it.
    HWND OpenFileDialog(HWND status) const;
    // Types a name into the dialog and presses Open.
    static void TypeName(HWND dialog, const std::wstring& text);
    // Chooses one file in the dialog, or several files of one folder: the folder, then their quoted names.
    void Import(HWND status, const std::vector<std::wstring>& texts) const;
    // As the user does with the Delete button and the question that follows.
    void DeleteAllMibs(HWND status) const;

    // Opens the forwarding window, types both fields, switches forwarding on and saves.
    void Forward(const std::wstring& address, const std::wstring& port) const;

    static size_t CountOf(const std::string& text, const std::string& part);
    static size_t CountLogLines(const std::string& message) { return CountOf(ReadDataFile(kLog), message); }

    ScratchFolder stick_;
    LoopbackClient client_;
    std::unique_ptr<RunningProgram> program_;
    HWND main_ = nullptr;
};
