// Decodes the variable bindings of an SNMP message to text. The decoder skips version and community, ignores
// the PDU's tag, and uses the last readable element inside the PDU as the list of bindings. Therefore a v1
// Trap-PDU, a v2c SNMPv2-Trap, an InformRequest and anything else of that shape are decoded alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct VarbindRecord {
    std::wstring oid;    // dotted decimal, empty for an identifier without content
    std::wstring name;   // the name of exactly that identifier in the name store, or empty
    std::wstring type;   // type label of the value, or "(no value)"
    std::wstring value;  // rendered value, or empty
};

// Replaces `records` with one record for each usable binding, in the order of the message. True: there is at
// least one. False: the message is malformed, or its list is empty or has no usable binding.
//
// A malformed binding is skipped; an unreadable element ends the list. Octets after the message, the list or
// a binding's value are ignored. Looks up each identifier in the name store (locks MibStoreLock) and reads no
// other state. May throw std::bad_alloc.
bool DecodeSnmpMessage(const uint8_t* octets, size_t count, std::vector<VarbindRecord>& records);

// Returns the octets in double quotes if there is at least one and all are printable ASCII (32 to 126);
// otherwise "0x" and the first 24 octets in hexadecimal, followed by "..." if there are more.
std::wstring RenderOctetString(const uint8_t* octets, size_t count);

// Returns four octets as a dotted address and any other number of octets as RenderOctetString does.
std::wstring RenderIpAddress(const uint8_t* octets, size_t count);
