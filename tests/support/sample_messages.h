// Datagrams with names, shared by the unit tests, the engine tests and the seeds of the fuzzers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ber_encoder.h"

struct SampleMessage {
    std::string name;  // fit for a file name
    Octets octets;
    // The text in SNMP.txt for each binding after "---> [n] " while no identifier has a name; no line: the
    // message does not decode.
    std::vector<std::wstring> lines;
};

// Every sample, well-formed and malformed ones.
const std::vector<SampleMessage>& SampleMessages();

// The one of that name; a name that does not exist ends the test program.
const SampleMessage& FindSample(std::string_view name);

// The lines of a record after its header line, with the empty one, as in the record text (CR LF).
std::wstring BuildExpectedBody(const SampleMessage& sample);
