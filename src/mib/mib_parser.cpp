#include "mib/mib_parser.h"

#include <algorithm>
#include <cstdint>

#include "mib/mib_text.h"
#include "mib/name_store.h"

namespace {

using namespace std::string_view_literals;

bool Contains(std::wstring_view line, std::wstring_view part) {
    return line.find(part) != std::wstring_view::npos;
}

bool ContainsKeyword(std::wstring_view line) {
    return Contains(line, L"OBJECT IDENTIFIER"sv) || Contains(line, L"OBJECT-TYPE"sv) ||
           Contains(line, L"MODULE-IDENTITY"sv);
}

// Removes the first line from `text` and returns it without its comment. It is not trimmed, because white
// space around it does not matter to any caller.
std::wstring_view CutLine(std::wstring_view& text) {
    const size_t end = std::min(text.find(L'\n'), text.size());
    const std::wstring_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return StripComment(line);
}

// Returns the value that starts in `line`. If the line has no "}", removes lines from `text` up to the first
// that has one and joins them with blanks.
std::wstring CutStatement(std::wstring_view line, std::wstring_view& text) {
    std::wstring statement(line);
    while (!Contains(line, L"}"sv) && !text.empty()) {
        line = CutLine(text);
        statement.append(L" ").append(line);
    }
    return statement;
}

void StoreValue(MibName& name, std::wstring_view statement) {
    std::wstring_view parent;
    int32_t subId = 0;
    if (ParseParentAndSubId(statement, &parent, &subId)) {
        StoreDefinition(name, StoreName(parent), subId);
    } else if (const Oid* oid = ParseOidValue(statement)) {
        StoreNamedOid(name, oid);
    }
}

}  // namespace

void ParseMibText(std::wstring_view text) {
    MibName* name = nullptr;  // the current name
    while (!text.empty()) {
        const std::wstring_view line = CutLine(text);
        if (ContainsKeyword(line)) {
            const std::wstring_view word = LeadingIdentifier(line);
            name = word.empty() ? name : &StoreName(word);
        }
        if (Contains(line, L"::="sv) && Contains(line, L"{"sv)) {
            const std::wstring statement = CutStatement(line, text);
            if (name != nullptr) {
                StoreValue(*name, statement);
            }
        }
    }
}

void ParseMibFile(const std::wstring& path) {
    ParseMibText(ReadMibText(path));
}
