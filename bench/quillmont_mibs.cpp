// Our side of the MIB folder comparison: loads the folder mibs of the data folder as the program does at its
// start. Prints "seconds names text before peak after": text is what the table of names holds, in octets; the
// rest is resident memory in KiB.
#include <cstdio>
#include <ctime>
#include <mutex>

#include "bench/process_memory.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"

namespace {

size_t CountTableText() {
    const std::lock_guard lock(MibStoreLock);
    size_t characters = 0;
    for (const auto& row : OidNameMap.Rows()) {
        characters += row.key.View().size() + row.value.View().size();
    }
    return characters * sizeof(wchar_t);
}

}  // namespace

int main() {
    InitAppPaths();
    const size_t before = ReadMemory("VmRSS:");
    const std::clock_t start = std::clock();
    LoadMibFolder();
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::printf("%.4f %d %zu %zu %zu %zu\n", seconds, CountOidNames(), CountTableText(), before,
                ReadMemory("VmHWM:"), ReadMemory("VmRSS:"));
    return 0;
}
