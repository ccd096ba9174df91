#include "mib/name_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <thread>
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

void DefineChainFromItsEnd(std::wstring_view root, size_t length) {
    for (size_t step = length; step >= 1; --step) {
        const std::wstring parent = step == 1 ? std::wstring(root) : L"d" + std::to_wstring(step - 1);
        StoreDefinition(L"d" + std::to_wstring(step), parent, 1);
    }
}

size_t LongestOid() {
    size_t longest = 0;
    for (const auto& row : OidNameMap.Rows()) {
        longest = std::max(longest, row.key.View().size());
    }
    return longest;
}

TEST(ParseOidText, SplitsAtDots) {
    EXPECT_EQ(ParseOidText(L"1.3.6"), (Arcs{1, 3, 6}));
    EXPECT_EQ(ParseOidText(L"42"), Arcs{42});
}

TEST(ParseOidText, SkipsEmptyPieces) {
    EXPECT_EQ(ParseOidText(L"1..3."), (Arcs{1, 3}));
    EXPECT_EQ(ParseOidText(L".1.3"), (Arcs{1, 3}));
    EXPECT_EQ(ParseOidText(L"..."), Arcs{});
}

TEST(ParseOidText, EmptyTextGivesNoArcs) {
    EXPECT_EQ(ParseOidText(L""), Arcs{});
}

TEST(ParseOidText, ReadsPiecesAsTheRuntimeReadsNumbers) {
    EXPECT_EQ(ParseOidText(L" 7x.-5.+3.x.\t"), (Arcs{7, -5, 3, 0, 0}));
    EXPECT_EQ(ParseOidText(L"2147483647.2147483648.-2147483648.-2147483649"),
              (Arcs{std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::max(),
                    std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::min()}));
}

TEST(FormatOidText, JoinsArcsByDots) {
    EXPECT_EQ(FormatOidText({1, 3, 6, 1}), L"1.3.6.1");
    EXPECT_EQ(FormatOidText({0}), L"0");
}

TEST(FormatOidText, KeepsTheSignOfNegativeArcs) {
    EXPECT_EQ(FormatOidText({-1, std::numeric_limits<int32_t>::min()}), L"-1.-2147483648");
}

TEST(FormatOidText, NoArcsGiveEmptyText) {
    EXPECT_EQ(FormatOidText({}), L"");
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
        EXPECT_EQ(NameToOidText(row.name), row.oid) << row.name;
    }
}

TEST_F(NameStore, BuiltinNamesAreComparedCharacterByCharacter) {
    for (const wchar_t* name : {L"ISO", L"Iso", L"mib2", L"snmpv2", L"iso ", L""}) {
        EXPECT_EQ(NameToOidText(name), L"") << name;
    }
}

TEST_F(NameStore, BuiltinNamesNeverNameAnIdentifier) {
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
    EXPECT_EQ(NameToOidText(L"enterprises"), L"1.3.6.1.4.1");
    ResolveAll();
    EXPECT_EQ(OidOf(L"enterprises"), L"1.3.6.1.4.1");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1"), L"enterprises");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.9"), L"mine");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.77"), L"");
}

TEST_F(NameStore, BuiltinNameDefinedAsItIsResolvesThroughTheBuiltinRow) {
    StoreDefinition(L"enterprises", L"private", 1);
    ResolveAll();
    EXPECT_EQ(OidOf(L"enterprises"), L"1.3.6.1.4.1");
}

