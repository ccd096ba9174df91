// The shipped program as the check runs it: its real windows, its files, its ports.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/windows/scoped_handle.h"
#include "tests/support/wait_until.h"

using namespace std::chrono_literals;

// Quillmont.exe of the check's own folder, from its start to its end.
class RunningProgram {
  public:
    RunningProgram();   // starts it; a failure shows in the first wait
    ~RunningProgram();  // closes it, or ends it by force
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Waits for a visible window of this program with this class and, unless `title` is empty, this title.
    // Null: there was none.
    HWND WaitForWindow(const std::wstring& className, const std::wstring& title = {},
                       std::chrono::milliseconds limit = 20s) const;

    // Closes the main window and waits for the end. The exit code; MAXDWORD if it did not end.
    DWORD Close();

    HANDLE process() const { return process_.get(); }

  private:
    ScopedHandle process_;
    DWORD id_ = 0;
};

// A control of the window by its class and id, at any depth. Null: there is none.
HWND FindControl(HWND window, const std::wstring& className, int id);

// Posts the command that a click on the button sends, so that a click which opens a dialog returns at once.
// Not BM_CLICK, which "might fail" while the button's dialog is not active.
void Click(HWND button);

// As SendMessageW; 0 if the window is gone. Throws std::runtime_error if there is no answer within a minute.
LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// All text of the window, of any length.
std::wstring ReadText(HWND window);
size_t ReadTextLength(HWND window);
void ReplaceText(HWND window, const std::wstring& text);

// Posts WM_CLOSE and waits until the window is gone. False: it is not.
bool CloseWindowAndWait(HWND window);

std::wstring DataFolder();
std::wstring DataFile(const wchar_t* name);
// A file of the data folder; empty if there is none.
std::string ReadDataFile(const wchar_t* name);
bool WaitForText(const wchar_t* file, std::string_view text, std::chrono::milliseconds limit = 20s);
