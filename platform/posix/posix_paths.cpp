#include "platform/posix/posix_paths.h"

#include <algorithm>
#include <cstdint>

namespace {

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

std::string ToPosixPath(std::wstring_view path) {
    constexpr uint32_t kReplacement = 0xFFFD;
    std::string octets;
    octets.reserve(path.size());
    for (const wchar_t character : path) {
        const auto code = static_cast<uint32_t>(character);
        const bool scalar = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        AppendUtf8(octets, scalar ? code : kReplacement);
    }
    std::replace(octets.begin(), octets.end(), '\\', '/');
    return octets;
}
