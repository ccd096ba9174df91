#include "config/config_file.h"

#include <gtest/gtest.h>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "tests/support/scratch_folder.h"

namespace {

// ---- Finding a value

TEST(ExtractTagValue, IsWhatStandsBetweenTheMarkers) {
    EXPECT_EQ(ExtractTagValue(L"<config><ip>10.1.2.3</ip></config>", L"ip", L"none"), L"10.1.2.3");
    EXPECT_EQ(ExtractTagValue(L"<ip></ip>", L"ip", L"none"), L"");
}

TEST(ExtractTagValue, NothingIsTrimmed) {
    EXPECT_EQ(ExtractTagValue(L"<ip>\r\n  10.1.2.3\t\r\n</ip>", L"ip", L"none"), L"\r\n  10.1.2.3\t\r\n");
}

TEST(ExtractTagValue, MissingMarkerGivesTheFallback) {
    EXPECT_EQ(ExtractTagValue(L"", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"<ip>10.1.2.3", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"10.1.2.3</ip>", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"<ip >10.1.2.3</ip>", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"<IP>10.1.2.3</IP>", L"ip", L"none"), L"none");
}

TEST(ExtractTagValue, MarkerIsTheTagWithBothItsBrackets) {
    EXPECT_EQ(ExtractTagValue(L"ip>10.1.2.3</ip>", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"<ip>10.1.2.3</ip6>", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"<zip>1</zip><ip6>2</ip6><ip>3</ip>", L"ip", L"none"), L"3");
}

TEST(ExtractTagValue, FirstMarkersCount) {
    EXPECT_EQ(ExtractTagValue(L"<ip>1</ip><ip>2</ip>", L"ip", L"none"), L"1");
    EXPECT_EQ(ExtractTagValue(L"<ip><ip>1</ip>", L"ip", L"none"), L"<ip>1");
}

TEST(ExtractTagValue, ClosingMarkerIsSearchedFromTheStartOfTheDocument) {
    EXPECT_EQ(ExtractTagValue(L"</ip><ip>10.1.2.3</ip>", L"ip", L"none"), L"none");
    EXPECT_EQ(ExtractTagValue(L"</ip><ip>", L"ip", L"none"), L"none");
}

TEST(ExtractTagValue, MarkersMayStandAtBothEndsOfTheDocument) {
    EXPECT_EQ(ExtractTagValue(L"<a>x</a>", L"a", L"none"), L"x");
}

// ---- The document

TEST(BuildConfigText, HasFiveLines) {
    EXPECT_EQ(BuildConfigText(true, L"10.1.2.3", 9162),
              L"<config>\r\n"
              L"  <forwardingEnabled>1</forwardingEnabled>\r\n"
              L"  <forwardingIp>10.1.2.3</forwardingIp>\r\n"
              L"  <forwardingPort>9162</forwardingPort>\r\n"
              L"</config>\r\n");
}

TEST(BuildConfigText, NothingIsEscaped) {
    EXPECT_NE(BuildConfigText(false, L"<&\"'>", 1).find(L"<forwardingIp><&\"'></forwardingIp>"),
              std::wstring::npos);
}

// ---- The file

class ConfigFileTest : public testing::Test {
  protected:
    ConfigFileTest() { SetSettings(false, L"127.0.0.1", 162); }
    ~ConfigFileTest() override { SetSettings(false, L"127.0.0.1", 162); }

    static void SetSettings(bool enabled, const std::wstring& ip, int32_t port) {
        ReplaceForwarding(enabled, ip, port);
    }

    // Loads a file of these octets over settings that no file of the tests holds.
    static void Load(std::string_view octets) {
        SetSettings(true, L"leftover", 7);
        WriteOctets(AppPaths.configPath, octets);
        LoadConfig();
    }

    static std::wstring LoadIp(const std::string& octets) {
        Load(octets);
        return CopyForwarding().ip;
    }

    static int32_t LoadPort(const std::string& value) {
        Load("<forwardingPort>" + value + "</forwardingPort>");
        return CopyForwarding().port;
    }

    static bool LoadEnabled(const std::string& value) {
        Load("<forwardingEnabled>" + value + "</forwardingEnabled>");
        return ForwardingSettings.forwardingEnabled;
    }

    // The messages of the log, each behind its stamp, joined.
    static std::string ReadMessages() {
        const std::string log = ReadOctets(AppPaths.logFilePath);
        std::string messages;
        for (size_t at = 0; at < log.size();) {
            const size_t end = log.find("\r\r\n", at);
            messages += log.substr(at + 25, end - at - 25);
            at = end + 3;
        }
        return messages;
    }

    static void ExpectSettings(bool enabled, const std::wstring& ip, int32_t port) {
        const ForwardingValues values = CopyForwarding();
        EXPECT_EQ(values.enabled, enabled);
        EXPECT_EQ(values.ip, ip);
        EXPECT_EQ(values.port, port);
    }

