// Decodes UTF-8. The same code on every system, so that every build accepts the same octets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Replaces `text` with the decoded octets. True: they are well-formed UTF-8 (no overlong forms, no
// surrogates, nothing above U+10FFFF). False: they are not; `text` is unspecified. A byte-order mark is
// decoded like any other character. Characters above U+FFFF become surrogate pairs if wide characters have 16
// bits. May throw std::bad_alloc.
bool DecodeUtf8(std::string_view octets, std::wstring& text);

// The two UTF-16 code units of a character above U+FFFF.
struct SurrogatePair {
    uint32_t high = 0;
    uint32_t low = 0;
};
constexpr SurrogatePair SplitCodePoint(uint32_t codePoint) {
    const uint32_t offset = codePoint - 0x10000;
    return {0xD800 + (offset >> 10), 0xDC00 + (offset & 0x3FF)};
}
