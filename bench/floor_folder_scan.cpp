// The least that any reader of MIB files can do: open each file of a folder, read it, find its lines, close
// it. Usage: floor_folder_scan FOLDER. Prints "seconds files octets lines".
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>

namespace {

size_t CountLines(const char* position, const char* end) {
    size_t lines = 0;
    while (position != end) {
        const auto* lineEnd =
            static_cast<const char*>(std::memchr(position, '\n', static_cast<size_t>(end - position)));
        position = lineEnd == nullptr ? end : lineEnd + 1;
        ++lines;
    }
    return lines;
}

void ReadFile(const char* path, std::string& content) {
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status {};
    fstat(descriptor, &status);
    content.resize(static_cast<size_t>(status.st_size));
    const ssize_t got = read(descriptor, content.data(), content.size());
    content.resize(got < 0 ? 0 : static_cast<size_t>(got));
    close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: floor_folder_scan FOLDER\n", stderr);
        return 2;
    }
    size_t files = 0;
    size_t octets = 0;
    size_t lines = 0;
    std::string content;
    const std::clock_t start = std::clock();
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        ReadFile(entry.path().c_str(), content);
        ++files;
        octets += content.size();
        lines += CountLines(content.data(), content.data() + content.size());
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::printf("%.4f %zu %zu %zu\n", seconds, files, octets, lines);
    return 0;
}
