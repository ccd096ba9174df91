// Datagrams on UDP 162: recorded, announced, never answered.
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "platform/files.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

constexpr char kFrom[] = "       FROM: 127.0.0.1\r\r\n";
constexpr char kNotDecoded[] = "DECODED VARBINDS: (not decoded)";

class TrapReception : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ASSERT_TRUE(StartServer());
    }

    LoopbackClient client;
};

TEST_F(TrapReception, ATrapIsRecordedLineByLineAndAnnounced) {
    client.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(TrapRecords(), std::vector<std::string>{kFrom + ExpectedLines("v2_link_down")});
}

TEST_F(TrapReception, V1V2cAndInformWithTheSameBindingsGiveTheSameRecord) {
    client.Send(Sample("v1_two_bindings"));
    client.Send(Sample("v2_two_bindings"));
    client.Send(Sample("inform_two_bindings"));
    ASSERT_TRUE(WaitForTraps(3));
    const std::vector<std::string> records = TrapRecords();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0], records[1]);
    EXPECT_EQ(records[1], records[2]);
    EXPECT_NE(records[0].find("---> [1] "), std::string::npos);
}

TEST_F(TrapReception, NothingIsAnsweredNotEvenAnInform) {
    client.Send(Sample("v1_two_bindings"));
    client.Send(Sample("inform_two_bindings"));
    ASSERT_TRUE(WaitForTraps(2));
    const Octets marker = {1, 2, 3};
    client.Send(marker, client.port());
    EXPECT_EQ(client.Receive(), marker) << "a reply came before the marker";
}

TEST_F(TrapReception, AZeroLengthDatagramIsRecordedAsNotDecoded) {
    client.Send({});
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(TrapRecords(), std::vector<std::string>{std::string(kFrom) + kNotDecoded});
}

TEST_F(TrapReception, ATrapWithAnEmptyBindingListIsRecordedAsNotDecoded) {
    client.Send(Sample("v2_empty_binding_list"));
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(TrapRecords(), std::vector<std::string>{std::string(kFrom) + kNotDecoded});
}

TEST_F(TrapReception, TheLargestDatagramArrivesWhole) {
    const Octets largest = LargestMessage();
    ASSERT_EQ(largest.size(), 65507U);
    client.Send(largest);
    ASSERT_TRUE(WaitForTraps(1));
    const std::string record = TrapRecords().at(0);
    EXPECT_EQ(record.substr(record.rfind("---> [")), "---> [2] 1.3.6.1.4.1.8072.2  INTEGER = 4711")
        << "the last octets did not arrive";
}

TEST_F(TrapReception, TheSendersPortIsInTheLastSenderButNotInTheRecord) {
    LoopbackClient other;
    client.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(CopyLastTrapSender(), L"127.0.0.1:" + std::to_wstring(client.port()));
    other.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(2));
    EXPECT_EQ(CopyLastTrapSender(), L"127.0.0.1:" + std::to_wstring(other.port()));
    const std::vector<std::string> records = TrapRecords();
    EXPECT_EQ(records.at(0), records.at(1));
}

TEST_F(TrapReception, NamesChangeWithEachLoadOfTheMibFiles) {
    const std::wstring mib = AppPaths.mibsDir + L"\\named.mib";
    AppendToFile(mib, L"linkDownName OBJECT IDENTIFIER ::= { mib-2 77 }\n");
    LoadMibFolder();
    const Octets message = EncodeV2Trap({{"1.3.6.1.2.1.77", EncodeInteger(5)}});
    client.Send(message);
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(TrapRecords().at(0),
              kFrom + std::string("---> [1] 1.3.6.1.2.1.77 (linkDownName)  INTEGER = 5"));
    RemoveFile(mib);
    LoadMibFolder();
    client.Send(message);
    ASSERT_TRUE(WaitForTraps(2));
    EXPECT_EQ(TrapRecords().at(1), kFrom + std::string("---> [1] 1.3.6.1.2.1.77  INTEGER = 5"));
}

}  // namespace
