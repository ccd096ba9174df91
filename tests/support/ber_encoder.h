// Encodes SNMP messages: whole ones as agents send them and, element by element, malformed ones. Written from
// the encoding rules, independently of trap/ber_reader.h.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

using Octets = std::vector<uint8_t>;

namespace ber {

constexpr uint8_t kInteger = 0x02;
constexpr uint8_t kOctetString = 0x04;
constexpr uint8_t kNull = 0x05;
constexpr uint8_t kOid = 0x06;
constexpr uint8_t kSequence = 0x30;
constexpr uint8_t kIpAddress = 0x40;
constexpr uint8_t kCounter32 = 0x41;
constexpr uint8_t kGauge32 = 0x42;
constexpr uint8_t kTimeTicks = 0x43;
constexpr uint8_t kOpaque = 0x44;
constexpr uint8_t kCounter64 = 0x46;
constexpr uint8_t kNoSuchObject = 0x80;
constexpr uint8_t kNoSuchInstance = 0x81;
constexpr uint8_t kEndOfMibView = 0x82;

constexpr uint8_t kV1TrapPdu = 0xA4;
constexpr uint8_t kInformPdu = 0xA6;
constexpr uint8_t kV2TrapPdu = 0xA7;

}  // namespace ber

Octets Concatenate(std::initializer_list<Octets> parts);

// Tag, the shortest form of the length, content.
Octets EncodeElement(uint8_t tag, const Octets& content);

// The same, with the length in the long form of exactly `lengthOctets` octets including leading zeros.
Octets EncodeLongFormElement(uint8_t tag, const Octets& content, unsigned lengthOctets);

// Tag and length only; the length may be wrong.
Octets EncodeHeader(uint8_t tag, size_t length);

Octets EncodeSequence(std::initializer_list<Octets> elements);

// The shortest two's complement content for the value.
Octets EncodeInteger(int64_t value);

// The same for the unsigned types, with a leading zero octet if the value would be negative without it.
Octets EncodeUnsigned(uint8_t tag, uint64_t value);

Octets EncodeOctetString(std::string_view octets);

Octets EncodeNull();

// `dotted` has two arcs or more, such as "1.3.6.1.2.1.1.3.0", or is empty for an identifier without content.
Octets EncodeOid(std::string_view dotted);

Octets EncodeIpAddress(uint8_t first, uint8_t second, uint8_t third, uint8_t fourth);

// One variable binding: the dotted identifier and the encoded value element.
struct Binding {
    std::string oid;
    Octets value;
};

Octets EncodeBinding(const Binding& binding);

Octets EncodeBindingList(const std::vector<Binding>& bindings);

// A whole message with the community "public" and this PDU. `version` is 0 for v1 and 1 for v2c.
Octets EncodeMessage(int version, const Octets& pdu);

// A v2c PDU of any tag: request id, error status, error index, then the octets of `list`.
Octets EncodeV2Pdu(uint8_t tag, const Octets& list);

// A v1 Trap-PDU: enterprise 1.3.6.1.4.1.8072.3.2.10, agent 10.1.2.3, linkDown (generic 2, specific 0), a time
// stamp of 123456, then `list`.
Octets EncodeV1Pdu(const Octets& list);

// Whole messages with exactly these bindings.
Octets EncodeV1Trap(const std::vector<Binding>& bindings);
Octets EncodeV2Trap(const std::vector<Binding>& bindings);
Octets EncodeInform(const std::vector<Binding>& bindings);

// A v2c trap with `listContent` in its list, bindings or not.
Octets EncodeV2TrapWithListContent(const Octets& listContent);
