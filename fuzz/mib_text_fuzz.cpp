// Promises about a MIB file: whatever it holds, the tables have no empty key and no name without an
// identifier; a name table's identifier is dotted decimal and every learnt name's identifier has a name;
// there are no more names than values in the file; the same file gives the same tables, and so does an ASCII
// file made wide.
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "fuzz/fuzz_targets.h"
#include "fuzz/promise.h"
#include "mib/mib_parser.h"
#include "mib/mib_text.h"
#include "mib/name_store.h"

namespace {

size_t CountAssignments(std::wstring_view text) {
    size_t count = 0;
    for (size_t at = text.find(L"::="); at != std::wstring_view::npos; at = text.find(L"::=", at + 3)) {
        ++count;
    }
    return count;
}

using Rows = std::vector<std::pair<std::wstring, std::wstring>>;

Rows CopyRows(const TextTable<PooledText>& table) {
    Rows rows;
    for (const auto& row : table.Rows()) {
        rows.emplace_back(row.key.View(), row.value.View());
    }
    return rows;
}

// Fills the tables as a load of one file does, and returns what the name table holds.
template <typename Text>
Rows LoadText(const Text& text) {
    ClearNameStore();
    ParseMibText(text);
    StoreResolvedDefinitions();
    return CopyRows(OidNameMap);
}

void CheckOidText(std::wstring_view oid) {
    // One arc alone is what a file gives that defines "iso" itself: the built-in root wins over its value.
    Promise(oid == L"1" || oid.find(L'.') != std::wstring_view::npos, "an identifier has two arcs or more");
    Promise(FormatOidText(ParseOidText(oid)) == oid, "an identifier is dotted decimal");
}

void CheckTables() {
    for (const auto& row : OidNameMap.Rows()) {
        CheckOidText(row.key.View());
        Promise(!row.value.View().empty(), "no identifier has an empty name");
        Promise(NameOidMap.Find(row.value.View()) != nullptr, "no unresolved name in the name table");
    }
    for (const auto& row : NameOidMap.Rows()) {
        Promise(!row.key.View().empty(), "no empty name");
        Promise(OidNameMap.Find(row.value.View()) != nullptr, "every learnt identifier has a name");
    }
    for (const auto& row : PendingDefinitions.Rows()) {
        Promise(!row.key.View().empty() && !row.value.parent.View().empty(),
                "no empty name, no empty parent");
        Promise(row.value.valid && row.value.subId >= 0, "what is stored is usable");
    }
}

bool LiesWithin(std::wstring_view part, std::wstring_view whole) {
    return part.empty() ||
           (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

// The tools under the parser, on a whole text as one line.
void CheckLineTools(std::wstring_view line) {
    Promise(StripComment(line).find(L"--") == std::wstring_view::npos, "no comment is left");
    const std::wstring_view trimmed = TrimSpace(line);
    Promise(TrimSpace(trimmed) == trimmed && LiesWithin(trimmed, line), "trimming is done once");
    Promise(LiesWithin(LeadingIdentifier(trimmed), trimmed), "an identifier stands in its line");
    std::wstring_view parent;
    int32_t subId = 0;
    const bool found = ParseParentAndSubId(line, &parent, &subId);
    Promise(!found || (!parent.empty() && subId >= 0), "the short form has a parent and a number");
    Promise(LiesWithin(parent, line), "a parent stands in its statement");
}

}  // namespace

void CheckMibText(const uint8_t* octets, size_t size) {
    const MibText text = DecodeMibText({reinterpret_cast<const char*>(octets), size});
    const std::wstring wide = std::visit(
        [](const auto& characters) { return std::wstring(characters.begin(), characters.end()); }, text);
    CheckLineTools(wide);
    const std::lock_guard lock(MibStoreLock);
    const auto load = [&] {
        return std::visit([](const auto& characters) { return LoadText(characters); }, text);
    };
    const Rows names = load();
    CheckTables();
    Promise(names.size() <= CountAssignments(wide), "no more names than values in the file");
    Promise(load() == names, "the same file gives the same names");
    Promise(LoadText(wide) == names, "narrow and wide text give the same names");
    ClearNameStore();
}
