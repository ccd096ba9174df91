// The parser and the tables against the reference, on texts that nobody would write.
#include "tests/unit/mib_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <numeric>
#include <random>
#include <utility>

#include "mib/mib_parser.h"
#include "mib/name_store.h"

namespace {

class MibReference : public testing::Test {
  protected:
    FreshNameStore store_;
};

// The tables behind the parsing and behind the resolving.
using Stages = std::pair<MibTables, MibTables>;

Stages LoadByReference(const std::wstring& text) {
    Stages stages;
    ParseByReference(text, stages.first);
    stages.second = stages.first;
    ResolveByReference(stages.second);
    return stages;
}

template <typename Text>
Stages Load(const Text& text) {
    const std::lock_guard lock(MibStoreLock);
    Stages stages;
    ClearNameStore();
    ParseMibText(text);
    stages.first = CopyMibTables();
    StoreResolvedDefinitions();
    stages.second = CopyMibTables();
    return stages;
}

bool IsAscii(const std::wstring& text) {
    return std::all_of(text.begin(), text.end(), [](wchar_t character) { return character < 0x80; });
}

std::string MakeNarrow(const std::wstring& text) {
    std::string narrow;
    std::transform(text.begin(), text.end(), std::back_inserter(narrow),
                   [](wchar_t character) { return static_cast<char>(character); });
    return narrow;
}

// Returns how many rows the text gave; both roads are held against the reference.
size_t CompareLoads(const std::wstring& text) {
    const Stages expected = LoadByReference(text);
    EXPECT_EQ(Load(text), expected) << ::testing::PrintToString(text);
    if (IsAscii(text)) {
        EXPECT_EQ(Load(MakeNarrow(text)), expected)
            << text.size() << " narrow characters of " << ::testing::PrintToString(text);
    }
    return expected.second.CountRows();
}

// Whole definitions, so that tables fill; marks, whole, in halves and cut in two by a comment; and what
// stands around them.
const std::vector<std::wstring> kPieces = {
    L"a OBJECT-TYPE",
    L"b OBJECT IDENTIFIER",
    L"c MODULE-IDENTITY",
    L"\na OBJECT-TYPE ::= { mgmt 2 }\n",
    L"\nb OBJECT-TYPE\n::= { a 3 }\n",
    L"\ne OBJECT-TYPE ::= { b 3 }\n",
    L"\nf OBJECT IDENTIFIER ::= { e 4 }\n",
    L"\nd OBJECT IDENTIFIER ::= { org }\n",
    L"\ng MODULE-IDENTITY\n::= {\nf 1 }\n",
    L"iso OBJECT-TYPE\n",
    L"::= { mgmt 5 }",
    L"::= { a 1 }",
    L"::= { b 1 }\n",
    L"::= { c 2 }",
    L"::= { x 2 }",
    L"{ internet -1 }",
    L"{ iso }",
    L"{ org b(2) }",
    L"{ iso org(3) x(-5) -1 }",
    L"mgmt 7 }",
    L"a OBJECT-TYPE--c",
    L"a OBJECT--TYPE",
    L"c MODULE--IDENTITY",
    L"c MODULE-IDENTITY--",
    L"b OBJECT IDENTIFIER--",
    L"{::=--",
    L"::=--{",
    L"::={--",
    L"{ mgmt 6--}",
    L"OBJECT-",
    L"OBJECT",
    L"-TYPE",
    L" IDENTIFIER",
    L"OBJECT IDENT",
    L"IFIER",
    L"MODULE",
    L"-IDENTITY",
    L"-",
    L"--",
    L"::",
    L":",
    L"=",
    L"::=",
    L"{",
    L"{",
    L"}",
    L"}",
    L"iso",
    L"b(2)",
    L"x()",
    L"(3",
    L"7",
    L"-1",
    L"\r",
    L"\n",
    L"\n",
    L"\n",
    L"\n",
    L"\t",
    L" ",
    L"J",
    L"L",
    L"\"",
    L"0",
};

const std::vector<std::wstring> kWidePieces = {L"\u00A0", L"\u00E4", L"\u3000", L"\u2003", L"\u00FC 2"};

template <typename Item>
const Item& Pick(const std::vector<Item>& items, std::mt19937& random) {
    return items[random() % items.size()];
}

std::wstring MakeScrambledText(std::mt19937& random, bool wide) {
    std::wstring text;
    for (size_t pieces = random() % 50; pieces > 0; --pieces) {
        text += Pick(kPieces, random);
        text += random() % 3 == 0 ? L" " : L"";
        text += wide && random() % 6 == 0 ? Pick(kWidePieces, random) : L"";
    }
    return text;
}

TEST_F(MibReference, ScrambledTextsStoreWhatTheReferenceStores) {
    std::mt19937 random(20240608);
    size_t rows = 0;
    for (int round = 0; round < 4'000 && !HasFailure(); ++round) {
        rows += CompareLoads(MakeScrambledText(random, round % 3 == 2));
    }
    EXPECT_GT(rows, 10'000U) << "texts that store nothing compare nothing";
}

// What the rounds above meet by chance, each by itself.
TEST_F(MibReference, MarksThatTouchACommentStoreWhatTheReferenceStores) {
    const std::vector<std::wstring> starts = {
        L"a OBJECT-TYPE--c",      L"a OBJECT-TYPE-- c",      L"a OBJECT-TYPE-",
        L"a OBJECT--TYPE",        L"a OBJECT---TYPE",        L"a --OBJECT-TYPE",
        L"a -OBJECT-TYPE",        L"a--OBJECT-TYPE",         L"a OBJECT IDENTIFIER--",
        L"a OBJECT IDENT--IFIER", L"a OBJECT--IDENTIFIER",   L"a MODULE--IDENTITY",
        L"a MODULE-IDENTITY--",   L"a MODULE-IDENTITY -- {", L"a OBJECT-TYPE OBJECT--TYPE"};
    const std::vector<std::wstring> values = {
        L"::= { mgmt 5 }",       L"{::=-- mgmt 5 }", L"{::=--\nmgmt 5 }", L"{ mgmt 5 ::=--}\n}",
        L"::={--\nmgmt 5--}\n}", L"::=--{ mgmt 5 }", L"::--= { mgmt 5 }", L"-::={ mgmt 5 }--",
        L"{ mgmt 5 } --::=",     L"{ mgmt 5 } -::="};
    size_t rows = 0;
    for (const std::wstring& start : starts) {
        for (const std::wstring& value : values) {
            rows += CompareLoads(L"z OBJECT-TYPE\n" + start + L"\n" + value);
            rows += CompareLoads(L"z OBJECT-TYPE\n" + start + value + L"\n::= { private 6 }");
        }
    }
    EXPECT_GT(rows, 500U);
}

// The reference is no echo of the parser.
TEST_F(MibReference, ReferenceReadsACommentAsAPersonWould) {
    const Definition expected = {L"mgmt", 5};
    EXPECT_EQ(LoadByReference(L"a OBJECT-TYPE--c\n{::=--\nmgmt 5 }").first.definitions[L"a"], expected);
    EXPECT_EQ(LoadByReference(L"a OBJECT-TYPE\nb OBJECT--TYPE\n::= { mgmt 5 }").first.definitions[L"a"],
              expected);
    EXPECT_EQ(LoadByReference(L"a OBJECT-TYPE\n::= { mgmt 5 }").second.nameOfOid[L"1.3.6.1.2.5"], L"a");
}

// Definitions in an order that has nothing to do with who stands below whom: chains that are longer than
// what is followed, branches, circles and parents that nobody defines.
std::wstring MakeFamilyText(std::mt19937& random) {
    std::vector<size_t> order(100);
    std::iota(order.begin(), order.end(), size_t{0});
    std::shuffle(order.begin(), order.end(), random);
    const size_t oddities = random() % 8;
    std::wstring text = L"known OBJECT IDENTIFIER ::= { experimental }\n";
    for (const size_t number : order) {
        const bool odd = random() % 100 < oddities;
        std::wstring parent = number == 0 ? L"known" : L"n" + std::to_wstring(number - 1);
        if (odd) {
            parent = random() % 4 == 0 ? L"nobody" : L"n" + std::to_wstring(random() % 100);
        }
        text += L"n" + std::to_wstring(number) + L" OBJECT-TYPE\n::= { " + parent + L" " +
                std::to_wstring(random() % 2) + L" }\n";
    }
    return text;
}

TEST_F(MibReference, ChainsAndCirclesResolveAsTheReferenceResolvesThem) {
    std::mt19937 random(20240609);
    size_t rows = 0;
    for (int round = 0; round < 20 && !HasFailure(); ++round) {
        rows += CompareLoads(MakeFamilyText(random));
    }
    EXPECT_GT(rows, 20U * 150U);
}

}  // namespace
