// The one form in which the program writes a time.
#pragma once

#include <string>

#include "platform/clock.h"

// "2026-03-07 09:05:02.047": 23 characters.
std::wstring FormatTimestamp(const LocalTime& time);

// The same for the current local time.
std::wstring FormatTimestamp();
