// Paths cross the seam as wide text with backslashes; the system wants UTF-8 with slashes.
#pragma once

#include <string>
#include <string_view>

// A surrogate or anything above U+10FFFF becomes U+FFFD: wide characters have 32 bits here.
std::string ToPosixPath(std::wstring_view path);
