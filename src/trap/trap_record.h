// The text of one trap in SNMP.txt: a header line with time and sender, one line a binding, an empty line.
#pragma once

#include <string>
#include <string_view>

#include "platform/clock.h"
#include "trap/varbind_list.h"

// Replaces `record`. `sender` is the address alone, without the port. No bindings: the datagram did not
// decode, and one line says so. A pure function of its arguments.
void ComposeTrapRecord(const LocalTime& time, std::wstring_view sender, const VarbindList& bindings,
                       std::wstring& record);
