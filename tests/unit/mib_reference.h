// What MIB texts store, worked out a second time in the plainest way: texts are cut into lines and copied at
// every step, and nothing is searched ahead or remembered. It knows the rules of mib/mib_parser.h and
// mib/name_store.h, shares no code with them but the reading of numbers and white space, and is far too slow
// to ship.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/mib_tables.h"

// The three tables.
struct MibTables {
    std::vector<std::wstring> definedNames;          // in the order in which they were first defined
    std::map<std::wstring, Definition> definitions;  // by name
    std::map<std::wstring, std::wstring> oidOfName;
    std::map<std::wstring, std::wstring> nameOfOid;

    size_t CountRows() const { return definitions.size() + oidOfName.size() + nameOfOid.size(); }
    bool operator==(const MibTables&) const = default;
};

void PrintTo(const MibTables& tables, std::ostream* out);

// Adds what the text defines, as ParseMibText does.
void ParseByReference(const std::wstring& text, MibTables& tables);

// Adds what the definitions resolve to, as StoreResolvedDefinitions does.
void ResolveByReference(MibTables& tables);

// The content of the tables of mib/name_store.h. The test fails when a row is not found by its key or a text
// is empty that must not be. Caller holds MibStoreLock.
MibTables CopyMibTables();
