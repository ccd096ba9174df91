#include "mib/mib_parser.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "mib/mib_text.h"
#include "mib/name_store.h"

namespace {

constexpr auto kNowhere = std::wstring_view::npos;

// Takes the next line off the front of `text`, without its line feed, its comment and the space around it.
// Lines end at line feeds only: a carriage return is space, and without line feeds all is one line.
std::wstring_view TakeLine(std::wstring_view& text) {
    const size_t end = text.find(L'\n');
    const std::wstring_view line = text.substr(0, end);
    text = end == kNowhere ? std::wstring_view() : text.substr(end + 1);
    return TrimSpace(StripComment(line));
}

constexpr std::wstring_view kKeywords[] = {L"OBJECT-TYPE", L"OBJECT IDENTIFIER", L"MODULE-IDENTITY"};
constexpr std::wstring_view kAssignment = L"::=";

bool HasKeyword(std::wstring_view line) {
    return std::any_of(std::begin(kKeywords), std::end(kKeywords), [&](std::wstring_view keyword) { return line.find(keyword) != kNowhere; });
}

bool StartsValue(std::wstring_view line) {
    return line.find(kAssignment) != kNowhere && line.find(L'{') != kNowhere;
}

// Appends further lines to `statement` through the one that closes it, taking them off `text`.
void TakeLinesToBrace(std::wstring_view& text, std::wstring& statement) {
    while (!text.empty()) {
        const std::wstring_view line = TakeLine(text);
        statement.append(1, L' ').append(line);
        if (line.find(L'}') != kNowhere) {
            return;
        }
    }
}

void StoreStatement(std::wstring_view name, std::wstring_view statement) {
    std::wstring_view parent;
    int32_t subId = 0;
    if (ParseParentAndSubId(statement, &parent, &subId)) {
        StoreDefinition(name, parent, subId);
    } else if (const std::wstring oid = ParseOidValue(statement); !oid.empty()) {
        StoreNamedOid(name, oid);
    }
}

}  // namespace

void ParseMibText(std::wstring_view text) {
    std::wstring_view name;
    std::wstring statement;
    while (!text.empty()) {
        std::wstring_view line = TakeLine(text);
        const std::wstring_view word = LeadingIdentifier(line);
        if (!word.empty() && HasKeyword(line)) {
            name = word;
        }
        if (!StartsValue(line)) {
            continue;
        }
        if (line.find(L'}') == kNowhere) {
            statement = line;
            TakeLinesToBrace(text, statement);
            line = statement;
        }
        if (!name.empty()) {
            StoreStatement(name, line);
        }
    }
}

void ParseMibFile(const std::wstring& path) {
    ParseMibText(ReadMibText(path));
}
