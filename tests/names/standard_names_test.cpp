// standard-names.mib, which is installed with the program, names the bindings of standard traps. Neither it
// nor another MIB file breaks the other's names. QUILLMONT_MIB_FOLDER: a folder of other MIB files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "mib/mib_folder.h"
#include "mib/mib_parser.h"
#include "mib/name_store.h"
#include "tests/support/ber_encoder.h"
#include "tests/support/mib_tables.h"
#include "tests/support/scratch_folder.h"
#include "trap/snmp_message.h"

namespace {

using Paths = std::vector<std::wstring>;
using Names = std::map<std::wstring, std::wstring>;  // by identifier

std::wstring Widen(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

const std::wstring& StandardNames() {
    static const std::wstring path = Widen(QUILLMONT_STANDARD_NAMES);
    return path;
}

struct TableRow {
    std::string name;
    std::string oid;
    std::string instances;             // "-", "0", "1-128", "1.1-64"; ":" for a notification
    std::vector<std::string> carries;  // the names of its objects
};

std::vector<TableRow> ReadTable() {
    std::ifstream file(QUILLMONT_NAMES_TABLE);
    std::vector<TableRow> rows;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        TableRow row;
        if (line.starts_with('#') || !(words >> row.name >> row.oid >> row.instances)) {
            continue;
        }
        for (std::string word; words >> word;) {
            row.carries.push_back(word);
        }
        rows.push_back(row);
    }
    return rows;
}

// "1-128" is 1 to 128, "1.1-64" is 1.1 to 1.64; nothing for "-" and ":".
std::vector<std::string> Instances(const std::string& text) {
    if (text == "-" || text == ":") {
        return {};
    }
    const size_t dot = text.rfind('.');
    const std::string prefix = dot == std::string::npos ? "" : text.substr(0, dot + 1);
    const std::string range = text.substr(prefix.size());
    const size_t dash = range.find('-');
    const int last = std::stoi(dash == std::string::npos ? range : range.substr(dash + 1));
    std::vector<std::string> instances;
    for (int instance = std::stoi(range); instance <= last; ++instance) {
        instances.push_back(prefix + std::to_string(instance));
    }
    return instances;
}

// ifIndex and 3 give ifIndex-3.
std::wstring InstanceName(const std::string& name, std::string instance) {
    std::replace(instance.begin(), instance.end(), '.', '-');
    return Widen(name + "-" + instance);
}

class StandardNamesTest : public testing::Test {
  protected:
    // Loads the files in this order.
    static void Load(const Paths& files) {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        for (const std::wstring& file : files) {
            ParseMibFile(file);
        }
        StoreResolvedDefinitions();
    }

    FreshNameStore store_;
};

Names StoredNames() {
    const std::lock_guard lock(MibStoreLock);
    return CopyOidNames();
}

Paths MibFilesIn(const std::filesystem::path& folder) {
    Paths files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file() && IsMibFile(entry.path().filename().wstring())) {
            files.push_back(entry.path().wstring());
        }
    }
    return files;
}

// NTFS lists a folder by upper-cased name.
void SortAsWindowsLists(Paths& files) {
    const auto key = [](const std::wstring& path) {
        std::wstring name = path.substr(path.rfind(L'/') + 1);
        std::transform(name.begin(), name.end(), name.begin(), std::towupper);
        return name;
    };
    std::sort(files.begin(), files.end(),
              [&](const auto& left, const auto& right) { return key(left) < key(right); });
}

// The bindings of a notification, with those that an agent or a forwarder adds before and after them, and
// their expected names.
struct Notification {
    std::vector<Binding> bindings;
    Paths names;

    void Add(const std::string& oid, const std::wstring& name) {
        bindings.push_back({oid, EncodeInteger(1)});
        names.push_back(name);
    }
};

Notification Compose(const TableRow& row, const std::map<std::string, TableRow>& objects, bool lastInstance) {
    Notification notification;
    notification.Add("1.3.6.1.2.1.1.3.0", L"sysUpTime-0");
    notification.bindings.push_back({"1.3.6.1.6.3.1.1.4.1.0", EncodeOid(row.oid)});
    notification.names.push_back(L"snmpTrapOID-0");
    for (const std::string& name : row.carries) {
        const TableRow& object = objects.at(name);
        const auto instances = Instances(object.instances);
        if (instances.empty()) {
            // An index that no list can enumerate, such as a peer's address.
            notification.Add(object.oid + ".192.0.2.1", L"");
        } else {
            const std::string& instance = lastInstance ? instances.back() : instances.front();
            notification.Add(object.oid + "." + instance, InstanceName(name, instance));
        }
    }
    notification.Add("1.3.6.1.6.3.18.1.3.0", L"snmpTrapAddress-0");
    notification.Add("1.3.6.1.6.3.18.1.4.0", L"snmpTrapCommunity-0");
    notification.Add("1.3.6.1.6.3.1.1.4.3.0", L"snmpTrapEnterprise-0");
    return notification;
}

TEST_F(StandardNamesTest, EveryNotificationOfTheTableIsShownWithItsNames) {
    Load({StandardNames()});
    std::map<std::string, TableRow> objects;
    size_t decoded = 0;
    for (const TableRow& row : ReadTable()) {
        if (row.instances != ":") {
            objects[row.name] = row;
            continue;
        }
        for (const bool lastInstance : {false, true}) {
            const Notification notification = Compose(row, objects, lastInstance);
            for (const Octets& message :
                 {EncodeV2Trap(notification.bindings), EncodeV1Trap(notification.bindings)}) {
                std::vector<VarbindRecord> records;
                ASSERT_TRUE(DecodeSnmpMessage(message.data(), message.size(), records)) << row.name;
                ASSERT_EQ(records.size(), notification.names.size()) << row.name;
                for (size_t i = 0; i < records.size(); ++i) {
                    EXPECT_EQ(records[i].name, notification.names[i])
                        << row.name << ", " << notification.bindings[i].oid;
                }
                ++decoded;
            }
        }
    }
    EXPECT_GE(decoded, 4U * 70);
}