    ScratchFolder folder_;
    const AppPathsGuard paths_{folder_};
};

TEST_F(ConfigFileTest, DefaultSettingsAreSavedAsFiveLinesWithThreeOctetLineEnds) {
    SaveConfig();
    EXPECT_EQ(ReadOctets(AppPaths.configPath),
              "<config>\r\r\n"
              "  <forwardingEnabled>0</forwardingEnabled>\r\r\n"
              "  <forwardingIp>127.0.0.1</forwardingIp>\r\r\n"
              "  <forwardingPort>162</forwardingPort>\r\r\n"
              "</config>\r\r\n");
    EXPECT_EQ(ReadMessages(), "Config saved.");
}

TEST_F(ConfigFileTest, SavedSettingsLoadAgain) {
    SetSettings(true, L"192.168.1.20", 9162);
    SaveConfig();
    SetSettings(false, {}, 1);
    LoadConfig();
    ExpectSettings(true, L"192.168.1.20", 9162);
    EXPECT_EQ(ReadMessages(), "Config saved.Config loaded.");
}

TEST_F(ConfigFileTest, SavingReplacesTheWholeFile) {
    WriteOctets(AppPaths.configPath, std::string(10000, 'x'));
    SaveConfig();
    EXPECT_TRUE(ReadOctets(AppPaths.configPath).starts_with("<config>\r\r\n"));
    EXPECT_TRUE(ReadOctets(AppPaths.configPath).ends_with("</config>\r\r\n"));
}

TEST_F(ConfigFileTest, MissingFileKeepsTheSettings) {
    SetSettings(true, L"10.1.2.3", 7);
    LoadConfig();
    ExpectSettings(true, L"10.1.2.3", 7);
    EXPECT_EQ(ReadMessages(), "No config.xml found (or empty). Using defaults.");
}

TEST_F(ConfigFileTest, EmptyFileKeepsTheSettings) {
    Load("");
    ExpectSettings(true, L"leftover", 7);
    EXPECT_EQ(ReadMessages(), "No config.xml found (or empty). Using defaults.");
}

TEST_F(ConfigFileTest, FileThatBeginsWith0x1AIsEmpty) {
    Load("\x1A<forwardingPort>9</forwardingPort>");
    ExpectSettings(true, L"leftover", 7);
    EXPECT_EQ(ReadMessages(), "No config.xml found (or empty). Using defaults.");
}

TEST_F(ConfigFileTest, FileOfALineEndOnlyIsNotEmpty) {
    Load("\r\n");
    ExpectSettings(false, L"127.0.0.1", 162);
    EXPECT_EQ(ReadMessages(), "Config loaded.");
}

TEST_F(ConfigFileTest, FileOfOneWordLoadsAllDefaults) {
    Load("word");
    ExpectSettings(false, L"127.0.0.1", 162);
    EXPECT_EQ(ReadMessages(), "Config loaded.");
}

TEST_F(ConfigFileTest, FileWithUnixLineEndsLoads) {
    Load(
        "<config>\n<forwardingEnabled>1</forwardingEnabled>\n<forwardingIp>10.9.8.7</forwardingIp>\n"
        "<forwardingPort>65535</forwardingPort>\n</config>\n");
    ExpectSettings(true, L"10.9.8.7", 65535);
}

TEST_F(ConfigFileTest, OnlyTheTextOneEnablesForwarding) {
    EXPECT_TRUE(LoadEnabled("1"));
    for (const char* value : {"true", " 1", "1 ", "01", "", "0", "11", "1\n"}) {
        EXPECT_FALSE(LoadEnabled(value)) << value;
    }
}

TEST_F(ConfigFileTest, AddressIsTakenAsItStands) {
    EXPECT_EQ(LoadIp("<forwardingIp></forwardingIp>"), L"");
    EXPECT_EQ(LoadIp("<forwardingIp> 10.1.2.3 </forwardingIp>"), L" 10.1.2.3 ");
    EXPECT_EQ(LoadIp("<forwardingIp>not an address \xE9</forwardingIp>"), L"not an address \u00E9");
}

TEST_F(ConfigFileTest, ClosingMarkerBeforeTheOpeningOneLoadsTheDefaultAddress) {
    EXPECT_EQ(LoadIp("</forwardingIp>10.1.2.3<forwardingIp>"), L"127.0.0.1");
    EXPECT_EQ(LoadIp("</forwardingIp><forwardingIp>10.1.2.3</forwardingIp>"), L"127.0.0.1");
}

TEST_F(ConfigFileTest, PortIsReadAsTheRuntimeReadsNumbers) {
    EXPECT_EQ(LoadPort("  8162abc"), 8162);
    EXPECT_EQ(LoadPort("1"), 1);
    EXPECT_EQ(LoadPort("65535"), 65535);
    EXPECT_EQ(LoadPort("+99"), 99);
    EXPECT_EQ(LoadPort("\r\n\t99 "), 99);
}

TEST_F(ConfigFileTest, PortOutsideTheRangeBecomes162) {
    for (const char* value : {"0", "-5", "65536", "70000", "abc", "", "- 5"}) {
        EXPECT_EQ(LoadPort(value), 162) << value;
    }
}

TEST_F(ConfigFileTest, HugePortIsClampedAndNotWrapped) {
    EXPECT_EQ(LoadPort("4294968296"), 162) << "would be 1000 if it wrapped";
    EXPECT_EQ(LoadPort("18446744073709552616"), 162) << "would be 1000 in 64 bits";
}

TEST_F(ConfigFileTest, AddressAbove0xFFCutsTheFileAndTheRestIsLostAtTheNextLoad) {
    SetSettings(true, L"10.\u20AC", 9162);
    SaveConfig();
    EXPECT_TRUE(ReadOctets(AppPaths.configPath).ends_with("  <forwardingIp>10."));
    EXPECT_EQ(ReadMessages(), "Config saved.");
    LoadConfig();
    ExpectSettings(true, L"127.0.0.1", 162);
}

TEST_F(ConfigFileTest, FileThatCannotBeOpenedIsNotLogged) {
    AppPaths.configPath = AppPaths.dataDir + L"\\missing\\config.xml";
    SaveConfig();
    EXPECT_EQ(ReadMessages(), "");
    LoadConfig();
    EXPECT_EQ(ReadMessages(), "No config.xml found (or empty). Using defaults.");
}

}  // namespace
