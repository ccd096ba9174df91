// What the spy (a library inside the program under test) and the driver share: one block of named memory.
// The driver asks by sending spyMessage to a window, and the answer stands here when that call returns. The
// timer log is written all the time.
#pragma once

#include <cstdint>

#include "platform/windows/windows_headers.h"

inline constexpr wchar_t spyMemoryName[] = L"QuillmontDesktopSpyMemory";
inline constexpr wchar_t spyMessageName[] = L"QuillmontDesktopSpyQuestion";

enum class SpyQuestion : uint32_t {
    window = 1,     // font and class of the window
    colouring = 2,  // what its parent answers to the WM_CTLCOLOR message in lParam
    resources = 3,  // GDI objects and kernel handles of the program
    folder = 4,     // the program's current folder
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

inline constexpr uint32_t spyTimerEvents = 512;

struct SpyMemory {
    SpyAnswer answer;
    volatile uint32_t timerCount;  // events ever seen; the last spyTimerEvents of them are kept, round robin
    SpyTimerEvent timers[spyTimerEvents];
};