TEST_F(StandardNamesTest, EveryInstanceOfTheTableHasItsNameAndNothingElseHasOne) {
    Load({StandardNames()});
    Names left = StoredNames();
    for (const TableRow& row : ReadTable()) {
        if (row.instances == ":") {
            continue;
        }
        EXPECT_EQ(left[Widen(row.oid)], Widen(row.name + "_"));
        left.erase(Widen(row.oid));
        for (const std::string& instance : Instances(row.instances)) {
            const std::wstring oid = Widen(row.oid + "." + instance);
            EXPECT_EQ(left[oid], InstanceName(row.name, instance)) << oid;
            left.erase(oid);
        }
    }
    // The parents between an object and its instances of two arcs.
    for (const auto& [oid, name] : left) {
        EXPECT_TRUE(name.ends_with(L"-1_")) << oid << " " << name;
    }
}

TEST_F(StandardNamesTest, OtherFilesDoNotBreakThem) {
    const ScratchFolder folder;
    // As in real files: a sequence that replaces an entry, a name used twice, redefined built-in names.
    const std::wstring other = folder.Join(L"OTHER-MIB.mib");
    WriteOctets(other,
                "interfaces OBJECT IDENTIFIER ::= { enterprises 1 }\n"
                "ifTable OBJECT-TYPE\n::= { nowhere 2 }\n"
                "ifEntry OBJECT-TYPE\n::= { ifTable 1 }\nIfEntry ::= SEQUENCE { ifIndex INTEGER }\n"
                "ifIndex OBJECT-TYPE\n::= { enterprises 7 }\n"
                "mib-2 OBJECT IDENTIFIER ::= { private 1 }\nsnmpModules OBJECT IDENTIFIER ::= { mib-2 }\n");
    Load({StandardNames()});
    const Names alone = StoredNames();
    for (const Paths& order : {Paths{StandardNames(), other}, Paths{other, StandardNames()}}) {
        Load(order);
        Names together = StoredNames();
        for (const auto& [oid, name] : alone) {
            EXPECT_EQ(together[oid], name) << oid;
        }
    }
}

// The first file that names an identifier wins, so parents such as upsObjects_ are shown if
// standard-names.mib is read before the object's own file.
TEST_F(StandardNamesTest, ParentsNameAnObjectOnlyIfReadBeforeItsFile) {
    const ScratchFolder folder;
    const std::wstring interfaces = folder.Join(L"IF-MIB.txt");
    const std::wstring ups = folder.Join(L"UPS-MIB.txt");
    WriteOctets(interfaces,
                "interfaces OBJECT IDENTIFIER ::= { mib-2 2 }\nifTable OBJECT-TYPE\n::= { interfaces 2 }\n");
    WriteOctets(ups,
                "upsMIB MODULE-IDENTITY\n::= { mib-2 33 }\nupsObjects OBJECT IDENTIFIER ::= { upsMIB 1 }\n");
    Load({interfaces, StandardNames(), ups});
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.2.2"), L"ifTable");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.33.1"), L"upsObjects_");
    EXPECT_EQ(OidOf(L"upsObjects"), L"1.3.6.1.2.1.33.1");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.33.1.2.2.0"), L"upsSecondsOnBattery-0");
}

// Loads standard-names.mib together with the files of a folder.
class WithOtherFiles : public StandardNamesTest {
  protected:
    void SetUp() override {
        const char* folder = std::getenv("QUILLMONT_MIB_FOLDER");
        const std::filesystem::path path = folder != nullptr ? folder : "/usr/share/snmp/mibs";
        if (!std::filesystem::is_directory(path)) {
            GTEST_SKIP() << path << " is not a folder: install libsnmp-base or set QUILLMONT_MIB_FOLDER";
        }
        others_ = MibFilesIn(path);
        SortAsWindowsLists(others_);
        ASSERT_FALSE(others_.empty());
        Load({StandardNames()});
        own_ = StoredNames();
        Load(others_);
        before_ = StoredNames();
    }

    // Returns the identifiers whose name standard-names.mib changes. Fails if one has no name, or a new name
    // from another file.
    std::set<std::wstring> ChangedIn(const Paths& order) {
        Load(order);
        Names together = StoredNames();
        std::set<std::wstring> changed;
        for (const auto& [oid, name] : before_) {
            if (together[oid] != name) {
                EXPECT_EQ(together[oid], own_[oid]) << oid << " was " << name;
                changed.insert(oid);
            }
        }
        for (const auto& [oid, name] : own_) {
            EXPECT_NE(together[oid], L"") << oid;
        }
        return changed;
    }

    static void Print(const char* order, const std::set<std::wstring>& changed, Names& before, Names& own) {
        std::wcout << order << ": " << changed.size() << " of " << before.size() << " names change.\n";
        for (const std::wstring& oid : changed) {
            std::wcout << "  " << oid << ": " << before[oid] << " -> " << own[oid] << "\n";
        }
    }

    Paths others_;
    Names own_;
    Names before_;
};

TEST_F(WithOtherFiles, NoIdentifierLosesItsNameInAnyOrder) {
    Paths order = others_;
    order.push_back(StandardNames());
    EXPECT_EQ(ChangedIn(order), std::set<std::wstring>());
    SortAsWindowsLists(order);
    Print("As Windows lists them", ChangedIn(order), before_, own_);
    order = others_;
    order.insert(order.begin(), StandardNames());
    Print("Read first", ChangedIn(order), before_, own_);
}

}  // namespace
