// Named memory shared by the driver and the spy (a library inside the program under test). The driver asks
// by sending the spy's message to a window; the answer is here when that call returns. The logs are always
// written.
#pragma once

#include <cstdint>

#include "platform/windows/windows_headers.h"

inline constexpr wchar_t kSpyMemoryName[] = L"QuillmontDesktopSpyMemory";
inline constexpr wchar_t kSpyMessageName[] = L"QuillmontDesktopSpyQuestion";

enum class SpyQuestion : uint32_t {
    window = 1,     // font and class of the window
    colouring = 2,  // the parent's reply to the WM_CTLCOLOR message in lParam
    resources = 3,  // GDI objects and kernel handles of the program
    folder = 4,     // the program's current folder
    killTimer = 5,  // kills the window's timer whose id is in lParam
};

struct SpyBrush {
    uint64_t handle;
    uint32_t isSolid;
    uint32_t colour;
};

struct SpyAnswer {
    uint32_t answered;
    uint64_t font;
    LOGFONTW logicalFont;
    SpyBrush classBrush;
    uint32_t classStyle;
    uint32_t classHasArrow;
    uint32_t classHasIcon;
    uint32_t classHasMenu;
    SpyBrush controlBrush;
    uint32_t backgroundMode;
    uint32_t backgroundColour;
    uint32_t textColour;
    uint32_t gdiObjects;
    uint32_t kernelHandles;
    wchar_t currentFolder[MAX_PATH];
};

struct SpyTimerEvent {
    uint64_t window;
    uint64_t timer;
    uint64_t tick;  // milliseconds of GetTickCount64
};

inline constexpr uint32_t kSpyTimerEvents = 512;
inline constexpr uint32_t kSpyCalls = 256;
inline constexpr uint32_t kSpyCallLength = 512;

// What the driver prepares; each action runs once.
struct SpyActions {
    // If set, the next file dialog is not shown and its buffer contains these texts.
    volatile uint32_t choiceIsReady;
    wchar_t choice[4096];
    // If set, these octets are appended to the file just before the program next opens it for reading.
    volatile uint32_t appendIsReady;
    wchar_t appendPath[MAX_PATH];
    char appendOctets[256];
};

struct SpyMemory {
    uint32_t program;  // the process whose calls are logged
    SpyActions actions;
    volatile uint32_t callCount;  // calls since the spy was attached
    wchar_t calls[kSpyCalls][kSpyCallLength];
    SpyAnswer answer;
    volatile uint32_t timerCount;  // events since then
    SpyTimerEvent timers[kSpyTimerEvents];
};
