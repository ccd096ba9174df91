// Converts text from and to the system's ANSI code page, which is the encoding of files that are not UTF-8
// and of address text for the socket library. platform/utf8.h decodes UTF-8.
#pragma once

#include <string>
#include <string_view>

// Replaces `text` with the decoded octets. Never fails: an octet without a character becomes a substitute.
// Windows: 2 GiB and more become empty text, because the system's count is signed. May throw std::bad_alloc.
//
// POSIX: decodes as Windows-1252, with its five unassigned octets as U+0081, U+008D, U+008F, U+0090 and
// U+009D.
void DecodeAnsi(std::string_view octets, std::wstring& text);

// Replaces `octets` with the encoded text up to its first zero character. Characters that the code page lacks
// become the system's substitute. False: the system refused, and `octets` is unchanged. May throw
// std::bad_alloc.
//
// POSIX: always true, with '?' for each character above U+00FF.
bool EncodeAnsi(const std::wstring& text, std::string& octets);
