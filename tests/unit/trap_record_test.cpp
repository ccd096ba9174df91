#include "trap/trap_record.h"

#include <gtest/gtest.h>

namespace {

constexpr LocalTime kTime = {2026, 3, 7, 9, 5, 2, 47};

std::wstring Compose(const std::vector<VarbindRecord>& bindings) {
    return ComposeTrapRecord(kTime, L"10.1.2.3", bindings);
}

const std::wstring kHeaderLine = L"2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\n";

TEST(ComposeTrapRecord, HasAHeaderLineALineForEachBindingAndAnEmptyLine) {
    EXPECT_EQ(Compose({{L"1.3.6.1.2.1.1.3.0", {}, L"TimeTicks", L"123456"},
                       {L"1.3.6.1.6.3.1.1.4.1.0", L"snmpTrapOID", L"OID", L"1.3.6.1.6.3.1.1.5.3"}}),
              kHeaderLine +
                  L"---> [1] 1.3.6.1.2.1.1.3.0  TimeTicks = 123456\r\n"
                  L"---> [2] 1.3.6.1.6.3.1.1.4.1.0 (snmpTrapOID)  OID = 1.3.6.1.6.3.1.1.5.3\r\n"
                  L"\r\n");
}

TEST(ComposeTrapRecord, NoBindingsMeansNotDecoded) {
    EXPECT_EQ(Compose({}), kHeaderLine + L"DECODED VARBINDS: (not decoded)\r\n\r\n");
}

TEST(ComposeTrapRecord, EmptyIdentifierLeavesThreeBlanksAfterTheBracket) {
    EXPECT_EQ(Compose({{{}, {}, L"INTEGER", L"1"}}), kHeaderLine + L"---> [1]   INTEGER = 1\r\n\r\n");
}

TEST(ComposeTrapRecord, MissingValueEndsInABlank) {
    EXPECT_EQ(Compose({{L"1.3", {}, L"(no value)", {}}}),
              kHeaderLine + L"---> [1] 1.3  (no value) = \r\n\r\n");
}

TEST(ComposeTrapRecord, NumbersAreDecimalWithoutPadding) {
    const std::wstring record = Compose(std::vector<VarbindRecord>(123, {L"1.3", L"a", L"NULL", L"NULL"}));
    EXPECT_NE(record.find(L"\r\n---> [9] 1.3 (a)  NULL = NULL\r\n---> [10] 1.3 (a)  NULL = NULL\r\n"),
              std::wstring::npos);
    EXPECT_TRUE(record.ends_with(L"\r\n---> [123] 1.3 (a)  NULL = NULL\r\n\r\n"));
}

TEST(ComposeTrapRecord, TextsAreCopiedUnchanged) {
    EXPECT_EQ(Compose({{L"1.3", L"caf\u00E9 (x)", L"OCTET STRING", L"\"a = b\""}}),
              kHeaderLine + L"---> [1] 1.3 (caf\u00E9 (x))  OCTET STRING = \"a = b\"\r\n\r\n");
}

}  // namespace
