#include "mib/mib_parser.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "tests/support/mib_tables.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace std::string_literals;

class MibParser : public testing::Test {
  protected:
    FreshNameStore store_;
};

void ParseOctets(const std::string& octets) {
    const ScratchFolder folder;
    WriteOctets(folder.Join(L"some.mib"), octets);
    const std::lock_guard lock(MibStoreLock);
    ParseMibFile(folder.Join(L"some.mib"));
}

TEST_F(MibParser, ObjectTypeWithItsAttributesIsPending) {
    ParseText(
        L"ifNumber OBJECT-TYPE\n"
        L"    SYNTAX  Integer32\n"
        L"    MAX-ACCESS  read-only\n"
        L"    STATUS  current\n"
        L"    DESCRIPTION \"The number of interfaces.\"\n"
        L"    ::= { interfaces 1 }\n");
    EXPECT_EQ(DefinitionOf(L"ifNumber"), (Definition{L"interfaces", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, ObjectIdentifierOnOneLineIsPending) {
    ParseText(L"interfaces OBJECT IDENTIFIER ::= { mib-2 2 }");
    EXPECT_EQ(DefinitionOf(L"interfaces"), (Definition{L"mib-2", 2, true}));
}

TEST_F(MibParser, ModuleIdentityIsPending) {
    ParseText(L"ifMIB MODULE-IDENTITY\n LAST-UPDATED \"200006140000Z\"\n ::= { mib-2 31 }\n");
    EXPECT_EQ(DefinitionOf(L"ifMIB"), (Definition{L"mib-2", 31, true}));
}

TEST_F(MibParser, ValueSplitOverLinesIsTheSame) {
    ParseText(L"interfaces OBJECT IDENTIFIER ::= {\n   mib-2 2 }\n");
    EXPECT_EQ(DefinitionOf(L"interfaces"), (Definition{L"mib-2", 2, true}));
    ParseText(L"a OBJECT IDENTIFIER\n::= {   -- here it comes }\r\n\r\n mib-2\t-- the parent\r\n3\r\n}\r\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mib-2", 3, true}));
}

TEST_F(MibParser, LinesOfAValueAreJoinedByABlank) {
    ParseText(L"a OBJECT IDENTIFIER ::= { mib\n-2\n2 }");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"-2", 2, true}));
}

TEST_F(MibParser, ValueOfOneNameIsStoredDirectly) {
    ParseText(L"zero OBJECT IDENTIFIER ::= { internet }");
    EXPECT_EQ(OidOf(L"zero"), L"1.3.6.1");
    EXPECT_EQ(NameOf(L"1.3.6.1"), L"zero");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, ValueOfOneNameLeavesANamedIdentifierItsName) {
    ParseText(L"first OBJECT IDENTIFIER ::= { internet }\nsecond OBJECT IDENTIFIER ::= { internet }\n");
    EXPECT_EQ(OidOf(L"second"), L"1.3.6.1");
    EXPECT_EQ(NameOf(L"1.3.6.1"), L"first");
}

TEST_F(MibParser, NegativeLastNumberNamesTheParentItself) {
    ParseText(L"odd OBJECT IDENTIFIER ::= { mgmt -1 }");
    EXPECT_EQ(CountDefinitions(), 0U);
    EXPECT_EQ(OidOf(L"odd"), L"1.3.6.1.2");
    EXPECT_EQ(NameOf(L"1.3.6.1.2"), L"odd");
}

TEST_F(MibParser, LongFormHangsBelowAWordThatNeverResolves) {
    ParseText(
        L"internet OBJECT IDENTIFIER ::= { iso org(3) dod(6) internet(1) }\n"
        L"last OBJECT IDENTIFIER ::= { enterprises x(5) }\n");
    EXPECT_EQ(DefinitionOf(L"internet"), (Definition{L"dod(6)", 0, true}));
    EXPECT_EQ(DefinitionOf(L"last"), (Definition{L"enterprises", 0, true}));
}

