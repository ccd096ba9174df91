// The user's data folder during a check: moved aside, and put back also after a failure.
#pragma once

#include <string>

// Removes the folder and everything in it, read-only files too. Returns false if it is still in use after 10
// seconds.
bool RemoveFolder(const std::wstring& folder);

class DataFolderAside {
  public:
    // `folder` is the data folder that the program uses. Puts back a folder that a killed check left aside.
    explicit DataFolderAside(const std::wstring& folder);
    ~DataFolderAside();  // puts back
    DataFolderAside(const DataFolderAside&) = delete;
    DataFolderAside& operator=(const DataFolderAside&) = delete;

    // An earlier check had left the folder aside.
    bool foundLeftover() const { return foundLeftover_; }

    // False: something uses the folder, also after 10 seconds, or the leftover could not be put back; the
    // check must not start.
    bool MoveAside();

    // Removes what the check made and puts the user's folder back. False: something still uses the folder
    // after 10 seconds; the next check puts it back. A no-op when nothing is aside.
    bool PutBack();

  private:
    std::wstring folder_;
    std::wstring aside_;    // the user's folder while the check runs
    std::wstring nothing_;  // an empty folder as a mark that the user had none
    bool foundLeftover_ = false;
};
