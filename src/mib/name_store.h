// The name store: maps object identifiers to the names that MIB files define for them. Each name and each
// identifier is stored once and referred to by its address, so that long ones are not copied, hashed and
// compared again for each definition that refers to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Guards the tables and everything in them. Locked for a whole load (including the log line at its end), for
// one lookup, or to read the count.
//
// Lock order: MibStoreLock before FileLock (core/data_files.h), never the other way.
extern std::mutex MibStoreLock;

// An object identifier: its last arc, and the identifier without that arc (null for the first arc). Equal
// identifiers have the same address, see StoreOid.
struct Oid {
    const Oid* parent = nullptr;
    int32_t arc = 0;

    bool operator==(const Oid&) const = default;
};

// Hashes the arc together with an address that no file can know, so that no file can choose arcs that share a
// bucket, and adds the parent's address.
struct OidHash {
    size_t operator()(const Oid& oid) const;
};

struct MibName;

// Defines a name as the arc `subId` below `parent`, which may not be resolved yet.
struct PendingDefinition {
    MibName* parent = nullptr;
    int32_t subId = -1;
    bool valid = false;  // false: the name has no such definition
};

// Everything known about a name.
struct MibName {
    std::wstring_view text;    // the name itself, a view of its key in NameOidMap
    const Oid* oid = nullptr;  // its identifier, if built in, read in full or resolved
    bool isBuiltin = false;    // true: MIB files do not change `oid`
    PendingDefinition definition;
};

struct TextHash {
    using is_transparent = void;
    size_t operator()(std::wstring_view text) const { return std::hash<std::wstring_view>{}(text); }
};

// Filled by a load on the GUI thread, and only read between loads. Names are never empty, identifiers never
// null.
extern std::unordered_map<const Oid*, const MibName*> OidNameMap;  // the first name stored for an identifier
extern std::unordered_map<std::wstring, MibName, TextHash, std::equal_to<>> NameOidMap;  // every name seen
extern std::vector<MibName*> PendingDefinitions;  // names with a definition, in order of their first one

// Replaces `name` with the name of exactly this identifier (decimal arcs joined by "."), or empties it if
// there is none. Prefixes are not searched: with an instance suffix such as ".0" it is another identifier.
// Locks MibStoreLock. May throw std::bad_alloc.
void LookupOidName(std::wstring_view oid, std::wstring& name);

// Returns the low 32 bits of the number of identifiers that have a name. Locks MibStoreLock.
int32_t CountOidNames();

// Returns the arcs of dotted text, each parsed by ParseDecimalInt. Empty pieces are skipped.
std::vector<int32_t> ParseOidText(std::wstring_view text);

// Returns the identifier of `name`: its own if it has one, otherwise by following its pending definition from
// parent to parent. Null if a parent is unknown or there are more than 64 of them, which also ends cycles.
// May throw std::bad_alloc. The caller must hold MibStoreLock.
const Oid* ResolveName(const MibName& name);

// The functions below fill the tables. The caller must hold MibStoreLock. They may throw std::bad_alloc; the
// tables are consistent then and lack at most what was being stored.

// Returns the entry of a name, which must not be empty, and adds it if it is new. Its address is valid until
// ClearNameStore.
MibName& StoreName(std::wstring_view text);

// Returns the identifier `arc` below `parent` (null: the identifier that has only this arc) and adds it if it
// is new. Its address is valid until ClearNameStore.
const Oid* StoreOid(const Oid* parent, int32_t arc);

// Defines `name` as the arc `subId` below `parent`. Replaces an earlier definition.
void StoreDefinition(MibName& name, MibName& parent, int32_t subId);

// Makes `oid` the identifier of `name`, except for a built-in name, and makes `name` the name of `oid`,
// except if `oid` already has one.
void StoreNamedOid(MibName& name, const Oid* oid);

// Resolves the pending definitions in order and stores each result with StoreNamedOid, so that later
// definitions can build on it. Definitions that do not resolve are ignored. If two names resolve to the same
// identifier, the one defined first is used.
void StoreResolvedDefinitions();

// Empties the tables and frees their memory.
void ClearNameStore();
