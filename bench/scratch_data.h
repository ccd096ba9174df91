// A temporary data folder for a benchmark.
#pragma once

#include <string>

// Points AppPaths into a new folder in the system's temporary folder. Removes the folder at the end.
class ScratchData {
  public:
    ScratchData();
    ~ScratchData();
    ScratchData(const ScratchData&) = delete;
    ScratchData& operator=(const ScratchData&) = delete;

    std::string mibsFolder() const { return folder_ + "/Quillmont/mibs"; }

  private:
    std::string folder_;
};
