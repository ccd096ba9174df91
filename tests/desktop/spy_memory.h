// What the spy (a library inside the program under test) and the driver share: one block of named memory.
// The driver asks by sending spyMessage to a window, and the answer stands here when that call returns. The
// timer log is written all the time.
#pragma once

#include <cstdint>

#include "platform/windows/windows_headers.h"

inline constexpr wchar_t kSpyMemoryName[] = L"QuillmontDesktopSpyMemory";
inline constexpr wchar_t kSpyMessageName[] = L"QuillmontDesktopSpyQuestion";

enum class SpyQuestion : uint32_t {
    window = 1,     // font and class of the window
    colouring = 2,  // what its parent answers to the WM_CTLCOLOR message in lParam
    resources = 3,  // GDI objects and kernel handles of the program
    folder = 4,     // the program's current folder
    killTimer = 5,  // ends the window's timer of the number in lParam
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
inline constexpr uint32_t spyCalls = 256;
inline constexpr uint32_t spyCallLength = 512;

// What the driver wants of the calls that are caught. Each is done once and then forgotten.
struct SpyWishes {
    // Ready: the next file dialog is not shown and answers with these octets of its buffer.
    volatile uint32_t choiceIsReady;
    wchar_t choice[4096];
    // Ready: before the program opens that file for reading, these octets are appended to it.
    volatile uint32_t growthIsReady;
    wchar_t growingFile[MAX_PATH];
    char growth[256];
};

struct SpyMemory {
    uint32_t program;  // the process whose calls are to be caught
    SpyWishes wishes;
    volatile uint32_t callCount;             // calls ever seen, as with the timers
    wchar_t calls[spyCalls][spyCallLength];  // each as a text
    SpyAnswer answer;
    volatile uint32_t timerCount;  // events ever seen; the last kSpyTimerEvents of them are kept, round robin
    SpyTimerEvent timers[kSpyTimerEvents];
};
