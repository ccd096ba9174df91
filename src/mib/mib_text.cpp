#include "mib/mib_text.h"

#include <algorithm>
#include <vector>

#include "core/decimal_text.h"
#include "core/white_space.h"
#include "platform/files.h"
#include "platform/text_decoding.h"

namespace {

using namespace std::string_view_literals;

constexpr size_t kMaxOctets = 0x7FFFFFFF;  // DecodeAnsi cannot decode more

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

bool IsIdentifierCharacter(wchar_t character) {
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z') ||
           IsDigit(character) || character == L'-' || character == L'_';
}

// Returns the words between the first "{" and the first "}"; none if one is missing or "}" comes first.
std::vector<std::wstring_view> SplitBracedWords(std::wstring_view statement) {
    const size_t open = statement.find(L'{');
    const size_t close = statement.find(L'}');
    std::vector<std::wstring_view> words;
    if (open == std::wstring_view::npos || close == std::wstring_view::npos || close < open) {
        return words;
    }
    const std::wstring_view inner = statement.substr(open + 1, close - open - 1);
    auto start = std::find_if_not(inner.begin(), inner.end(), IsWideSpace);
    while (start != inner.end()) {
        const auto end = std::find_if(start, inner.end(), IsWideSpace);
        words.emplace_back(start, end);
        start = std::find_if_not(end, inner.end(), IsWideSpace);
    }
    return words;
}

}  // namespace

std::wstring ReadMibText(const std::wstring& path) {
    std::string octets;
    // The size is checked before the read, because a trap file imported by mistake can be larger than the
    // memory, and again on the open file, because a folder lists a symbolic link with size 0.
    if (QueryFileSize(path).value_or(0) <= kMaxOctets &&
        ReadOctetsFrom(path, 0, octets, kMaxOctets).value_or(0) > kMaxOctets) {
        octets.clear();
    }
    std::wstring text;
    DecodeUtf8OrAnsi(octets, text);
    return text;
}

std::wstring_view StripComment(std::wstring_view line) {
    return line.substr(0, line.find(L"--"sv));
}

std::wstring_view LeadingIdentifier(std::wstring_view line) {
    const auto start = std::find_if_not(line.begin(), line.end(), IsWideSpace);
    return {start, std::find_if_not(start, line.end(), IsIdentifierCharacter)};
}

bool ParseParentAndSubId(std::wstring_view statement, std::wstring_view* parent, int32_t* subId) {
    *parent = {};
    *subId = -1;
    const std::vector<std::wstring_view> words = SplitBracedWords(statement);
    if (words.size() < 2) {
        return false;
    }
    *parent = words[words.size() - 2];
    *subId = ParseDecimalInt(words.back());
    return *subId >= 0;
}

const Oid* AddOidComponent(std::wstring_view word, const Oid* oid) {
    const size_t open = word.find(L'(');
    const size_t close = word.find(L')');
    if (open != std::wstring_view::npos && close != std::wstring_view::npos && close > open + 1) {
        return StoreOid(oid, ParseDecimalInt(word.substr(open + 1, close - open - 1)));
    }
    if (std::all_of(word.begin(), word.end(), IsDigit)) {
        return StoreOid(oid, ParseDecimalInt(word));
    }
    return oid == nullptr ? ResolveName(StoreName(word)) : oid;
}

const Oid* ParseOidValue(std::wstring_view statement) {
    const Oid* oid = nullptr;
    for (const std::wstring_view word : SplitBracedWords(statement)) {
        oid = AddOidComponent(word, oid);
    }
    return oid == nullptr || oid->parent == nullptr ? nullptr : oid;
}
