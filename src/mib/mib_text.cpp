#include "mib/mib_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/decimal_text.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/text_decoding.h"

namespace {

constexpr size_t kMaxOctets = 0x7FFFFFFF;  // the system's conversion counts with 32 bits

bool IsSpace(wchar_t character) {
    return character <= L' ' ? character == L' ' || (character >= L'\t' && character <= L'\r')
                             : character >= 0x80 && IsWideSpace(character);
}

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

bool IsIdentifierCharacter(wchar_t character) {
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z') ||
           IsDigit(character) || character == L'-' || character == L'_';
}

// Without a way out in the middle, so that compilers test many octets at once.
bool IsAscii(std::string_view octets) {
    unsigned char bits = 0;
    for (const char octet : octets) {
        bits = static_cast<unsigned char>(bits | static_cast<unsigned char>(octet));
    }
    return bits < 0x80;
}

// Cuts the first word off the front of `text`; empty when there is none.
std::wstring_view TakeFirstWord(std::wstring_view& text) {
    const auto start = std::find_if_not(text.begin(), text.end(), IsSpace);
    const auto end = std::find_if(start, text.end(), IsSpace);
    text = {end, text.end()};
    return {start, end};
}

// The same at the back.
std::wstring_view TakeLastWord(std::wstring_view& text) {
    const auto end = std::find_if_not(text.rbegin(), text.rend(), IsSpace);
    const auto start = std::find_if(end, text.rend(), IsSpace);
    text = {text.begin(), start.base()};
    return {start.base(), end.base()};
}

}  // namespace

MibText ReadMibText(const std::wstring& path) {
    std::string octets;
    // Not read at all when it is too large: a trap file imported by mistake can be larger than the memory.
    if (QueryFileSize(path).value_or(0) <= kMaxOctets) {
        ReadOctetsFrom(path, 0, octets);
    }
    return DecodeMibText(std::move(octets));
}

MibText DecodeMibText(std::string octets) {
    if (IsAscii(octets)) {
        return octets;
    }
    std::wstring text;
    DecodeUtf8OrAnsi(octets, text);
    return text;
}

template <typename Char>
std::basic_string_view<Char> StripComment(std::basic_string_view<Char> line) {
    constexpr Char kDashes[] = {'-', '-'};
    return line.substr(0, line.find(kDashes, 0, 2));
}

template <typename Char>
std::basic_string_view<Char> TrimSpace(std::basic_string_view<Char> text) {
    const auto start = std::find_if_not(text.begin(), text.end(), IsSpace);
    const auto end = std::find_if_not(text.rbegin(), std::make_reverse_iterator(start), IsSpace);
    return {start, end.base()};
}

template <typename Char>
std::basic_string_view<Char> LeadingIdentifier(std::basic_string_view<Char> line) {
    const auto start = std::find_if_not(line.begin(), line.end(), IsSpace);
    return {start, std::find_if_not(start, line.end(), IsIdentifierCharacter)};
}

template std::string_view StripComment(std::string_view);
template std::wstring_view StripComment(std::wstring_view);
template std::string_view TrimSpace(std::string_view);
template std::wstring_view TrimSpace(std::wstring_view);
template std::string_view LeadingIdentifier(std::string_view);
template std::wstring_view LeadingIdentifier(std::wstring_view);

bool FindBracedText(std::wstring_view statement, std::wstring_view* inner) {
    const size_t open = statement.find(L'{');
    const size_t close = statement.find(L'}');
    if (open == std::wstring_view::npos || close == std::wstring_view::npos || close < open) {
        return false;
    }
    *inner = TrimSpace(statement.substr(open + 1, close - open - 1));
    return true;
}

bool ParseParentAndSubId(std::wstring_view statement, std::wstring_view* parent, int32_t* subId) {
    *parent = {};
    *subId = -1;
    std::wstring_view words;
    if (!FindBracedText(statement, &words)) {
        return false;
    }
    const std::wstring_view last = TakeLastWord(words);
    const std::wstring_view lastButOne = TakeLastWord(words);
    if (lastButOne.empty()) {
        return false;
    }
    *parent = lastButOne;
    *subId = ParseDecimalInt(last);
    return *subId >= 0;
}

void AddOidComponent(std::wstring_view word, std::vector<int32_t>& arcs) {
    word = TrimSpace(word);
    if (word.empty()) {
        return;
    }
    const size_t open = word.find(L'(');
    const size_t close = word.find(L')');
    if (open != std::wstring_view::npos && close != std::wstring_view::npos && close > open + 1) {
        arcs.push_back(ParseDecimalInt(word.substr(open + 1, close - open - 1)));
    } else if (std::all_of(word.begin(), word.end(), IsDigit)) {
        arcs.push_back(ParseDecimalInt(word));
    } else if (arcs.empty()) {
        ResolveName(word, arcs);
    }
}

std::wstring ParseOidValue(std::wstring_view statement) {
    std::wstring_view words;
    std::vector<int32_t> arcs;
    if (FindBracedText(statement, &words)) {
        while (!words.empty()) {
            AddOidComponent(TakeFirstWord(words), arcs);
        }
    }
    return arcs.size() < 2 ? std::wstring() : FormatOidText(arcs);
}
