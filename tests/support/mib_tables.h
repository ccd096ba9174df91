// Looking into the tables of the MIB name store, and filling them from text, with MibStoreLock held as in
// a load.
#pragma once

#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "mib/mib_parser.h"
#include "mib/name_store.h"

// Empty tables for one test, and empty ones for the next.
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
    const auto* row = PendingDefinitions.Find(name);
    if (row == nullptr) {
        return std::nullopt;
    }
    return Definition{std::wstring(row->value.parent.View()), row->value.subId, row->value.valid};
}

// Empty: none.
inline std::wstring OidOf(std::wstring_view name) {
    const std::lock_guard lock(MibStoreLock);
    const auto* row = NameOidMap.Find(name);
    return row == nullptr ? std::wstring() : std::wstring(row->value.View());
}

inline std::wstring NameOf(std::wstring_view oid) {
    std::wstring name = L"left over";
    LookupOidName(oid, name);
    return name;
}

inline size_t CountDefinitions() {
    const std::lock_guard lock(MibStoreLock);
    return PendingDefinitions.Count();
}

inline void ParseText(std::wstring_view text) {
    const std::lock_guard lock(MibStoreLock);
    ParseMibText(text);
}

inline void ResolveAll() {
    const std::lock_guard lock(MibStoreLock);
    StoreResolvedDefinitions();
}
