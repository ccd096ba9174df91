// Windows when memory runs out at each allocation: after a click that failed the next one works. The windows
// are real.
#include "platform/windows/windows_headers.h"

#include <string>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/scratch_folder.h"
#include "ui/forwarding_window.h"
#include "ui/status_window.h"
#include "ui/view_text.h"
#include "ui/viewer_window.h"

namespace {

constexpr wchar_t kLongTarget[] = L"an address that is too long for a text without an allocation";

class WindowsInAShortage : public ::testing::Test {
  protected:
    void SetUp() override { ReplaceForwarding(true, kLongTarget, 162); }
    void TearDown() override { ReplaceForwarding(false, L"127.0.0.1", 162); }

    static HWND Window(const wchar_t* className) { return FindWindowW(className, nullptr); }
    static void Close(const wchar_t* className) {
        if (const HWND window = Window(className)) {
            DestroyWindow(window);
        }
    }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
};

TEST_F(WindowsInAShortage, AreShownByTheNextClick) {
    struct Case {
        const wchar_t* className;
        void (*open)();
    };
    for (const Case& tool :
         {Case{L"SNMP_STATUS_WND", OpenStatusWindow}, Case{L"SNMP_FWD_WND", OpenForwardingWindow}}) {
        const size_t refused = RefuseEachRequest(
            Shortage::OneRequest, [&] { Close(tool.className); }, tool.open,
            [&](const Attempt&, size_t) {
                tool.open();
                EXPECT_TRUE(IsWindowVisible(Window(tool.className)));
            });
        EXPECT_GT(refused, 0U);
        Close(tool.className);
    }
}

TEST_F(WindowsInAShortage, AViewShowsItsFileOrItsSize) {
    constexpr wchar_t className[] = L"SNMP_MON_WND";
    const std::string octets(5000, 'x');
    WriteOctets(AppPaths.trapFilePath, octets);
    const std::wstring whole = BuildViewText(std::wstring(octets.begin(), octets.end()));
    const std::wstring sentence = BuildTooLargeText(octets.size());
    size_t explained = 0;
    const size_t refused = RefuseEachRequest(
        Shortage::OneRequest, [&] { Close(className); }, OpenMonitorWindow,
        [&](const Attempt& attempt, size_t) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            const HWND edit = FindWindowExW(Window(className), nullptr, L"Edit", nullptr);
            std::wstring text(static_cast<size_t>(GetWindowTextLengthW(edit)), L'\0');
            GetWindowTextW(edit, text.data(), static_cast<int>(text.size() + 1));
            EXPECT_TRUE(text == whole || text == sentence) << text.size();
            explained += text == sentence ? 1 : 0;
        });
    EXPECT_GT(explained, 0U);
    EXPECT_LE(explained, refused);
    Close(className);
}

}  // namespace
