// Paths cross the seam as wide text with backslashes; the system wants UTF-8 with slashes.
#pragma once

#include <string>
#include <string_view>

std::string ToPosixPath(std::wstring_view path);

// UTF-8 of wide text with 32-bit characters, a surrogate or anything above U+10FFFF as U+FFFD.
std::string EncodeUtf8(std::wstring_view text);
