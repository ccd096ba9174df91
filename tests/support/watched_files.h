// platform/files.h kept in memory, for programs that link this instead of the real one and want to see, or
// hold up, each write. Nothing here locks: the data files are used under FileLock, as on a disk.
#pragma once

#include <functional>
#include <string>
#include <string_view>

struct WatchedFiles {
    // Called for each append, before it is done, on the thread and under the locks of whoever appends.
    std::function<void(const std::wstring& path, std::string_view octets)> onAppend;

    void Reset();                                              // no files, nobody watches
    std::string ReadOctetsOf(const std::wstring& path) const;  // empty when there is no such file
    bool Has(const std::wstring& path) const;
};
extern WatchedFiles Files;
