// The texts of the status window as pure functions, so that every blank can be tested without a window. The
// runs of blanks line the values up in the window's proportional font.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

std::wstring BuildServerText(bool running);

// Includes port 161 if its socket is open or the receiver is running.
//
// Intentional: also while the receiver is running without port 161 because the port is in use. The log has a
// line about that.
std::wstring BuildListenText(bool running, bool listenerOpen);

// Includes the target even if forwarding is off, so that the operator sees what switching it on would do.
std::wstring BuildForwardText(bool enabled, std::wstring_view ip, int32_t port);

// Returns two lines.
std::wstring BuildPathsText(std::wstring_view dataDir, std::wstring_view mibsDir);

std::wstring BuildCountsText(int32_t fileCount, int32_t mappingCount);

// `lastTrapTick` and `now` are results of ReadTickCount; a `lastTrapTick` of 0 means no trap yet, and `now`
// must not be earlier. The age is in whole seconds, rounded down.
std::wstring BuildLastTrapText(uint64_t lastTrapTick, std::wstring_view sender, uint64_t now);
