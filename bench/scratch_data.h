// A data folder for the length of a benchmark.
#pragma once

#include <string>

// Points AppPaths into a new folder below the system's one for temporary files; removes it at the end.
class ScratchData {
  public:
    ScratchData();
    ~ScratchData();
    ScratchData(const ScratchData&) = delete;
    ScratchData& operator=(const ScratchData&) = delete;

    const std::string& folder() const { return folder_; }
    std::string mibsFolder() const { return folder_ + "/Quillmont/mibs"; }

  private:
    std::string folder_;
};
