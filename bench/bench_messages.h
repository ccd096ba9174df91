// The datagrams that the benchmarks decode and the storms send.
#pragma once

#include <cstddef>

#include "tests/support/ber_encoder.h"

// A v2c trap as equipment sends it: sysUpTime, snmpTrapOID (linkDown), then ifIndex, ifAdminStatus,
// ifOperStatus, ifDescr, ifInOctets, ifHCInOctets and an address, over and over, until there are `bindings`
// of them. The instance numbers of 1,000 and more are those of a large switch.
Octets MakeTrap(size_t bindings);

// Hostile ones of 65,507 octets, the most that a datagram can carry.
Octets MakeTrapOfTinyBindings();       // as many bindings as fit: each an empty identifier without a value
Octets MakeTrapWithGiantIdentifier();  // one identifier of 65,000 arcs
Octets MakeTrapWithGiantText();        // one printable text
Octets MakeTrapOfTenOctetArcs();       // identifiers of arcs of 64 bits
