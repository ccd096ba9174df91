#include "ui/forwarding_window.h"

#include <string>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/activity_log.h"
#include "core/decimal_text.h"
#include "platform/windows/windows_headers.h"
#include "ui/exception_guard.h"
#include "ui/window_helpers.h"

namespace {

HWND ForwardingWindowHandle = nullptr;
HWND ForwardEnabledCheck = nullptr;
HWND ForwardIpEdit = nullptr;
HWND ForwardPortEdit = nullptr;

constexpr int SaveCommand = 200;
constexpr int CancelCommand = 201;

// Kept: the port field takes any text, and no control is a tab stop; what is typed is judged when it
// is saved.
constexpr ControlRow ForwardingControls[] = {
    {L"STATIC", L"Forwarding enabled:", 0, 0, 20, 20, 150, 20, 0, nullptr},
    {L"BUTTON", L"On/Off", BS_AUTOCHECKBOX, 0, 180, 18, 100, 22, 0, &ForwardEnabledCheck},
    {L"STATIC", L"Forward IP:", 0, 0, 20, 60, 150, 20, 0, nullptr},
    {L"EDIT", L"", ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, 180, 58, 200, 24, 0, &ForwardIpEdit},
    {L"STATIC", L"Forward Port:", 0, 0, 20, 95, 150, 20, 0, nullptr},
    {L"EDIT", L"", ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, 180, 93, 80, 24, 0, &ForwardPortEdit},
    {L"BUTTON", L"Save", 0, 0, 180, 135, 90, 28, SaveCommand, nullptr},
    {L"BUTTON", L"Cancel", 0, 0, 290, 135, 90, 28, CancelCommand, nullptr},
};

void FillForwardingControls() {
    if (!ForwardingWindowHandle) {
        return;
    }
    const bool enabled = ForwardingSettings.forwardingEnabled.load();
    const ForwardingTarget target = CopyForwardingTarget();
    std::wstring port;
    AppendSignedDecimal(port, target.port);
    SendMessageW(ForwardEnabledCheck, BM_SETCHECK, enabled ? BST_CHECKED : BST_UNCHECKED, 0);
    SetWindowTextW(ForwardIpEdit, target.ip.c_str());
    SetWindowTextW(ForwardPortEdit, port.c_str());
}

// As typed: neither trimmed nor checked. The count given to the system is one less than the buffer holds, and
// the system counts the terminator, so 254 characters is the longest address that gets through.
std::wstring ReadIpField() {
    wchar_t text[256] = {};
    GetWindowTextW(ForwardIpEdit, text, 255);
    return text[0] ? text : L"127.0.0.1";
}

int32_t ReadPortField() {
    wchar_t text[64] = {};
    GetWindowTextW(ForwardPortEdit, text, 63);
    return ClampForwardingPort(ParseDecimalInt(text));
}

// The trap thread asks the settings for every datagram: the next trap already goes to the new target. Off
// before the target changes and on after it, so that no trap in between goes where nobody sent it; the first
// target of all is this program itself.
void ReplaceForwarding(bool enabled, const std::wstring& ip, int32_t port) {
    if (!enabled) {
        ForwardingSettings.forwardingEnabled.exchange(false);
    }
    ReplaceForwardingTarget(ip, port);
    if (enabled) {
        ForwardingSettings.forwardingEnabled.exchange(true);
    }
}

// The fields are not filled again with what was made of them, since the window closes at once.
void SaveForwarding(HWND window) {
    const bool enabled = SendMessageW(ForwardEnabledCheck, BM_GETCHECK, 0, 0) == BST_CHECKED;
    ReplaceForwarding(enabled, ReadIpField(), ReadPortField());
    SaveConfig();
    LogMessage(L"Forwarding updated.");
    DestroyWindow(window);
}

bool RunCommand(HWND window, int command) {
    switch (command) {
        case SaveCommand:
            SaveForwarding(window);
            return true;
        case CancelCommand:
            DestroyWindow(window);
            return true;
        default:
            return false;
    }
}

LRESULT CALLBACK ForwardingWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            if (RunCommand(window, LOWORD(wParam))) {
                return 0;
            }
            break;
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_DESTROY:
            ForwardingWindowHandle = nullptr;
            return 0;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            return ColorControl(wParam);
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

constexpr DWORD ForwardingStyle = WS_CAPTION | WS_SYSMENU;

constexpr ToolWindow ForwardingTool = {
    L"SNMP_FWD_WND",         L"Forwarding", ForwardingStyle, 420, 210, GuardedProc<ForwardingWindowProc>,
    &ForwardingWindowHandle,
};

}  // namespace

void OpenForwardingWindow() {
    if (!RaiseOrCreate(ForwardingTool, ForwardingControls)) {
        return;
    }
    FillForwardingControls();
    ApplyUiFont(ForwardingWindowHandle);
    ShowWindow(ForwardingWindowHandle, SW_SHOW);
}
