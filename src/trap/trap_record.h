// The record of a trap in SNMP.txt: a header line with time and sender, one line for each binding, and an
// empty line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "trap/snmp_message.h"

// Returns the text of the record. `sender` is the address without the port. If `bindings` is empty, the
// datagram could not be decoded, and one line says so. Pure function.
std::wstring ComposeTrapRecord(const LocalTime& time, std::wstring_view sender,
                               const std::vector<VarbindRecord>& bindings);
