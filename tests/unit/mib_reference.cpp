#include "tests/unit/mib_reference.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "core/decimal_text.h"
#include "mib/name_store.h"

namespace {

using Arcs = std::vector<int32_t>;

const std::map<std::wstring, Arcs> kBuiltinNames = {
    {L"iso", {1}},
    {L"org", {1, 3}},
    {L"dod", {1, 3, 6}},
    {L"internet", {1, 3, 6, 1}},
    {L"directory", {1, 3, 6, 1, 1}},
    {L"mgmt", {1, 3, 6, 1, 2}},
    {L"mib-2", {1, 3, 6, 1, 2, 1}},
    {L"transmission", {1, 3, 6, 1, 2, 1, 10}},
    {L"experimental", {1, 3, 6, 1, 3}},
    {L"private", {1, 3, 6, 1, 4}},
    {L"enterprises", {1, 3, 6, 1, 4, 1}},
    {L"security", {1, 3, 6, 1, 5}},
    {L"snmpV2", {1, 3, 6, 1, 6}},
    {L"snmpModules", {1, 3, 6, 1, 6, 3}},
};

constexpr int kMostParents = 64;

// ---- Texts

std::vector<std::wstring> SplitLines(const std::wstring& text) {
    std::vector<std::wstring> lines(1);
    for (const wchar_t character : text) {
        if (character == L'\n') {
            lines.emplace_back();
        } else {
            lines.back() += character;
        }
    }
    return lines;
}

std::vector<std::wstring> SplitWords(const std::wstring& text) {
    std::vector<std::wstring> words;
    std::wstring word;
    for (const wchar_t character : text + L" ") {
        if (!IsWideSpace(character)) {
            word += character;
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

std::wstring TrimLine(std::wstring line) {
    while (!line.empty() && IsWideSpace(line.back())) {
        line.pop_back();
    }
    while (!line.empty() && IsWideSpace(line.front())) {
        line.erase(0, 1);
    }
    return line;
}

std::wstring CleanLine(const std::wstring& line) {
    return TrimLine(line.substr(0, line.find(L"--")));
}

bool Contains(const std::wstring& text, const std::wstring& part) {
    return text.find(part) != std::wstring::npos;
}

std::wstring FirstIdentifier(const std::wstring& line) {
    return line.substr(
        0, line.find_first_not_of(L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_"));
}

// The words between the first "{" and the first "}"; none when these two do not stand in that order.
std::vector<std::wstring> WordsInBraces(const std::wstring& value) {
    const size_t open = value.find(L'{');
    const size_t close = value.find(L'}');
    if (open == std::wstring::npos || close == std::wstring::npos || close < open) {
        return {};
    }
    return SplitWords(value.substr(open + 1, close - open - 1));
}

std::wstring DottedText(const Arcs& arcs) {
    std::wstring text;
    for (const int32_t arc : arcs) {
        text += (text.empty() ? L"" : L".") + std::to_wstring(arc);
    }
    return text;
}

Arcs ArcsOf(const std::wstring& dotted) {
    Arcs arcs;
    std::wstring arc;
    for (const wchar_t character : dotted + L".") {
        if (character != L'.') {
            arc += character;
        } else {
            arcs.push_back(ParseDecimalInt(arc));
            arc.clear();
        }
    }
    return arcs;
}

// ---- Names and values

std::optional<Arcs> Resolve(const MibTables& tables, const std::wstring& name, int parents = 0) {
    if (parents > kMostParents) {
        return std::nullopt;
    }
    if (const auto builtin = kBuiltinNames.find(name); builtin != kBuiltinNames.end()) {
        return builtin->second;
    }
    if (const auto known = tables.oidOfName.find(name); known != tables.oidOfName.end()) {
        return ArcsOf(known->second);
    }
    const auto definition = tables.definitions.find(name);
    if (definition == tables.definitions.end()) {
        return std::nullopt;
    }
    std::optional<Arcs> arcs = Resolve(tables, definition->second.parent, parents + 1);
    if (arcs) {
        arcs->push_back(definition->second.subId);
    }
    return arcs;
}

void AddWord(const MibTables& tables, const std::wstring& word, Arcs& arcs) {
    const size_t open = word.find(L'(');
    const size_t close = word.find(L')');
    if (open != std::wstring::npos && close != std::wstring::npos && close > open + 1) {
        arcs.push_back(ParseDecimalInt(word.substr(open + 1, close - open - 1)));
    } else if (word.find_first_not_of(L"0123456789") == std::wstring::npos) {
        arcs.push_back(ParseDecimalInt(word));
    } else if (arcs.empty()) {
        arcs = Resolve(tables, word).value_or(Arcs());
    }
}

void StoreOid(const std::wstring& name, const std::wstring& oid, MibTables& tables) {
    tables.oidOfName[name] = oid;
    tables.nameOfOid.emplace(oid, name);  // the first name stays
}

void StoreValue(const std::wstring& name, const std::wstring& value, MibTables& tables) {
    const std::vector<std::wstring> words = WordsInBraces(value);
    if (words.size() >= 2 && ParseDecimalInt(words.back()) >= 0) {
        if (!tables.definitions.contains(name)) {
            tables.definedNames.push_back(name);
        }
        tables.definitions[name] = {words[words.size() - 2], ParseDecimalInt(words.back())};
        return;
    }
    Arcs arcs;
    for (const std::wstring& word : words) {
        AddWord(tables, word, arcs);
    }
    if (arcs.size() >= 2) {
        StoreOid(name, DottedText(arcs), tables);
    }
}

// ---- The real tables

// Whether a row stands where its key is looked for, by the reference and by the characters.
template <typename Table, typename Row>
bool IsFound(const Table& table, const Row& row) {
    return table.Find(row.key) == &row && table.Find(row.key.View()) == &row;
}

std::map<std::wstring, std::wstring> CopyTable(const TextTable<PooledText>& table) {
    std::map<std::wstring, std::wstring> copy;
    for (const auto& row : table.Rows()) {
        EXPECT_FALSE(row.key.View().empty());
        EXPECT_FALSE(row.value.View().empty());
        EXPECT_TRUE(IsFound(table, row)) << ::testing::PrintToString(std::wstring(row.key.View()));
        copy.emplace(row.key.View(), row.value.View());
    }
    return copy;
}

}  // namespace

void ParseByReference(const std::wstring& text, MibTables& tables) {
    const std::vector<std::wstring> lines = SplitLines(text);
    std::wstring name;
    for (size_t index = 0; index < lines.size(); ++index) {
        const std::wstring line = CleanLine(lines[index]);
        const bool named = Contains(line, L"OBJECT-TYPE") || Contains(line, L"OBJECT IDENTIFIER") ||
                           Contains(line, L"MODULE-IDENTITY");
        if (named && !FirstIdentifier(line).empty()) {
            name = FirstIdentifier(line);
        }
        if (!Contains(line, L"::=") || !Contains(line, L"{")) {
            continue;
        }
        std::wstring value = line;
        while (!Contains(value, L"}") && index + 1 < lines.size()) {
            value += L" " + CleanLine(lines[++index]);
        }
        if (!name.empty()) {
            StoreValue(name, value, tables);
        }
    }
}

void ResolveByReference(MibTables& tables) {
    std::vector<std::pair<std::wstring, std::wstring>> resolved;
    for (const std::wstring& name : tables.definedNames) {
        if (const std::optional<Arcs> arcs = Resolve(tables, name)) {
            resolved.emplace_back(name, DottedText(*arcs));
        }
    }
    for (const auto& [name, oid] : resolved) {
        StoreOid(name, oid, tables);
    }
}

MibTables CopyMibTables() {
    MibTables tables;
    for (const auto& row : PendingDefinitions.Rows()) {
        EXPECT_FALSE(row.key.View().empty());
        EXPECT_FALSE(row.value.parent.View().empty());
        EXPECT_TRUE(row.value.valid);
        EXPECT_TRUE(IsFound(PendingDefinitions, row))
            << ::testing::PrintToString(std::wstring(row.key.View()));
        const std::wstring name(row.key.View());
        tables.definedNames.push_back(name);
        tables.definitions[name] = {std::wstring(row.value.parent.View()), row.value.subId, row.value.valid};
    }
    tables.oidOfName = CopyTable(NameOidMap);
    tables.nameOfOid = CopyTable(OidNameMap);
    return tables;
}

void PrintTo(const MibTables& tables, std::ostream* out) {
    const auto quote = [](const std::wstring& text) { return ::testing::PrintToString(text); };
    for (const std::wstring& name : tables.definedNames) {
        *out << quote(name) << " < " << ::testing::PrintToString(tables.definitions.at(name)) << "\n";
    }
    for (const auto& [name, oid] : tables.oidOfName) {
        *out << quote(name) << " = " << quote(oid) << "\n";
    }
    for (const auto& [oid, name] : tables.nameOfOid) {
        *out << quote(oid) << " : " << quote(name) << "\n";
    }
}
