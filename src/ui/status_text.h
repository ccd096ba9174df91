// The texts of the status window as pure functions, so that every blank can be tested without a window. The
// runs of blanks line the values up in the window's proportional font.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

std::wstring BuildServerText(bool running);

// Names port 161 when its socket is open or the receiver runs. Intentional: also while the receiver runs
// without 161 because that port is in use; the log has a line about it.
std::wstring BuildListenText(bool running, bool listenerOpen);

// Shows the target in both states, so that the operator sees what switching on would do.
std::wstring BuildForwardText(bool enabled, std::wstring_view ip, int32_t port);

// Two lines.
std::wstring BuildPathsText(std::wstring_view dataDir, std::wstring_view mibsDir);

std::wstring BuildCountsText(int32_t fileCount, int32_t mappingCount);

// `lastTrapTick` and `now` are milliseconds of ReadTickCount, `now` not the earlier one; a `lastTrapTick` of
// 0 means that there was no trap yet. The age is in whole seconds, rounded down.
std::wstring BuildLastTrapText(uint64_t lastTrapTick, std::wstring_view sender, uint64_t now);
