#include "tests/support/sample_messages.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

const std::vector<Binding>& TwoBindings() {
    static const std::vector<Binding> bindings = {
        {"1.3.6.1.2.1.1.3.0", EncodeUnsigned(ber::kTimeTicks, 123456)},
        {"1.3.6.1.6.3.1.1.4.1.0", EncodeOid("1.3.6.1.6.3.1.1.5.3")}};
    return bindings;
}

const std::vector<std::wstring>& TwoLines() {
    static const std::vector<std::wstring> lines = {L"1.3.6.1.2.1.1.3.0  TimeTicks = 123456",
                                                    L"1.3.6.1.6.3.1.1.4.1.0  OID = 1.3.6.1.6.3.1.1.5.3"};
    return lines;
}

const std::vector<Binding>& LinkDownBindings() {
    static const std::vector<Binding> bindings = {{"1.3.6.1.2.1.2.2.1.1.7", EncodeInteger(7)},
                                                  {"1.3.6.1.2.1.2.2.1.7.7", EncodeInteger(2)},
                                                  {"1.3.6.1.2.1.2.2.1.8.7", EncodeInteger(2)}};
    return bindings;
}

const std::vector<std::wstring>& LinkDownLines() {
    static const std::vector<std::wstring> lines = {L"1.3.6.1.2.1.2.2.1.1.7  INTEGER = 7",
                                                    L"1.3.6.1.2.1.2.2.1.7.7  INTEGER = 2",
                                                    L"1.3.6.1.2.1.2.2.1.8.7  INTEGER = 2"};
    return lines;
}

