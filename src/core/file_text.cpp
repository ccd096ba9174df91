#include "core/file_text.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';
constexpr char kEndOfText = '\x1A';

constexpr std::string_view kLineEnd = "\r\r\n";

bool EndsInsideLine(std::wstring_view text) {
    return !text.empty() && text.back() != L'\n';
}

void AppendFileText(std::wstring_view text, std::string_view lineEnd, std::string& octets) {
    const size_t start = octets.size();
    // Resized once for the worst case: appending octet by octet takes three times as long, and if memory runs
    // out here, `octets` is unchanged.
    octets.resize(start + 2 * text.size() + lineEnd.size());
    char* out = octets.data() + start;
    const auto* character = text.data();
    const auto* const end = character + text.size();
    for (; character != end && static_cast<uint32_t>(*character) <= 0xFF; ++character) {
        if (*character == L'\n') {
            *out++ = kCarriageReturn;
        }
        *out++ = static_cast<char>(*character);
    }
    if (character == end) {
        out = std::copy(lineEnd.begin(), lineEnd.end(), out);
    }
    octets.resize(static_cast<size_t>(out - octets.data()));
}

}  // namespace

void EncodeFileText(std::wstring_view text, std::string& octets) {
    octets.clear();
    AppendFileText(text, {}, octets);
}

void AppendFileLines(std::wstring_view text, std::string& octets) {
    AppendFileText(text, EndsInsideLine(text) ? kLineEnd : std::string_view{}, octets);
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
