#include "trap/ber_reader.h"

#include <gtest/gtest.h>

#include "tests/support/ber_encoder.h"
#include "tests/support/fenced_octets.h"

namespace {

// What a test expects of a header that can be read: its tag, and where its content lies in the octets.
struct Span {
    int tag = -1;  // -1: the header cannot be read
    size_t contentAt = 0;
    size_t contentSize = 0;

    bool operator==(const Span&) const = default;
};

void PrintTo(const Span& span, std::ostream* stream) {
    *stream << "tag " << span.tag << ", content at " << span.contentAt << ", " << span.contentSize
            << " octets";
}

Span ReadSpan(const Octets& octets) {
    const FencedOctets fenced(octets.data(), octets.size());
    TlvHeader header;
    if (!ReadTlvHeader(fenced.data(), fenced.end(), &header)) {
        return {};
    }
    return {header.tag, static_cast<size_t>(header.content - fenced.data()), header.size()};
}

const Span kUnreadable = {};

Octets WithContent(Octets header, size_t contentSize) {
    header.resize(header.size() + contentSize, 0x55);
    return header;
}

uint64_t DecodeInteger(const Octets& octets) {
    const FencedOctets fenced(octets.data(), octets.size());
    return DecodeBerInteger(fenced.data(), fenced.size());
}

std::wstring DecodeOid(const Octets& octets) {
    const FencedOctets fenced(octets.data(), octets.size());
    return DecodeOidText(fenced.data(), fenced.size());
}

TEST(ReadTlvHeader, ContentEndingAtContainerEndIsAccepted) {
    EXPECT_EQ(ReadSpan({0x04, 0x03, 1, 2, 3}), (Span{0x04, 2, 3}));
    EXPECT_EQ(ReadSpan({0x05, 0x00}), (Span{0x05, 2, 0}));
}

TEST(ReadTlvHeader, ContentOneOctetBeyondContainerEndIsRejected) {
    EXPECT_EQ(ReadSpan({0x04, 0x04, 1, 2, 3}), kUnreadable);
    EXPECT_EQ(ReadSpan({0x04, 0x01}), kUnreadable);
}

TEST(ReadTlvHeader, OctetsBehindTheContentAreLeftAlone) {
    EXPECT_EQ(ReadSpan({0x04, 0x01, 1, 2, 3}), (Span{0x04, 2, 1}));
}

TEST(ReadTlvHeader, OneOctetLeftIsRejected) {
    EXPECT_EQ(ReadSpan({}), kUnreadable);
    EXPECT_EQ(ReadSpan({0x30}), kUnreadable);
}

TEST(ReadTlvHeader, EveryShortLengthIsTakenAsItIs) {
    for (uint8_t length = 0; length < 0x80; ++length) {
        EXPECT_EQ(ReadSpan(WithContent({0x30, length}, length)), (Span{0x30, 2, length}));
    }
}

TEST(ReadTlvHeader, OneToFourLengthOctetsAreAccepted) {
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x81, 0x80}, 128)), (Span{0x30, 3, 128}));
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x82, 0x01, 0x02}, 258)), (Span{0x30, 4, 258}));
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x83, 0x01, 0x00, 0x01}, 65537)), (Span{0x30, 5, 65537}));
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x84, 0x00, 0x00, 0x00, 0x05}, 5)), (Span{0x30, 6, 5}));
}

TEST(ReadTlvHeader, LengthsLongerThanNecessaryAreAccepted) {
    EXPECT_EQ(ReadSpan({0x02, 0x81, 0x01, 7}), (Span{0x02, 3, 1}));
    EXPECT_EQ(ReadSpan({0x02, 0x83, 0x00, 0x00, 0x01, 7}), (Span{0x02, 5, 1}));
    EXPECT_EQ(ReadSpan({0x02, 0x84, 0x00, 0x00, 0x00, 0x00}), (Span{0x02, 6, 0}));
}

TEST(ReadTlvHeader, RejectsIndefiniteAndFiveOctetLengths) {
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x80}, 300)), kUnreadable);
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x85, 0, 0, 0, 0, 1}, 300)), kUnreadable);
    for (int lengthOctet = 0x85; lengthOctet <= 0xFF; ++lengthOctet) {
        EXPECT_EQ(ReadSpan(WithContent({0x30, static_cast<uint8_t>(lengthOctet)}, 300)), kUnreadable);
    }
}

TEST(ReadTlvHeader, LengthOctetsCutOffAreRejected) {
    EXPECT_EQ(ReadSpan({0x30, 0x81}), kUnreadable);
    EXPECT_EQ(ReadSpan({0x30, 0x82, 0x00}), kUnreadable);
    EXPECT_EQ(ReadSpan({0x30, 0x84, 0x00, 0x00, 0x00}), kUnreadable);
}

TEST(ReadTlvHeader, LengthNearFourGibibytesIsRejected) {
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, 300)), kUnreadable);
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x84, 0x80, 0x00, 0x00, 0x00}, 300)), kUnreadable);
    EXPECT_EQ(ReadSpan(WithContent({0x30, 0x84, 0x7F, 0xFF, 0xFF, 0xFF}, 300)), kUnreadable);
}

