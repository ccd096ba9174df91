// The datagrams that the benchmarks decode and the load generator sends.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/support/ber_encoder.h"

// sysUpTime in these messages; four octets long.
constexpr uint32_t kSampleTicks = 123456789;

// A typical v2c trap with this number of bindings: sysUpTime, snmpTrapOID (linkDown), then ifIndex,
// ifAdminStatus, ifOperStatus, ifDescr, ifInOctets, ifHCInOctets and an address, repeatedly. The instance
// numbers start at 1,000, as on a large switch.
Octets MakeTrap(size_t bindings);

// Over IPv4.
constexpr size_t kMaxUdpPayload = 65507;

// Hostile traps of `octets` octets or slightly fewer.
Octets MakeTrapOfTinyBindings(size_t octets);       // bindings of an empty identifier without a value
Octets MakeTrapOfTinyElements(size_t octets);       // elements of one octet instead of bindings
Octets MakeTrapOfNestedElements(size_t octets);     // elements nested as deeply as fits
Octets MakeTrapWithGiantIdentifier(size_t octets);  // one identifier, each octet an arc
Octets MakeTrapWithGiantText(size_t octets);        // one printable text
Octets MakeTrapOfTenOctetArcs(size_t octets);       // identifiers of arcs of 64 bits
