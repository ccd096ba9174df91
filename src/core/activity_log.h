// log.txt: one line for each event. It is the only place where the program reports what it did and
// what failed.
#pragma once

#include <string>
#include <string_view>

// The text of one line: the current time, two blanks, the message, CR LF.
std::wstring FormatLogLine(std::wstring_view message);

// Appends that line to log.txt. The time is read before FileLock is locked, so two threads may write their
// lines in the opposite order of their times; that is accepted. Throws nothing: a line that cannot be written
// is lost.
void LogMessage(std::wstring_view message) noexcept;
