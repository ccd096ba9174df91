// The text of one trap in SNMP.txt: a header line with time and sender, one line for each binding, an
// empty line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "trap/snmp_message.h"

// `sender` is the address alone, without the port. No bindings: the datagram did not decode, and one line
// says so. A pure function of its arguments.
std::wstring ComposeTrapRecord(const LocalTime& time, std::wstring_view sender,
                               const std::vector<VarbindRecord>& bindings);
