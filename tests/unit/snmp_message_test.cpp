#include "trap/snmp_message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "tests/support/ber_encoder.h"
#include "tests/support/fenced_octets.h"
#include "tests/support/mib_tables.h"
#include "tests/support/sample_messages.h"
#include "trap/ber_reader.h"

namespace {

using Lines = std::vector<std::wstring>;

// A record as one text; no expected text contains a bar.
std::wstring Flatten(const VarbindRecord& record) {
    return record.oid + L"|" + record.name + L"|" + record.type + L"|" + record.value;
}

bool DecodeInto(const Octets& octets, std::vector<VarbindRecord>& records) {
    const FencedOctets fenced(octets.data(), octets.size());
    return DecodeSnmpMessage(fenced.data(), fenced.size(), records);
}

// The records of a message. DecodeSnmpMessage must return true exactly when there are any.
Lines Decode(const Octets& octets) {
    std::vector<VarbindRecord> records = {{L"left", L"over", L"from", L"before"}};
    const bool decoded = DecodeInto(octets, records);
    EXPECT_EQ(decoded, !records.empty());
    Lines lines;
    for (const VarbindRecord& record : records) {
        lines.push_back(Flatten(record));
    }
    return lines;
}

const Lines kNotDecoded = {};

const Binding kUpTime = {"1.3.6.1.2.1.1.3.0", EncodeUnsigned(ber::kTimeTicks, 123456)};
const Binding kName = {"1.3.6.1.2.1.1.5.0", EncodeOctetString("core")};
const std::wstring kUpTimeLine = L"1.3.6.1.2.1.1.3.0||TimeTicks|123456";
const std::wstring kNameLine = L"1.3.6.1.2.1.1.5.0||OCTET STRING|\"core\"";
const Octets kUnreadable = {0x30, 0x80};

Octets ListOf(const std::vector<Octets>& elements) {
    Octets content;
    for (const Octets& element : elements) {
        content.insert(content.end(), element.begin(), element.end());
    }
    return EncodeV2TrapWithListContent(content);
}

// A v2c message with these PDU elements.
Octets PduOf(std::initializer_list<Octets> elements) {
    return EncodeMessage(1, EncodeElement(ber::kV2TrapPdu, Concatenate(elements)));
}

// Type and value of a single binding with this element as its value.
std::wstring DecodeValue(const Octets& element) {
    const Lines lines = Decode(EncodeV2Trap({{"1.3", element}}));
    return lines.size() == 1 ? lines[0].substr(5) : L"not one record";
}

// Replaces the names in the store, and clears it at scope exit.
class ScopedNames {
  public:
    explicit ScopedNames(std::initializer_list<std::pair<std::wstring, std::wstring>> namesAndOids) {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        for (const auto& [name, oid] : namesAndOids) {
            StoreNamedOid(name, oid);
        }
    }
    ScopedNames(const ScopedNames&) = delete;
    ScopedNames& operator=(const ScopedNames&) = delete;
    ~ScopedNames() {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
    }
};

// ---- Samples

TEST(DecodeSnmpMessage, EverySampleGivesItsLines) {
    for (const SampleMessage& sample : SampleMessages()) {
        Lines expected;
        for (std::wstring line : sample.lines) {
            const size_t equals = line.find(L" = ");
            line.replace(equals, 3, L"|");
            line.replace(line.find(L"  "), 2, L"||");
            expected.push_back(line);
        }
        EXPECT_EQ(Decode(sample.octets), expected) << sample.name;
    }
}

TEST(DecodeSnmpMessage, Version1AndVersion2cAndInformOfTheSameBindingsGiveTheSameRecords) {
    const std::vector<Binding> bindings = {kUpTime, kName};
    const Lines expected = {kUpTimeLine, kNameLine};
    EXPECT_EQ(Decode(EncodeV1Trap(bindings)), expected);
    EXPECT_EQ(Decode(EncodeV2Trap(bindings)), expected);
    EXPECT_EQ(Decode(EncodeInform(bindings)), expected);
}

// ---- Message frame

TEST(DecodeSnmpMessage, OuterTagOtherThanSequenceIsNotDecoded) {
    Octets message = EncodeV2Trap({kUpTime});
    for (int tag = 0; tag <= 0xFF; ++tag) {
        message[0] = static_cast<uint8_t>(tag);
        EXPECT_EQ(!Decode(message).empty(), tag == ber::kSequence) << tag;
    }
}

TEST(DecodeSnmpMessage, VersionAndCommunityAreIgnored) {
    const Octets pdu = EncodeV2Pdu(ber::kV2TrapPdu, EncodeBindingList({kUpTime}));
    const Lines expected = {kUpTimeLine};
    EXPECT_EQ(Decode(EncodeMessage(99, pdu)), expected);
    EXPECT_EQ(Decode(EncodeSequence({EncodeNull(), EncodeNull(), pdu})), expected);
    EXPECT_EQ(Decode(EncodeSequence({EncodeOctetString("v"), EncodeInteger(-1), pdu})), expected);
}

TEST(DecodeSnmpMessage, PduTagIsIgnored) {
    const Octets list = EncodeBindingList({kUpTime});
    for (int tag = 0; tag <= 0xFF; ++tag) {
        EXPECT_EQ(Decode(EncodeMessage(1, EncodeV2Pdu(static_cast<uint8_t>(tag), list))), Lines{kUpTimeLine})
            << tag;
    }
}

// ---- Messages that do not decode

struct MessageCase {
    const char* why;
    Octets message;
    Lines lines;
};

const Octets kList = EncodeBindingList({kUpTime});
const Octets kNameList = EncodeBindingList({kName});
const Octets kPdu = EncodeV2Pdu(ber::kV2TrapPdu, kList);
const Octets kVersion = EncodeInteger(1);
const Octets kCommunity = EncodeOctetString("public");

Octets OneOctetTooLong(Octets element) {
    ++element[1];
    return element;
}

const MessageCase kUndecodable[] = {
    {"no octets", {}, {}},
    {"one octet", {0x30}, {}},
    {"no content", {0x30, 0x00}, {}},
    {"content of one octet", {0x30, 0x01, 0x02}, {}},
    {"octets after the message are not read", {0x30, 0x01, 0x02, 0x01, 0x01}, {}},
    {"unreadable version", EncodeSequence({kUnreadable, kCommunity, kPdu}), {}},
    {"unreadable community", EncodeSequence({kVersion, kUnreadable, kPdu}), {}},
    {"ends after the version", EncodeSequence({kVersion}), {}},
    {"ends in the community", EncodeSequence({kVersion, {0x04}}), {}},
    {"ends after the community", EncodeSequence({kVersion, kCommunity}), {}},
    {"ends in the PDU's header", EncodeSequence({kVersion, kCommunity, {0xA7}}), {}},
    {"empty PDU", EncodeMessage(1, {ber::kV2TrapPdu, 0x00}), {}},
    {"PDU longer than its message", EncodeMessage(1, OneOctetTooLong(kPdu)), {}},
    {"unreadable first element of the PDU", PduOf({kUnreadable, kList}), {}},
    {"PDU of one octet", PduOf({{0x30}}), {}},
    {"unreadable element before the list", PduOf({kVersion, kUnreadable, kList}), {}},
    {"readable element after the list", PduOf({kVersion, kList, EncodeNull()}), {}},
    {"two zero octets after the list", PduOf({kList, {0x00, 0x00}}), {}},
    {"empty list", EncodeV2Trap({}), {}},
    {"empty list of a version 1 trap", EncodeV1Trap({}), {}},
    {"unreadable first binding", ListOf({kUnreadable, EncodeBinding(kName)}), {}},
    {"no binding in the list", ListOf({EncodeNull(), EncodeSequence({kVersion, kVersion})}), {}},
};

TEST(DecodeSnmpMessage, ReturnsFalseWithoutRecords) {
    for (const MessageCase& row : kUndecodable) {
        EXPECT_EQ(Decode(row.message), kNotDecoded) << row.why;
    }
    std::vector<VarbindRecord> records;
    EXPECT_FALSE(DecodeSnmpMessage(nullptr, 0, records));
}

// ---- The list and its bindings

const Octets kWrongBinding = EncodeSequence({EncodeInteger(1), EncodeOid("1.3.6"), EncodeInteger(2)});

const MessageCase kLists[] = {
    {"octets after the message are ignored",
     Concatenate({EncodeV2Trap({kUpTime, kName}), {0x30, 0x00}}),
     {kUpTimeLine, kNameLine}},
    {"the list may be the first element", PduOf({kNameList}), {kNameLine}},
    {"the last readable element is the list", PduOf({kList, kNameList}), {kNameLine}},
    {"an unreadable element ends the search", PduOf({kNameList, kUnreadable, kList}), {kNameLine}},
    {"one octet after the list", PduOf({kVersion, kList, {0x00}}), {kUpTimeLine}},
    {"an indefinite length after the list", PduOf({kVersion, kList, kUnreadable}), {kUpTimeLine}},
    {"a cut element after the list", PduOf({kVersion, kList, {0x05, 0x01}}), {kUpTimeLine}},
    {"elements that are not sequences are skipped",
     ListOf({EncodeNull(), EncodeBinding(kUpTime), EncodeOctetString("x"), EncodeBinding(kName)}),
     {kUpTimeLine, kNameLine}},
    {"bindings of fewer than two octets are skipped",
     ListOf({{0x30, 0x00}, {0x30, 0x01, 0x06}, EncodeBinding(kName)}),
     {kNameLine}},
    {"a binding that begins with an INTEGER is skipped",
     ListOf({kWrongBinding, EncodeBinding(kUpTime), kWrongBinding, EncodeBinding(kName)}),
     {kUpTimeLine, kNameLine}},
    {"a binding whose identifier is longer than itself is skipped",
     ListOf({EncodeSequence({{0x06, 0x05, 0x2B}}), EncodeBinding(kName)}),
     {kNameLine}},
    {"an unreadable element ends the list",
     ListOf({EncodeBinding(kUpTime), kUnreadable, EncodeBinding(kName)}),
     {kUpTimeLine}},
    {"so does a single octet", ListOf({EncodeBinding(kUpTime), {0x30}}), {kUpTimeLine}},
    {"an identifier without a value", EncodeV2Trap({{"1.3.6.1", {}}}), {L"1.3.6.1||(no value)|"}},
    {"one octet of a value", EncodeV2Trap({{"1.3.6.1", {0x02}}}), {L"1.3.6.1||(no value)|"}},
    {"an unreadable value",
     EncodeV2Trap({{"1.3.6.1", {0x02, 0x80, 0x01}}, kName}),
     {L"1.3.6.1||(no value)|", kNameLine}},
    {"a value longer than its binding",
     EncodeV2Trap({{"1.3.6.1", {0x04, 0x05, 'a'}}, kName}),
     {L"1.3.6.1||(no value)|", kNameLine}},
    {"octets after the value are ignored",
     EncodeV2Trap({{"1.3.6.1", Concatenate({EncodeInteger(5), EncodeInteger(6), {0xFF}})}, kName}),
     {L"1.3.6.1||INTEGER|5", kNameLine}},
    {"an empty identifier", EncodeV2Trap({{"", EncodeInteger(1)}}), {L"||INTEGER|1"}},
};

TEST(DecodeSnmpMessage, UnusableBindingsAreSkippedAndUnreadableOctetsEndTheList) {
    for (const MessageCase& row : kLists) {
        EXPECT_EQ(Decode(row.message), row.lines) << row.why;
    }
}

TEST(DecodeSnmpMessage, ListThatIsNotASequenceIsNotDecoded) {
    const Octets binding = EncodeBinding(kUpTime);
    for (int tag = 0; tag <= 0xFF; ++tag) {
        const Octets message = PduOf({EncodeInteger(1), EncodeElement(static_cast<uint8_t>(tag), binding)});
        EXPECT_EQ(!Decode(message).empty(), tag == ber::kSequence) << tag;
    }
}

TEST(DecodeSnmpMessage, BindingUnderAnyOtherTagIsSkipped) {
    Octets binding = EncodeBinding(kUpTime);
    for (int tag = 0; tag <= 0xFF; ++tag) {
        binding[0] = static_cast<uint8_t>(tag);
        const Lines lines = Decode(ListOf({binding, EncodeBinding(kName)}));
        EXPECT_EQ(lines.size(), tag == ber::kSequence ? 2U : 1U) << tag;
        EXPECT_EQ(lines.back(), kNameLine);
    }
}

TEST(DecodeSnmpMessage, LargestDatagramOfSmallestBindingsIsDecodedWhole) {
    const Octets binding = {0x30, 0x02, 0x06, 0x00};
    const std::vector<Octets> bindings(16360, binding);
    const Octets message = ListOf(bindings);
    ASSERT_LE(message.size(), 65507U);
    EXPECT_EQ(Decode(message), Lines(bindings.size(), L"||(no value)|"));
}

TEST(DecodeSnmpMessage, RecordsOfAnEarlierMessageAreRemoved) {
    const ScopedNames names({{L"sysName", L"1.3.6.1.2.1.1.5.0"}});
    std::vector<VarbindRecord> records;
    ASSERT_TRUE(DecodeInto(EncodeV2Trap({kName, kUpTime}), records));
    ASSERT_TRUE(DecodeInto(EncodeV2Trap({{"1.3.6.1", {}}}), records));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(Flatten(records[0]), L"1.3.6.1||(no value)|");
    EXPECT_FALSE(DecodeInto(EncodeV2Trap({}), records));
    EXPECT_TRUE(records.empty());
}

// ---- Names

TEST(DecodeSnmpMessage, NamesMatchOnlyTheExactIdentifier) {
    const ScopedNames names({{L"sysUpTimeInstance", L"1.3.6.1.2.1.1.3.0"}, {L"sysName", L"1.3.6.1.2.1.1.5"}});
    EXPECT_EQ(Decode(EncodeV2Trap({kUpTime, kName})),
              (Lines{L"1.3.6.1.2.1.1.3.0|sysUpTimeInstance|TimeTicks|123456", kNameLine}));
}

TEST(DecodeSnmpMessage, IdentifierAsAValueHasNoName) {
    const ScopedNames names({{L"linkDown", L"1.3.6.1.6.3.1.1.5.3"}});
    EXPECT_EQ(DecodeValue(EncodeOid("1.3.6.1.6.3.1.1.5.3")), L"OID|1.3.6.1.6.3.1.1.5.3");
}

// ---- Values

struct ValueCase {
    Octets element;
    const wchar_t* typeAndValue;
};

const ValueCase kValues[] = {
    {EncodeInteger(0), L"INTEGER|0"},
    {EncodeInteger(-1), L"INTEGER|-1"},
    {EncodeInteger(INT32_MIN), L"INTEGER|-2147483648"},
    {EncodeInteger(INT64_MAX), L"INTEGER|9223372036854775807"},
    {{0x02, 0x00}, L"INTEGER|0"},
    {{0x02, 0x08, 0x80, 0, 0, 0, 0, 0, 0, 0}, L"INTEGER|-1"},
    {EncodeNull(), L"NULL|NULL"},
    {{0x05, 0x02, 0x01, 0x02}, L"NULL|NULL"},
    {EncodeOid("1.3.6.1.4.1"), L"OID|1.3.6.1.4.1"},
    {{0x06, 0x00}, L"OID|"},
    {EncodeUnsigned(ber::kCounter32, 4294967295), L"Counter32|4294967295"},
    {{0x41, 0x04, 0xFF, 0xFF, 0xFF, 0xFF}, L"Counter32|18446744073709551615"},
    {{0x41, 0x00}, L"Counter32|0"},
    {{0x42, 0x01, 0x80}, L"Gauge32|18446744073709551488"},
    {EncodeUnsigned(ber::kGauge32, 7), L"Gauge32|7"},
    {EncodeUnsigned(ber::kTimeTicks, 4294967295), L"TimeTicks|4294967295"},
    {EncodeUnsigned(ber::kCounter64, UINT64_MAX), L"Counter64|18446744073709551615"},
    {{0x80, 0x00}, L"TAG 0x80|0x"},
    {{0x81, 0x00}, L"TAG 0x81|0x"},
    {{0x82, 0x00}, L"TAG 0x82|0x"},
    {{0x44, 0x02, 0x9F, 0x78}, L"TAG 0x44|0x9F78"},
    {{0x45, 0x02, 'o', 'k'}, L"TAG 0x45|\"ok\""},
    {{0x00, 0x01, 0x41}, L"TAG 0x00|\"A\""},
    {{0xFF, 0x01, 0x00}, L"TAG 0xFF|0x00"},
    {{0x30, 0x02, 0x05, 0x00}, L"TAG 0x30|0x0500"},
};

TEST(DecodeSnmpMessage, ValuesAreRenderedByTheirTag) {
    for (const ValueCase& row : kValues) {
        EXPECT_EQ(DecodeValue(row.element), row.typeAndValue) << testing::PrintToString(row.element);
    }
}

TEST(DecodeSnmpMessage, EveryOtherTagIsNamedByItsNumber) {
    const std::vector<int> known = {0x02, 0x04, 0x05, 0x06, 0x40, 0x41, 0x42, 0x43, 0x46};
    for (int tag = 0; tag <= 0xFF; ++tag) {
        if (std::find(known.begin(), known.end(), tag) == known.end()) {
            wchar_t label[16];
            swprintf(label, 16, L"TAG 0x%02X|0x", static_cast<unsigned>(tag));
            EXPECT_EQ(DecodeValue({static_cast<uint8_t>(tag), 0x00}), label);
        }
    }
}

std::wstring RenderString(std::string_view octets) {
    const FencedOctets fenced(reinterpret_cast<const uint8_t*>(octets.data()), octets.size());
    return RenderOctetString(fenced.data(), fenced.size());
}

TEST(RenderOctetString, PrintableOctetsAreQuotedAndNeverTruncated) {
    EXPECT_EQ(RenderString(std::string(65000, 'x')), L"\"" + std::wstring(65000, L'x') + L"\"");
    EXPECT_EQ(RenderString("public"), L"\"public\"");
    EXPECT_EQ(RenderString(" ~"), L"\" ~\"") << "32 and 126 are printable";
    EXPECT_EQ(RenderString("a\"b"), L"\"a\"b\"") << "nothing is escaped";
}

TEST(RenderOctetString, AnyOtherOctetMakesItHexadecimal) {
    EXPECT_EQ(RenderString(std::string("\0\1", 2)), L"0x0001");
    EXPECT_EQ(RenderString("a\x1F"), L"0x611F") << "31";
    EXPECT_EQ(RenderString("a\x7F"), L"0x617F") << "127";
    EXPECT_EQ(RenderString("line\r\n"), L"0x6C696E650D0A");
    EXPECT_EQ(RenderString("\xAB\xCD\xEF"), L"0xABCDEF");
    EXPECT_EQ(RenderString(""), L"0x") << "no octets";
}

TEST(RenderOctetString, HexadecimalIsTruncatedAfter24Octets) {
    EXPECT_EQ(RenderString(std::string(23, '\xFF')), L"0x" + std::wstring(46, L'F'));
    EXPECT_EQ(RenderString(std::string(24, '\xFF')), L"0x" + std::wstring(48, L'F'));
    EXPECT_EQ(RenderString(std::string(25, '\xFF')), L"0x" + std::wstring(48, L'F') + L"...");
    EXPECT_EQ(RenderString(std::string(30, '\xFF')), L"0x" + std::wstring(48, L'F') + L"...");
    EXPECT_EQ(RenderString(std::string(60000, '\0')), L"0x" + std::wstring(48, L'0') + L"...");
}

TEST(RenderIpAddress, FourOctetsAreADottedAddress) {
    EXPECT_EQ(DecodeValue(EncodeIpAddress(192, 168, 1, 20)), L"IpAddress|192.168.1.20");
    EXPECT_EQ(DecodeValue(EncodeIpAddress(0, 0, 0, 0)), L"IpAddress|0.0.0.0");
    EXPECT_EQ(DecodeValue(EncodeIpAddress(255, 255, 255, 255)), L"IpAddress|255.255.255.255");
}

TEST(RenderIpAddress, AnyOtherCountIsAnOctetString) {
    EXPECT_EQ(DecodeValue({0x40, 0x03, 0x0A, 0x00, 0x01}), L"IpAddress|0x0A0001");
    EXPECT_EQ(DecodeValue({0x40, 0x00}), L"IpAddress|0x");
    EXPECT_EQ(DecodeValue({0x40, 0x05, 'a', 'b', 'c', 'd', 'e'}), L"IpAddress|\"abcde\"");
}

// ---- Truncated messages

// Makes the truncated element at `position` end where the octets end, then the truncated constructed element
// inside it, and so on for `levels` levels. An incomplete header is unchanged.
void RepairLengths(Octets& octets, size_t position, int levels) {
    while (levels-- > 0 && octets.size() - position >= 2) {
        const size_t lengthOctets = (octets[position + 1] & 0x80) != 0 ? octets[position + 1] & 0x7FU : 0;
        size_t content = position + 2 + lengthOctets;
        if (content > octets.size() || lengthOctets > 4) {
            return;
        }
        size_t length = octets.size() - content;
        for (size_t at = content; at > position + 2; length >>= 8) {
            octets[--at] = static_cast<uint8_t>(length & 0xFF);
        }
        if (lengthOctets == 0) {
            octets[position + 1] = static_cast<uint8_t>(length);
        }
        TlvHeader child;
        const uint8_t* const end = octets.data() + octets.size();
        while (ReadTlvHeader(octets.data() + content, end, &child)) {
            content = static_cast<size_t>(child.contentEnd - octets.data());
        }
        position = content;
        if (position == octets.size() || (octets[position] & 0x20) == 0) {
            return;
        }
    }
}

Octets Truncate(const Octets& octets, size_t size) {
    return Octets(octets.begin(), octets.begin() + static_cast<ptrdiff_t>(size));
}

constexpr size_t kSmallestBinding = 4;  // octets; its identifier is empty
constexpr int kDownToTheList = 3;       // levels: message, PDU and list

TEST(TruncatedMessage, IsNotDecodedAtAnyLength) {
    for (const SampleMessage& sample : SampleMessages()) {
        TlvHeader message;
        const uint8_t* const end = sample.octets.data() + sample.octets.size();
        const bool readable = ReadTlvHeader(sample.octets.data(), end, &message);
        const size_t messageSize =
            readable ? static_cast<size_t>(message.contentEnd - sample.octets.data()) : sample.octets.size();
        for (size_t size = 0; size < messageSize; ++size) {
            EXPECT_EQ(Decode(Truncate(sample.octets, size)), kNotDecoded)
                << sample.name << " truncated at " << size;
        }
    }
}

TEST(TruncatedMessage, WithRepairedLengthsIsNeverReadPastItsEnd) {
    for (const SampleMessage& sample : SampleMessages()) {
        for (size_t size = 0; size < sample.octets.size(); ++size) {
            for (int levels = 1; levels <= 6; ++levels) {
                Octets truncated = Truncate(sample.octets, size);
                RepairLengths(truncated, 0, levels);
                EXPECT_LE(Decode(truncated).size(), size / kSmallestBinding)
                    << sample.name << " truncated at " << size;
            }
        }
    }
}

TEST(TruncatedMessage, WithRepairedOuterLengthsDecodesItsCompleteBindings) {
    for (const char* name :
         {"v2_eight_bindings", "v2_every_value_type", "v1_link_down", "v2_sixty_bindings"}) {
        const SampleMessage& sample = FindSample(name);
        const Lines whole = Decode(sample.octets);
        size_t mostLines = 0;
        for (size_t size = 0; size < sample.octets.size(); ++size) {
            Octets truncated = Truncate(sample.octets, size);
            RepairLengths(truncated, 0, kDownToTheList);
            const Lines left = Decode(truncated);
            ASSERT_LT(left.size(), whole.size());
            EXPECT_TRUE(std::equal(left.begin(), left.end(), whole.begin()))
                << name << " truncated at " << size;
            mostLines = std::max(mostLines, left.size());
        }
        EXPECT_EQ(mostLines, whole.size() - 1) << "never truncated inside the list";
    }
}

}  // namespace
