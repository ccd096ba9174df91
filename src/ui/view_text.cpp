#include "ui/view_text.h"

#include <algorithm>

#include "core/decimal_text.h"

namespace {

constexpr size_t kLongestLine = 1000;  // including its line end
constexpr size_t kPart = 100;
constexpr std::wstring_view kLineEnd = L"\r\n";
constexpr size_t kLongestLineEnd = 3;  // CR CR LF

void AppendLine(std::wstring& text, std::wstring_view line) {
    if (line.size() > kLongestLine) {
        // The last part has the line's own end.
        for (; line.size() > kPart + kLongestLineEnd; line.remove_prefix(kPart)) {
            text += line.substr(0, kPart);
            text += kLineEnd;
        }
    }
    text += line;
}

}  // namespace

std::wstring BuildViewText(std::wstring_view fileText) {
    std::wstring text;
    text.reserve(fileText.size());
    while (!fileText.empty()) {
        const std::wstring_view line =
            fileText.substr(0, std::min(fileText.find(kLineEnd), fileText.size()) + kLineEnd.size());
        AppendLine(text, line);
        fileText.remove_prefix(line.size());
    }
    std::replace(text.begin(), text.end(), L'\0', L' ');
    return text;
}

std::wstring BuildTooLargeText(uint64_t size) {
    std::wstring text = L"This file is too large to be shown (";
    AppendDecimal(text, size);
    text += L" bytes); only what is added to it will appear below.\r\n";
    return text;
}
