#include "mib/name_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "tests/support/lock_waits.h"
#include "tests/support/mib_tables.h"

namespace {

using Arcs = std::vector<int32_t>;

class NameStore : public testing::Test {
  protected:
    FreshNameStore store_;
};

// d1 below `root`, d2 below d1, ...
void DefineChain(std::wstring_view root, size_t length) {
    std::wstring parent(root);
    for (size_t step = 1; step <= length; ++step) {
        const std::wstring name = L"d" + std::to_wstring(step);
        StoreDefinition(name, parent, static_cast<int32_t>(step));
        parent = name;
    }
}

void DefineChainInReverse(std::wstring_view root, size_t length) {
    for (size_t step = length; step >= 1; --step) {
        const std::wstring parent = step == 1 ? std::wstring(root) : L"d" + std::to_wstring(step - 1);
        StoreDefinition(L"d" + std::to_wstring(step), parent, 1);
    }
}

size_t CountArcs(const Oid* oid) {
    size_t arcs = 0;
    for (; oid != nullptr; oid = oid->parent) {
        ++arcs;
    }
    return arcs;
}

TEST(ParseOidText, SplitsAtDotsAndParsesEachPieceLikeTheRuntime) {
    EXPECT_EQ(ParseOidText(L"1.3.6"), (Arcs{1, 3, 6}));
    EXPECT_EQ(ParseOidText(L"42"), Arcs{42});
    EXPECT_EQ(ParseOidText(L"1..3."), (Arcs{1, 3}));
    EXPECT_EQ(ParseOidText(L".1.3"), (Arcs{1, 3}));
    EXPECT_EQ(ParseOidText(L"..."), Arcs{});
    EXPECT_EQ(ParseOidText(L""), Arcs{});
    EXPECT_EQ(ParseOidText(L" 7x.-5.+3.x.\t.2147483648"), (Arcs{7, -5, 3, 0, 0, INT32_MAX}));
}

struct BuiltinRow {
    const wchar_t* name;
    const wchar_t* oid;
};
const BuiltinRow kBuiltinRows[] = {
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

TEST_F(NameStore, BuiltinNamesResolveWithoutAnyFile) {
    for (const BuiltinRow& row : kBuiltinRows) {
        EXPECT_EQ(OidOf(row.name), row.oid) << row.name;
    }
}

TEST_F(NameStore, BuiltinNamesAreComparedCharacterByCharacter) {
    for (const wchar_t* name : {L"ISO", L"Iso", L"mib2", L"snmpv2", L"iso ", L""}) {
        EXPECT_EQ(OidOf(name), L"") << name;
    }
}

TEST_F(NameStore, LookupFindsABuiltinNameOnlyIfItIsDefined) {
    StoreDefinition(L"mine", L"enterprises", 1);
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 1);
    for (const BuiltinRow& row : kBuiltinRows) {
        EXPECT_EQ(NameOf(row.oid), L"") << row.oid;
    }
}

TEST_F(NameStore, BuiltinNameWinsOverItsDefinition) {
    StoreDefinition(L"enterprises", L"mib-2", 77);
    StoreDefinition(L"mine", L"enterprises", 9);
    EXPECT_EQ(OidOf(L"enterprises"), L"1.3.6.1.4.1");
    ResolveAll();
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1"), L"enterprises");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.9"), L"mine");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.77"), L"");
}

TEST_F(NameStore, BuiltinIdentifierWinsOverOneReadInFull) {
    StoreNamedOid(L"iso", L"1.2.3");
    EXPECT_EQ(OidOf(L"iso"), L"1");
    StoreDefinition(L"iso", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(OidOf(L"iso"), L"1");
    EXPECT_EQ(NameOf(L"1"), L"iso");
    EXPECT_EQ(NameOf(L"1.2.3"), L"iso");
}

TEST_F(NameStore, IdentifierReadInFullWinsOverADefinition) {
    StoreDefinition(L"a", L"mgmt", 5);
    StoreNamedOid(L"a", L"1.2.3");
    EXPECT_EQ(OidOf(L"a"), L"1.2.3");
    StoreDefinition(L"child", L"a", 4);
    ResolveAll();
    EXPECT_EQ(OidOf(L"a"), L"1.2.3");
    EXPECT_EQ(NameOf(L"1.2.3.4"), L"child");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.5"), L"");
}

TEST_F(NameStore, ChainOf64DefinitionsResolvesAndOneOf65DoesNotInEitherOrder) {
    for (const auto define : {DefineChain, DefineChainInReverse}) {
        ClearNameStore();
        define(L"iso", 66);
        EXPECT_EQ(CountArcs(ResolveName(StoreName(L"d64"))), 65U);
        EXPECT_EQ(OidOf(L"d65"), L"");
    }
}

TEST_F(NameStore, DefinitionsBuildOnEarlierResolvedOnes) {
    DefineChain(L"iso", 200);
    EXPECT_EQ(OidOf(L"d200"), L"");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 200);
    const Oid* oid = ResolveName(StoreName(L"d200"));
    EXPECT_EQ(CountArcs(oid), 201U);
    EXPECT_EQ(NameOf(FormatOid(oid)), L"d200");
}

