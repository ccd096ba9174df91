// What a floor program asks of the system, in the fewest calls that it has for it. Chosen by linking.
#pragma once

#include <string>
#include <vector>

constexpr int kReceiveBuffer = 32 * 1024 * 1024;  // octets, as Quillmont asks for

// Ends the program when UDP 162 is not to be had.
void BindTrapSocket();

// Waits for a datagram and takes it with one call that blocks. False: that failed.
bool ReceiveDatagram(std::vector<char>& buffer);

// Where AppendBlocks' files are to be.
void UseFolder(const std::string& folder);

// To SNMP.txt and to log.txt; each is opened, written to and closed.
void AppendBlocks(const std::string& record, const std::string& line);

// A window costs memory, whoever has it: one of two sources shows one.
void ShowEmptyWindow();