template <typename T>
std::vector<T> Join(std::vector<T> first, const std::vector<T>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

SampleMessage EightBindings() {
    const std::vector<Binding> more = {
        {"1.3.6.1.2.1.2.2.1.2.7", EncodeOctetString("GigabitEthernet0/7")},
        {"1.3.6.1.2.1.31.1.1.1.6.7", EncodeUnsigned(ber::kCounter64, 98765432109876)},
        {"1.3.6.1.6.3.18.1.3.0", EncodeIpAddress(192, 168, 1, 20)}};
    const std::vector<std::wstring> moreLines = {
        L"1.3.6.1.2.1.2.2.1.2.7  OCTET STRING = \"GigabitEthernet0/7\"",
        L"1.3.6.1.2.1.31.1.1.1.6.7  Counter64 = 98765432109876",
        L"1.3.6.1.6.3.18.1.3.0  IpAddress = 192.168.1.20"};
    return {"v2_eight_bindings", EncodeV2Trap(Join(Join(TwoBindings(), LinkDownBindings()), more)),
            Join(Join(TwoLines(), LinkDownLines()), moreLines)};
}

SampleMessage EveryValueType() {
    const std::vector<Binding> bindings = {
        {"1.3.6.1.4.1.8072.1", EncodeInteger(-42)},
        {"1.3.6.1.4.1.8072.2", EncodeOctetString("plain text")},
        {"1.3.6.1.4.1.8072.3", EncodeOctetString(std::string("\0\1\xFF", 3))},
        {"1.3.6.1.4.1.8072.4", EncodeNull()},
        {"1.3.6.1.4.1.8072.5", EncodeOid("1.3.6.1.4.1.4294967295.0")},
        {"1.3.6.1.4.1.8072.6", EncodeIpAddress(255, 0, 10, 1)},
        {"1.3.6.1.4.1.8072.7", EncodeUnsigned(ber::kCounter32, 4294967295)},
        {"1.3.6.1.4.1.8072.8", EncodeUnsigned(ber::kGauge32, 100)},
        {"1.3.6.1.4.1.8072.9", EncodeUnsigned(ber::kTimeTicks, 0)},
        {"1.3.6.1.4.1.8072.10", EncodeElement(ber::kOpaque, {0x9F, 0x78, 0x04, 0x42})},
        {"1.3.6.1.4.1.8072.11", EncodeUnsigned(ber::kCounter64, UINT64_MAX)},
        {"1.3.6.1.4.1.8072.12", EncodeElement(ber::kNoSuchObject, {})},
        {"1.3.6.1.4.1.8072.13", EncodeElement(ber::kNoSuchInstance, {})},
        {"1.3.6.1.4.1.8072.14", EncodeElement(ber::kEndOfMibView, {})}};
    return {
        "v2_every_value_type",
        EncodeV2Trap(bindings),
        {L"1.3.6.1.4.1.8072.1  INTEGER = -42", L"1.3.6.1.4.1.8072.2  OCTET STRING = \"plain text\"",
         L"1.3.6.1.4.1.8072.3  OCTET STRING = 0x0001FF", L"1.3.6.1.4.1.8072.4  NULL = NULL",
         L"1.3.6.1.4.1.8072.5  OID = 1.3.6.1.4.1.4294967295.0", L"1.3.6.1.4.1.8072.6  IpAddress = 255.0.10.1",
         L"1.3.6.1.4.1.8072.7  Counter32 = 4294967295", L"1.3.6.1.4.1.8072.8  Gauge32 = 100",
         L"1.3.6.1.4.1.8072.9  TimeTicks = 0", L"1.3.6.1.4.1.8072.10  TAG 0x44 = 0x9F780442",
         L"1.3.6.1.4.1.8072.11  Counter64 = 18446744073709551615", L"1.3.6.1.4.1.8072.12  TAG 0x80 = 0x",
         L"1.3.6.1.4.1.8072.13  TAG 0x81 = 0x", L"1.3.6.1.4.1.8072.14  TAG 0x82 = 0x"}};
}

SampleMessage LongStrings() {
    return {"v2_long_strings",
            EncodeV2Trap({{"1.3.6.1.4.1.8072.2.1", EncodeOctetString(std::string(300, 'x'))},
                          {"1.3.6.1.4.1.8072.2.2", EncodeOctetString(std::string(300, '\xFF'))}}),
            {L"1.3.6.1.4.1.8072.2.1  OCTET STRING = \"" + std::wstring(300, L'x') + L"\"",
             L"1.3.6.1.4.1.8072.2.2  OCTET STRING = 0x" + std::wstring(48, L'F') + L"..."}};
}

SampleMessage EmptyIdentifier() {
    return {"v2_empty_identifier", EncodeV2Trap({{"", EncodeInteger(1)}}), {L"  INTEGER = 1"}};
}

SampleMessage IdentifierOnly() {
    return {"v2_identifier_without_value",
            EncodeV2Trap({{"1.3.6.1.2.1.1.3.0", {}}, {"1.3.6.1.2.1.1.5.0", EncodeOctetString("core")}}),
            {L"1.3.6.1.2.1.1.3.0  (no value) = ", L"1.3.6.1.2.1.1.5.0  OCTET STRING = \"core\""}};
}

SampleMessage SkippedBinding() {
    const Octets wrong = EncodeSequence({EncodeInteger(6), EncodeInteger(1)});
    const Octets right = EncodeBinding(TwoBindings()[0]);
    return {"v2_binding_without_identifier",
            EncodeV2TrapWithListContent(Concatenate({wrong, EncodeNull(), right})),
            {TwoLines()[0]}};
}

// Every length in the long form, with four octets.
SampleMessage LongLengths() {
    const auto longer = [](uint8_t tag, const Octets& content) {
        return EncodeLongFormElement(tag, content, 4);
    };
    const Octets binding =
        longer(ber::kSequence, Concatenate({longer(ber::kOid, {0x2B, 0x06, 0x01, 0x04, 0x01}),
                                            longer(ber::kInteger, {0x00, 0x80})}));
    const Octets pdu =
        longer(ber::kV2TrapPdu, Concatenate({longer(ber::kInteger, {1}), longer(ber::kInteger, {0}),
                                             longer(ber::kInteger, {0}), longer(ber::kSequence, binding)}));
    return {"v2_long_form_lengths",
            longer(ber::kSequence,
                   Concatenate({longer(ber::kInteger, {1}), longer(ber::kOctetString, {'p'}), pdu})),
            {L"1.3.6.1.4.1  INTEGER = 128"}};
}

SampleMessage TrailingOctetsEverywhere() {
    const Octets junk = {0xFF};
    const Octets binding = EncodeSequence(
        {EncodeOid(TwoBindings()[0].oid), TwoBindings()[0].value, EncodeOctetString("after the value.")});
    const Octets list = EncodeElement(ber::kSequence, Concatenate({binding, junk}));
    const Octets pdu = EncodeV2Pdu(ber::kV2TrapPdu, Concatenate({list, junk}));
    const Octets message = EncodeSequence({EncodeInteger(1), EncodeOctetString("public"), pdu, junk});
    return {"v2_octets_after_everything", Concatenate({message, {0xDE, 0xAD}}), {TwoLines()[0]}};
}

SampleMessage ManyBindings() {
    std::vector<Binding> bindings;
    std::vector<std::wstring> lines;
    for (int index = 1; index <= 60; ++index) {
        bindings.push_back({"1.3.6.1.2.1.2.2.1.10." + std::to_string(index),
                            EncodeUnsigned(ber::kCounter32, static_cast<uint64_t>(index) * 70000000U)});
        lines.push_back(L"1.3.6.1.2.1.2.2.1.10." + std::to_wstring(index) + L"  Counter32 = " +
                        std::to_wstring(static_cast<uint64_t>(index) * 70000000U));
    }
    return {"v2_sixty_bindings", EncodeV2Trap(bindings), lines};
}

std::vector<SampleMessage> BuildMalformedSamples() {
    const Octets list = EncodeBindingList(TwoBindings());
    const Octets wellFormed = EncodeV2Trap(TwoBindings());
    Octets indefinite = wellFormed;
    indefinite[1] = 0x80;
    return {
        {"empty_datagram", {}, {}},
        {"one_octet", {0x30}, {}},
        {"text_instead_of_a_message", EncodeOctetString("this is not a message"), {}},
        {"v2_empty_binding_list", EncodeV2Trap({}), {}},
        {"v1_empty_binding_list", EncodeV1Trap({}), {}},
        {"v2_null_after_the_list",
         EncodeMessage(1, EncodeV2Pdu(ber::kV2TrapPdu, Concatenate({list, EncodeNull()}))),
         {}},
        {"v2_empty_pdu", EncodeMessage(1, {ber::kV2TrapPdu, 0}), {}},
        {"v2_no_community", EncodeSequence({EncodeInteger(1)}), {}},
        {"v2_indefinite_length", indefinite, {}},
        {"v2_length_beyond_the_datagram", Octets(wellFormed.begin(), wellFormed.end() - 1), {}},
    };
}

std::vector<SampleMessage> BuildSamples() {
    std::vector<SampleMessage> samples = {
        {"v1_link_down", EncodeV1Trap(LinkDownBindings()), LinkDownLines()},
        {"v1_two_bindings", EncodeV1Trap(TwoBindings()), TwoLines()},
        {"v2_two_bindings", EncodeV2Trap(TwoBindings()), TwoLines()},
        {"v2_link_down", EncodeV2Trap(Join(TwoBindings(), LinkDownBindings())),
         Join(TwoLines(), LinkDownLines())},
        {"inform_two_bindings", EncodeInform(TwoBindings()), TwoLines()},
        {"get_request_two_bindings", EncodeMessage(1, EncodeV2Pdu(0xA0, EncodeBindingList(TwoBindings()))),
         TwoLines()},
        EightBindings(),
        EveryValueType(),
        LongStrings(),
        EmptyIdentifier(),
        IdentifierOnly(),
        SkippedBinding(),
        LongLengths(),
        TrailingOctetsEverywhere(),
        ManyBindings()};
    return Join(samples, BuildMalformedSamples());
}

}  // namespace

const std::vector<SampleMessage>& SampleMessages() {
    static const std::vector<SampleMessage> samples = BuildSamples();
    return samples;
}

const SampleMessage& FindSample(std::string_view name) {
    const auto found = std::find_if(SampleMessages().begin(), SampleMessages().end(),
                                    [&](const SampleMessage& sample) { return sample.name == name; });
    if (found == SampleMessages().end()) {
        std::fprintf(stderr, "No sample message %s.\n", std::string(name).c_str());
        std::abort();
    }
    return *found;
}

std::wstring BuildExpectedBody(const SampleMessage& sample) {
    std::wstring body;
    size_t number = 0;
    for (const std::wstring& line : sample.lines) {
        body += L"---> [" + std::to_wstring(++number) + L"] " + line + L"\r\n";
    }
    if (sample.lines.empty()) {
        body = L"DECODED VARBINDS: (not decoded)\r\n";
    }
    return body + L"\r\n";
}
