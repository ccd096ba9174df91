#include "config/config_file.h"

#include <gtest/gtest.h>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "platform/files.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"

namespace {

struct ValueCase {
    const wchar_t* document;
    const wchar_t* value;
    const char* why;
};

const ValueCase kValues[] = {
    {L"<config><ip>10.1.2.3</ip></config>", L"10.1.2.3", "the text between the markers"},
    {L"<ip></ip>", L"", "empty"},
    {L"<ip>\r\n  10.1.2.3\t\r\n</ip>", L"\r\n  10.1.2.3\t\r\n", "nothing is trimmed"},
    {L"", L"none", "no document"},
    {L"<ip>10.1.2.3", L"none", "no closing marker"},
    {L"10.1.2.3</ip>", L"none", "no opening marker"},
    {L"<ip >10.1.2.3</ip>", L"none", "a marker has no blanks"},
    {L"<IP>10.1.2.3</IP>", L"none", "letter case counts"},
    {L"ip>10.1.2.3</ip>", L"none", "a marker has both brackets"},
    {L"<ip>10.1.2.3</ip6>", L"none", "the closing marker is exact, too"},
    {L"<zip>1</zip><ip6>2</ip6><ip>3</ip>", L"3", "longer names are other markers"},
    {L"<ip>1</ip><ip>2</ip>", L"1", "the first markers count"},
    {L"<ip><ip>1</ip>", L"<ip>1", "also when nested"},
    {L"</ip><ip>10.1.2.3</ip>", L"none", "the first closing marker counts, even before the opening one"},
};

TEST(ExtractTagValue, ReturnsTheTextBetweenTheFirstMarkersElseTheFallback) {
    for (const ValueCase& row : kValues) {
        EXPECT_EQ(ExtractTagValue(row.document, L"ip", L"none"), row.value) << row.why;
    }
}

class ConfigFileTest : public testing::Test {
  protected:
    ConfigFileTest() { SetSettings(false, L"127.0.0.1", 162); }
    ~ConfigFileTest() override { SetSettings(false, L"127.0.0.1", 162); }

    static void SetSettings(bool enabled, const std::wstring& ip, int32_t port) {
        ReplaceForwarding(enabled, ip, port);
    }

    // Loads a file of these octets over settings that no test file contains.
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

    // The messages of the log without their stamps, joined; removes the log.
    static std::string DrainMessages() {
        const std::string log = ReadOctets(AppPaths.logFilePath);
        RemoveFile(AppPaths.logFilePath);
        std::string messages;
        for (size_t at = 0; at < log.size();) {
            const size_t end = log.find("\r\r\n", at);
            messages += log.substr(at + kStampLength + 2, end - at - kStampLength - 2);
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
    EXPECT_EQ(DrainMessages(), "Config saved.");
}

TEST_F(ConfigFileTest, SavedSettingsLoadAgainWithNothingEscaped) {
    SetSettings(true, L" <&\"'> ", 9162);
    SaveConfig();
    SetSettings(false, {}, 1);
    LoadConfig();
    ExpectSettings(true, L" <&\"'> ", 9162);
    EXPECT_EQ(DrainMessages(), "Config saved.Config loaded.");
}

TEST_F(ConfigFileTest, MissingOrEmptyFileChangesNothing) {
    SetSettings(true, L"leftover", 7);
    LoadConfig();
    ExpectSettings(true, L"leftover", 7);
    EXPECT_EQ(DrainMessages(), "No config.xml found (or empty). Using defaults.");
    for (const char* octets : {"", "\x1A<forwardingPort>9</forwardingPort>"}) {
        Load(octets);
        ExpectSettings(true, L"leftover", 7);
        EXPECT_EQ(DrainMessages(), "No config.xml found (or empty). Using defaults.");
    }
}

TEST_F(ConfigFileTest, FileWithoutMarkersLoadsAllDefaults) {
    for (const char* octets : {"word", "\r\n"}) {
        Load(octets);
        ExpectSettings(false, L"127.0.0.1", 162);
        EXPECT_EQ(DrainMessages(), "Config loaded.");
    }
}

TEST_F(ConfigFileTest, LineEndsMakeNoDifference) {
    for (const std::string end : {"\n", "\r\n", ""}) {
        Load("<config>" + end + "<forwardingEnabled>1</forwardingEnabled>" + end +
             "<forwardingIp>10.9.8.7</forwardingIp>" + end + "<forwardingPort>65535</forwardingPort>" + end);
        ExpectSettings(true, L"10.9.8.7", 65535);
    }
}

TEST_F(ConfigFileTest, OnlyTheTextOneEnablesForwarding) {
    EXPECT_TRUE(LoadEnabled("1"));
    for (const char* value : {"true", " 1", "1 ", "01", "", "0", "11", "1\n"}) {
        EXPECT_FALSE(LoadEnabled(value)) << value;
    }
}

TEST_F(ConfigFileTest, AddressIsUnchanged) {
    EXPECT_EQ(LoadIp("<forwardingIp></forwardingIp>"), L"");
    EXPECT_EQ(LoadIp("<forwardingIp> 10.1.2.3 </forwardingIp>"), L" 10.1.2.3 ");
    EXPECT_EQ(LoadIp("<forwardingIp>not an address \xE9</forwardingIp>"), L"not an address \u00E9");
}

TEST_F(ConfigFileTest, ClosingMarkerBeforeTheOpeningOneLoadsTheDefaultAddress) {
    EXPECT_EQ(LoadIp("</forwardingIp>10.1.2.3<forwardingIp>"), L"127.0.0.1");
    EXPECT_EQ(LoadIp("</forwardingIp><forwardingIp>10.1.2.3</forwardingIp>"), L"127.0.0.1");
}

TEST_F(ConfigFileTest, PortIsParsedLikeTheRuntimeAndIs162OutsideItsRange) {
    struct Case {
        const char* text;
        int32_t port;
    };
    for (const auto& [text, port] : {Case{"  8162abc", 8162},
                                     {"\r\n\t+99 ", 99},
                                     {"1", 1},
                                     {"65535", 65535},
                                     {"0", 162},
                                     {"-5", 162},
                                     {"65536", 162},
                                     {"70000", 162},
                                     {"abc", 162},
                                     {"", 162},
                                     {"4294968296", 162},
                                     {"18446744073709552616", 162}}) {
        EXPECT_EQ(LoadPort(text), port) << text;
    }
}

TEST_F(ConfigFileTest, AddressAbove0xFFTruncatesTheFileAndTheNextLoadUsesDefaults) {
    SetSettings(true, L"10.\u20AC", 9162);
    SaveConfig();
    EXPECT_TRUE(ReadOctets(AppPaths.configPath).ends_with("  <forwardingIp>10."));
    EXPECT_EQ(DrainMessages(), "Config saved.");
    LoadConfig();
    ExpectSettings(true, L"127.0.0.1", 162);
}

}  // namespace
