#include "platform/text.h"

#include <algorithm>
#include <cstdint>

namespace {

// The characters of Windows-1252 at 0x80 to 0x9F. Its five unassigned octets map to themselves.
constexpr char16_t kWindows1252[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                     0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

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
