#include "trap/snmp_message.h"

#include <algorithm>

#include "core/decimal_text.h"
#include "mib/name_store.h"
#include "trap/ber_reader.h"
#include "trap/ipv4_text.h"

// Literals with a length: the compiler does not count wide characters ahead of time.
using namespace std::string_view_literals;

namespace {

constexpr uint8_t kIntegerTag = 0x02;
constexpr uint8_t kOctetStringTag = 0x04;
constexpr uint8_t kNullTag = 0x05;
constexpr uint8_t kOidTag = 0x06;
constexpr uint8_t kSequenceTag = 0x30;
constexpr uint8_t kIpAddressTag = 0x40;
constexpr uint8_t kCounter32Tag = 0x41;
constexpr uint8_t kGauge32Tag = 0x42;
constexpr uint8_t kTimeTicksTag = 0x43;
constexpr uint8_t kCounter64Tag = 0x46;

// No header fits into fewer.
constexpr ptrdiff_t kSmallestElement = 2;

void AppendHexOctet(std::wstring& text, uint8_t octet) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    text.push_back(kDigits[octet >> 4]);
    text.push_back(kDigits[octet & 0x0F]);
}

// Moves *position behind the element that stands there, whatever it is. False: it cannot be read, or nothing
// that could be an element follows it.
bool SkipHeaderField(const uint8_t** position, const uint8_t* end) {
    TlvHeader field;
    if (!ReadTlvHeader(*position, end, &field)) {
        return false;
    }
    *position = field.contentEnd;
    return end - *position >= kSmallestElement;
}

// The PDU's last readable element is the candidate for the list: octets that form no element behind it do no
// harm, while a readable one takes its place.
bool FindLastElement(const TlvHeader& pdu, TlvHeader* last) {
    const uint8_t* position = pdu.content;
    if (!ReadTlvHeader(position, pdu.contentEnd, last)) {
        return false;
    }
    do {
        position = last->contentEnd;
    } while (ReadTlvHeader(position, pdu.contentEnd, last));
    return true;
}

bool FindVarbindList(const uint8_t* octets, size_t count, TlvHeader* list) {
    TlvHeader message;
    if (!ReadTlvHeader(octets, octets + count, &message) || message.tag != kSequenceTag) {
        return false;
    }
    const uint8_t* position = message.content;
    TlvHeader pdu;
    return SkipHeaderField(&position, message.contentEnd) &&     // version
           SkipHeaderField(&position, message.contentEnd) &&     // community
           ReadTlvHeader(position, message.contentEnd, &pdu) &&  //
           FindLastElement(pdu, list) && list->tag == kSequenceTag;
}

void RenderUnsigned(const TlvHeader& value, std::wstring_view type, VarbindRecord& record) {
    record.type = type;
    AppendDecimal(record.value, DecodeBerInteger(value.content, value.size()));
}

void RenderValue(const TlvHeader& value, VarbindRecord& record) {
    record.value.clear();
    switch (value.tag) {
        case kIntegerTag:
            record.type = L"INTEGER"sv;
            AppendSignedDecimal(record.value,
                                static_cast<int64_t>(DecodeBerInteger(value.content, value.size())));
            break;
        case kOctetStringTag:
            record.type = L"OCTET STRING"sv;
            RenderOctetString(value.content, value.size(), record.value);
            break;
        case kNullTag:
            record.type = L"NULL"sv;
            record.value = L"NULL"sv;
            break;
        case kOidTag:
            record.type = L"OID"sv;
            DecodeOidText(value.content, value.size(), record.value);
            break;
        case kIpAddressTag:
            record.type = L"IpAddress"sv;
            RenderIpAddress(value.content, value.size(), record.value);
            break;
        case kCounter32Tag:
            RenderUnsigned(value, L"Counter32"sv, record);
            break;
        case kGauge32Tag:
            RenderUnsigned(value, L"Gauge32"sv, record);
            break;
        case kTimeTicksTag:
            RenderUnsigned(value, L"TimeTicks"sv, record);
            break;
        case kCounter64Tag:
            RenderUnsigned(value, L"Counter64"sv, record);
            break;
        default:
            record.type = L"TAG 0x"sv;
            AppendHexOctet(record.type, value.tag);
            RenderOctetString(value.content, value.size(), record.value);
            break;
    }
}

// A binding without a readable identifier is passed over.
void DecodeBinding(const TlvHeader& binding, VarbindList& records) {
    TlvHeader identifier;
    if (!ReadTlvHeader(binding.content, binding.contentEnd, &identifier) || identifier.tag != kOidTag) {
        return;
    }
    VarbindRecord& record = records.Append();
    DecodeOidText(identifier.content, identifier.size(), record.oid);
    LookupOidName(record.oid, record.name);
    TlvHeader value;
    if (ReadTlvHeader(identifier.contentEnd, binding.contentEnd, &value)) {
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
    TlvHeader binding;
    for (const uint8_t* position = list.content; ReadTlvHeader(position, list.contentEnd, &binding);
         position = binding.contentEnd) {
        if (binding.tag == kSequenceTag) {
            DecodeBinding(binding, records);
        }
    }
    return !records.empty();
}
