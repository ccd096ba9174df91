// From a datagram to rendered variable bindings, for SNMP v1 and v2c alike: neither the message header nor
// the PDU header is interpreted. The decoder walks past version and community, does not look at the PDU's
// tag, and takes the last readable element inside the PDU as the list of bindings, so a Trap-PDU, an
// SNMPv2-Trap, an InformRequest and anything else of that shape go the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "trap/varbind_list.h"

// Empties `records`, then appends one for each usable binding, in the order of the message. True: there is at
// least one. False: a malformed message, or one whose list is empty or holds nothing usable.
// A malformed binding is skipped; an unreadable element of the list ends it; octets behind the message, the
// list or a binding's value are ignored. Reads the name store (one lookup a binding) and no other state. May
// throw std::bad_alloc.
bool DecodeSnmpMessage(const uint8_t* octets, size_t count, VarbindList& records);

// Appends printable octets (32 to 126) in double quotes; anything else, the empty string included, as "0x"
// and up to 24 octets in hexadecimal, with "..." when there were more.
void RenderOctetString(const uint8_t* octets, size_t count, std::wstring& text);

// Appends four octets as a dotted address, any other number of them as RenderOctetString does.
void RenderIpAddress(const uint8_t* octets, size_t count, std::wstring& text);
