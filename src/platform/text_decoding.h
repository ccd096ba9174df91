// Decodes octets whose encoding is not known.
#pragma once

#include <string>
#include <string_view>

// Replaces `text` with the octets decoded as UTF-8 or, if they are not valid UTF-8, with the ANSI code page.
// Windows: 2 GiB and more that are not UTF-8 become empty text. May throw std::bad_alloc.
void DecodeUtf8OrAnsi(std::string_view octets, std::wstring& text);
