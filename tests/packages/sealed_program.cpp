// A stub for a Quillmont.exe of another user. It has a window of the main window's class, and its process
// cannot be opened. The process ends two seconds after the window has closed, and uses the file until then.
#include <windows.h>

namespace {

constexpr DWORD kEndTime = 2000;

LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// An empty access list denies access to everyone, except that the owner and debuggers can override it.
bool SealProcess() {
    ACL empty;
    SECURITY_DESCRIPTOR descriptor;
    return InitializeAcl(&empty, sizeof(empty), ACL_REVISION) != FALSE &&
           InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
           SetSecurityDescriptorDacl(&descriptor, TRUE, &empty, FALSE) != FALSE &&
           SetKernelObjectSecurity(GetCurrentProcess(), DACL_SECURITY_INFORMATION, &descriptor) != FALSE;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = WindowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"SNMP_MAIN_WND";
    if (!SealProcess() || RegisterClassW(&windowClass) == 0 ||
        CreateWindowW(L"SNMP_MAIN_WND", L"sealed", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100, nullptr,
                      nullptr, instance, nullptr) == nullptr) {
        return 1;
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    Sleep(kEndTime);
    return 0;
}
