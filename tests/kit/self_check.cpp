#include "tests/kit/self_check.h"

#include "platform/udp_socket.h"
#include "tests/kit/data_folder_aside.h"

namespace {

constexpr int kImportButton = 500;
constexpr int kDeleteButton = 501;
constexpr int kSaveButton = 200;
constexpr int kFileName = 0x47C;  // of the system's file dialog

}  // namespace

void SelfCheck::SetUpTestSuite() {
    StartSocketLibrary();
}

void SelfCheck::TearDownTestSuite() {
    StopSocketLibrary();
}

void SelfCheck::SetUp() {
    if (GetEnvironmentVariableW(L"QUILLMONT_CHECK", nullptr, 0) == 0) {
        GTEST_SKIP() << "This test works in the user's data folder: run check.cmd, which moves that folder "
                        "aside first.";
    }
    ASSERT_TRUE(RemoveFolder(DataFolder()));
    StartProgram();
}

void SelfCheck::StartProgram() {
    program_ = std::make_unique<RunningProgram>();
    main_ = program_->WaitForWindow(L"SNMP_MAIN_WND");
    ASSERT_NE(main_, nullptr) << "no main window";
    ASSERT_TRUE(WaitForText(kLog, "Server started.")) << ReadDataFile(kLog);
    ASSERT_TRUE(WaitForText(kLog, "Trap thread started (UDP 162).")) << ReadDataFile(kLog);
}

HWND SelfCheck::Open(int button, const wchar_t* className, std::chrono::milliseconds limit) const {
    Click(FindControl(main_, L"Button", button));
    return program_->WaitForWindow(className, {}, limit);
}

bool SelfCheck::WaitForTraps(size_t count) {
    return WaitUntil([count] { return CountLogLines("Trap received (127.0.0.1).") >= count; });
}

Octets SelfCheck::NamedTrap() {
    return EncodeV2Trap({{"1.3.6.1.4.1.99999", EncodeInteger(42)}});
}

std::wstring SelfCheck::MakeMib(const wchar_t* name) const {
    const std::wstring path = scratch_.Join(name);
    WriteOctets(path, "checkValue OBJECT IDENTIFIER ::= { enterprises 99999 }\n");
    return path;
}

HWND SelfCheck::OpenFileDialog(HWND status) const {
    Click(FindControl(status, L"Button", kImportButton));
    const HWND dialog = program_->WaitForWindow(kDialog, L"Import MIB files");
    EXPECT_NE(dialog, nullptr) << "no file dialog";
    return dialog;
}

void SelfCheck::TypeName(HWND dialog, const std::wstring& text) {
    HWND field = nullptr;
    ASSERT_TRUE(WaitUntil([&] { return (field = FindControl(dialog, L"Edit", kFileName)) != nullptr; }));
    // The dialog may still replace the text while it opens, so retry until the text stays.
    ASSERT_TRUE(WaitUntil([&] {
        ReplaceText(field, text);
        return ReadText(field) == text;
    }));
    Click(FindControl(dialog, L"Button", IDOK));
}

void SelfCheck::Import(HWND status, const std::vector<std::wstring>& texts) const {
    const HWND dialog = OpenFileDialog(status);
    for (const std::wstring& text : texts) {
        TypeName(dialog, text);
        // A folder's name makes the dialog open that folder and clear the field.
        ASSERT_TRUE(WaitUntil([&] {
            const HWND field = FindControl(dialog, L"Edit", kFileName);
            return field == nullptr || ReadText(field) != text;
        })) << "the dialog does not react";
    }
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(dialog); })) << "the dialog stays open";
}

void SelfCheck::DeleteAllMibs(HWND status) const {
    Click(FindControl(status, L"Button", kDeleteButton));
    const HWND question = program_->WaitForWindow(kDialog, L"Delete MIBs");
    ASSERT_NE(question, nullptr) << "no question";
    Click(FindControl(question, L"Button", IDYES));
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(question); }));
}

void SelfCheck::Forward(const std::wstring& address, const std::wstring& port) const {
    const HWND window = Open(kForwardingButton, L"SNMP_FWD_WND");
    ASSERT_NE(window, nullptr);
    const HWND addressField = FindControl(window, L"Edit", 0);
    const HWND portField = FindWindowExW(window, addressField, L"Edit", nullptr);
    ASSERT_NE(portField, nullptr);
    ReplaceText(addressField, address);
    ReplaceText(portField, port);
    ::Send(FindControl(window, L"Button", 0), BM_SETCHECK, BST_CHECKED);
    Click(FindControl(window, L"Button", kSaveButton));
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(window); }));
}

size_t SelfCheck::CountOf(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}
