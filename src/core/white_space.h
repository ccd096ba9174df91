// White space as the Windows runtime's iswspace defines it, implemented here so that every build reads the
// same file alike.
#pragma once

#include <cstdint>

// True for the six ASCII white-space characters, U+0085, and the Unicode space, line and paragraph
// separators.
inline bool IsWideSpace(wchar_t character) {
    const auto code = static_cast<uint32_t>(character);
    if (code < 0x80) {
        return code == L' ' || (code >= 0x09 && code <= 0x0D);
    }
    return code == 0x85 || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x2028 || code == 0x2029 || code == 0x202F || code == 0x205F || code == 0x3000;
}