TEST_F(NameStore, DefinitionsBeforeTheirParentsResolveUpToTheLimit) {
    DefineChainInReverse(L"iso", 66);
    StoreDefinition(L"later", L"d66", 1);
    ResolveAll();
    EXPECT_NE(OidOf(L"d64"), L"");
    EXPECT_EQ(NameOf(FormatOid(ResolveName(StoreName(L"d65")))), L"");
    EXPECT_EQ(CountOidNames(), 65) << "d1 to d64 and `later`";
}

TEST_F(NameStore, LimitCountsFromTheNearestKnownName) {
    DefineChainInReverse(L"iso", 105);
    StoreNamedOid(L"d40", L"1.2");
    EXPECT_NE(OidOf(L"d39"), L"");
    EXPECT_EQ(OidOf(L"d40"), L"1.2");
    EXPECT_EQ(OidOf(L"d41"), L"1.2.1");
    EXPECT_NE(OidOf(L"d104"), L"") << "64 below d40";
    EXPECT_EQ(OidOf(L"d105"), L"");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 104);
}

TEST_F(NameStore, LimitCountsFromABuiltinNameThatIsAlsoDefined) {
    StoreDefinition(L"iso", L"nobody", 1);
    DefineChain(L"iso", 65);
    EXPECT_NE(OidOf(L"d64"), L"");
    EXPECT_EQ(OidOf(L"d65"), L"");
}

TEST_F(NameStore, ResolvingAllAgreesWithResolvingEach) {
    DefineChain(L"mib-2", 10);
    StoreDefinition(L"a", L"d7", 1);
    StoreDefinition(L"b", L"nowhere", 1);
    StoreDefinition(L"c", L"b", 1);
    StoreDefinition(L"x", L"y", 1);
    StoreDefinition(L"y", L"x", 1);
    StoreDefinition(L"z", L"learnt", 8);
    StoreNamedOid(L"learnt", L"1.9.-4");
    std::map<std::wstring, std::wstring> each = {{L"1.9.-4", L"learnt"}};
    for (const MibName* name : PendingDefinitions) {
        if (const Oid* oid = ResolveName(*name)) {
            each.emplace(FormatOid(oid), name->text);
        }
    }
    ResolveAll();
    EXPECT_EQ(CopyOidNames(), each);
    EXPECT_EQ(NameOf(L"1.9.-4.8"), L"z");
    EXPECT_EQ(CountOidNames(), 13);
}

TEST_F(NameStore, CyclesAreNotResolved) {
    StoreDefinition(L"self", L"self", 1);
    StoreDefinition(L"a", L"b", 1);
    StoreDefinition(L"b", L"a", 2);
    StoreDefinition(L"below", L"a", 3);
    for (const wchar_t* name : {L"self", L"a", L"b", L"below"}) {
        EXPECT_EQ(OidOf(name), L"") << name;
    }
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(CountDefinitions(), 4U);
}

TEST_F(NameStore, NegativeNumbersAreNotResolved) {
    StoreDefinition(L"below", L"mgmt", -1);
    StoreDefinition(L"child", L"below", 1);
    EXPECT_EQ(OidOf(L"below"), L"");
    EXPECT_EQ(OidOf(L"child"), L"");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 0);
}

TEST_F(NameStore, LookupIsExact) {
    StoreNamedOid(L"sysUpTime", L"1.3.6.1.2.1.1.3");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1.3"), L"sysUpTime");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1.3.0"), L"");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1"), L"");
    for (const wchar_t* oid :
         {L".1.3.6.1.2.1.1.3", L"1.3.6.1.2.1.1.3.", L"1.3.6.1.2.1..1.3", L"1.3.6.1.2.1.1.03",
          L"1.3.6.1.2.1.1.+3", L"1.3.6.1.2.1.1.3x", L" 1.3.6.1.2.1.1.3", L"1.3.6.1.2.1.1.\u0663",
          L"1.3.6.1.2.1.1.-3", L"1.3.6.1.2.1.1.-", L"1.3.6.1.2.1.1.4294967299",
          L"1.3.6.1.2.1.1.18446744073709551619", L"", L"."}) {
        EXPECT_EQ(NameOf(oid), L"") << oid;
    }
}

