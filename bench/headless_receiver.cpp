// The receiver as it ships without its windows: the whole engine, both ports, both files, the mibs folder.
// This is what stands beside native peers, and under Wine it tells what the windows cost. Prints "ready" when
// it listens, runs until its standard input ends, then stops. Data folder: the system's, natively
// QUILLMONT_DATA_HOME.
#include <cstdio>

#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/udp_socket.h"
#include "trap/server_control.h"

int main() {
    InitAppPaths();
    if (!StartSocketLibrary()) {
        return 1;
    }
    LoadMibFolder();
    if (!StartServer()) {
        std::fputs("The receiver did not start; log.txt says why.\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    StopServer();
    StopSocketLibrary();
    return 0;
}
