// From a datagram to rendered variable bindings, for SNMP v1 and v2c alike: neither the message header nor
// the PDU header is interpreted. The decoder skips version and community, ignores the PDU's tag, and uses the
// last readable element inside the PDU as the list of bindings. So a Trap-PDU, an SNMPv2-Trap, an
// InformRequest and anything else of that shape are decoded alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct VarbindRecord {
    std::wstring oid;    // dotted decimal, empty for an identifier without content
    std::wstring name;   // what the name store holds for exactly that identifier, or empty
    std::wstring type;   // type label of the value, or "(no value)"
    std::wstring value;  // rendered value, or empty
};

// Empties `records`, then appends one for each usable binding, in the order of the message. True: there is at
// least one. False: a malformed message, or one whose list is empty or has no usable binding. A malformed
// binding is skipped; an unreadable element of the list ends it; octets after the message, the list or a
// binding's value are ignored. Reads the name store (one lookup for each binding) and no other state. May
// throw std::bad_alloc.
bool DecodeSnmpMessage(const uint8_t* octets, size_t count, std::vector<VarbindRecord>& records);

// Printable octets (32 to 126) in double quotes; anything else, the empty string included, as "0x" and up to
// 24 octets in hexadecimal, with "..." when there were more.
std::wstring RenderOctetString(const uint8_t* octets, size_t count);

// Four octets as a dotted address, any other number of them as RenderOctetString does.
std::wstring RenderIpAddress(const uint8_t* octets, size_t count);
