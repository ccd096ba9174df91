// The texts of the status window as pure functions, so that every blank can be tested without a window. The
// runs of blanks line the values up in the window's proportional font.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

std::wstring BuildServerText(bool running);

// Port 161 is named when its socket is open or the receiver runs.
// Kept: so it is also named while 162 runs alone because 161 was taken; the log tells the two apart.
std::wstring BuildListenText(bool running, bool listenerOpen);

// The target is told in both states, so that the operator sees what switching on would do.
std::wstring BuildForwardText(bool enabled, std::wstring_view ip, int32_t port);

// Two lines.
std::wstring BuildPathsText(std::wstring_view dataDir, std::wstring_view mibsDir);

std::wstring BuildCountsText(int32_t fileCount, int32_t mappingCount);

// `lastTrapTick` and `now` in milliseconds of ReadTickCount, `now` read after the other; a tick of 0 means no
// trap yet. Whole seconds, cut off: 999 ms are 0 s.
std::wstring BuildLastTrapText(uint64_t lastTrapTick, std::wstring_view sender, uint64_t now);
