// Text in the system's ANSI code page: the 8-bit encoding of files that are not UTF-8 and of the address
// text given to the socket library. UTF-8 is decoded by platform/utf8.h, alike on every system.
#pragma once

#include <string>
#include <string_view>

// Every octet string decodes; octets without a character of their own become some substitute, never an error.
// 2 GiB and more decode to nothing: the system counts in 32 bits.
// POSIX: Windows-1252, with its five holes as U+0081, U+008D, U+008F, U+0090 and U+009D.
void DecodeAnsi(std::string_view octets, std::wstring& text);

// True: `octets` holds `text` up to its first zero character. False (`octets` untouched): the system refused.
// Characters that the code page lacks become the system's substitute. POSIX: '?' for everything above U+00FF.
bool EncodeAnsi(const std::wstring& text, std::string& octets);
