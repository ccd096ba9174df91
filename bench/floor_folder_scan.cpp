// The least that any reader of MIB files can do: open each file of a folder, read it, find its lines, close
// it; and the same with a look for "::=" in each line, which is how a value begins. Usage: floor_folder_scan
// FOLDER. Prints "seconds seconds files octets lines values", seconds of processor time.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

// True: the line is one that a reader of MIB files is interested in.
using LineTest = bool (*)(std::string_view line);

size_t CountLines(std::string_view text, LineTest test) {
    size_t lines = 0;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines += test(text.substr(0, end)) ? 1 : 0;
        text.remove_prefix(end);
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

struct Scan {
    double seconds = 0;
    size_t files = 0;
    size_t octets = 0;
    size_t lines = 0;
};

Scan ScanFolder(const char* folder, LineTest test) {
    Scan scan;
    std::string content;
    const std::clock_t start = std::clock();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        ReadFile(entry.path().c_str(), content);
        ++scan.files;
        scan.octets += content.size();
        scan.lines += CountLines(content, test);
    }
    scan.seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    return scan;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: floor_folder_scan FOLDER\n", stderr);
        return 2;
    }
    const Scan lines = ScanFolder(argv[1], [](std::string_view) { return true; });
    const Scan values =
        ScanFolder(argv[1], [](std::string_view line) { return line.find("::=") != std::string_view::npos; });
    std::printf("%.4f %.4f %zu %zu %zu %zu\n", lines.seconds, values.seconds, lines.files, lines.octets,
                lines.lines, values.lines);
    return 0;
}
