// Promises about the octets of the data files: written text reads back; truncation and line ends follow the
// format; decoding gives no more characters than there are octets; octets are read as UTF-8 exactly if they
// are valid UTF-8.
#include <algorithm>
#include <string>

#include "core/file_text.h"
#include "fuzz/fuzz_targets.h"
#include "fuzz/promise.h"
#include "platform/text.h"
#include "platform/text_decoding.h"
#include "platform/utf8.h"

namespace {

// Two octets a character, so that every kind of character occurs.
std::wstring MakeWideText(std::string_view octets) {
    std::wstring text;
    for (size_t index = 0; index + 1 < octets.size(); index += 2) {
        const auto high = static_cast<unsigned char>(octets[index]);
        const auto low = static_cast<unsigned char>(octets[index + 1]);
        text.push_back(static_cast<wchar_t>((high << 8) | low));
    }
    return text;
}

// The expected octets of a text, written differently from the code under test.
std::string EncodePlainly(std::wstring_view text, bool endLine) {
    std::wstring whole(text);
    if (endLine && !text.empty() && text.back() != L'\n') {
        whole += L"\r\n";
    }
    const auto cut = std::find_if(whole.begin(), whole.end(),
                                  [](wchar_t character) { return static_cast<uint32_t>(character) > 0xFF; });
    std::string octets;
    std::for_each(whole.begin(), cut, [&](wchar_t character) {
        octets += character == L'\n' ? "\r\n" : std::string(1, static_cast<char>(character));
    });
    return octets;
}

void CheckEncoding(const std::wstring& text) {
    std::string octets = "leftover";
    EncodeFileText(text, octets);
    Promise(octets == EncodePlainly(text, false),
            "a text is one octet a character up to the first above 0xFF");
    const std::string before = octets;
    AppendFileLines(text, octets);
    Promise(octets == before + EncodePlainly(text, true),
            "a line end is added to a text that has none and is not truncated");
}

// Text read from a file contains only characters that can be written.
void CheckReadingBack(std::string_view octets) {
    std::wstring text = L"leftover";
    DecodeFileText(octets, text);
    Promise(text.size() <= octets.size(), "no more characters than octets");
    Promise(text.find(L'\x1A') == std::wstring::npos, "0x1A ends the content");
    std::string written;
    EncodeFileText(text, written);
    std::wstring again;
    DecodeFileText(written, again);
    Promise(again == text, "written text reads back");
}

// The UTF-8 of the wide text; a surrogate pair is one character.
std::string EncodeAsUtf8(const std::wstring& text) {
    std::string octets;
    for (size_t index = 0; index < text.size(); ++index) {
        auto code = static_cast<uint32_t>(text[index]);
        if constexpr (sizeof(wchar_t) == 2) {
            if (code >= 0xD800 && code < 0xDC00) {
                code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<uint32_t>(text[++index]) - 0xDC00);
            }
        }
        const int more = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        constexpr uint32_t kLeads[] = {0x00, 0xC0, 0xE0, 0xF0};
        octets.push_back(static_cast<char>(kLeads[more] | (code >> (6 * more))));
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6) {
            octets.push_back(static_cast<char>(0x80 | ((code >> shift) & 0x3F)));
        }
    }
    return octets;
}

bool HasNoLoneSurrogate(const std::wstring& text) {
    bool highBefore = false;
    for (const wchar_t character : text) {
        const auto code = static_cast<uint32_t>(character);
        const bool low = code >= 0xDC00 && code <= 0xDFFF;
        if (low != highBefore) {
            return false;
        }
        highBefore = code >= 0xD800 && code <= 0xDBFF;
    }
    return !highBefore;
}

void CheckUtf8OrAnsi(std::string_view octets) {
    std::wstring strict = L"leftover";
    std::wstring either = L"leftover";
    std::wstring ansi = L"leftover";
    const bool valid = DecodeUtf8(octets, strict);
    DecodeUtf8OrAnsi(octets, either);
    DecodeAnsi(octets, ansi);
    Promise(either == (valid ? strict : ansi), "UTF-8 exactly if valid, else the ANSI code page");
    Promise(either.size() <= octets.size(), "no more wide characters than octets");
    if (valid) {
        Promise(HasNoLoneSurrogate(strict), "UTF-8 gives only scalar values");
        Promise(EncodeAsUtf8(strict) == octets, "only the shortest form is UTF-8");
    }
}

}  // namespace

void CheckFileText(const uint8_t* octets, size_t size) {
    const std::string_view view(reinterpret_cast<const char*>(octets), size);
    CheckReadingBack(view);
    CheckUtf8OrAnsi(view);
    CheckEncoding(MakeWideText(view));
    CheckEncoding(std::wstring(octets, octets + size));
}
