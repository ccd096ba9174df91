#include "mib/name_store.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "core/decimal_text.h"

std::mutex MibStoreLock;

std::unordered_map<const Oid*, const MibName*> OidNameMap;
std::unordered_map<std::wstring, MibName, TextHash, std::equal_to<>> NameOidMap;
std::vector<MibName*> PendingDefinitions;

namespace {

constexpr size_t kMaxParentSteps = 64;

std::unordered_set<Oid, OidHash> Oids;

struct BuiltinName {
    std::wstring_view name;
    std::wstring_view oid;
};

// The roots that MIB files refer to without defining them. They only resolve parents: in records,
// these identifiers have no name unless a file defines one.
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

// Returns the identifier of a built-in name, null for any other name.
const Oid* StoreBuiltinOid(std::wstring_view name) {
    const Oid* oid = nullptr;
    for (const BuiltinName& builtin : BuiltinNames) {
        if (builtin.name == name) {
            for (const int32_t arc : ParseOidText(builtin.oid)) {
                oid = StoreOid(oid, arc);
            }
        }
    }
    return oid;
}

// Whether `text` is the plain decimal form of `arc`, which ParseDecimalInt read from it: not with leading
// zeros, and not a number that was clamped.
bool IsWrittenAs(int32_t arc, std::wstring_view text) {
    std::wstring digits;
    AppendSignedDecimal(digits, arc);
    return text == digits;
}

// Returns the stored identifier with exactly this text, or null.
const Oid* FindOid(std::wstring_view text) {
    const Oid* oid = nullptr;
    for (size_t start = 0, end = 0; start <= text.size(); start = end + 1) {
        end = std::min(text.find(L'.', start), text.size());
        const std::wstring_view piece = text.substr(start, end - start);
        const int32_t arc = ParseDecimalInt(piece);
        const auto found = Oids.find({oid, arc});
        if (found == Oids.end() || !IsWrittenAs(arc, piece)) {
            return nullptr;
        }
        oid = &*found;
    }
    return oid;
}

}  // namespace

size_t OidHash::operator()(const Oid& oid) const {
    // Windows loads the program at a random address, so files cannot know the address of MibStoreLock. The
    // parent's address is added after hashing: equal arcs below parents that were stored one after the other
    // then have neighbouring buckets, which saves cache misses.
    const uintptr_t words[] = {reinterpret_cast<uintptr_t>(&MibStoreLock), static_cast<uint32_t>(oid.arc)};
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(words), sizeof(words)}) +
           reinterpret_cast<uintptr_t>(oid.parent) / sizeof(Oid);
}

void LookupOidName(std::wstring_view oid, std::wstring& name) {
    const std::lock_guard lock(MibStoreLock);
    const auto row = OidNameMap.find(FindOid(oid));
    name.assign(row == OidNameMap.end() ? std::wstring_view() : row->second->text);
}

int32_t CountOidNames() {
    const std::lock_guard lock(MibStoreLock);
    return static_cast<int32_t>(static_cast<uint32_t>(OidNameMap.size()));
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

const Oid* ResolveName(const MibName& name) {
    std::array<int32_t, kMaxParentSteps> arcs{};  // arcs below the known identifier, last one first
    size_t steps = 0;
    const MibName* known = &name;
    for (; known->oid == nullptr; known = known->definition.parent) {
        const PendingDefinition& definition = known->definition;
        if (steps == kMaxParentSteps || !definition.valid || definition.subId < 0) {
            return nullptr;
        }
        arcs[steps++] = definition.subId;
    }
    const Oid* oid = known->oid;
    while (steps > 0) {
        oid = StoreOid(oid, arcs[--steps]);
    }
    return oid;
}

MibName& StoreName(std::wstring_view text) {
    if (const auto row = NameOidMap.find(text); row != NameOidMap.end()) {
        return row->second;
    }
    MibName name;
    name.oid = StoreBuiltinOid(text);
    name.isBuiltin = name.oid != nullptr;
    const auto row = NameOidMap.emplace(text, name).first;
    row->second.text = row->first;
    return row->second;
}

const Oid* StoreOid(const Oid* parent, int32_t arc) {
    return &*Oids.insert({parent, arc}).first;
}

void StoreDefinition(MibName& name, MibName& parent, int32_t subId) {
    if (!name.definition.valid) {
        PendingDefinitions.push_back(&name);
    }
    name.definition = {&parent, subId, true};
}

void StoreNamedOid(MibName& name, const Oid* oid) {
    if (!name.isBuiltin) {
        name.oid = oid;
    }
    OidNameMap.try_emplace(oid, &name);
}

void StoreResolvedDefinitions() {
    for (MibName* name : PendingDefinitions) {
        if (const Oid* oid = ResolveName(*name)) {
            StoreNamedOid(*name, oid);
        }
    }
}

void ClearNameStore() {
    OidNameMap = decltype(OidNameMap)();
    PendingDefinitions = decltype(PendingDefinitions)();
    NameOidMap = decltype(NameOidMap)();
    Oids = decltype(Oids)();
}
