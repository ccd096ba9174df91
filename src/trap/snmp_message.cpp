#include "trap/snmp_message.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/decimal_text.h"
#include "mib/name_store.h"
#include "trap/ber_reader.h"
#include "trap/ipv4_text.h"

namespace {

constexpr uint8_t kOidTag = 0x06;
constexpr uint8_t kSequenceTag = 0x30;

void AppendHexOctet(std::wstring& text, uint8_t octet) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    text.push_back(kDigits[octet >> 4]);
    text.push_back(kDigits[octet & 0x0F]);
}

// The last readable element of the PDU is the list: trailing garbage is ignored, a trailing readable element
// replaces the list. False: no element is readable.
bool ReadLastElement(OctetRange left, TlvHeader* last) {
    const bool found = ReadElement(left, last);
    while (ReadElement(left, last)) {
    }
    return found;
}

bool FindVarbindList(const uint8_t* octets, size_t count, TlvHeader* list) {
    OctetRange left = {octets, octets + count};
    TlvHeader element;
    if (!ReadElement(left, &element) || element.tag != kSequenceTag) {
        return false;
    }
    left = element.elements();
    return ReadElement(left, &element) &&  // version
           ReadElement(left, &element) &&  // community
           ReadElement(left, &element) &&  // PDU
           ReadLastElement(element.elements(), list) && list->tag == kSequenceTag;
}

std::wstring RenderInteger(const uint8_t* octets, size_t count) {
    std::wstring text;
    AppendSignedDecimal(text, static_cast<int64_t>(DecodeBerInteger(octets, count)));
    return text;
}

std::wstring RenderUnsigned(const uint8_t* octets, size_t count) {
    std::wstring text;
    AppendDecimal(text, DecodeBerInteger(octets, count));
    return text;
}

std::wstring RenderNull(const uint8_t*, size_t) {
    return L"NULL";
}

struct ValueType {
    uint8_t tag;
    const wchar_t* label;
    std::wstring (*render)(const uint8_t* octets, size_t count);
};

constexpr ValueType kValueTypes[] = {
    {.tag = 0x02, .label = L"INTEGER", .render = RenderInteger},
    {.tag = 0x04, .label = L"OCTET STRING", .render = RenderOctetString},
    {.tag = 0x05, .label = L"NULL", .render = RenderNull},
    {.tag = kOidTag, .label = L"OID", .render = DecodeOidText},
    {.tag = 0x40, .label = L"IpAddress", .render = RenderIpAddress},
    {.tag = 0x41, .label = L"Counter32", .render = RenderUnsigned},
    {.tag = 0x42, .label = L"Gauge32", .render = RenderUnsigned},
    {.tag = 0x43, .label = L"TimeTicks", .render = RenderUnsigned},
    {.tag = 0x46, .label = L"Counter64", .render = RenderUnsigned},
};

void RenderValue(const TlvHeader& value, VarbindRecord& record) {
    const auto* const type = std::find_if(std::begin(kValueTypes), std::end(kValueTypes),
                                          [&](const ValueType& row) { return row.tag == value.tag; });
    if (type != std::end(kValueTypes)) {
        record.type = type->label;
        record.value = type->render(value.content, value.size());
    } else {
        record.type = L"TAG 0x";
        AppendHexOctet(record.type, value.tag);
        record.value = RenderOctetString(value.content, value.size());
    }
}

// Appends the binding's record, or nothing if the binding has no readable identifier.
void DecodeBinding(OctetRange binding, std::vector<VarbindRecord>& records) {
    TlvHeader identifier;
    if (!ReadElement(binding, &identifier) || identifier.tag != kOidTag) {
        return;
    }
    VarbindRecord record;
    record.oid = DecodeOidText(identifier.content, identifier.size());
    LookupOidName(record.oid, record.name);
    TlvHeader value;
    if (ReadElement(binding, &value)) {
        RenderValue(value, record);
    } else {
        record.type = L"(no value)";
    }
    records.push_back(std::move(record));
}

}  // namespace

std::wstring RenderOctetString(const uint8_t* octets, size_t count) {
    constexpr size_t kMaxHexOctets = 24;
    const auto printable = [](uint8_t octet) { return octet >= 32 && octet <= 126; };
    if (count > 0 && std::all_of(octets, octets + count, printable)) {
        return std::wstring(1, L'"').append(octets, octets + count).append(1, L'"');
    }
    std::wstring text = L"0x";
    std::for_each(octets, octets + std::min(count, kMaxHexOctets),
                  [&](uint8_t octet) { AppendHexOctet(text, octet); });
    if (count > kMaxHexOctets) {
        text.append(L"...");
    }
    return text;
}

std::wstring RenderIpAddress(const uint8_t* octets, size_t count) {
    if (count != 4) {
        return RenderOctetString(octets, count);
    }
    return FormatIpv4Address((uint32_t{octets[0]} << 24) | (uint32_t{octets[1]} << 16) |
                             (uint32_t{octets[2]} << 8) | uint32_t{octets[3]});
}

bool DecodeSnmpMessage(const uint8_t* octets, size_t count, std::vector<VarbindRecord>& records) {
    records.clear();
    TlvHeader list;
    if (!FindVarbindList(octets, count, &list)) {
        return false;
    }
    OctetRange left = list.elements();
    TlvHeader binding;
    while (ReadElement(left, &binding)) {
        if (binding.tag == kSequenceTag) {
            DecodeBinding(binding.elements(), records);
        }
    }
    return !records.empty();
}