TEST_F(NameStore, BuiltinNameWinsOverALearntIdentifier) {
    StoreNamedOid(L"iso", L"1.2.3");
    EXPECT_EQ(NameToOidText(L"iso"), L"1");
    StoreDefinition(L"iso", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(OidOf(L"iso"), L"1");
}

TEST_F(NameStore, LearntIdentifierWinsOverADefinition) {
    StoreDefinition(L"a", L"mgmt", 5);
    StoreNamedOid(L"a", L"1.2.3");
    EXPECT_EQ(NameToOidText(L"a"), L"1.2.3");
    StoreDefinition(L"child", L"a", 4);
    ResolveAll();
    EXPECT_EQ(OidOf(L"a"), L"1.2.3");
    EXPECT_EQ(NameOf(L"1.2.3.4"), L"child");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.5"), L"");
}

TEST_F(NameStore, ChainOf64DefinitionsAboveABuiltinRootResolves) {
    DefineChain(L"iso", 64);
    Arcs arcs;
    ASSERT_TRUE(ResolveName(L"d64", arcs));
    EXPECT_EQ(arcs.size(), 65U);
    EXPECT_EQ(arcs.front(), 1);
    EXPECT_EQ(arcs[1], 1);
    EXPECT_EQ(arcs.back(), 64);
}

TEST_F(NameStore, ChainOf65DefinitionsAboveABuiltinRootDoesNotResolve) {
    DefineChain(L"iso", 65);
    Arcs arcs = {9};
    EXPECT_FALSE(ResolveName(L"d65", arcs));
    EXPECT_EQ(arcs, Arcs{9});
}

TEST_F(NameStore, DepthTakenAlreadyCountsAgainstTheLimit) {
    DefineChain(L"iso", 3);
    Arcs arcs;
    EXPECT_TRUE(ResolveName(L"d3", arcs, 61));
    EXPECT_FALSE(ResolveName(L"d3", arcs, 62));
    EXPECT_TRUE(ResolveName(L"iso", arcs, 64));
    EXPECT_FALSE(ResolveName(L"iso", arcs, 65));
}

TEST_F(NameStore, ResolvingAllKeepsTheSameLimitInEitherOrder) {
    for (const auto define : {DefineChain, DefineChainFromItsEnd}) {
        ClearNameStore();
        define(L"iso", 66);
        ResolveAll();
        EXPECT_NE(OidOf(L"d64"), L"");
        EXPECT_EQ(OidOf(L"d65"), L"");
        EXPECT_EQ(OidOf(L"d66"), L"");
        EXPECT_EQ(CountOidNames(), 64);
    }
}

TEST_F(NameStore, LimitCountsFromTheNearestKnownName) {
    DefineChain(L"iso", 105);
    StoreNamedOid(L"d40", L"1.2");
    ResolveAll();
    EXPECT_NE(OidOf(L"d39"), L"");
    EXPECT_EQ(OidOf(L"d40"), L"1.2");
    EXPECT_EQ(OidOf(L"d41"), L"1.2.41");
    EXPECT_NE(OidOf(L"d104"), L"") << "64 below d40";
    EXPECT_EQ(OidOf(L"d105"), L"");
}

TEST_F(NameStore, LimitCountsFromABuiltinNameThatAFileDefinesToo) {
    StoreDefinition(L"iso", L"nobody", 1);
    DefineChain(L"iso", 65);
    ResolveAll();
    EXPECT_NE(OidOf(L"d64"), L"");
    EXPECT_EQ(OidOf(L"d65"), L"");
}

TEST_F(NameStore, ResolvingAllGivesWhatResolvingEachGives) {
    DefineChain(L"mib-2", 10);
    StoreDefinition(L"a", L"d7", 1);
    StoreDefinition(L"b", L"nowhere", 1);
    StoreDefinition(L"c", L"b", 1);
    StoreDefinition(L"x", L"y", 1);
    StoreDefinition(L"y", L"x", 1);
    StoreDefinition(L"z", L"learnt", 8);
    StoreNamedOid(L"learnt", L"1.9.-4");
    std::vector<std::wstring> each;
    for (const auto& row : PendingDefinitions.Rows()) {
        each.push_back(NameToOidText(row.key.View()));
    }
    ResolveAll();
    for (size_t place = 0; place < each.size(); ++place) {
        EXPECT_EQ(OidOf(PendingDefinitions.Rows()[place].key.View()), each[place]);
    }
    EXPECT_EQ(OidOf(L"z"), L"1.9.-4.8");
    EXPECT_EQ(OidOf(L"c"), L"");
}

TEST_F(NameStore, CirclesStayUnresolved) {
    StoreDefinition(L"self", L"self", 1);
    StoreDefinition(L"a", L"b", 1);
    StoreDefinition(L"b", L"a", 2);
    StoreDefinition(L"below", L"a", 3);
    Arcs arcs;
    for (const wchar_t* name : {L"self", L"a", L"b", L"below"}) {
        EXPECT_FALSE(ResolveName(name, arcs)) << name;
    }
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(CountDefinitions(), 4U);
}

TEST_F(NameStore, FailureLeavesTheArcsAlone) {
    StoreDefinition(L"orphan", L"nobody", 1);
    Arcs arcs = {4, 2};
    EXPECT_FALSE(ResolveName(L"unknown", arcs));
    EXPECT_FALSE(ResolveName(L"orphan", arcs));
    EXPECT_EQ(arcs, (Arcs{4, 2}));
}

TEST_F(NameStore, NegativeNumberIsNoDefinitionToFollow) {
    StoreDefinition(L"below", L"mgmt", -1);
    StoreDefinition(L"child", L"below", 1);
    EXPECT_EQ(NameToOidText(L"below"), L"");
    EXPECT_EQ(NameToOidText(L"child"), L"");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 0);
}

