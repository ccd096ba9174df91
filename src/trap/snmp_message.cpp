#include "trap/snmp_message.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "core/decimal_text.h"
#include "mib/name_store.h"
#include "trap/ber_reader.h"
#include "trap/ipv4_text.h"

// Literals with a length: the compiler does not count wide characters ahead of time.
using namespace std::string_view_literals;

namespace {

constexpr uint8_t kOidTag = 0x06;
constexpr uint8_t kSequenceTag = 0x30;

void AppendHexOctet(std::wstring& text, uint8_t octet) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    text.push_back(kDigits[octet >> 4]);
    text.push_back(kDigits[octet & 0x0F]);
}

// The PDU's last readable element is the candidate for the list: octets that form no element behind it do no
// harm, while a readable one takes its place.
bool TakeLastElement(OctetRange left, TlvHeader* last) {
    const bool found = TakeElement(left, last);
    while (TakeElement(left, last)) {
    }
    return found;
}

bool FindVarbindList(const uint8_t* octets, size_t count, TlvHeader* list) {
    OctetRange left = {octets, octets + count};
    TlvHeader element;
    if (!TakeElement(left, &element) || element.tag != kSequenceTag) {
        return false;
    }
    left = element.elements();
    return TakeElement(left, &element) &&  // version
           TakeElement(left, &element) &&  // community
           TakeElement(left, &element) &&  // PDU
           TakeLastElement(element.elements(), list) && list->tag == kSequenceTag;
}

void RenderInteger(const uint8_t* octets, size_t count, std::wstring& text) {
    AppendSignedDecimal(text, static_cast<int64_t>(DecodeBerInteger(octets, count)));
}

void RenderUnsigned(const uint8_t* octets, size_t count, std::wstring& text) {
    AppendDecimal(text, DecodeBerInteger(octets, count));
}

void RenderNull(const uint8_t*, size_t, std::wstring& text) {
    text.append(L"NULL"sv);
}

struct ValueType {
    uint8_t tag;
    std::wstring_view label;
    void (*render)(const uint8_t* octets, size_t count, std::wstring& text);  // given empty text
};

// Any other tag is a type of its own, shown as an octet string.
constexpr ValueType kValueTypes[] = {
    {.tag = 0x02, .label = L"INTEGER"sv, .render = RenderInteger},
    {.tag = 0x04, .label = L"OCTET STRING"sv, .render = RenderOctetString},
    {.tag = 0x05, .label = L"NULL"sv, .render = RenderNull},
    {.tag = kOidTag, .label = L"OID"sv, .render = DecodeOidText},
    {.tag = 0x40, .label = L"IpAddress"sv, .render = RenderIpAddress},
    {.tag = 0x41, .label = L"Counter32"sv, .render = RenderUnsigned},
    {.tag = 0x42, .label = L"Gauge32"sv, .render = RenderUnsigned},
    {.tag = 0x43, .label = L"TimeTicks"sv, .render = RenderUnsigned},
    {.tag = 0x46, .label = L"Counter64"sv, .render = RenderUnsigned},
};

constexpr size_t kNoRow = std::size(kValueTypes);

// The row of each tag. Searching the table instead adds a twentieth to the decoding of a trap.
constexpr auto kRowOfTag = [] {
    std::array<uint8_t, 256> rows{};
    rows.fill(kNoRow);
    for (size_t row = 0; row < kNoRow; ++row) {
        rows[kValueTypes[row].tag] = static_cast<uint8_t>(row);
    }
    return rows;
}();

void RenderValue(const TlvHeader& value, VarbindRecord& record) {
    record.value.clear();
    if (const size_t row = kRowOfTag[value.tag]; row != kNoRow) {
        record.type = kValueTypes[row].label;
        kValueTypes[row].render(value.content, value.size(), record.value);
    } else {
        record.type = L"TAG 0x"sv;
        AppendHexOctet(record.type, value.tag);
        RenderOctetString(value.content, value.size(), record.value);
    }
}

// A binding without a readable identifier is passed over.
void DecodeBinding(OctetRange binding, VarbindList& records) {
    TlvHeader identifier;
    if (!TakeElement(binding, &identifier) || identifier.tag != kOidTag) {
        return;
    }
    VarbindRecord& record = records.Append();
    DecodeOidText(identifier.content, identifier.size(), record.oid);
    LookupOidName(record.oid, record.name);
    TlvHeader value;
    if (TakeElement(binding, &value)) {
        RenderValue(value, record);
    } else {
        record.type = L"(no value)"sv;
        record.value.clear();
    }
}

}  // namespace

void RenderOctetString(const uint8_t* octets, size_t count, std::wstring& text) {
    constexpr size_t kMaxHexOctets = 24;
    const auto* end = octets + count;
    const auto printable = [](uint8_t octet) { return octet >= 32 && octet <= 126; };
    if (count > 0 && std::all_of(octets, end, printable)) {
        text.append(count + 2, L'"');
        std::copy(octets, end, text.end() - static_cast<ptrdiff_t>(count + 1));
        return;
    }
    text.append(L"0x"sv);
    std::for_each(octets, octets + std::min(count, kMaxHexOctets),
                  [&](uint8_t octet) { AppendHexOctet(text, octet); });
    if (count > kMaxHexOctets) {
        text.append(L"..."sv);
    }
}

void RenderIpAddress(const uint8_t* octets, size_t count, std::wstring& text) {
    if (count != 4) {
        RenderOctetString(octets, count, text);
        return;
    }
    AppendIpv4Text(text, (uint32_t{octets[0]} << 24) | (uint32_t{octets[1]} << 16) |
                             (uint32_t{octets[2]} << 8) | uint32_t{octets[3]});
}

bool DecodeSnmpMessage(const uint8_t* octets, size_t count, VarbindList& records) {
    records.Clear();
    TlvHeader list;
    if (!FindVarbindList(octets, count, &list)) {
        return false;
    }
    OctetRange left = list.elements();
    TlvHeader binding;
    while (TakeElement(left, &binding)) {
        if (binding.tag == kSequenceTag) {
            DecodeBinding(binding.elements(), records);
        }
    }
    return !records.empty();
}
