// What the system says about this process's memory. Linux.
#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>

// `field` is "VmRSS:" (resident now) or "VmHWM:" (the most there ever was). In KiB.
inline size_t ReadMemory(std::string_view field) {
    std::ifstream status("/proc/self/status");
    std::string word;
    size_t kibibytes = 0;
    while (status >> word) {
        if (word == field) {
            status >> kibibytes;
            break;
        }
    }
    return kibibytes;
}
