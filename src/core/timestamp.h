// The format of every time that the program writes.
#pragma once

#include <string>

#include "platform/clock.h"

// Returns 23 characters such as "2026-03-07 09:05:02.047".
std::wstring FormatTimestamp(const LocalTime& time);

// Returns the current local time in this format.
std::wstring FormatTimestamp();
