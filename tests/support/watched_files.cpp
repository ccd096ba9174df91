#include "tests/support/watched_files.h"

#include <map>

#include "platform/files.h"

WatchedFiles Files;

namespace {

std::map<std::wstring, std::string> contents;
std::map<std::wstring, uint64_t> claimedSizes;
std::map<std::wstring, uint64_t> claimedOpenSizes;

void CallOnOpen(const std::wstring& path) {
    if (Files.onOpen) {
        Files.onOpen(path);
    }
}

}  // namespace

void WatchedFiles::ClaimSize(const std::wstring& path, uint64_t size) {
    claimedSizes[path] = size;
}

void WatchedFiles::ClaimOpenSize(const std::wstring& path, uint64_t size) {
    claimedOpenSizes[path] = size;
}

void WatchedFiles::Reset() {
    contents.clear();
    claimedSizes.clear();
    claimedOpenSizes.clear();
    onAppend = nullptr;
    refusesAppend = nullptr;
    onOpen = nullptr;
}

std::string WatchedFiles::ReadOctetsOf(const std::wstring& path) const {
    const auto file = contents.find(path);
    return file == contents.end() ? std::string() : file->second;
}

bool WatchedFiles::Has(const std::wstring& path) const {
    return contents.contains(path);
}

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    CallOnOpen(path);
    if (Files.onAppend) {
        Files.onAppend(path, octets);
    }
    if (Files.refusesAppend && Files.refusesAppend(path)) {
        return false;
    }
    contents[path] += octets;
    return true;
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    CallOnOpen(path);
    contents[path] = octets;
    return true;
}

std::optional<uint64_t> ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets,
                                       uint64_t most) {
    CallOnOpen(path);
    octets.clear();
    const auto file = contents.find(path);
    if (file == contents.end()) {
        return std::nullopt;
    }
    const std::string& content = file->second;
    octets = content.substr(offset > content.size() ? 0 : offset, most);
    const auto claimed = claimedOpenSizes.find(path);
    return claimed == claimedOpenSizes.end() ? content.size() : claimed->second;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    if (const auto claimed = claimedSizes.find(path); claimed != claimedSizes.end()) {
        return claimed->second;
    }
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