TEST_F(NameStore, LookupAcceptsEvery32BitArcAndNoOther) {
    StoreNamedOid(L"largest", L"1.2147483647");
    StoreNamedOid(L"smallest", L"1.-2147483648");
    StoreNamedOid(L"zero", L"0.0");
    StoreNamedOid(L"one", L"1");
    EXPECT_EQ(NameOf(L"1.2147483647"), L"largest");
    EXPECT_EQ(NameOf(L"1.-2147483648"), L"smallest");
    EXPECT_EQ(NameOf(L"0.0"), L"zero");
    EXPECT_EQ(NameOf(L"1"), L"one");
    for (const wchar_t* oid : {L"1.2147483648", L"1.-2147483649", L"1.18446744073709551615", L"0", L"0.-0"}) {
        EXPECT_EQ(NameOf(oid), L"") << oid;
    }
}

TEST_F(NameStore, FirstNameOfAnIdentifierAndLastIdentifierOfANameWin) {
    StoreNamedOid(L"first", L"1.2.3");
    StoreNamedOid(L"second", L"1.2.3");
    EXPECT_EQ(NameOf(L"1.2.3"), L"first");
    EXPECT_EQ(OidOf(L"second"), L"1.2.3");
    StoreNamedOid(L"first", L"1.2.4");
    EXPECT_EQ(OidOf(L"first"), L"1.2.4");
    EXPECT_EQ(NameOf(L"1.2.3"), L"first");
    EXPECT_EQ(NameOf(L"1.2.4"), L"first");
    EXPECT_EQ(CountOidNames(), 2);
}

TEST_F(NameStore, LastDefinitionOfANameWins) {
    StoreDefinition(L"a", L"mgmt", 1);
    StoreDefinition(L"other", L"mgmt", 2);
    StoreDefinition(L"a", L"private", 3);
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"private", 3}));
    EXPECT_EQ(CountDefinitions(), 2U);
}

TEST_F(NameStore, RedefinedParentMovesItsChildren) {
    StoreDefinition(L"table", L"mgmt", 1);
    StoreDefinition(L"entry", L"table", 2);
    EXPECT_EQ(OidOf(L"entry"), L"1.3.6.1.2.1.2");
    StoreDefinition(L"table", L"private", 7);
    EXPECT_EQ(OidOf(L"entry"), L"1.3.6.1.4.7.2");
    EXPECT_EQ(DefinitionOf(L"entry"), (Definition{L"table", 2}));
}

TEST_F(NameStore, FirstStoredDefinitionOfAnIdentifierNamesIt) {
    StoreDefinition(L"zebra", L"mgmt", 1);
    StoreDefinition(L"ape", L"mgmt", 1);
    StoreDefinition(L"lion", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"zebra");
    EXPECT_EQ(OidOf(L"lion"), L"1.3.6.1.2.1");
    EXPECT_EQ(CountOidNames(), 1);
}

TEST_F(NameStore, FirstStoredNameWinsEvenIfALaterOneIsResolvedFirst) {
    StoreDefinition(L"child", L"later", 4);
    StoreDefinition(L"first", L"mgmt", 1);
    StoreDefinition(L"later", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"first");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.4"), L"child");
}

TEST_F(NameStore, LookingUpAndCountingWaitForTheLock) {
    EXPECT_TRUE(WaitsFor(MibStoreLock, [] { NameOf(L"1.2.3"); }));
    EXPECT_TRUE(WaitsFor(MibStoreLock, [] { CountOidNames(); }));
}

TEST_F(NameStore, CountMatchesTheTable) {
    EXPECT_EQ(CountOidNames(), 0);
    StoreNamedOid(L"a", L"1.1");
    StoreNamedOid(L"b", L"1.2");
    EXPECT_EQ(CountOidNames(), 2);
    ClearNameStore();
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(NameOf(L"1.1"), L"");
}

// With a sum of parent and arc as the hash, all these arcs would fall into one bucket.
TEST(OidHash, ArcsThatAreMultiplesOfTheBucketCountAreSpread) {
    constexpr size_t kArcs = 10'000;
    std::unordered_set<Oid, OidHash> oids;
    oids.reserve(kArcs);
    const size_t buckets = oids.bucket_count();
    const Oid root{nullptr, 1};
    for (const Oid* parent : {static_cast<const Oid*>(nullptr), &root}) {
        oids.clear();
        for (size_t number = 0; number < kArcs; ++number) {
            oids.insert({parent, static_cast<int32_t>(number * buckets)});
        }
        ASSERT_EQ(oids.size(), kArcs);
        ASSERT_EQ(oids.bucket_count(), buckets);
        size_t fullest = 0;
        for (size_t bucket = 0; bucket < buckets; ++bucket) {
            fullest = std::max(fullest, oids.bucket_size(bucket));
        }
        EXPECT_LT(fullest, 20U);
    }
}

// Would take hours if each name were resolved through all the others.
TEST_F(NameStore, ChainOf100000DefinitionsResolvesFullyOnlyIfParentsComeFirst) {
    DefineChain(L"iso", 100'000);
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 100'000);
    EXPECT_EQ(CountArcs(ResolveName(StoreName(L"d100000"))), 100'001U);
    ClearNameStore();
    DefineChainInReverse(L"iso", 100'000);
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 64);
}

}  // namespace
