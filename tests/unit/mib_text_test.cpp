#include "mib/mib_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>

#include "tests/support/mib_tables.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::wstring ReadBack(const std::string& octets) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"some.mib");
    WriteOctets(path, octets);
    return ReadMibText(path);
}

TEST(ReadMibText, FileIsUtf8IfValidElseAnsi) {
    EXPECT_EQ(ReadBack(""), L"");
    EXPECT_EQ(ReadBack("Z\xC3\xBCrich \xE2\x82\xAC"), L"Z\u00FCrich \u20AC");
    EXPECT_EQ(ReadBack("St\xE4rke"), L"St\u00E4rke");
    EXPECT_EQ(ReadBack("\x7F"), L"\u007F");
    EXPECT_EQ(ReadBack("\x80"), L"\u20AC");
    EXPECT_EQ(ReadBack("\xC3\xA4 \xE4"), L"\u00C3\u00A4 \u00E4")
        << "one invalid octet makes the whole file ANSI";
    EXPECT_EQ(ReadBack("\xFF\xFE"
                       "a\0b\0"s),
              L"\u00FF\u00FE"
              L"a\0b\0"s)
        << "UTF-16 is not recognized";
    EXPECT_EQ(ReadBack("a\r\nb\rc\n\0d\x1A"
                       "e"s),
              L"a\r\nb\rc\n\0d\x1A"
              L"e"s);
    const std::wstring text = ReadBack("\xEF\xBB\xBFiso OBJECT IDENTIFIER");
    EXPECT_EQ(text, L"\uFEFFiso OBJECT IDENTIFIER");
    EXPECT_EQ(LeadingIdentifier(text), L"");
}

TEST(ReadMibText, MissingFileOrFolderReadsAsEmpty) {
    const ScratchFolder folder;
    EXPECT_EQ(ReadMibText(folder.Join(L"none.mib")), L"");
    EXPECT_EQ(ReadMibText(folder.path().wstring()), L"");
}

// Without a size check before the read, running out of memory would end the load of all files.
TEST(ReadMibText, FileLargerThanMemoryReadsAsEmpty) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"huge.txt");
    WriteOctets(path, "a OBJECT IDENTIFIER ::= { mgmt 5 }\n");
    std::error_code error;
    std::filesystem::resize_file(folder.path() / "huge.txt", uintmax_t{1} << 40, error);
    if (error) {
        GTEST_SKIP() << "this file system has no sparse file of 1 TiB: " << error.message();
    }
    EXPECT_EQ(ReadMibText(path), L"");
}

TEST(StripComment, CutsAtTheFirstTwoDashes) {
    EXPECT_EQ(StripComment(L"a { b 1 } -- comment"sv), L"a { b 1 } ");
    EXPECT_EQ(StripComment(L"a -- b -- c"sv), L"a ");
    EXPECT_EQ(StripComment(L"a---b"sv), L"a");
    EXPECT_EQ(StripComment(L"--"sv), L"");
    EXPECT_EQ(StripComment(L"DESCRIPTION \"on -- off\""sv), L"DESCRIPTION \"on ") << "quoted or not";
    for (const std::wstring_view line : {L"", L"-", L"a-b", L"- -", L"{ mib-2 -1 }"}) {
        EXPECT_EQ(StripComment(line), line);
    }
}

TEST(LeadingIdentifier, IsTheFirstWordOfADefinition) {
    EXPECT_EQ(LeadingIdentifier(L"ifIndex OBJECT-TYPE"sv), L"ifIndex");
    EXPECT_EQ(LeadingIdentifier(L"SYNTAX  OBJECT IDENTIFIER"sv), L"SYNTAX");
    EXPECT_EQ(LeadingIdentifier(L"  mib-2_x9{"sv), L"mib-2_x9");
    EXPECT_EQ(LeadingIdentifier(L"azAZ09-_{"sv), L"azAZ09-_");
    EXPECT_EQ(LeadingIdentifier(L"-9"sv), L"-9");
    for (const std::wstring_view line :
         {L"a.b", L"a/b", L"a:b", L"a@b", L"a[b", L"a^b", L"a`b", L"a{b", L"a,b", L"a\u00E4"}) {
        EXPECT_EQ(LeadingIdentifier(line), L"a") << std::wstring(line);
    }
    for (const std::wstring_view line :
         {L"::= { x 1 }", L"", L" ", L"{ a }", L".a", L"/a", L"\"a", L"\u00E4b", L"\uFEFFiso"}) {
        EXPECT_EQ(LeadingIdentifier(line), L"") << std::wstring(line);
    }
}

