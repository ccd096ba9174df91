// Fills and reads the tables of the name store as text.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "mib/mib_parser.h"
#include "mib/name_store.h"

// Empties the tables before and after a test.
class FreshNameStore {
  public:
    FreshNameStore() { Clear(); }
    ~FreshNameStore() { Clear(); }
    FreshNameStore(const FreshNameStore&) = delete;
    FreshNameStore& operator=(const FreshNameStore&) = delete;

  private:
    static void Clear() {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
    }
};

// ---- Filling. The caller holds MibStoreLock if another thread reads.

inline const Oid* StoreOid(std::wstring_view text) {
    const Oid* oid = nullptr;
    for (const int32_t arc : ParseOidText(text)) {
        oid = StoreOid(oid, arc);
    }
    return oid;
}

inline void StoreNamedOid(std::wstring_view name, std::wstring_view oid) {
    StoreNamedOid(StoreName(name), StoreOid(oid));
}

inline void StoreDefinition(std::wstring_view name, std::wstring_view parent, int32_t subId) {
    StoreDefinition(StoreName(name), StoreName(parent), subId);
}

// These two lock it themselves.
inline void ParseText(std::wstring_view text) {
    const std::lock_guard lock(MibStoreLock);
    ParseMibText(text);
}

inline void ResolveAll() {
    const std::lock_guard lock(MibStoreLock);
    StoreResolvedDefinitions();
}

// ---- Reading. The caller does not hold MibStoreLock unless the comment says so.

// The decimal arcs joined by "."; empty for null.
inline std::wstring FormatOid(const Oid* oid) {
    std::vector<int32_t> arcs;  // in reverse order
    for (; oid != nullptr; oid = oid->parent) {
        arcs.push_back(oid->arc);
    }
    std::wstring text;
    for (auto arc = arcs.rbegin(); arc != arcs.rend(); ++arc) {
        text += (text.empty() ? L"" : L".") + std::to_wstring(*arc);
    }
    return text;
}

struct Definition {
    std::wstring parent;
    int32_t subId = 0;
    bool valid = true;

    bool operator==(const Definition&) const = default;
};

inline void PrintTo(const Definition& definition, std::ostream* out) {
    *out << ::testing::PrintToString(definition.parent) << " " << definition.subId << " " << definition.valid;
}

inline std::optional<Definition> DefinitionOf(std::wstring_view name) {
    const std::lock_guard lock(MibStoreLock);
    const auto row = NameOidMap.find(name);
    if (row == NameOidMap.end() || row->second.definition.parent == nullptr) {
        return std::nullopt;
    }
    const PendingDefinition& definition = row->second.definition;
    return Definition{std::wstring(definition.parent->text), definition.subId, definition.valid};
}

// The identifier of a name, empty if it has none.
inline std::wstring OidOf(std::wstring_view name) {
    const std::lock_guard lock(MibStoreLock);
    return FormatOid(ResolveName(StoreName(name)));
}

inline std::wstring NameOf(std::wstring_view oid) {
    std::wstring name = L"left over";
    LookupOidName(oid, name);
    return name;
}

inline size_t CountDefinitions() {
    const std::lock_guard lock(MibStoreLock);
    return PendingDefinitions.size();
}

// The table of names, as text. The caller holds MibStoreLock.
inline std::map<std::wstring, std::wstring> CopyOidNames() {
    std::map<std::wstring, std::wstring> names;
    for (const auto& [oid, name] : OidNameMap) {
        names.emplace(FormatOid(oid), name->text);
    }
    return names;
}
