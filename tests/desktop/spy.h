// The driver's side of the spy: puts quillmont_desktop_spy.dll (beside the driver) into the program under
// test and asks it questions. One program at a time: attaching to another one lets the former go.
#pragma once

#include <string>
#include <vector>

#include "platform/windows/windows_headers.h"
#include "tests/desktop/spy_memory.h"

// All throw RequestError on failure and return JSON.

// Hooks the thread that owns the window.
std::string AttachSpy(HWND window);
std::string AskSpy(HWND window, SpyQuestion question, UINT message);
// [window, timer, milliseconds] of the timer messages fetched since the spy was attached, oldest first.
std::string ReadSpyTimers();
// The calls of the system that the program made since then, as texts (spy_calls.h), oldest first.
std::string ReadSpyCalls();
// The next file dialog answers with these texts in its buffer instead of being shown.
std::string ChooseInNextDialog(const std::vector<std::wstring>& texts);
// The next time the program opens the file for reading, it has grown by these octets.
std::string GrowAtNextReading(const std::wstring& path, const std::wstring& octets);
