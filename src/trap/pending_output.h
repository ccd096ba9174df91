// Collects what a batch adds to SNMP.txt and log.txt and writes it with one open of each file. Opening and
// closing the files is nine tenths of the cost of a trap.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class PendingOutput {
  public:
    // Both may throw std::bad_alloc; nothing is added then.
    void AddRecord(std::wstring record);
    void AddLogLine(std::wstring_view message);  // the line has the time of this call

    // Appends the records to SNMP.txt, then the lines to log.txt, and empties this object. Locks FileLock. A
    // text that cannot be written is lost.
    void Write() noexcept;

  private:
    std::vector<std::wstring> records_;
    std::vector<std::wstring> logLines_;
};
