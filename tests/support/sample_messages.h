// Named datagrams, shared by the tests and the seeds of the fuzzers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ber_encoder.h"

struct SampleMessage {
    std::string name;  // usable as a file name
    Octets octets;
    // The text of each binding in SNMP.txt after "---> [n] ", without MIB names. None: the message does not
    // decode.
    std::vector<std::wstring> lines;
};

// All samples, well-formed and malformed.
const std::vector<SampleMessage>& SampleMessages();

// The sample `name`; ends the test program if there is none.
const SampleMessage& FindSample(std::string_view name);

// The sample's record text after the header line, including the empty line at the end.
std::wstring BuildExpectedBody(const SampleMessage& sample);
