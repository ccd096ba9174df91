// The datagrams that the benchmarks decode and the load generator sends.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/support/ber_encoder.h"

// sysUpTime in these messages; four octets long.
constexpr uint32_t kSampleTicks = 123456789;

// A v2c trap as equipment sends it: sysUpTime, snmpTrapOID (linkDown), then ifIndex, ifAdminStatus,
// ifOperStatus, ifDescr, ifInOctets, ifHCInOctets and an address, over and over, until there are `bindings`
// of them. The instance numbers of 1,000 and more are those of a large switch.
Octets MakeTrap(size_t bindings);

// The most that a datagram can carry.
constexpr size_t kLargestDatagram = 65507;

// Hostile ones, of `octets` octets or a few less.
Octets MakeTrapOfTinyBindings(size_t octets);    // as many as fit: an empty identifier without a value each
Octets MakeTrapOfTinyElements(size_t octets);    // elements of one octet instead of bindings
Octets MakeTrapOfNestedElements(size_t octets);  // as many levels, one inside the other, as fit
Octets MakeTrapWithGiantIdentifier(size_t octets);  // one identifier, each octet an arc
Octets MakeTrapWithGiantText(size_t octets);        // one printable text
Octets MakeTrapOfTenOctetArcs(size_t octets);       // identifiers of arcs of 64 bits
