// UTF-8 to wide text, the same code on every system so that every build accepts the same octets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// True: `octets` are well-formed UTF-8 (no overlong forms, no surrogates, nothing above U+10FFFF) and
// replaced `text`. False: one sequence or more is invalid; `text` is unspecified. A byte-order mark is
// a character like any other. Characters above U+FFFF become surrogate pairs where wide characters have
// 16 bits.
bool DecodeUtf8(std::string_view octets, std::wstring& text);

// The halves of a character above U+FFFF.
struct SurrogatePair {
    uint32_t high = 0;
    uint32_t low = 0;
};
constexpr SurrogatePair SplitCodePoint(uint32_t codePoint) {
    const uint32_t offset = codePoint - 0x10000;
    return {0xD800 + (offset >> 10), 0xDC00 + (offset & 0x3FF)};
}
