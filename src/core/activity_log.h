// log.txt: one line for each event. It is the only place where the program reports what it did and
// what failed.
#pragma once

#include <string>
#include <string_view>

// Returns the text of one line: the current time, two blanks, the message, CR LF.
std::wstring FormatLogLine(std::wstring_view message);

// Appends that line to log.txt. Locks FileLock. Throws nothing: a line that cannot be written is lost.
//
// Intentional: the time is read before FileLock is locked, so it is the time of the event and not of the
// write. Lines of two threads may therefore be in the opposite order of their times.
void LogMessage(std::wstring_view message) noexcept;