struct ShortForm {
    const wchar_t* statement;
    const wchar_t* parent;
    int32_t subId;
    const char* why;
};

const ShortForm kShortForms[] = {
    {L"::= { ifEntry 3 }", L"ifEntry", 3, "the usual value"},
    {L"{ifEntry 3}", L"ifEntry", 3, "no blanks at the braces"},
    {L"{\tifEntry\r\n3\v}", L"ifEntry", 3, "any white space separates words"},
    {L"{ iso org(3) dod(6) internet(1) }", L"dod(6)", 0, "only the last two words count"},
    {L"{ 1 3 6 1 }", L"6", 1, "a number may be the parent"},
    {L"{ enterprises x(5) }", L"enterprises", 0, "a last word that is not a number is 0"},
    {L"{ a, b }", L"a,", 0, "commas belong to words"},
    {L"{ a 5, }", L"a", 5, "the number ends at the comma"},
    {L"{ a 0 }", L"a", 0, "zero is not negative"},
    {L"{ a -0 }", L"a", 0, "nor is minus zero"},
    {L"{ a +7 }", L"a", 7, "a sign is read"},
    {L"{ a 2147483648 }", L"a", std::numeric_limits<int32_t>::max(), "clamped"},
    {L"Foo ::= SEQUENCE { a Integer32, b OCTET STRING }", L"OCTET", 0, "a type is read like a value"},
    {L"{ { a 1 }", L"a", 1, "the second brace is a word"},
    {L"\"{ a 1 }\" ::= { b 2 }", L"a", 1, "the first braces count, whatever is before them"},
};

TEST(ParseParentAndSubId, ReadsTheLastTwoWords) {
    for (const ShortForm& row : kShortForms) {
        std::wstring_view parent;
        int32_t subId = -9;
        EXPECT_TRUE(ParseParentAndSubId(row.statement, &parent, &subId)) << row.why;
        EXPECT_EQ(parent, row.parent) << row.why;
        EXPECT_EQ(subId, row.subId) << row.why;
    }
}

TEST(ParseParentAndSubId, RejectsFewerThanTwoWords) {
    for (const wchar_t* statement :
         {L"{ zeroDotZero }", L"{ }", L"{}", L"} {", L"{ a 1", L"a 1 }", L"} ::= { a 1 }", L""}) {
        std::wstring_view parent = L"leftover";
        int32_t subId = 9;
        EXPECT_FALSE(ParseParentAndSubId(statement, &parent, &subId)) << statement;
        EXPECT_EQ(parent, L"") << statement;
        EXPECT_EQ(subId, -1) << statement;
    }
}

TEST(ParseParentAndSubId, RejectsANegativeNumber) {
    std::wstring_view parent;
    int32_t subId = 0;
    EXPECT_FALSE(ParseParentAndSubId(L"{ mib-2 -1 }", &parent, &subId));
    EXPECT_FALSE(ParseParentAndSubId(L"{ mib-2 -99999999999 }", &parent, &subId));
}

class OidValue : public testing::Test {
  protected:
    FreshNameStore store_;
};

// The identifier that a value represents, as text.
std::wstring ReadValue(std::wstring_view statement) {
    return FormatOid(ParseOidValue(statement));
}

TEST_F(OidValue, NeedsTwoArcs) {
    EXPECT_EQ(ReadValue(L"{ 1 }"), L"");
    EXPECT_EQ(ReadValue(L"{ iso }"), L"");
    EXPECT_EQ(ReadValue(L"{ org }"), L"1.3");
    EXPECT_EQ(ReadValue(L"{ 0 0 }"), L"0.0");
}

