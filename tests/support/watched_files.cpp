#include "tests/support/watched_files.h"

#include <map>

#include "platform/files.h"

WatchedFiles Files;

namespace {

std::map<std::wstring, std::string> contents;

}  // namespace

void WatchedFiles::Reset() {
    contents.clear();
    onAppend = nullptr;
}

std::string WatchedFiles::ReadOctetsOf(const std::wstring& path) const {
    const auto file = contents.find(path);
    return file == contents.end() ? std::string() : file->second;
}

bool WatchedFiles::Has(const std::wstring& path) const {
    return contents.contains(path);
}

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    if (Files.onAppend) {
        Files.onAppend(path, octets);
    }
    contents[path] += octets;
    return true;
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    contents[path] = octets;
    return true;
}

bool ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets, uint64_t largestFile) {
    octets = Files.ReadOctetsOf(path);
    if (!contents.contains(path) || octets.size() > largestFile) {
        octets.clear();
        return false;
    }
    octets.erase(0, offset > octets.size() ? 0 : static_cast<size_t>(offset));
    return true;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    const auto file = contents.find(path);
    return file == contents.end() ? std::nullopt : std::optional<uint64_t>(file->second.size());
}

bool CopyFileOver(const std::wstring& source, const std::wstring& target) {
    if (!contents.contains(source)) {
        return false;
    }
    contents[target] = contents[source];
    return true;
}

bool RemoveFile(const std::wstring& path) {
    contents.erase(path);
    return true;
}
