// log.txt: one line an event, the only place where the program says what it did and what went wrong.
#pragma once

#include <string>
#include <string_view>

#include "platform/clock.h"

// Appends "2026-03-07 09:05:02.047": 23 characters.
void AppendTimestamp(std::wstring& text, const LocalTime& time);

// The stamp of the current local time.
std::wstring FormatTimestamp();

// Appends one line as log.txt holds it to `octets`, for lines that are written together with
// AppendLinesToFile: the stamp of now, two blanks, the message and a line end. Throws std::bad_alloc with
// `octets` as they were.
void AppendLogLine(std::wstring_view message, std::string& octets);

// Appends that line to log.txt. The stamp is taken before FileLock, so lines of two threads can stand in the
// opposite order of their stamps; that is accepted. Throws nothing: a line for which there is no memory is
// lost, and whoever logs goes on with what matters more.
void LogMessage(std::wstring_view message) noexcept;