TEST_F(OidValue, NameCountsOnlyBeforeTheFirstArc) {
    EXPECT_EQ(ReadValue(L"{ iso 3 6 }"), L"1.3.6");
    EXPECT_EQ(ReadValue(L"{ 3 iso }"), L"");
    EXPECT_EQ(ReadValue(L"{ 3 iso 4 }"), L"3.4");
    EXPECT_EQ(ReadValue(L"{ internet 4 1 }"), L"1.3.6.1.4.1");
    EXPECT_EQ(ReadValue(L"{ enterprises 9 }"), L"1.3.6.1.4.1.9");
}

TEST_F(OidValue, UnknownNameContributesNothing) {
    EXPECT_EQ(ReadValue(L"{ unknownName 5 }"), L"");
    EXPECT_EQ(ReadValue(L"{ unknownName 5 6 }"), L"5.6");
    EXPECT_EQ(ReadValue(L"{ unknownName iso 5 }"), L"1.5");
}

TEST_F(OidValue, NegativeLastWordIsANameAndIgnored) {
    EXPECT_EQ(ReadValue(L"{ mgmt -1 }"), L"1.3.6.1.2");
}

TEST_F(OidValue, LongFormUsesTheNumbersInParentheses) {
    EXPECT_EQ(ReadValue(L"{ iso org(3) dod(6), internet(1) }"), L"1.3.6.1");
}

TEST_F(OidValue, EarlierDefinitionsAreKnown) {
    StoreDefinition(L"cisco", L"enterprises", 9);
    StoreNamedOid(L"learnt", L"1.7");
    EXPECT_EQ(ReadValue(L"{ cisco 1 }"), L"1.3.6.1.4.1.9.1");
    EXPECT_EQ(ReadValue(L"{ learnt }"), L"1.7");
}

TEST_F(OidValue, IsEmptyWithoutBraces) {
    for (const wchar_t* statement : {L"", L"1 3 6", L"{ 1 3", L"1 3 }", L"} 1 3 {", L"{ }"}) {
        EXPECT_EQ(ReadValue(statement), L"") << statement;
    }
}

struct Component {
    const wchar_t* word;
    const wchar_t* alone;      // after no arcs
    const wchar_t* following;  // after the arc 7
    const char* why;
};

const Component kComponents[] = {
    {L"3", L"3", L"7.3", "a number"},
    {L"org(3)", L"3", L"7.3", "a number in parentheses"},
    {L"dod(6),", L"6", L"7.6", "whatever follows the parentheses"},
    {L"(5)", L"5", L"7.5", "no name needed"},
    {L"org(x)", L"0", L"7.0", "something else in parentheses is 0"},
    {L"org(-3)", L"-3", L"7.-3", "a sign in parentheses is read"},
    {L"a(b(3)", L"0", L"7.0", "from the first opening to the first closing one"},
    {L"x()", L"", L"7", "with nothing in parentheses: a name"},
    {L")x(3)", L"", L"7", "the first closing one must follow the first opening one"},
    {L"x(3", L"", L"7", "both are needed"},
    {L"org", L"1.3", L"7", "a name counts only before the first arc"},
    {L"3x", L"", L"7", "not all digits: a name"},
    {L"-1", L"", L"7", "with a sign: a name"},
    {L"\u0663", L"", L"7", "digits of other scripts: a name"},
    {L"99999999999", L"2147483647", L"7.2147483647", "clamped"},
};

TEST_F(OidValue, EachKindOfWordAddsItsArcs) {
    for (const Component& row : kComponents) {
        EXPECT_EQ(FormatOid(AddOidComponent(row.word, nullptr)), row.alone) << row.why;
        EXPECT_EQ(FormatOid(AddOidComponent(row.word, StoreOid(L"7"))), row.following) << row.why;
    }
}

}  // namespace
