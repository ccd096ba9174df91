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

// The pending definitions in the order of the first one of each name: "name parent subId; name parent subId".
std::wstring Definitions() {
    const std::lock_guard lock(MibStoreLock);
    std::wstring text;
    for (const MibName* name : PendingDefinitions) {
        const auto& [parent, subId, valid] = name->definition;
        EXPECT_TRUE(valid);
        text += (text.empty() ? L"" : L"; ") + std::wstring(name->text) + L" " + std::wstring(parent->text) +
                L" " + std::to_wstring(subId);
    }
    return text;
}

struct ParserCase {
    const char* why;
    const wchar_t* text;
    const wchar_t* definitions;
};

const ParserCase kCases[] = {
    {"an OBJECT-TYPE with its attributes",
     L"ifNumber OBJECT-TYPE\n    SYNTAX  Integer32\n    MAX-ACCESS  read-only\n    STATUS  current\n"
     L"    DESCRIPTION \"The number of interfaces.\"\n    ::= { interfaces 1 }\n",
     L"ifNumber interfaces 1"},
    {"an OBJECT IDENTIFIER on one line", L"interfaces OBJECT IDENTIFIER ::= { mib-2 2 }",
     L"interfaces mib-2 2"},
    {"a MODULE-IDENTITY", L"ifMIB MODULE-IDENTITY\n LAST-UPDATED \"200006140000Z\"\n ::= { mib-2 31 }\n",
     L"ifMIB mib-2 31"},
    {"a value split over lines", L"interfaces OBJECT IDENTIFIER ::= {\n   mib-2 2 }\n",
     L"interfaces mib-2 2"},
    {"a value split over lines with comments and carriage returns",
     L"a OBJECT IDENTIFIER\n::= {   -- here it comes }\r\n\r\n mib-2\t-- the parent\r\n3\r\n}\r\n",
     L"a mib-2 3"},
    {"lines are joined by a blank", L"a OBJECT IDENTIFIER ::= { mib\n-2\n2 }", L"a -2 2"},
    {"in the long form only the last two words are used",
     L"internet OBJECT IDENTIFIER ::= { iso org(3) dod(6) internet(1) }\n"
     L"last OBJECT IDENTIFIER ::= { enterprises x(5) }\n",
     L"internet dod(6) 0; last enterprises 0"},

    // Values without a name, and open ones
    {"a value before any keyword stores nothing", L"::= { a 1 }\n::= { internet }\n", L""},
    {"an open value includes the following lines even without a name",
     L"::= { a\nb OBJECT-TYPE\n1 } c OBJECT-TYPE\n::= { d 1 }\n", L""},
    {"lines of a value set no name", L"a OBJECT IDENTIFIER ::= {\nb OBJECT-TYPE\nmgmt 1 }\n::= { mgmt 2 }\n",
     L"a mgmt 2"},
    {"a value that is not closed stores nothing",
     L"a OBJECT IDENTIFIER ::= { mgmt 1\nb OBJECT IDENTIFIER ::= { mgmt 2\n", L""},
    {"the rest of the line that closes a value is ignored",
     L"a OBJECT IDENTIFIER ::= {\nmgmt 1 } b OBJECT IDENTIFIER ::= { mgmt 2 }\n", L"a mgmt 1"},

    // Braces
    {"a value runs from the first brace of its line", L"a OBJECT IDENTIFIER { mgmt 7 } ::= { mgmt 8 }\n",
     L"a mgmt 7"},
    {"also across lines", L"b OBJECT IDENTIFIER { x ::= {\nmgmt 9 }\n", L"b mgmt 9"},
    {"a closing brace before the opening one ends the value",
     L"a OBJECT IDENTIFIER } ::= { mgmt 1\nb OBJECT IDENTIFIER ::= { mgmt 2 }\n", L"b mgmt 2"},
    {"a brace before the assignment starts a value too", L"a OBJECT IDENTIFIER { mgmt 3 ::=\n}\n", L"a 3 0"},
    {"an assignment with its brace on the next line is not a value", L"a OBJECT IDENTIFIER ::=\n{ mgmt 1 }\n",
     L""},
    {"braces without an assignment are not a value",
     L"a OBJECT-TYPE\n SYNTAX INTEGER { up(1), down(2) }\n INDEX { b 2 }\n : := { c 3 }\n", L""},

    // Names
    {"a name applies until the next keyword line",
     L"a OBJECT-TYPE\n::= { mgmt 1 }\nb NOTIFICATION-TYPE\n::= { mgmt 2 }\n", L"a mgmt 2"},
    {"a SEQUENCE after an entry replaces the entry",
     L"fooEntry OBJECT-TYPE\n SYNTAX FooEntry\n ::= { fooTable 1 }\nFooEntry ::= SEQUENCE {\n"
     L" fooIndex  Integer32,\n fooName   OCTET STRING\n}\nfooIndex OBJECT-TYPE\n ::= { fooEntry 1 }\n",
     L"fooEntry OCTET 0; fooIndex fooEntry 1"},
    {"so does one on a single line", L"a OBJECT-TYPE\nFoo ::= SEQUENCE { a Integer32, b OCTET STRING }\n",
     L"a OCTET 0"},
    {"SYNTAX OBJECT IDENTIFIER becomes the name",
     L"sysObjectID OBJECT-TYPE\n    SYNTAX  OBJECT IDENTIFIER\n    ::= { system 2 }\n", L"SYNTAX system 2"},
    {"so does a keyword at the start of an import line",
     L"IMPORTS\n    MODULE-IDENTITY, OBJECT-TYPE,\n        FROM SNMPv2-SMI;\n::= { mgmt 1 }\n",
     L"MODULE-IDENTITY mgmt 1"},
    {"a keyword line without a leading identifier sets no name",
     L"a OBJECT-TYPE\n\"b OBJECT-TYPE\n, OBJECT IDENTIFIER\n::= { mgmt 1 }\n", L"a mgmt 1"},
    {"keywords are exact",
     L"a OBJECT-TYPE\nb object-type\nc OBJECT  IDENTIFIER\nd OBJECT\tIDENTIFIER\ne OBJECT-IDENTITY\n"
     L"f Object-Type\ng OBJECT - TYPE\n::= { mgmt 1 }\n",
     L"a mgmt 1"},
    {"a keyword counts anywhere in its line", L"aOBJECT-TYPEs\n::= { mgmt 1 }\n", L"aOBJECT-TYPEs mgmt 1"},
    {"a keyword in a description counts",
     L"a OBJECT-TYPE\n DESCRIPTION \"The\n  second OBJECT-TYPE of its kind\"\n ::= { mgmt 1 }\n",
     L"second mgmt 1"},
    {"a value in a description counts", L"a OBJECT-TYPE\n DESCRIPTION \"as in ::= { mgmt 6 }\"\n",
     L"a mgmt 6"},

    // Comments
    {"a keyword in a comment has no effect",
     L"a OBJECT-TYPE\nb -- OBJECT-TYPE\n-- c OBJECT-TYPE ::= { mgmt 9 }\n::= { mgmt 1 }\n", L"a mgmt 1"},
    {"a keyword may end at a comment", L"a OBJECT-TYPE--c\n::= { mgmt 1 }", L"a mgmt 1"},
    {"a comment may truncate a keyword", L"b OBJECT--TYPE\n::= { mgmt 2 }\nOBJECT -- IDENTIFIER\n", L""},
    {"a comment may truncate a line of an open value", L"c OBJECT-TYPE {::=--}\n mgmt 3 }", L"c mgmt 3"},
    {"an assignment or brace in a comment has no effect",
     L"a OBJECT-TYPE ::= -- { mgmt 1 }\na { mgmt 1 } -- ::=\n{ mgmt 1 -- ::= }\n", L""},
    {"a closing brace in a comment does not end a value", L"a OBJECT IDENTIFIER ::= { -- }\n-- }\nmgmt 4 }\n",
     L"a mgmt 4"},

    // Lines
    {"a carriage return before the line feed is white space", L"a OBJECT-TYPE\r\n::= { mgmt 1 }\r\n",
     L"a mgmt 1"},
    {"a carriage return alone ends no line", L"b OBJECT-TYPE\rc OBJECT-TYPE\r::= { mgmt 2 }\r", L"b mgmt 2"},
    {"nor a comment", L"-- head\ra OBJECT-TYPE\r::= { mgmt 1 }\n", L""},
    {"the last line needs no line feed", L"a OBJECT-TYPE\n::= { mgmt\n1 }", L"a mgmt 1"},
    {"white space beyond ASCII separates words",
     L"\u00A0\u3000a OBJECT IDENTIFIER ::= { mgmt\u00A05\u2003\u0085}\n", L"a mgmt 5"},
    {"empty text", L"", L""},
    {"empty lines", L"\n\n \r\n", L""},
};

