#include "core/file_text.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';
constexpr char kEndOfText = '\x1A';

// True: all of `text` was appended. False: a character above 0xFF ended it.
bool AppendFileText(std::wstring_view text, std::string& octets) {
    for (const wchar_t character : text) {
        const auto code = static_cast<uint32_t>(character);
        if (code > 0xFF) {
            return false;
        }
        if (code == static_cast<uint32_t>(kLineFeed)) {
            octets.push_back(kCarriageReturn);
        }
        octets.push_back(static_cast<char>(code));
    }
    return true;
}

}  // namespace

void EncodeFileText(std::wstring_view text, std::string& octets) {
    octets.clear();
    octets.reserve(text.size() + text.size() / 16);
    AppendFileText(text, octets);
}

void EncodeFileLines(std::wstring_view text, std::string& octets) {
    octets.clear();
    octets.reserve(text.size() + text.size() / 16 + 3);
    if (AppendFileText(text, octets) && !text.empty() && text.back() != L'\n') {
        AppendFileText(L"\r\n", octets);
    }
}

void DecodeFileText(std::string_view octets, std::wstring& text) {
    octets = octets.substr(0, octets.find(kEndOfText));
    text.clear();
    text.reserve(octets.size());
    for (size_t index = 0; index < octets.size(); ++index) {
        const bool startsPair =
            octets[index] == kCarriageReturn && index + 1 < octets.size() && octets[index + 1] == kLineFeed;
        if (!startsPair) {
            text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(octets[index])));
        }
    }
}
