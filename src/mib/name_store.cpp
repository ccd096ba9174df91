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

bool IsUsable(const PendingDefinition& definition) {
    return definition.valid && definition.subId >= 0;
}

size_t PlaceOf(const PendingRow* row) {
    return static_cast<size_t>(row - PendingDefinitions.Rows().data());
}

// The key's text in the pool, added if the table does not have it there already.
template <typename Value>
PooledText KeepKey(const TextTable<Value>& table, const TextKey& key) {
    const auto* row = table.Find(key);
    return row == nullptr ? KeepText(key) : row->key;
}

// The row of PendingDefinitions that was stored last. What is stored next mostly has the same parent (the
// columns of a table) or that row's name as its parent, which then need not be looked up.
size_t LastStoredPlace = 0;

const PendingRow* LastStoredRow() {
    const auto& rows = PendingDefinitions.Rows();
    return LastStoredPlace < rows.size() ? &rows[LastStoredPlace] : nullptr;
}

PooledText KeepParent(std::wstring_view parent) {
    if (const PendingRow* last = LastStoredRow()) {
        for (const PooledText known : {last->value.parent, last->key}) {
            if (known.View() == parent) {
                return known;
            }
        }
    }
    return KeepKey(PendingDefinitions, parent);
}

template <typename Value>
void AddOrReplace(TextTable<Value>& table, PooledText key, const Value& value) {
    if (auto* row = table.Find(key)) {
        row->value = value;
    } else {
        table.Add(key, value);
    }
}

void NameOidUnlessNamed(PooledText oid, PooledText name) {
    if (OidNameMap.Find(oid) == nullptr) {
        OidNameMap.Add(oid, name);
    }
}

// How far the resolving of all definitions has come with one of them.
struct RowState {
    enum Stage : uint8_t { Unseen, OnTheWay, Resolved, Unresolvable };
    Stage stage = Unseen;
    uint8_t steps = 0;  // parents on the way to a name that was known before
    PooledText oid;
};
using RowStates = std::vector<RowState>;

// A name that is known already is not resolved by its definition, and a built-in name has the last word.
void SetKnownNames(RowStates& states) {
    for (const auto& known : NameOidMap.Rows()) {
        if (const PendingRow* row = PendingDefinitions.Find(known.key)) {
            states[PlaceOf(row)] = {RowState::Resolved, 0, known.value};
        }
    }
    for (const BuiltinName& builtin : BuiltinNames) {
        if (const PendingRow* row = PendingDefinitions.Find(builtin.name)) {
            states[PlaceOf(row)] = {RowState::Resolved, 0, KeepText(builtin.oid)};
        }
    }
}

// Where a climb ended.
struct Foothold {
    size_t steps = 0;
    std::wstring_view oid;  // empty: nowhere
};

// Climbs from a row to the first one that is decided or a name that is no row, noting the rows left behind.
Foothold Climb(RowStates& states, size_t place, std::vector<size_t>& way) {
    for (;;) {
        RowState& state = states[place];
        if (state.stage != RowState::Unseen) {
            // A row on the way closes a circle; its identifier is empty, like that of an unresolvable one.
            return {state.steps, state.oid.View()};
        }
        state.stage = RowState::OnTheWay;
        way.push_back(place);
        const PendingDefinition& definition = PendingDefinitions.Rows()[place].value;
        if (!IsUsable(definition)) {
            return {};
        }
        const TextKey parent(definition.parent);
        const PendingRow* row = PendingDefinitions.Find(parent);
        if (row == nullptr) {
            return {0, FindKnownOid(parent)};
        }
        place = PlaceOf(row);
    }
}

// Decides the rows left behind, from the top down.
void Descend(RowStates& states, Foothold foothold, std::vector<size_t>& way) {
    if (way.empty()) {
        return;
    }
    std::wstring oid(foothold.oid);
    for (; !way.empty(); way.pop_back()) {
        RowState& state = states[way.back()];
        if (oid.empty() || ++foothold.steps > kMaxParentSteps) {
            state.stage = RowState::Unresolvable;
            continue;
        }
        oid.push_back(L'.');
        AppendSignedDecimal(oid, PendingDefinitions.Rows()[way.back()].value.subId);
        state = {RowState::Resolved, static_cast<uint8_t>(foothold.steps), KeepText(oid)};
    }
}

}  // namespace

void LookupOidName(std::wstring_view oid, std::wstring& name) {
    const std::lock_guard lock(MibStoreLock);
    // Without MIB files, as on a fresh installation, hashing would be an eighth of a trap's decoding,
    // for nothing.
    const auto* row = OidNameMap.Count() == 0 ? nullptr : OidNameMap.Find(oid);
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
        const PendingRow* row = PendingDefinitions.Find(key);
        if (row == nullptr || !IsUsable(row->value)) {
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
        LastStoredPlace = PlaceOf(row);
    } else {
        PendingDefinitions.Add(KeepText(key), definition);
        LastStoredPlace = PendingDefinitions.Count() - 1;
    }
}

void StoreNamedOid(std::wstring_view name, std::wstring_view oid) {
    const PooledText keptName = KeepKey(NameOidMap, name);
    const PooledText keptOid = KeepKey(OidNameMap, oid);
    AddOrReplace(NameOidMap, keptName, keptOid);
    NameOidUnlessNamed(keptOid, keptName);
}

// What a name stands for is worked out once and its children build on it, so the time is linear however
// long the chains are. Whether a name resolves depends on its distance to a name that was known before, not
// on what was resolved first: otherwise a chain of n definitions could make identifiers of n arcs, n times
// n in all.
void StoreResolvedDefinitions() {
    const auto& rows = PendingDefinitions.Rows();
    RowStates states(rows.size());
    std::vector<size_t> way;
    SetKnownNames(states);
    for (size_t place = 0; place < rows.size(); ++place) {
        Descend(states, Climb(states, place, way), way);
        if (states[place].stage == RowState::Resolved) {
            AddOrReplace(NameOidMap, rows[place].key, states[place].oid);
            NameOidUnlessNamed(states[place].oid, rows[place].key);
        }
    }
}

void ClearNameStore() {
    LastStoredPlace = 0;
    PendingDefinitions.Clear();
    NameOidMap.Clear();
    OidNameMap.Clear();
    ClearTextPool();
}