TEST(ReadTlvHeader, TakesTheWholeFirstOctetAsTag) {
    for (int tag = 0; tag <= 0xFF; ++tag) {
        EXPECT_EQ(ReadSpan({static_cast<uint8_t>(tag), 0x00}), (Span{tag, 2, 0}));
    }
    EXPECT_EQ(ReadSpan({0x1F, 0x02, 1, 2}), (Span{0x1F, 2, 2})) << "no tag goes over several octets";
}

TEST(ReadTlvHeader, FailureLeavesTheHeaderUntouched) {
    const Octets octets = {0x04, 0x01};
    TlvHeader header{0x77, octets.data(), octets.data() + 1};
    EXPECT_FALSE(ReadTlvHeader(octets.data(), octets.data() + 2, &header));
    EXPECT_EQ(header.tag, 0x77);
    EXPECT_EQ(header.content, octets.data());
    EXPECT_EQ(header.contentEnd, octets.data() + 1);
}

// Takes what can be taken, one element after the other; `left` is what remains.
std::vector<int> ReadTags(OctetRange& left) {
    std::vector<int> tags;
    TlvHeader element;
    while (ReadElement(left, &element)) {
        EXPECT_EQ(left.position, element.contentEnd);
        tags.push_back(element.tag);
    }
    return tags;
}

TEST(ReadElement, WhatIsLeftBeginsAfterTheElementAndEndsWhereItDid) {
    const Octets octets = {0x02, 0x01, 7, 0x05, 0x00, 0x30, 0x81, 0x02, 1, 2};
    const FencedOctets fenced(octets.data(), octets.size());
    OctetRange left = {fenced.data(), fenced.end()};
    EXPECT_EQ(ReadTags(left), (std::vector<int>{0x02, 0x05, 0x30}));
    EXPECT_EQ(left.size(), 0U);
    EXPECT_EQ(left.end, fenced.end());
}

TEST(ReadElement, UnreadableElementIsStillLeft) {
    for (const Octets& unreadable : {Octets{0x04, 0x02, 1}, Octets{0x04, 0x80, 0}, Octets{0x04, 0x83, 0, 0},
                                     Octets{0x04, 0x82, 0, 9}, Octets{0x04}}) {
        const Octets octets = Concatenate({{0x05, 0x00}, unreadable});
        const FencedOctets fenced(octets.data(), octets.size());
        OctetRange left = {fenced.data(), fenced.end()};
        EXPECT_EQ(ReadTags(left), std::vector<int>{0x05});
        EXPECT_EQ(left.size(), unreadable.size());
        TlvHeader element{0x77, octets.data(), octets.data() + 1};
        EXPECT_FALSE(ReadElement(left, &element));
        EXPECT_EQ(element.tag, 0x77);
        EXPECT_EQ(element.content, octets.data());
        EXPECT_EQ(element.contentEnd, octets.data() + 1);
    }
}

TEST(ReadElement, ElementsInsideAnElementEndWithIt) {
    const Octets octets = {0x30, 0x02, 0x05, 0x00, 0x02, 0x00};
    OctetRange left = {octets.data(), octets.data() + octets.size()};
    TlvHeader outer;
    ASSERT_TRUE(ReadElement(left, &outer));
    OctetRange inner = outer.elements();
    EXPECT_EQ(ReadTags(inner), std::vector<int>{0x05});
    EXPECT_EQ(ReadTags(left), std::vector<int>{0x02});
}

struct IntegerCase {
    Octets octets;
    int64_t asSigned;
    uint64_t asUnsigned;
    const char* why;
};