TEST_F(NameStore, LookupIsExact) {
    StoreNamedOid(L"sysUpTime", L"1.3.6.1.2.1.1.3");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1.3"), L"sysUpTime");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1.3.0"), L"");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.1"), L"");
    EXPECT_EQ(NameOf(L".1.3.6.1.2.1.1.3"), L"");
    EXPECT_EQ(NameOf(L""), L"");
}

TEST_F(NameStore, FirstNameOfAnIdentifierStays) {
    StoreNamedOid(L"first", L"1.2.3");
    StoreNamedOid(L"second", L"1.2.3");
    EXPECT_EQ(NameOf(L"1.2.3"), L"first");
    EXPECT_EQ(OidOf(L"second"), L"1.2.3");
    EXPECT_EQ(CountOidNames(), 1);
}

TEST_F(NameStore, LastIdentifierOfANameStays) {
    StoreNamedOid(L"a", L"1.2.3");
    StoreNamedOid(L"a", L"1.2.4");
    EXPECT_EQ(OidOf(L"a"), L"1.2.4");
    EXPECT_EQ(NameOf(L"1.2.3"), L"a");
    EXPECT_EQ(NameOf(L"1.2.4"), L"a");
}

TEST_F(NameStore, LastDefinitionOfANameStays) {
    StoreDefinition(L"a", L"mgmt", 1);
    StoreDefinition(L"other", L"mgmt", 2);
    StoreDefinition(L"a", L"private", 3);
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"private", 3}));
    EXPECT_EQ(CountDefinitions(), 2U);
}

TEST_F(NameStore, ParentsKeepTheirTextWhateverWasStoredBefore) {
    StoreDefinition(L"table", L"root", 1);
    StoreDefinition(L"entry", L"table", 1);
    StoreDefinition(L"index", L"entry", 1);
    StoreDefinition(L"value", L"entry", 2);
    StoreDefinition(L"table", L"index", 7);
    StoreDefinition(L"last", L"other", 2);
    EXPECT_EQ(DefinitionOf(L"table"), (Definition{L"index", 7}));
    EXPECT_EQ(DefinitionOf(L"entry"), (Definition{L"table", 1}));
    EXPECT_EQ(DefinitionOf(L"index"), (Definition{L"entry", 1}));
    EXPECT_EQ(DefinitionOf(L"value"), (Definition{L"entry", 2}));
    EXPECT_EQ(DefinitionOf(L"last"), (Definition{L"other", 2}));
}

// A parent that stands in another file is no key of the table yet.
TEST_F(NameStore, DefinitionsThatFollowOneAnotherShareTheTextOfTheirParent) {
    const auto parentOf = [](std::wstring_view name) {
        return PendingDefinitions.Find(name)->value.parent.reference;
    };
    StoreDefinition(L"before", L"elsewhere", 1);
    StoreDefinition(L"column1", L"entry", 1);
    StoreDefinition(L"column2", L"entry", 2);
    EXPECT_EQ(parentOf(L"column2"), parentOf(L"column1"));
    StoreDefinition(L"before", L"table", 7);
    StoreDefinition(L"behind", L"table", 8);
    EXPECT_EQ(parentOf(L"behind"), parentOf(L"before")) << "also behind one that was replaced";
}

TEST_F(NameStore, OfTwoDefinitionsOfOneIdentifierTheFirstStoredGivesTheName) {
    StoreDefinition(L"zebra", L"mgmt", 1);
    StoreDefinition(L"ape", L"mgmt", 1);
    StoreDefinition(L"lion", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"zebra");
    EXPECT_EQ(OidOf(L"lion"), L"1.3.6.1.2.1");
    EXPECT_EQ(CountOidNames(), 1);
}

TEST_F(NameStore, FirstStoredGivesTheNameAlsoWhenALaterOneIsResolvedBefore) {
    StoreDefinition(L"child", L"later", 4);
    StoreDefinition(L"first", L"mgmt", 1);
    StoreDefinition(L"later", L"mgmt", 1);
    ResolveAll();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"first");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.4"), L"child");
}

TEST_F(NameStore, LookupWaitsForALoadAndSeesItsResult) {
    StoreNamedOid(L"old", L"1.2.3");
    std::thread reader;
    std::wstring seen;
    {
        const std::lock_guard lock(MibStoreLock);
        reader = std::thread([&] { LookupOidName(L"1.2.3", seen); });
        ClearNameStore();
        StoreNamedOid(L"new", L"1.2.3");
    }
    reader.join();
    EXPECT_EQ(seen, L"new");
}

TEST_F(NameStore, LookingUpAndCountingWaitForTheLock) {
    EXPECT_TRUE(WaitsFor(MibStoreLock, [] { NameOf(L"1.2.3"); }));
    EXPECT_TRUE(WaitsFor(MibStoreLock, [] { CountOidNames(); }));
}

