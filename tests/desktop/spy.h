// The driver's side of the spy: loads quillmont_desktop_spy.dll, which is in the driver's folder, into the
// program under test and asks it questions. One program at a time: attaching to another one detaches the
// first.
#pragma once

#include <string>
#include <vector>

#include "platform/windows/windows_headers.h"
#include "tests/desktop/spy_memory.h"

// All throw RequestError on failure and return JSON.

// Hooks the thread that owns the window.
std::string AttachSpy(HWND window);
std::string AskSpy(HWND window, SpyQuestion question, UINT message);
// [window, timer, milliseconds] of the timer messages since the spy was attached, oldest first.
std::string ReadSpyTimers();
// The system calls of the program since then, as texts (spy_calls.h), oldest first.
std::string ReadSpyCalls();
// The next file dialog is not shown; it returns these texts in its buffer.
std::string ChooseInNextDialog(const std::vector<std::wstring>& texts);
// Appends these octets to the file just before the program opens it for reading the next time.
std::string GrowAtNextReading(const std::wstring& path, const std::wstring& octets);
