#include "platform/text.h"

#include <algorithm>
#include <cstdint>

#include "platform/posix/posix_paths.h"

namespace {

// What Windows-1252 has at 0x80 to 0x9F; its five holes stand for themselves.
constexpr char16_t kWindows1252[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                     0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& octets, uint32_t codePoint) {
    const auto trailing = [&](unsigned shift) {
        octets.push_back(static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU)));
    };
    if (codePoint < 0x80) {
        octets.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        octets.push_back(static_cast<char>(0xC0U | (codePoint >> 6)));
        trailing(0);
    } else if (codePoint < 0x10000) {
        octets.push_back(static_cast<char>(0xE0U | (codePoint >> 12)));
        trailing(6);
        trailing(0);
    } else {
        octets.push_back(static_cast<char>(0xF0U | (codePoint >> 18)));
        trailing(12);
        trailing(6);
        trailing(0);
    }
}

}  // namespace

void DecodeAnsi(std::string_view octets, std::wstring& text) {
    text.resize(octets.size());
    std::transform(octets.begin(), octets.end(), text.begin(), [](char octet) {
        const auto code = static_cast<unsigned char>(octet);
        const bool special = code >= 0x80 && code <= 0x9F;
        return special ? static_cast<wchar_t>(kWindows1252[code - 0x80]) : static_cast<wchar_t>(code);
    });
}

bool EncodeAnsi(const std::wstring& text, std::string& octets) {
    octets.clear();
    for (const wchar_t character : text) {
        if (character == L'\0') {
            break;
        }
        const auto code = static_cast<uint32_t>(character);
        octets.push_back(code > 0xFF ? '?' : static_cast<char>(code));
    }
    return true;
}

std::string EncodeUtf8(std::wstring_view text) {
    constexpr uint32_t kReplacement = 0xFFFD;
    std::string octets;
    octets.reserve(text.size());
    for (const wchar_t character : text) {
        const auto code = static_cast<uint32_t>(character);
        const bool scalar = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        AppendUtf8(octets, scalar ? code : kReplacement);
    }
    return octets;
}

std::string ToPosixPath(std::wstring_view path) {
    std::string octets = EncodeUtf8(path);
    for (char& octet : octets) {
        if (octet == '\\') {
            octet = '/';
        }
    }
    return octets;
}
