#include "platform/files.h"

#include <algorithm>

#include "platform/windows/scoped_handle.h"

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr size_t kLargestTransfer = size_t{1} << 30;

// Windows refuses to copy over a file that has one of these attributes, and to remove a read-only file. A
// copy gets the attributes of its source.
constexpr DWORD kProtecting = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY;

ScopedHandle OpenFile(const std::wstring& path, DWORD access, DWORD disposition) {
    return ScopedHandle(
        CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

DWORD TransferSize(size_t left) {
    return static_cast<DWORD>(std::min(left, kLargestTransfer));
}

// Returns how many octets were written: all of them unless the disk is full or fails.
size_t WriteAll(HANDLE file, std::string_view octets) {
    size_t done = 0;
    DWORD written = 0;
    while (done < octets.size() &&
           WriteFile(file, octets.data() + done, TransferSize(octets.size() - done), &written, nullptr) &&
           written > 0) {
        done += written;
    }
    return done;
}

// Reads fewer than `size` octets if the file ends earlier. False: the read failed.
bool ReadRange(HANDLE file, uint64_t offset, uint64_t size, std::string& octets) {
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(file, position, nullptr, FILE_BEGIN)) {
        return false;
    }
    octets.resize(static_cast<size_t>(size));
    size_t filled = 0;
    while (filled < octets.size()) {
        DWORD got = 0;
        if (!ReadFile(file, octets.data() + filled, TransferSize(octets.size() - filled), &got, nullptr)) {
            return false;
        }
        if (got == 0) {
            break;
        }
        filled += got;
    }
    octets.resize(filled);
    return true;
}

// Clears the protecting attributes of a file. They are restored at scope exit unless KeepForGood() was
// called.
class ScopedUnprotection {
  public:
    explicit ScopedUnprotection(const std::wstring& path)
        : path_(path), before_(GetFileAttributesW(path.c_str())) {
        if (IsProtected()) {
            const DWORD left = before_ & ~kProtecting;
            SetFileAttributesW(path_.c_str(), left != 0 ? left : FILE_ATTRIBUTE_NORMAL);
        }
    }
    ~ScopedUnprotection() {
        if (!forGood_ && IsProtected()) {
            SetFileAttributesW(path_.c_str(), before_);
        }
    }
    ScopedUnprotection(const ScopedUnprotection&) = delete;
    ScopedUnprotection& operator=(const ScopedUnprotection&) = delete;

    void KeepForGood() { forGood_ = true; }

  private:
    bool IsProtected() const { return before_ != INVALID_FILE_ATTRIBUTES && (before_ & kProtecting) != 0; }

    const std::wstring& path_;
    const DWORD before_;
    bool forGood_ = false;
};

}  // namespace

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    // With append access only, the system puts each write at the end, even if another program appends too.
    const ScopedHandle file = OpenFile(path, FILE_APPEND_DATA, OPEN_ALWAYS);
    return file && (octets.empty() || WriteAll(file.get(), octets) > 0);
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    // Not CREATE_ALWAYS, which Windows refuses for hidden and system files.
    const ScopedHandle file = OpenFile(path, GENERIC_WRITE, OPEN_ALWAYS);
    if (!file || !SetEndOfFile(file.get())) {
        return false;
    }
    WriteAll(file.get(), octets);
    return true;
}

std::optional<uint64_t> ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets,
                                       uint64_t maxCount) {
    octets.clear();
    const ScopedHandle file = OpenFile(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER fileSize{};
    if (!file || !GetFileSizeEx(file.get(), &fileSize)) {
        return std::nullopt;
    }
    const auto size = static_cast<uint64_t>(fileSize.QuadPart);
    const uint64_t start = offset > size ? 0 : offset;
    if (!ReadRange(file.get(), start, std::min(size - start, maxCount), octets)) {
        octets.clear();
        return std::nullopt;
    }
    return size;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &attributes)) {
        return std::nullopt;
    }
    return (uint64_t{attributes.nFileSizeHigh} << 32) | attributes.nFileSizeLow;
}

bool CopyFileOver(const std::wstring& source, const std::wstring& target) {
    ScopedUnprotection former(target);
    if (!CopyFileW(source.c_str(), target.c_str(), FALSE)) {
        return false;
    }
    former.KeepForGood();
    ScopedUnprotection(target).KeepForGood();
    return true;
}

bool RemoveFile(const std::wstring& path) {
    ScopedUnprotection file(path);
    if (DeleteFileW(path.c_str())) {
        file.KeepForGood();
        return true;
    }
    return GetLastError() == ERROR_FILE_NOT_FOUND;
}
