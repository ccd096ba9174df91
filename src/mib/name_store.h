// What the MIB files define: a name for each object identifier, and what each name stands for. Every name and
// every identifier is stored once and referred to by its address, so that nothing is copied, hashed or
// compared again for each value that refers to it, however long it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Guards the tables and everything in them. Locked for a whole load (with the log line at its end), for one
// lookup, or for reading the count. Lock order: MibStoreLock before FileLock (core/data_files.h), never the
// other way.
extern std::mutex MibStoreLock;

// An object identifier: an arc below the identifier without it, which is null for the first arc. Equal
// identifiers have one address, see StoreOid.
struct Oid {
    const Oid* parent = nullptr;
    int32_t arc = 0;

    bool operator==(const Oid&) const = default;
};

struct MibName;

// A definition whose parent may not be known yet: the arc `subId` below `parent`.
struct PendingDefinition {
    MibName* parent = nullptr;
    int32_t subId = -1;
    bool valid = false;  // set whenever one is stored
};

// What is known of a name.
struct MibName {
    std::wstring_view text;    // the name itself: the key of its row
    const Oid* oid = nullptr;  // what it stands for without any definition; null: nothing
    bool isBuiltin = false;    // no file changes `oid`
    PendingDefinition definition;
};

struct TextHash {
    using is_transparent = void;
    size_t operator()(std::wstring_view text) const { return std::hash<std::wstring_view>{}(text); }
};

// Filled by a load on the GUI thread and only read in between. Names are never empty, identifiers never null.
extern std::unordered_map<const Oid*, const MibName*> OidNameMap;  // the first name of an identifier stays
extern std::unordered_map<std::wstring, MibName, TextHash, std::equal_to<>> NameOidMap;  // every name seen
extern std::vector<MibName*> PendingDefinitions;  // names with a definition, in the order of their first one

// Replaces `name` by the name stored for exactly this dotted identifier (decimal arcs joined by "."), or
// empties it. No prefix search: an instance suffix such as ".0" makes another identifier. Allocates nothing
// but what `name` needs. Locks MibStoreLock for the lookup and the copy.
void LookupOidName(std::wstring_view oid, std::wstring& name);

// The number of identifiers that have a name, low 32 bits. Locks MibStoreLock.
int32_t CountOidNames();

// The arcs of dotted text. Empty pieces are skipped; a piece is read as ParseDecimalInt reads it.
std::vector<int32_t> ParseOidText(std::wstring_view text);

// What `name` stands for. Null: the name, or a parent on its way to a known one, is unknown, or the way takes
// more than 64 steps, which is also what ends a circle. A built-in name wins over a learnt identifier, and
// that over a pending definition. May throw std::bad_alloc. Caller holds MibStoreLock.
const Oid* ResolveName(const MibName& name);

// The writers, for the parser and the load. Caller holds MibStoreLock; when memory runs out (std::bad_alloc)
// the tables are whole and lack at most what was being stored.

// The row of a name, which is not empty; added when it is new. It does not move until ClearNameStore.
MibName& StoreName(std::wstring_view text);

// The identifier `arc` below `parent` (null: of that arc alone); added when it is new, and does not move.
const Oid* StoreOid(const Oid* parent, int32_t arc);

// Defines `name` as the arc `subId` below `parent`. The last definition counts.
void StoreDefinition(MibName& name, MibName& parent, int32_t subId);

// Makes `name` stand for `oid`, and `oid` be shown as `name` unless it has a name.
void StoreNamedOid(MibName& name, const Oid* oid);

// Names what the pending definitions stand for; those that do not resolve change nothing. When two names
// reach one identifier, the one defined first gives its name.
void StoreResolvedDefinitions();

// Empties the tables and frees their memory.
void ClearNameStore();
