#include "trap/ber_reader.h"

#include <gtest/gtest.h>

#include "tests/support/ber_encoder.h"
#include "tests/support/fenced_octets.h"

namespace {

// The expected header: its tag, and where its content is.
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

struct HeaderCase {
    Octets octets;
    Span expected;
    const char* why;
};

const HeaderCase kHeaders[] = {
    {{0x04, 0x03, 1, 2, 3}, {0x04, 2, 3}, "content that ends with its container"},
    {{0x05, 0x00}, {0x05, 2, 0}, "no content"},
    {{0x04, 0x01, 1, 2, 3}, {0x04, 2, 1}, "octets after the content are not part of it"},
    {{0x04, 0x04, 1, 2, 3}, kUnreadable, "content one octet longer than its container"},
    {{0x04, 0x01}, kUnreadable, "content missing"},
    {{}, kUnreadable, "no octets"},
    {{0x30}, kUnreadable, "one octet left"},
    {WithContent({0x30, 0x81, 0x80}, 128), {0x30, 3, 128}, "one length octet"},
    {WithContent({0x30, 0x82, 0x01, 0x02}, 258), {0x30, 4, 258}, "two length octets"},
    {WithContent({0x30, 0x83, 0x01, 0x00, 0x01}, 65537), {0x30, 5, 65537}, "three length octets"},
    {WithContent({0x30, 0x84, 0, 0, 0, 5}, 5), {0x30, 6, 5}, "four, longer than necessary"},
    {{0x02, 0x81, 0x01, 7}, {0x02, 3, 1}, "one, longer than necessary"},
    {{0x02, 0x83, 0x00, 0x00, 0x01, 7}, {0x02, 5, 1}, "three, longer than necessary"},
    {{0x02, 0x84, 0x00, 0x00, 0x00, 0x00}, {0x02, 6, 0}, "four for a length of zero"},
    {{0x30, 0x81}, kUnreadable, "length octet missing"},
    {{0x30, 0x82, 0x00}, kUnreadable, "second length octet missing"},
    {{0x30, 0x84, 0x00, 0x00, 0x00}, kUnreadable, "fourth length octet missing"},
    {WithContent({0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, 300), kUnreadable, "nearly 4 GiB"},
    {WithContent({0x30, 0x84, 0x80, 0x00, 0x00, 0x00}, 300), kUnreadable, "2 GiB"},
    {WithContent({0x30, 0x80}, 300), kUnreadable, "indefinite length"},
    {WithContent({0x30, 0x85, 0, 0, 0, 0, 1}, 300), kUnreadable, "five length octets"},
    {WithContent({0x30, 0xFF}, 300), kUnreadable, "127 length octets"},
};

TEST(ReadTlvHeader, AcceptsOneToFourLengthOctetsAndContentInsideItsContainer) {
    for (const HeaderCase& row : kHeaders) {
        EXPECT_EQ(ReadSpan(row.octets), row.expected) << row.why;
    }
}

TEST(ReadTlvHeader, EveryLengthBelow128IsOneOctet) {
    for (uint8_t length = 0; length < 0x80; ++length) {
        EXPECT_EQ(ReadSpan(WithContent({0x30, length}, length)), (Span{0x30, 2, length}));
    }
}

TEST(ReadTlvHeader, FirstOctetIsTheTag) {
    for (int tag = 0; tag <= 0xFF; ++tag) {
        EXPECT_EQ(ReadSpan({static_cast<uint8_t>(tag), 0x00}), (Span{tag, 2, 0}));
    }
    EXPECT_EQ(ReadSpan({0x1F, 0x02, 1, 2}), (Span{0x1F, 2, 2})) << "a tag never has several octets";
}

// Reads elements until one is unreadable, and leaves the rest in `left`.
std::vector<int> ReadTags(OctetRange& left) {
    std::vector<int> tags;
    TlvHeader element;
    while (ReadElement(left, &element)) {
        EXPECT_EQ(left.position, element.contentEnd);
        tags.push_back(element.tag);
    }
    return tags;
}

TEST(ReadElement, AdvancesTheStartAndNotTheEnd) {
    const Octets octets = {0x02, 0x01, 7, 0x05, 0x00, 0x30, 0x81, 0x02, 1, 2};
    const FencedOctets fenced(octets.data(), octets.size());
    OctetRange left = {fenced.data(), fenced.end()};
    EXPECT_EQ(ReadTags(left), (std::vector<int>{0x02, 0x05, 0x30}));
    EXPECT_EQ(left.size(), 0U);
    EXPECT_EQ(left.end, fenced.end());
}

TEST(ReadElement, UnreadableElementIsNotConsumed) {
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
    {{0x00, 0x80}, 128, 128, "positive because of the zero octet"},
    {{0xFF, 0x7F}, -129, UINT64_MAX - 128, "two octets, negative"},
    {{0x00, 0xFF, 0xFF, 0xFF, 0xFF}, 4294967295, 4294967295, "the largest 32-bit count as it should be sent"},
    {{0xFF, 0xFF, 0xFF, 0xFF}, -1, UINT64_MAX, "without its zero octet it is sign-extended"},
    {{0x80, 0x00, 0x00, 0x00}, INT32_MIN, 18446744071562067968U, "only the highest bit set"},
    {{0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, INT64_MAX, INT64_MAX, "largest eight-octet value"},
    {{0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, -1, UINT64_MAX, "eight octets, negative: shift by 0"},
    {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, -1, UINT64_MAX, "the same with other octets"},
    {{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, -1, UINT64_MAX, "the largest 64-bit count"},
    {{0x01, 0, 0, 0, 0, 0, 0, 0, 0x05}, 5, 5, "nine octets: the first one is shifted out"},
    {{0xFF, 1, 2, 3, 4, 5, 6, 7, 0x08}, -248, UINT64_MAX - 247, "nine, negative: only the last one counts"},
    {{0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, -1, UINT64_MAX, "sixteen, negative: shift by 0"},
};

TEST(DecodeBerInteger, IsBigEndianTwosComplement) {
    for (const IntegerCase& row : kIntegers) {
        SCOPED_TRACE(row.why + std::string(": ") + testing::PrintToString(row.octets));
        EXPECT_EQ(DecodeInteger(row.octets), row.asUnsigned);
        EXPECT_EQ(static_cast<int64_t>(DecodeInteger(row.octets)), row.asSigned);
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
    {{0x2B, 0x86}, L"1.3", "an unterminated arc is dropped"},
    {{0x2B, 0x05, 0xFF, 0xFF}, L"1.3.5", "so are two octets of it"},
    {{0x2B, 0x80, 0x01}, L"1.3.1", "leading zero bits change nothing"},
    {{0x2B, 0x00}, L"1.3.0", "an arc of zero is written"},
    {{0x78}, L"3.0", "no special case for a first arc of 2"},
    {{0xFF}, L"6.15", "all eight bits of the first octet count"},
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

}  // namespace