TEST_F(MibParser, ValueBeforeAnyKeywordStoresNothing) {
    ParseText(L"::= { a 1 }\n::= { internet }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
    EXPECT_EQ(CountOidNames(), 0);
}

TEST_F(MibParser, OpenValueTakesTheFollowingLinesEvenWithoutAName) {
    ParseText(L"::= { a\nb OBJECT-TYPE\n1 } c OBJECT-TYPE\n::= { d 1 }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, LinesTakenForAValueSetNoName) {
    ParseText(L"a OBJECT IDENTIFIER ::= {\nb OBJECT-TYPE\nmgmt 1 }\n::= { mgmt 2 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 2, true}));
    EXPECT_EQ(DefinitionOf(L"b"), std::nullopt);
}

TEST_F(MibParser, ValueLeftOpenAtTheEndStoresNothing) {
    ParseText(L"a OBJECT IDENTIFIER ::= { mgmt 1\nb OBJECT IDENTIFIER ::= { mgmt 2\n");
    EXPECT_EQ(CountDefinitions(), 0U);
    EXPECT_EQ(CountOidNames(), 0);
}

// Under AddressSanitizer reading past the text's end ends the test.
TEST_F(MibParser, TextMayEndAnywhere) {
    const std::wstring whole = L"a OBJECT-TYPE\nb OBJECT IDENTIFIER\nc MODULE-IDENTITY\n::= { mgmt 1 } --";
    for (size_t size = 0; size <= whole.size(); ++size) {
        const std::vector<wchar_t> text(whole.data(), whole.data() + size);
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        ParseMibText({text.data(), text.size()});
        EXPECT_EQ(PendingDefinitions.size(), size > whole.find(L'}') ? 1U : 0U) << size;
    }
}

TEST_F(MibParser, RestOfTheLineThatClosesAValueIsPassedOver) {
    ParseText(L"a OBJECT IDENTIFIER ::= {\nmgmt 1 } b OBJECT IDENTIFIER ::= { mgmt 2 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, ValueRunsFromTheFirstBraceToTheFirstBraceOfTheLine) {
    ParseText(L"a OBJECT IDENTIFIER { mgmt 7 } ::= { mgmt 8 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 7, true}));
    ParseText(L"b OBJECT IDENTIFIER { x ::= {\nmgmt 9 }\n");
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"mgmt", 9, true}));
}

TEST_F(MibParser, ClosingBraceBeforeTheOpeningOneEndsTheValueWithNothing) {
    ParseText(L"a OBJECT IDENTIFIER } ::= { mgmt 1\nb OBJECT IDENTIFIER ::= { mgmt 2 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), std::nullopt);
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"mgmt", 2, true}));
}