TEST_F(MibParser, StoresTheDefinitionsOfATextAndStartsEachTextWithoutAName) {
    for (const ParserCase& row : kCases) {
        {
            const std::lock_guard lock(MibStoreLock);
            ClearNameStore();
        }
        ParseText(row.text);
        EXPECT_EQ(Definitions(), row.definitions) << row.why;
    }
    ParseText(L"a OBJECT-TYPE\n");
    ParseText(L"::= { mgmt 99 }\n");
    EXPECT_EQ(Definitions(), L"");
}

TEST_F(MibParser, ValueOfASingleWordIsReadInFullAndTheFirstNameWins) {
    ParseText(L"zero OBJECT IDENTIFIER ::= { internet }\nsecond OBJECT IDENTIFIER ::= { internet }\n");
    EXPECT_EQ(OidOf(L"zero"), L"1.3.6.1");
    EXPECT_EQ(OidOf(L"second"), L"1.3.6.1");
    EXPECT_EQ(NameOf(L"1.3.6.1"), L"zero");
    EXPECT_EQ(Definitions(), L"");
}

TEST_F(MibParser, NegativeLastNumberNamesTheParentItself) {
    ParseText(L"odd OBJECT IDENTIFIER ::= { mgmt -1 }");
    EXPECT_EQ(Definitions(), L"");
    EXPECT_EQ(OidOf(L"odd"), L"1.3.6.1.2");
    EXPECT_EQ(NameOf(L"1.3.6.1.2"), L"odd");
}

