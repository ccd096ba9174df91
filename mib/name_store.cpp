#include "mib/name_store.h"

#include <algorithm>

#include "core/decimal_text.h"

std::mutex MibStoreLock;

TextTable<PooledText> OidNameMap;
TextTable<PooledText> NameOidMap;
TextTable<PendingDefinition> PendingDefinitions;

namespace {

constexpr size_t kMaxParentSteps = 64;

struct BuiltinName {
    std::wstring_view name;
    std::wstring_view oid;
};

// The roots that MIB files build on without defining them. They only resolve parents: an identifier is shown
// with a name when a file defines it, even one of these.
constexpr BuiltinName BuiltinNames[] = {
    {L"iso", L"1"},
    {L"org", L"1.3"},
    {L"dod", L"1.3.6"},
    {L"internet", L"1.3.6.1"},
    {L"directory", L"1.3.6.1.1"},
    {L"mgmt", L"1.3.6.1.2"},
    {L"mib-2", L"1.3.6.1.2.1"},
    {L"transmission", L"1.3.6.1.2.1.10"},
    {L"experimental", L"1.3.6.1.3"},
    {L"private", L"1.3.6.1.4"},
    {L"enterprises", L"1.3.6.1.4.1"},
    {L"security", L"1.3.6.1.5"},
    {L"snmpV2", L"1.3.6.1.6"},
    {L"snmpModules", L"1.3.6.1.6.3"},
};

// What is known of a name without following parents; empty: nothing.
std::wstring_view FindKnownOid(const TextKey& name) {
    for (const BuiltinName& builtin : BuiltinNames) {
        if (builtin.name == name.text) {
            return builtin.oid;
        }
    }
    const auto* row = NameOidMap.Find(name);
    return row == nullptr ? std::wstring_view() : row->value.View();
}

using PendingRow = TextTable<PendingDefinition>::Row;

const PendingRow* FindUsableDefinition(const TextKey& name) {
    const PendingRow* row = PendingDefinitions.Find(name);
    return row != nullptr && row->value.valid && row->value.subId >= 0 ? row : nullptr;
}

// A parent mostly has its text in the pool already: it is the parent of the definition before (the columns of a
// table), or was defined just before or earlier.
PooledText KeepParent(std::wstring_view parent) {
    if (const auto& rows = PendingDefinitions.Rows(); !rows.empty()) {
        for (const PooledText known : {rows.back().value.parent, rows.back().key}) {
            if (known.View() == parent) {
                return known;
            }
        }
    }
    const auto* row = PendingDefinitions.Find(parent);
    return row != nullptr ? row->key : KeepText(parent);
}

template <typename Value>
void AddOrReplace(TextTable<Value>& table, const TextKey& key, PooledText kept, const Value& value) {
    if (auto* row = table.Find(key)) {
        row->value = value;
    } else {
        table.Add(key, kept, value);
    }
}

void NameOidUnlessNamed(PooledText oid, PooledText name) {
    const TextKey key(oid.View());
    if (OidNameMap.Find(key) == nullptr) {
        OidNameMap.Add(key, oid, name);
    }
}

constexpr uint32_t kNoRow = 0xFFFFFFFF;

// What a definition stands below: another row, or else an identifier that was known before.
struct ParentLink {
    uint32_t row = kNoRow;
    std::wstring_view oid;
};

ParentLink LinkParent(PooledText parent) {
    const TextKey key(parent.View());
    if (const PendingRow* row = PendingDefinitions.Find(key)) {
        return {static_cast<uint32_t>(row - PendingDefinitions.Rows().data()), {}};
    }
    return {kNoRow, FindKnownOid(key)};
}

// How far the resolving of all definitions has come.
struct RowState {
    enum Stage : uint8_t { Unseen, OnTheWay, Resolved, Unresolvable };
    Stage stage = Unseen;
    uint8_t steps = 0;  // to a name that was known before
    PooledText oid;
};
using RowStates = std::vector<RowState>;

void SetKnown(RowStates& states, std::wstring_view name, PooledText oid) {
    if (const PendingRow* row = PendingDefinitions.Find(name)) {
        states[static_cast<size_t>(row - PendingDefinitions.Rows().data())] = {RowState::Resolved, 0, oid};
    }
}

// A name that is known already is not resolved by its definition; a built-in name has the last word.
void SetKnownNames(RowStates& states) {
    for (const auto& row : NameOidMap.Rows()) {
        SetKnown(states, row.key.View(), row.value);
    }
    for (const BuiltinName& builtin : BuiltinNames) {
        SetKnown(states, builtin.name, KeepText(builtin.oid));
    }
}

}  // namespace