TEST_F(MibParser, BraceBeforeTheAssignmentStartsAValueToo) {
    ParseText(L"a OBJECT IDENTIFIER { mgmt 3 ::=\n}\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"3", 0, true}));
}

TEST_F(MibParser, AssignmentWithItsBraceOnTheNextLineIsNoValue) {
    ParseText(L"a OBJECT IDENTIFIER ::=\n{ mgmt 1 }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, BracesWithoutAnAssignmentAreNoValue) {
    ParseText(L"a OBJECT-TYPE\n SYNTAX INTEGER { up(1), down(2) }\n INDEX { b 2 }\n : := { c 3 }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, NameStaysUntilTheNextKeywordLine) {
    ParseText(L"a OBJECT-TYPE\n::= { mgmt 1 }\nb NOTIFICATION-TYPE\n::= { mgmt 2 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 2, true}));
    EXPECT_EQ(DefinitionOf(L"b"), std::nullopt);
}

TEST_F(MibParser, NotificationReplacesTheDefinitionBeforeIt) {
    ParseText(
        L"sysName OBJECT-TYPE\n    ::= { system 5 }\n\n"
        L"coldStart NOTIFICATION-TYPE\n    STATUS  current\n    ::= { snmpTraps 1 }\n");
    EXPECT_EQ(DefinitionOf(L"sysName"), (Definition{L"snmpTraps", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, SequenceBehindAnEntryReplacesTheEntry) {
    ParseText(
        L"fooEntry OBJECT-TYPE\n"
        L"    SYNTAX FooEntry\n"
        L"    ::= { fooTable 1 }\n"
        L"FooEntry ::= SEQUENCE {\n"
        L"    fooIndex  Integer32,\n"
        L"    fooName   OCTET STRING\n"
        L"}\n"
        L"fooIndex OBJECT-TYPE\n"
        L"    ::= { fooEntry 1 }\n");
    EXPECT_EQ(DefinitionOf(L"fooEntry"), (Definition{L"OCTET", 0, true}));
    EXPECT_EQ(DefinitionOf(L"fooIndex"), (Definition{L"fooEntry", 1, true}));
}

TEST_F(MibParser, TypeAssignmentOnOneLineIsAValue) {
    ParseText(L"a OBJECT-TYPE\nFoo ::= SEQUENCE { a Integer32, b OCTET STRING }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"OCTET", 0, true}));
}

TEST_F(MibParser, SyntaxObjectIdentifierTakesTheNameAway) {
    ParseText(L"sysObjectID OBJECT-TYPE\n    SYNTAX  OBJECT IDENTIFIER\n    ::= { system 2 }\n");
    EXPECT_EQ(DefinitionOf(L"sysObjectID"), std::nullopt);
    EXPECT_EQ(DefinitionOf(L"SYNTAX"), (Definition{L"system", 2, true}));
}

TEST_F(MibParser, ImportLineThatBeginsWithAKeywordSetsTheName) {
    ParseText(L"IMPORTS\n    MODULE-IDENTITY, OBJECT-TYPE,\n        FROM SNMPv2-SMI;\n::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"MODULE-IDENTITY"), (Definition{L"mgmt", 1, true}));
}

TEST_F(MibParser, KeywordInACommentHasNoEffect) {
    ParseText(L"a OBJECT-TYPE\nb -- OBJECT-TYPE\n-- c OBJECT-TYPE ::= { mgmt 9 }\n::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, KeywordEndsWhereItsCommentBegins) {
    ParseText(L"a OBJECT-TYPE--c\n::= { mgmt 1 }");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    ParseText(L"b OBJECT--TYPE\n::= { mgmt 2 }\nOBJECT -- IDENTIFIER\n");
    EXPECT_EQ(CountDefinitions(), 1U);
    ParseText(L"c OBJECT-TYPE {::=--}\n mgmt 3 }");
    EXPECT_EQ(DefinitionOf(L"c"), (Definition{L"mgmt", 3, true}));
}

TEST_F(MibParser, AssignmentOrBraceInACommentHasNoEffect) {
    ParseText(L"a OBJECT-TYPE ::= -- { mgmt 1 }\na { mgmt 1 } -- ::=\n{ mgmt 1 -- ::= }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, ClosingBraceInACommentDoesNotEndAValue) {
    ParseText(L"a OBJECT IDENTIFIER ::= { -- }\n-- }\nmgmt 4 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 4, true}));
}

TEST_F(MibParser, KeywordInADescriptionCounts) {
    ParseText(L"a OBJECT-TYPE\n DESCRIPTION \"The\n  second OBJECT-TYPE of its kind\"\n ::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"second"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(DefinitionOf(L"a"), std::nullopt);
}

TEST_F(MibParser, ValueInADescriptionCounts) {
    ParseText(L"a OBJECT-TYPE\n DESCRIPTION \"as in ::= { mgmt 6 }\"\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 6, true}));
}

TEST_F(MibParser, KeywordLineThatBeginsOtherwiseSetsNoName) {
    ParseText(L"a OBJECT-TYPE\n\"b OBJECT-TYPE\n, OBJECT IDENTIFIER\n::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, KeywordsAreExact) {
    ParseText(
        L"a OBJECT-TYPE\nb object-type\nc OBJECT  IDENTIFIER\nd OBJECT\tIDENTIFIER\ne OBJECT-IDENTITY\n"
        L"f Object-Type\ng OBJECT - TYPE\n::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

TEST_F(MibParser, KeywordCountsAnywhereInTheLine) {
    ParseText(L"aOBJECT-TYPEs\n::= { mgmt 1 }\n");
    EXPECT_EQ(DefinitionOf(L"aOBJECT-TYPEs"), (Definition{L"mgmt", 1, true}));
}

TEST_F(MibParser, NameDoesNotCarryOverToTheNextFile) {
    ParseText(L"a OBJECT-TYPE\n");
    ParseText(L"::= { mgmt 1 }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, LinesEndAtLineFeedsOnly) {
    ParseText(L"a OBJECT-TYPE\r\n::= { mgmt 1 }\r\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    ParseText(L"b OBJECT-TYPE\rc OBJECT-TYPE\r::= { mgmt 2 }\r");
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"mgmt", 2, true}));
    EXPECT_EQ(DefinitionOf(L"c"), std::nullopt);
}

TEST_F(MibParser, CommentBeforeACarriageReturnRunsToTheLineFeed) {
    ParseText(L"-- head\ra OBJECT-TYPE\r::= { mgmt 1 }\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, LastLineNeedsNoLineFeed) {
    ParseText(L"a OBJECT-TYPE\n::= { mgmt\n1 }");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
}

TEST_F(MibParser, ZerosAndEndOfFileMarksAreOrdinaryCharacters) {
    ParseOctets("a\0 OBJECT-TYPE\n::= { mgmt 1 }\x1A\nb OBJECT-TYPE\n::= { mgmt 2 }\n"s);
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"mgmt", 2, true}));
}

TEST_F(MibParser, ByteOrderMarkHidesTheFirstName) {
    ParseOctets("\xEF\xBB\xBFiso OBJECT IDENTIFIER ::= { mgmt 1 }\nb OBJECT IDENTIFIER ::= { mgmt 2 }\n");
    EXPECT_EQ(DefinitionOf(L"iso"), std::nullopt);
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"mgmt", 2, true}));
}

TEST_F(MibParser, Latin1FileIsRead) {
    ParseOctets(
        "-- St\xE4rke\na OBJECT IDENTIFIER ::= { mgmt 1 }\nb\xE4 OBJECT IDENTIFIER ::= { w\xE4re 2 }\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 1, true}));
    EXPECT_EQ(DefinitionOf(L"b"), (Definition{L"w\u00E4re", 2, true}));
}

TEST_F(MibParser, WhiteSpaceBeyondAsciiPartsWords) {
    ParseText(L"\u00A0\u3000a OBJECT IDENTIFIER ::= { mgmt\u00A05\u2003}\n");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 5, true}));
}

TEST_F(MibParser, Utf16FileHoldsNoDefinitions) {
    std::string octets = "\xFF\xFE";
    for (const char character : "a OBJECT IDENTIFIER ::= { mgmt 1 }\n"s) {
        octets.push_back(character);
        octets.push_back('\0');
    }
    ParseOctets(octets);
    ParseOctets(octets.substr(2));
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, MissingFileAddsNothing) {
    const ScratchFolder folder;
    ParseMibFile(folder.Join(L"none.mib"));
    EXPECT_EQ(CountDefinitions(), 0U);
}

TEST_F(MibParser, EmptyTextAddsNothing) {
    ParseText(L"");
    ParseText(L"\n\n \r\n");
    EXPECT_EQ(CountDefinitions(), 0U);
}

// What a real module holds, cut down: most of the oddities above work together here.
TEST_F(MibParser, SmallModuleYieldsWhatItDefines) {
    ParseText(
        L"DEMO-MIB DEFINITIONS ::= BEGIN\n"
        L"IMPORTS\n"
        L"    MODULE-IDENTITY, OBJECT-TYPE, NOTIFICATION-TYPE, enterprises FROM SNMPv2-SMI\n"
        L"    DisplayString FROM SNMPv2-TC;\n"
        L"demo MODULE-IDENTITY\n"
        L"    LAST-UPDATED \"202401010000Z\"\n"
        L"    DESCRIPTION  \"A module -- small.\"\n"
        L"    ::= { enterprises 99999 }\n"
        L"demoObjects OBJECT IDENTIFIER ::= { demo 1 }\n"
        L"Mode ::= TEXTUAL-CONVENTION\n"
        L"    SYNTAX INTEGER { on(1), off(2) }\n"
        L"demoTable OBJECT-TYPE\n"
        L"    SYNTAX SEQUENCE OF DemoEntry\n"
        L"    ::= { demoObjects 2 }\n"
        L"demoMode OBJECT-TYPE\n"
        L"    SYNTAX Mode\n"
        L"    ::= { demoObjects 3 }\n"
        L"END\n");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 4);
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999"), L"demo");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999.1"), L"demoObjects");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999.1.2"), L"demoTable");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999.1.3"), L"demoMode");
}

// Would take hours if a line were examined again for each brace before it.
TEST_F(MibParser, MillionOpenValuesAreOneOpenValue) {
    std::wstring text;
    for (int line = 0; line < 1'000'000; ++line) {
        text += L"a OBJECT-TYPE ::= {\n";
    }
    ParseText(text);
    EXPECT_EQ(CountDefinitions(), 0U);
    ParseText(text + L"mgmt 5 }");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 5, true}));
}

TEST_F(MibParser, OneLineOf20MillionCharactersIsOneValue) {
    std::wstring text = L"a ";
    while (text.size() < 20'000'000) {
        text += L"OBJECT-TYPE ::= { OBJECT IDENTIFIER MODULE-IDENTITY ";
    }
    ParseText(text + L"mgmt 5 }");
    EXPECT_EQ(DefinitionOf(L"a"), (Definition{L"mgmt", 5, true}));
    EXPECT_EQ(CountDefinitions(), 1U);
}

}  // namespace
