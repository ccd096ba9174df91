// One check for each kind of input from outside. A check has no state between calls and aborts with a message
// when the engine breaks one of its promises. A fuzzer calls one of them with its inputs; the replay calls
// all of them with the files of the corpora.
#pragma once

#include <cstddef>
#include <cstdint>

// A datagram, all the way to the text of its record.
void CheckSnmpMessage(const uint8_t* octets, size_t size);

// A MIB file, all the way to the name table.
void CheckMibText(const uint8_t* octets, size_t size);

// A config.xml, loaded, saved and loaded again.
void CheckConfigFile(const uint8_t* octets, size_t size);

// A data file as the viewers decode it, and a text as it is written to the data files.
void CheckFileText(const uint8_t* octets, size_t size);
