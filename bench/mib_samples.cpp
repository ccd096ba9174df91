#include "bench/mib_samples.h"

#include <mutex>

#include "mib/name_store.h"

namespace {

constexpr size_t kColumns = 20;  // of a table

std::string MakeObject(const std::string& name, const std::string& parent, size_t arc) {
    return name +
           " OBJECT-TYPE\n"
           "    SYNTAX      Counter32\n"
           "    MAX-ACCESS  read-only\n"
           "    STATUS      current\n"
           "    DESCRIPTION\n"
           "        \"The number of units that this interface has discarded since the agent\n"
           "        was started, whatever the reason was. Discontinuities of this counter\n"
           "        can occur when the management system is started anew.\"\n"
           "    ::= { " +
           parent + " " + std::to_string(arc) + " }\n\n";
}

}  // namespace

std::wstring SampleOid(size_t index) {
    return L"1.3.6.1.4.1." + std::to_wstring(index % 997) + L"." + std::to_wstring(index / 997 % 89) + L"." +
           std::to_wstring(index / 997 / 89);
}

void FillNameStore(size_t names) {
    const std::lock_guard lock(MibStoreLock);
    ClearNameStore();
    for (size_t index = 0; index < names; ++index) {
        const Oid* oid = nullptr;
        for (const int32_t arc : ParseOidText(SampleOid(index))) {
            oid = StoreOid(oid, arc);
        }
        StoreNamedOid(StoreName(L"sampleObjectOfTable" + std::to_wstring(index)), oid);
    }
}

void EmptyNameStore() {
    const std::lock_guard lock(MibStoreLock);
    ClearNameStore();
}

std::string MakeMibText(size_t number, size_t definitions) {
    const std::string module = "sample" + std::to_string(number);
    std::string text =
        "SAMPLE-" + std::to_string(number) +
        "-MIB DEFINITIONS ::= BEGIN\n\n"
        "IMPORTS\n    MODULE-IDENTITY, OBJECT-TYPE, Counter32, enterprises\n        FROM SNMPv2-SMI;\n\n" +
        module +
        " MODULE-IDENTITY\n"
        "    LAST-UPDATED \"202601010000Z\"\n"
        "    ORGANIZATION \"Sample\"\n"
        "    CONTACT-INFO \"Sample\"\n"
        "    DESCRIPTION  \"Samples.\"  -- no more than that\n"
        "    ::= { enterprises " +
        std::to_string(50000 + number) + " }\n\n";
    std::string table;
    for (size_t index = 1; index < definitions; ++index) {
        if (index % kColumns == 1) {
            table = module + "Table" + std::to_string(index / kColumns);
            text += table + " OBJECT IDENTIFIER ::= { " + module + " " +
                    std::to_string(index / kColumns + 1) + " }\n\n";
        } else {
            text +=
                MakeObject(table + "Column" + std::to_string(index % kColumns), table, index % kColumns + 1);
        }
    }
    return text + "END\n";
}