TEST_F(NameStore, CountFollowsTheTable) {
    EXPECT_EQ(CountOidNames(), 0);
    StoreNamedOid(L"a", L"1.1");
    StoreNamedOid(L"b", L"1.2");
    EXPECT_EQ(CountOidNames(), 2);
    ClearNameStore();
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(NameOf(L"1.1"), L"");
}

TEST_F(NameStore, HundredThousandSimilarNamesAreAllFound) {
    constexpr int kNames = 100'000;
    for (int number = 0; number < kNames; ++number) {
        StoreDefinition(L"vendorTableEntryColumn" + std::to_wstring(number), L"enterprises", number);
    }
    ResolveAll();
    ASSERT_EQ(CountOidNames(), kNames);
    for (int number = 0; number < kNames; ++number) {
        ASSERT_EQ(NameOf(L"1.3.6.1.4.1." + std::to_wstring(number)),
                  L"vendorTableEntryColumn" + std::to_wstring(number));
    }
}

// In time and memory n times n this would not end.
TEST_F(NameStore, ChainOf100000DefinitionsKeepsIdentifiersShortInEitherOrder) {
    for (const auto define : {DefineChain, DefineChainFromItsEnd}) {
        ClearNameStore();
        define(L"iso", 100'000);
        ResolveAll();
        EXPECT_EQ(CountOidNames(), 64);
        EXPECT_LT(LongestOid(), 64U * 4);
    }
}

TEST_F(NameStore, CircleOf100000DefinitionsResolvesToNothing) {
    DefineChain(L"d100000", 100'000);
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(CountDefinitions(), 100'000U);
}

TEST(TextPool, TextsStayWhereTheyAreWhileItGrows) {
    const FreshNameStore store;
    const PooledText early = KeepText(L"early");
    const wchar_t* place = early.View().data();
    for (int number = 0; number < 100'000; ++number) {
        KeepText(L"some text of a usual length");
    }
    EXPECT_EQ(early.View().data(), place);
    EXPECT_EQ(early.View(), L"early");
}

TEST(TextPool, HoldsTextsOfEveryLengthAroundABlock) {
    const FreshNameStore store;
    std::vector<PooledText> kept;
    std::vector<std::wstring> texts;
    for (const size_t length : {1U, 65531U, 65532U, 65533U, 65534U, 65535U, 65536U, 65537U, 131067U, 131068U,
                                131069U, 131070U, 131072U, 300000U, 2U}) {
        texts.emplace_back(length, static_cast<wchar_t>(L'a' + texts.size()));
        kept.push_back(KeepText(texts.back()));
    }
    for (size_t place = 0; place < texts.size(); ++place) {
        EXPECT_TRUE(kept[place].View() == texts[place]) << texts[place].size();
    }
}

TEST(TextPool, EachTextTakesItsCharactersAndEightOctets) {
    const FreshNameStore store;
    const uint32_t first = KeepText(L"some text").reference;
    const uint32_t second = KeepText(L"more").reference;
    EXPECT_EQ(second - first, 9U + 8 / sizeof(wchar_t));
    EXPECT_EQ(KeepText(L"x").reference - second, 4U + 8 / sizeof(wchar_t));
}

TEST(TextPool, ClearingItGivesThePlacesBack) {
    const FreshNameStore store;
    const uint32_t first = KeepText(L"some text").reference;
    KeepText(L"more");
    ClearNameStore();
    EXPECT_EQ(KeepText(L"other text").reference, first);
}

// Of more characters than there are references, or than are left; nobody looks at any of them.
TEST(TextPool, TextBeyondTheRangeOfAReferenceIsRefused) {
    const FreshNameStore store;
    constexpr size_t kReferences = size_t{0xFFFF} << 16;
    TextKey key(L"x");
    key.text = std::wstring_view(key.text.data(), kReferences);
    EXPECT_THROW(KeepText(key), std::bad_alloc) << "there is no room for its length";
    const PooledText kept = KeepText(L"kept");
    key.text = std::wstring_view(key.text.data(), kReferences - 8 / sizeof(wchar_t));
    EXPECT_THROW(KeepText(key), std::bad_alloc) << "what is left is one block short";
    EXPECT_EQ(KeepText(L"x").reference - kept.reference, 4U + 8 / sizeof(wchar_t)) << "nothing was added";
}

TEST(TextPool, EmptyTextTakesNoPlace) {
    const FreshNameStore store;
    EXPECT_EQ(KeepText(L"").reference, 0U);
    EXPECT_EQ(PooledText().View(), L"");
}

}  // namespace
