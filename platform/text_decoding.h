// From octets of unknown origin to wide text; the one place that decides which encoding they are in.
#pragma once

#include <string>
#include <string_view>

// Replaces `text` by the octets as UTF-8 or, when they are not, as the ANSI code page reads them.
// Never fails.
void DecodeUtf8OrAnsi(std::string_view octets, std::wstring& text);
