// The receiver without its windows, for measurements: starts as the program does and stops when its standard
// input ends. Its data folder is below the folder that the environment names (platform/folders.h).
#include <cstdio>

#include "config/config_file.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/udp_socket.h"
#include "trap/server_control.h"

int main() {
    if (!StartSocketLibrary()) {
        return 1;
    }
    InitAppPaths();
    LoadConfig();
    LoadMibFolder();
    if (!StartServer()) {
        return 1;
    }
    while (std::getchar() != EOF) {
    }
    StopServer();
    StopSocketLibrary();
    return 0;
}
