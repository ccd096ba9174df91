// The system calls of the floor program, as few as possible. The implementation is chosen by linking.
#pragma once

#include <string>
#include <vector>

constexpr int kReceiveBuffer = 32 * 1024 * 1024;  // octets, as Quillmont requests

// Ends the program if UDP 162 cannot be bound.
void BindTrapSocket();

// Waits for a datagram in one blocking call. Returns false if that failed.
bool ReceiveDatagram(std::vector<char>& buffer);

// Sets the folder that AppendBlocks writes to.
void UseFolder(const std::string& folder);

// Appends to SNMP.txt and to log.txt; opens, writes and closes each.
void AppendBlocks(const std::string& record, const std::string& line);
