// What the MIB files taught: names for numeric object identifiers, and the road from a symbolic parent to its
// arcs. An identifier is held as dotted text (decimal arcs joined by ".", none at the ends) or as a list of
// arcs, each a 32-bit signed integer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "mib/text_pool.h"
#include "mib/text_table.h"

// Guards the three tables and the text pool. Held for a whole load (with the log line at its end), for one
// lookup, or for reading the count. Lock order: MibStoreLock before FileLock (core/data_files.h), never the
// other way.
extern std::mutex MibStoreLock;

// A definition whose parent may not be known yet: the arc `subId` below `parent`.
struct PendingDefinition {
    PooledText parent;  // as the file has it, name or not
    int32_t subId = -1;
    bool valid = false;  // set whenever one is stored
};

// The tables are filled by a load on the GUI thread and only read in between. Keys are never empty.
extern TextTable<PooledText> OidNameMap;                 // dotted text to name; the first name stays
extern TextTable<PooledText> NameOidMap;                 // name to dotted text; the last one stays
extern TextTable<PendingDefinition> PendingDefinitions;  // by name; the last one stays

// Replaces `name` by the name stored for exactly this dotted identifier, or empties it. No prefix search: an
// instance suffix such as ".0" makes another identifier. Takes MibStoreLock for the lookup and the copy.
void LookupOidName(std::wstring_view oid, std::wstring& name);

// The number of identifiers that have a name, low 32 bits. Takes MibStoreLock.
int32_t CountOidNames();

// The arcs of dotted text. Empty pieces are skipped; a piece is read as ParseDecimalInt reads it.
std::vector<int32_t> ParseOidText(std::wstring_view text);

// The dotted text of the arcs, empty for none. A negative arc keeps its sign.
std::wstring FormatOidText(const std::vector<int32_t>& arcs);

// True: `arcs` is what `name` stands for. False, `arcs` untouched: the name, or a parent on its way to a
// known one, is unknown, or the way takes more than 64 - `depth` steps, which is also what ends a circle. A
// built-in name wins over a learnt identifier, and that over a pending definition. Callers start with depth
// 0. Caller holds MibStoreLock.
bool ResolveName(std::wstring_view name, std::vector<int32_t>& arcs, size_t depth = 0);

// The dotted text that `name` stands for, empty when ResolveName fails. Caller holds MibStoreLock.
std::wstring NameToOidText(std::wstring_view name);

// The writers, for the parser and the load. None takes an empty text. Caller holds MibStoreLock; when memory
// runs out (std::bad_alloc) the tables are whole and lack at most what was being stored.

// PendingDefinitions[name] := {parent, subId, true}.
void StoreDefinition(std::wstring_view name, std::wstring_view parent, int32_t subId);

// NameOidMap[name] := oid, and OidNameMap[oid] := name unless that identifier has a name.
void StoreNamedOid(std::wstring_view name, std::wstring_view oid);

// Resolves every pending definition into the other two tables; what does not resolve is left as it is. When
// two names reach one identifier, the one defined first gives its name.
void StoreResolvedDefinitions();

// Empties the tables and gives their memory back.
void ClearNameStore();
