// IPv4 addresses as people read them.
#pragma once

#include <cstdint>
#include <string>

// The address (host order: 127.0.0.1 is 0x7F000001) as four decimal numbers joined by dots.
std::wstring FormatIpv4Address(uint32_t address);