const IntegerCase kIntegers[] = {
    {{}, 0, 0, "no octets"},
    {{0x00}, 0, 0, "zero"},
    {{0x7F}, 127, 127, "largest one-octet value"},
    {{0xFF}, -1, UINT64_MAX, "minus one"},
    {{0x80}, -128, UINT64_MAX - 127, "smallest one-octet value"},
    {{0x00, 0x80}, 128, 128, "a zero octet keeps it positive"},
    {{0xFF, 0x7F}, -129, UINT64_MAX - 128, "two octets, negative"},
    {{0x00, 0xFF, 0xFF, 0xFF, 0xFF}, 4294967295, 4294967295, "the largest 32-bit count as it should be sent"},
    {{0xFF, 0xFF, 0xFF, 0xFF}, -1, UINT64_MAX, "the same without its zero octet is extended"},
    {{0x80, 0x00, 0x00, 0x00}, INT32_MIN, 18446744071562067968U, "the same one bit high"},
    {{0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, INT64_MAX, INT64_MAX, "largest eight-octet value"},
    {{0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, -1, UINT64_MAX, "eight octets, negative: shift by 0"},
    {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, -1, UINT64_MAX, "the same with other octets"},
    {{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, -1, UINT64_MAX, "the largest 64-bit count"},
    {{0x01, 0, 0, 0, 0, 0, 0, 0, 0x05}, 5, 5, "nine octets: the first one falls out"},
    {{0xFF, 1, 2, 3, 4, 5, 6, 7, 0x08}, -248, UINT64_MAX - 247, "nine, negative: only the last one is seen"},
    {{0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, -1, UINT64_MAX, "sixteen, negative: shift by 0"},
};

TEST(DecodeBerInteger, IsBigEndianTwosComplement) {
    for (const IntegerCase& row : kIntegers) {
        SCOPED_TRACE(row.why + std::string(": ") + testing::PrintToString(row.octets));
        EXPECT_EQ(DecodeInteger(row.octets), row.asUnsigned);
        EXPECT_EQ(static_cast<int64_t>(DecodeInteger(row.octets)), row.asSigned);
    }
}

TEST(DecodeBerInteger, EveryMultipleOfEightOctetsWithTheTopBitSetIsMinusOne) {
    for (size_t count = 8; count <= 64; count += 8) {
        Octets octets(count, 0x00);
        octets[0] = 0x80;
        EXPECT_EQ(DecodeInteger(octets), UINT64_MAX) << count << " octets";
    }
}

TEST(DecodeBerInteger, TakesAsManyOctetsAsThereAre) {
    Octets octets(60000, 0x00);
    octets.back() = 0x2A;
    EXPECT_EQ(DecodeInteger(octets), 42U);
}

TEST(DecodeBerInteger, GivesBackWhatTheEncoderPutIn) {
    for (const int64_t value : {int64_t{0}, int64_t{-1}, int64_t{127}, int64_t{128}, int64_t{-32769},
                                int64_t{2147483648}, int64_t{-281474976710656}, int64_t{INT64_MAX}}) {
        const Octets element = EncodeInteger(value);
        EXPECT_EQ(static_cast<int64_t>(DecodeInteger(Octets(element.begin() + 2, element.end()))), value);
    }
}

struct OidCase {
    Octets octets;
    const wchar_t* text;
    const char* why;
};

const OidCase kOids[] = {
    {{}, L"", "no octets"},
    {{0x2B}, L"1.3", "one octet is two arcs"},
    {{0x00}, L"0.0", "the smallest identifier"},
    {{0x2B, 0x06, 0x01, 0x04, 0x01}, L"1.3.6.1.4.1", "enterprises"},
    {{0x2B, 0x81, 0x00}, L"1.3.128", "an arc of two octets"},
    {{0x2B, 0x7F}, L"1.3.127", "the largest arc of one octet"},
    {{0x2B, 0x86}, L"1.3", "an arc that does not end is dropped"},
    {{0x2B, 0x05, 0xFF, 0xFF}, L"1.3.5", "so are two octets of it"},
    {{0x2B, 0x80, 0x01}, L"1.3.1", "leading zero bits change nothing"},
    {{0x2B, 0x00}, L"1.3.0", "an arc of zero is written"},
    {{0x78}, L"3.0", "no special case for a first arc of 2"},
    {{0xFF}, L"6.15", "the first octet is taken whole"},
    {{0x88, 0x37}, L"3.16.55", "a first sub-identifier of two octets is not recognised"},
    {{0x2B, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}, L"1.3.4294967295", "the largest 32-bit arc"},
    {{0x2B, 0x81, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F},
     L"1.3.18446744073709551615",
     "the largest 64-bit arc"},
    {{0x2B, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x05}, L"1.3.5", "beyond 64 bits it wraps"},
};

TEST(DecodeOidText, IsDottedDecimal) {
    for (const OidCase& row : kOids) {
        SCOPED_TRACE(row.why + std::string(": ") + testing::PrintToString(row.octets));
        EXPECT_EQ(DecodeOid(row.octets), row.text);
    }
}

TEST(DecodeOidText, EveryFirstOctetIsTwoArcs) {
    for (unsigned octet = 0; octet <= 0xFF; ++octet) {
        EXPECT_EQ(DecodeOid({static_cast<uint8_t>(octet)}),
                  std::to_wstring(octet / 40) + L"." + std::to_wstring(octet % 40));
    }
}

TEST(DecodeOidText, TakesAsManyArcsAsThereAre) {
    Octets octets(60000, 0x7F);
    octets[0] = 0x2B;
    std::wstring expected = L"1.3";
    for (size_t arc = 1; arc < octets.size(); ++arc) {
        expected += L".127";
    }
    EXPECT_EQ(DecodeOid(octets), expected);
}

TEST(DecodeOidText, GivesBackWhatTheEncoderPutIn) {
    for (const char* dotted :
         {"1.3.6.1.2.1.1.3.0", "0.39.16383.16384.2097151.2097152", "1.0.268435456.4294967296"}) {
        const Octets element = EncodeOid(dotted);
        const std::string narrow = dotted;
        EXPECT_EQ(DecodeOid(Octets(element.begin() + 2, element.end())),
                  std::wstring(narrow.begin(), narrow.end()));
    }
}

}  // namespace
