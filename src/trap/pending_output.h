// What a batch adds to SNMP.txt and log.txt, so that each of the two is opened once for all of it: opening
// and closing them is nine tenths of what a trap costs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class PendingOutput {
  public:
    // Each throws std::bad_alloc and adds nothing then.
    void AddRecord(std::wstring record);
    void AddLogLine(std::wstring_view message);  // with the time of this call

    // Appends what was added, first the records, then the lines, and forgets it.
    void Write() noexcept;

  private:
    std::vector<std::wstring> records_;
    std::vector<std::wstring> logLines_;
};