void LookupOidName(std::wstring_view oid, std::wstring& name) {
    const TextKey key(oid);
    const std::lock_guard lock(MibStoreLock);
    const auto* row = OidNameMap.Find(key);
    name.assign(row == nullptr ? std::wstring_view() : row->value.View());
}

int32_t CountOidNames() {
    const std::lock_guard lock(MibStoreLock);
    return static_cast<int32_t>(static_cast<uint32_t>(OidNameMap.Count()));
}

std::vector<int32_t> ParseOidText(std::wstring_view text) {
    std::vector<int32_t> arcs;
    while (!text.empty()) {
        const std::wstring_view piece = text.substr(0, text.find(L'.'));
        if (!piece.empty()) {
            arcs.push_back(ParseDecimalInt(piece));
        }
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
    }
    return arcs;
}

std::wstring FormatOidText(const std::vector<int32_t>& arcs) {
    std::wstring text;
    for (const int32_t arc : arcs) {
        if (!text.empty()) {
            text.push_back(L'.');
        }
        AppendSignedDecimal(text, arc);
    }
    return text;
}

// A loop from the name up to a known one instead of a call for each parent: it needs no list for each step.
bool ResolveName(std::wstring_view name, std::vector<int32_t>& arcs, size_t depth) {
    std::vector<int32_t> below;  // the last arc first
    for (; depth <= kMaxParentSteps; ++depth) {
        const TextKey key(name);
        if (const std::wstring_view known = FindKnownOid(key); !known.empty()) {
            arcs = ParseOidText(known);
            arcs.insert(arcs.end(), below.rbegin(), below.rend());
            return true;
        }
        const PendingRow* row = FindUsableDefinition(key);
        if (row == nullptr) {
            return false;
        }
        below.push_back(row->value.subId);
        name = row->value.parent.View();
    }
    return false;
}

std::wstring NameToOidText(std::wstring_view name) {
    std::vector<int32_t> arcs;
    ResolveName(name, arcs);
    return FormatOidText(arcs);
}

void StoreDefinition(std::wstring_view name, std::wstring_view parent, int32_t subId) {
    const TextKey key(name);
    const PendingDefinition definition{KeepParent(parent), subId, true};
    if (auto* row = PendingDefinitions.Find(key)) {
        row->value = definition;
    } else {
        PendingDefinitions.Add(key, KeepText(name), definition);
    }
}

void StoreNamedOid(std::wstring_view name, std::wstring_view oid) {
    const PooledText keptName = KeepText(name);
    const PooledText keptOid = KeepText(oid);
    AddOrReplace(NameOidMap, name, keptName, keptOid);
    NameOidUnlessNamed(keptOid, keptName);
}

// By hash, because in the order of the files a chain of n definitions, each below the one before, would resolve
// to identifiers of up to n arcs: time and memory n times n. By hash the limit on parent steps keeps identifiers
// short, and what lies within that limit resolves in any order. The names are given in the order of definition
// afterwards, so that which of two names an identifier gets does not hang on a hash.
void StoreResolvedDefinitions() {
    const auto& rows = PendingDefinitions.Rows();
    Resolution resolution{rows, LinkDefinitions(), std::vector<PooledText>(rows.size()), {}};
    std::wstring oid;
    PendingDefinitions.VisitByHash([&](size_t row) {
        BuildOid(resolution, row, oid);
        if (!oid.empty()) {
            resolution.oids[row] = KeepText(oid);
            AddOrReplace(NameOidMap, rows[row].key.View(), rows[row].key, resolution.oids[row]);
        }
    });
    for (size_t row = 0; row < rows.size(); ++row) {
        if (resolution.oids[row].reference != 0) {
            NameOidUnlessNamed(resolution.oids[row], rows[row].key);
        }
    }
}

void ClearNameStore() {
    PendingDefinitions.Clear();
    NameOidMap.Clear();
    OidNameMap.Clear();
    ClearTextPool();
}
