#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/posix_paths.h"
#include "platform/posix/scoped_descriptor.h"

namespace {

constexpr mode_t kNewFileMode = 0644;

ScopedDescriptor OpenFile(const std::wstring& path, int flags) {
    return ScopedDescriptor(open(PosixPath(path).c_str(), flags | O_CLOEXEC, kNewFileMode));
}

// Returns how many octets were written: all of them unless the disk is full or fails.
size_t WriteAll(int descriptor, std::string_view octets) {
    size_t done = 0;
    while (done < octets.size()) {
        const ssize_t written = write(descriptor, octets.data() + done, octets.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            break;
        }
        done += static_cast<size_t>(written);
    }
    return done;
}

// Reads fewer than `size` octets if the file ends earlier. False: the read failed.
bool ReadRange(int descriptor, uint64_t offset, uint64_t size, std::string& octets) {
    octets.resize(static_cast<size_t>(size));
    size_t filled = 0;
    while (filled < octets.size()) {
        const ssize_t got = pread(descriptor, octets.data() + filled, octets.size() - filled,
                                  static_cast<off_t>(offset + filled));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        filled += static_cast<size_t>(got);
    }
    octets.resize(filled);
    return true;
}

}  // namespace

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    const ScopedDescriptor file = OpenFile(path, O_WRONLY | O_APPEND | O_CREAT);
    return file && (octets.empty() || WriteAll(file.get(), octets) > 0);
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    const ScopedDescriptor file = OpenFile(path, O_WRONLY | O_TRUNC | O_CREAT);
    if (!file) {
        return false;
    }
    WriteAll(file.get(), octets);
    return true;
}

std::optional<uint64_t> ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets,
                                       uint64_t maxCount) {
    octets.clear();
    const ScopedDescriptor file = OpenFile(path, O_RDONLY);
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    const uint64_t start = offset > size ? 0 : offset;
    if (!ReadRange(file.get(), start, std::min(size - start, maxCount), octets)) {
        octets.clear();
        return std::nullopt;
    }
    return size;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    struct stat status {};
    if (stat(PosixPath(path).c_str(), &status) != 0) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(status.st_size);
}

bool CopyFileOver(const std::wstring& source, const std::wstring& target) {
    std::string octets;
    if (!ReadOctetsFrom(source, 0, octets)) {
        return false;
    }
    const ScopedDescriptor file = OpenFile(target, O_WRONLY | O_TRUNC | O_CREAT);
    return file && WriteAll(file.get(), octets) == octets.size();
}

bool RemoveFile(const std::wstring& path) {
    return unlink(PosixPath(path).c_str()) == 0 || errno == ENOENT;
}
