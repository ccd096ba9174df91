// The receiver without its windows, for measurements. Starts as the program does and stops when its standard
// input ends. QUILLMONT_DATA_HOME names the parent of its data folder.
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
