#include "platform/posix/posix_paths.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr size_t kLongestSequence = 4;

// Writes the code point, which `out` must have space for, and returns the position after it.
char* WriteUtf8(char* out, uint32_t codePoint) {
    const auto trailing = [&](unsigned shift) {
        *out++ = static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    if (codePoint < 0x80) {
        *out++ = static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        *out++ = static_cast<char>(0xC0U | (codePoint >> 6));
        trailing(0);
    } else if (codePoint < 0x10000) {
        *out++ = static_cast<char>(0xE0U | (codePoint >> 12));
        trailing(6);
        trailing(0);
    } else {
        *out++ = static_cast<char>(0xF0U | (codePoint >> 18));
        trailing(12);
        trailing(6);
        trailing(0);
    }
    return out;
}

uint32_t ToPathCharacter(wchar_t character) {
    constexpr uint32_t kReplacement = 0xFFFD;
    const auto code = static_cast<uint32_t>(character);
    if (code == L'\\') {
        return '/';
    }
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) ? code : kReplacement;
}

}  // namespace

PosixPath::PosixPath(std::wstring_view path) {
    char* out = octets_;
    const char* const lastStart = octets_ + PATH_MAX - kLongestSequence - 1;
    for (const wchar_t character : path) {
        if (out > lastStart) {
            out = octets_;
            break;
        }
        out = WriteUtf8(out, ToPathCharacter(character));
    }
    *out = '\0';
    size_ = static_cast<size_t>(out - octets_);
}
