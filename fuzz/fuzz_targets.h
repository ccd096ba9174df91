// What is done with octets that come from outside, one function for each of their kinds. Each keeps nothing
// from one call to the next and ends the process, saying why, when a promise that the engine makes is not
// kept. A fuzzer calls one of them with what it thinks up; the replay calls all of them with the files of
// the corpora.
#pragma once

#include <cstddef>
#include <cstdint>

// A datagram, all the way to the text of its record.
void CheckSnmpMessage(const uint8_t* octets, size_t size);

// A MIB file, all the way to the name table.
void CheckMibText(const uint8_t* octets, size_t size);

// A config.xml, loaded, saved and loaded again.
void CheckConfigFile(const uint8_t* octets, size_t size);

// A data file as the viewers decode it, and a text as the data files hold it.
void CheckFileText(const uint8_t* octets, size_t size);
