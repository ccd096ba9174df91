#include "core/file_text.h"

#include <cstdint>

namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';
constexpr char kEndOfText = '\x1A';

constexpr std::string_view kLineEnd = "\r\r\n";

// False: a character above 0xFF ended the output.
bool AppendCharacters(std::wstring_view text, std::string& octets) {
    for (const wchar_t character : text) {
        if (static_cast<uint32_t>(character) > 0xFF) {
            return false;
        }
        if (character == L'\n') {
            octets.push_back(kCarriageReturn);
        }
        octets.push_back(static_cast<char>(character));
    }
    return true;
}

}  // namespace

void EncodeFileText(std::wstring_view text, std::string& octets) {
    octets.clear();
    AppendCharacters(text, octets);
}

void AppendFileLines(std::wstring_view text, std::string& octets) {
    const bool isWhole = AppendCharacters(text, octets);
    if (isWhole && !text.empty() && text.back() != L'\n') {
        octets.append(kLineEnd);
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