// AddressSanitizer reports a read past the end of the text.
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

// ---- Files

struct FileCase {
    const char* why;
    std::string octets;
    const wchar_t* definitions;
};

const FileCase kFiles[] = {
    {"zeros and end-of-file marks are ordinary characters",
     "a\0 OBJECT-TYPE\n::= { mgmt 1 }\x1A\nb OBJECT-TYPE\n::= { mgmt 2 }\n"s, L"a mgmt 1; b mgmt 2"},
    {"a byte-order mark hides the first name",
     "\xEF\xBB\xBFiso OBJECT IDENTIFIER ::= { mgmt 1 }\nb OBJECT IDENTIFIER ::= { mgmt 2 }\n", L"b mgmt 2"},
    {"a Latin-1 file",
     "-- St\xE4rke\na OBJECT IDENTIFIER ::= { mgmt 1 }\nb\xE4 OBJECT IDENTIFIER ::= { w\xE4re 2 }\n",
     L"a mgmt 1; b w\u00E4re 2"},
    {"a UTF-16 file contains no definitions",
     "\xFF\xFE"
     "a\0 \0O\0B\0J\0E\0C\0T\0-\0T\0Y\0P\0E\0:\0:\0=\0{\0m\0 \0\x31\0}\0"s,
     L""},
};

TEST_F(MibParser, StoresTheDefinitionsOfAFile) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"some.mib");
    const auto parse = [&] {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        ParseMibFile(path);
    };
    parse();
    EXPECT_EQ(Definitions(), L"") << "missing";
    for (const FileCase& row : kFiles) {
        WriteOctets(path, row.octets);
        parse();
        EXPECT_EQ(Definitions(), row.definitions) << row.why;
    }
}

// A shortened real module that combines most of the oddities above.
TEST_F(MibParser, SmallModuleYieldsItsDefinitions) {
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
        L"END\n");
    ResolveAll();
    EXPECT_EQ(CountOidNames(), 3);
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999"), L"demo");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999.1"), L"demoObjects");
    EXPECT_EQ(NameOf(L"1.3.6.1.4.1.99999.1.2"), L"demoTable");
}

// Would take hours if a line were examined again for each brace before it.
TEST_F(MibParser, MillionUnclosedValuesAreOneValue) {
    std::wstring text;
    for (int line = 0; line < 1'000'000; ++line) {
        text += L"a OBJECT-TYPE ::= {\n";
    }
    ParseText(text);
    EXPECT_EQ(Definitions(), L"");
    ParseText(text + L"mgmt 5 }");
    EXPECT_EQ(Definitions(), L"a mgmt 5");
}

TEST_F(MibParser, OneLineOf20MillionCharactersIsOneValue) {
    std::wstring text = L"a ";
    while (text.size() < 20'000'000) {
        text += L"OBJECT-TYPE ::= { OBJECT IDENTIFIER MODULE-IDENTITY ";
    }
    ParseText(text + L"mgmt 5 }");
    EXPECT_EQ(Definitions(), L"a mgmt 5");
}

}  // namespace
