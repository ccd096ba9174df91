// Makes a folder of MIB files for those who have no real ones at hand.
// Usage: make_mib_folder FOLDER FILES. The same number gives the same files.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/mib_samples.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make_mib_folder FOLDER FILES\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const size_t files = std::strtoul(argv[2], nullptr, 10);
    for (size_t number = 0; number < files; ++number) {
        // Most files are small and a few are large.
        const size_t definitions = 20 + number * 7919 % 97 + (number % 50 == 0 ? 2000 : 0);
        std::ofstream(folder / ("SAMPLE-" + std::to_string(number) + "-MIB.mib"))
            << MakeMibText(number, definitions);
    }
    return 0;
}
