// IPv4 addresses as text.
#pragma once

#include <cstdint>
#include <string>

// Returns the address (host order: 127.0.0.1 is 0x7F000001) as four decimal numbers joined by dots.
std::wstring FormatIpv4Address(uint32_t address);
