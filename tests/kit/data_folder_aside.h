// Moves the user's data folder aside during a check.
#pragma once

#include <string>

// Returns the data folder that the program uses.
std::wstring DataFolder();

// Removes the folder and everything in it, including read-only files. Returns false if it is still in use
// after 10 seconds.
bool RemoveFolder(const std::wstring& folder);

class DataFolderAside {
  public:
    // Puts back a folder that a killed check left aside. `folder` is the data folder.
    explicit DataFolderAside(const std::wstring& folder);
    ~DataFolderAside();  // puts back
    DataFolderAside(const DataFolderAside&) = delete;
    DataFolderAside& operator=(const DataFolderAside&) = delete;

    // True if an earlier check had left the folder aside.
    bool foundLeftover() const { return foundLeftover_; }

    // Returns false if the folder is still in use after 10 seconds, or if a leftover could not be put back.
    // The check must not start then.
    bool MoveAside();

    // Removes the check's folder and puts the user's folder back. Returns false if a folder is still in use
    // after 10 seconds; the next check then puts it back. A no-op if nothing is aside.
    bool PutBack();

  private:
    std::wstring folder_;
    std::wstring aside_;   // the user's folder while the check runs
    std::wstring marker_;  // an empty folder, which shows that the user had none
    bool foundLeftover_ = false;
};
