// From octets of unknown origin to wide text; the one place that decides which encoding they are in.
#pragma once

#include <string>
#include <string_view>

// Replaces `text` by the octets as UTF-8 or, when they are not, as the ANSI code page reads them.
// 2 GiB and more that are not UTF-8 give nothing. May throw std::bad_alloc.
void DecodeUtf8OrAnsi(std::string_view octets, std::wstring& text);
