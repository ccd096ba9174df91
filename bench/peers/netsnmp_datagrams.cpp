// The peer's side of the decoding benchmark: net-snmp's library takes a datagram apart and prints its
// bindings, as its trap receiver does for every trap. No MIB file is loaded and identifiers are printed as
// numbers, which is the least work it can be asked for. Usage: netsnmp_datagrams BINDINGS ROUNDS. Prints
// nanoseconds per datagram.
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
// clang-format on

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "bench/bench_messages.h"

// Exported by the library and called by its own programs; its headers show it to the library alone.
extern "C" int snmp_parse(struct session_list* list, netsnmp_session* session, netsnmp_pdu* pdu,
                          u_char* octets, size_t count);

namespace {

// The characters printed, so that nothing can be left out.
size_t ParseAndPrint(netsnmp_session& session, Octets& datagram) {
    netsnmp_pdu* pdu = snmp_pdu_create(0);
    if (snmp_parse(nullptr, &session, pdu, datagram.data(), datagram.size()) != 0) {
        std::fputs("net-snmp does not parse the datagram.\n", stderr);
        std::exit(1);
    }
    size_t printed = 0;
    char line[1024];
    for (const netsnmp_variable_list* binding = pdu->variables; binding != nullptr;
         binding = binding->next_variable) {
        printed += static_cast<size_t>(
            snprint_variable(line, sizeof line, binding->name, binding->name_length, binding));
    }
    snmp_free_pdu(pdu);
    return printed;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: netsnmp_datagrams BINDINGS ROUNDS\n", stderr);
        return 2;
    }
    setenv("MIBS", "", 1);
    init_snmp("bench");
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT, NETSNMP_OID_OUTPUT_NUMERIC);
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_2c;
    Octets datagram = MakeTrap(std::strtoul(argv[1], nullptr, 10));
    const long rounds = std::strtol(argv[2], nullptr, 10);
    size_t printed = 0;
    const std::clock_t start = std::clock();
    for (long round = 0; round < rounds; ++round) {
        printed += ParseAndPrint(session, datagram);
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    if (printed == 0) {
        return 1;
    }
    std::printf("%.1f\n", seconds * 1e9 / static_cast<double>(rounds));
    return 0;
}
