// From octets of a file to wide text: UTF-8 when the octets are exactly that, else the system's ANSI
// code page.
#pragma once

#include <string>
#include <string_view>

// Replaces `text` by the octets as UTF-8 or, when they are not, as the ANSI code page reads them.
// Never fails.
void DecodeUtf8OrAnsi(std::string_view octets, std::wstring& text);
