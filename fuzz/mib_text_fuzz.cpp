// Promises about a MIB file: whatever it contains, the tables have no empty name; each identifier with a name
// has two arcs or more and is found only by its dotted text; there are no more names than values in the file;
// the same file gives the same names.
#include <map>
#include <mutex>
#include <string>

#include "fuzz/fuzz_targets.h"
#include "fuzz/promise.h"
#include "mib/mib_parser.h"
#include "mib/mib_text.h"
#include "mib/name_store.h"
#include "platform/text_decoding.h"
#include "tests/support/mib_tables.h"

namespace {

size_t CountAssignments(std::wstring_view text) {
    size_t count = 0;
    for (size_t at = text.find(L"::="); at != std::wstring_view::npos; at = text.find(L"::=", at + 3)) {
        ++count;
    }
    return count;
}

using Names = std::map<std::wstring, std::wstring>;  // by identifier

// Fills the tables as a load of one file does, and returns the name table.
Names LoadText(std::wstring_view text) {
    const std::lock_guard lock(MibStoreLock);
    ClearNameStore();
    ParseMibText(text);
    StoreResolvedDefinitions();
    return CopyOidNames();
}

void CheckTables() {
    const std::lock_guard lock(MibStoreLock);
    for (const auto& [text, name] : NameOidMap) {
        Promise(!text.empty() && name.text == text, "no name is empty, and each is its own key");
    }
    for (const auto& [oid, name] : OidNameMap) {
        // Only a file that defines "iso" itself gives one arc: the built-in root wins over its value.
        Promise(oid->parent != nullptr || oid->arc == 1, "an identifier has two arcs or more");
        Promise(ResolveName(*name) != nullptr, "no name in the name table is unresolved");
    }
    for (const MibName* name : PendingDefinitions) {
        Promise(name->definition.valid && name->definition.subId >= 0, "pending definitions are valid");
    }
}

void CheckLookups(const Names& names) {
    for (const auto& [oid, name] : names) {
        Promise(NameOf(oid) == name, "a name is found by its identifier");
        Promise(NameOf(oid + L".").empty() && NameOf(L"0" + oid).empty(), "a name is found by no other text");
    }
}

bool LiesWithin(std::wstring_view part, std::wstring_view whole) {
    return part.empty() ||
           (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

// The parser's helpers, with the whole text as one line.
void CheckLineFunctions(std::wstring_view line) {
    Promise(StripComment(line).find(L"--") == std::wstring_view::npos, "no comment is left");
    Promise(LiesWithin(LeadingIdentifier(line), line), "an identifier is in its line");
    std::wstring_view parent;
    int32_t subId = 0;
    const bool found = ParseParentAndSubId(line, &parent, &subId);
    Promise(!found || (!parent.empty() && subId >= 0), "the short form has a parent and a number");
    Promise(LiesWithin(parent, line), "a parent is in its statement");
}

}  // namespace

void CheckMibText(const uint8_t* octets, size_t size) {
    std::wstring text;
    DecodeUtf8OrAnsi({reinterpret_cast<const char*>(octets), size}, text);
    CheckLineFunctions(text);
    const Names names = LoadText(text);
    CheckTables();
    CheckLookups(names);
    Promise(names.size() <= CountAssignments(text), "no more names than values in the file");
    Promise(LoadText(text) == names, "the same file gives the same names");
    LoadText(L"");
}
