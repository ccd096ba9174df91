// The receiver without its windows, for measurements: starts as the program does, prints a line when it
// runs, and stops when its standard input ends. Its data folder is below the folder that the environment
// names (platform/folders.h).
// Usage: quillmont_storm_receiver [OCTETS]: with a number, the trap socket gets a receive buffer of that size
// instead of the program's own.
#include <cstdio>
#include <cstdlib>

#include "config/config_file.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/udp_socket.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

int main(int count, char** arguments) {
    if (!StartSocketLibrary()) {
        return 1;
    }
    InitAppPaths();
    LoadConfig();
    LoadMibFolder();
    if (!StartServer()) {
        return 1;
    }
    if (count > 1) {
        RequestReceiveBuffer(*ServerState.trapSocket, std::atoi(arguments[1]));
    }
    std::printf("%d\n", QueryReceiveBuffer(*ServerState.trapSocket));
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    StopServer();
    StopSocketLibrary();
    return 0;
}
