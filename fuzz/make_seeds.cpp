// Writes the seed corpora: small inputs of every kind for the fuzzers and the replay. Run it after changing a
// seed here or a sample message, and commit the result. Findings of a fuzzer are added manually.
// Usage: quillmont_make_seeds CORPUS_FOLDER
#include <cstdio>
#include <string>
#include <string_view>

#include "config/config_file.h"
#include "core/file_text.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/text_decoding.h"
#include "tests/support/sample_messages.h"

namespace {

using namespace std::string_literals;

std::wstring corpusFolder;

std::wstring Widen(std::string_view text) {
    return std::wstring(text.begin(), text.end());
}

bool WriteSeed(std::string_view target, std::string_view name, std::string_view octets) {
    const std::wstring folder = corpusFolder + L"\\" + Widen(target);
    CreateFolderWithParents(folder);
    return ReplaceOctets(folder + L"\\" + Widen(name), octets);
}

struct Seed {
    std::string_view name;
    std::string octets;
};

std::string Repeat(std::string_view part, size_t times) {
    std::string text;
    for (; times > 0; --times) {
        text += part;
    }
    return text;
}

const Seed kMibSeeds[] = {
    {"one_line", "interfaces OBJECT IDENTIFIER ::= { mib-2 2 }\n"},
    {"object_type",
     "ifNumber OBJECT-TYPE\n    SYNTAX  INTEGER\n    ACCESS  read-only\n    STATUS  mandatory\n"
     "    DESCRIPTION\n        \"The number of interfaces.\"\n    ::= { interfaces 1 }\n"
     "interfaces OBJECT IDENTIFIER ::= { mib-2 2 }\n"},
    {"module_identity",
     "SAMPLE-MIB DEFINITIONS ::= BEGIN\nIMPORTS\n    MODULE-IDENTITY, OBJECT-TYPE, enterprises\n"
     "        FROM SNMPv2-SMI;\nsampleMIB MODULE-IDENTITY\n    LAST-UPDATED \"202601010000Z\"\n"
     "    ::= { enterprises 8072 }\nsampleObjects OBJECT IDENTIFIER ::= { sampleMIB 1 }\n"
     "sampleDown NOTIFICATION-TYPE\n    STATUS current\n    ::= { sampleMIB 0 1 }\nEND\n"},
    {"table",
     "sampleTable OBJECT-TYPE\n    SYNTAX SEQUENCE OF SampleEntry\n    ::= { enterprises 1 }\n"
     "sampleEntry OBJECT-TYPE\n    SYNTAX SampleEntry\n    ::= { sampleTable 1 }\n"
     "SampleEntry ::= SEQUENCE {\n    sampleIndex INTEGER,\n    sampleName OCTET STRING }\n"
     "sampleIndex OBJECT-TYPE\n    SYNTAX INTEGER\n    ::= { sampleEntry 1 }\n"},
    {"split_value", "interfaces OBJECT IDENTIFIER ::= {\n    mib-2 -- the parent\n    2\n}\n"},
    {"unclosed_value",
     "a OBJECT IDENTIFIER ::= { mib-2 1\nb OBJECT IDENTIFIER ::= { mib-2 2 }\nc OBJECT IDENTIFIER ::= {"},
    {"long_form",
     "internet OBJECT IDENTIFIER ::= { iso org(3) dod(6) 1 }\nx OBJECT IDENTIFIER ::= { internet x(5) }\n"},
    {"direct", "zero OBJECT IDENTIFIER ::= { internet }\none OBJECT IDENTIFIER ::= { mgmt -1 }\n"},
    {"direct_chain", "a OBJECT IDENTIFIER ::= { iso 3 -1 }\nb OBJECT IDENTIFIER ::= { a 1 y(7) -1 }\n"},
    {"circle",
     "a OBJECT IDENTIFIER ::= { b 1 }\nb OBJECT IDENTIFIER ::= { a 1 }\nc OBJECT IDENTIFIER ::= { c 0 }\n"},
    {"two_names_for_one", "a OBJECT IDENTIFIER ::= { mgmt 7 }\nb OBJECT IDENTIFIER ::= { mgmt 7 }\n"},
    {"one_arc", "iso OBJECT IDENTIFIER ::= { nowhere 1 }\n"},
    {"built_in_name", "enterprises OBJECT IDENTIFIER ::= { private 1 }\n"},
    {"syntax_line", "o OBJECT-TYPE\n    SYNTAX OBJECT IDENTIFIER\n    ::= { mgmt 3 }\n"},
    {"comments",
     "-- x OBJECT IDENTIFIER ::= { mgmt 1 }\ny OBJECT IDENTIFIER -- a -- ::= { mgmt 2 }\n ::= { mgmt 3 } "
     "--\n"},
    {"carriage_returns", "a OBJECT IDENTIFIER\r\n  ::= { mgmt 1 }\r\nb OBJECT IDENTIFIER ::= { mgmt 2 }\r"},
    {"byte_order_mark", "\xEF\xBB\xBFiso OBJECT IDENTIFIER ::= { ccitt 1 }\n"},
    {"latin_1",
     "stra\xDF"
     "e OBJECT IDENTIFIER ::= { mgmt\xA0"
     "1 }\n"},
    {"utf_8", "a OBJECT IDENTIFIER ::= { mgmt\xE2\x80\x83\xEF\xBC\x91 }\n"},
    {"zero_octets", "a\0 OBJECT IDENTIFIER ::= { mgmt 1\0 }\x1A\n"s},
    {"large_numbers",
     "a OBJECT IDENTIFIER ::= { mgmt 4294967296 }\nb OBJECT IDENTIFIER ::= { 2147483648 1 x(-9) -1 }\n"},
    {"braces",
     "a OBJECT IDENTIFIER } ::= { mgmt 1 }\nb OBJECT IDENTIFIER ::= {} {mgmt 2}\nc OBJECT IDENTIFIER "
     "{::=mgmt 3}\n"},
    {"long_name", std::string(1000, 'n') + " OBJECT-TYPE\n" + Repeat("::= { b 1 }\n", 80)},
    {"long_identifier",
     "big OBJECT IDENTIFIER ::= {" + Repeat(" 1", 500) + " -1 }\n" + Repeat("::= { big -1 }\n", 60)},
    {"chain_lengthened_by_each_value",
     "c OBJECT-TYPE::={a 1}\nb OBJECT-TYPE::={c 1}\nz OBJECT-TYPE::={b 1}\na OBJECT-TYPE::={iso 5}\n" +
         Repeat("::={z}\n", 60) + Repeat("a OBJECT-TYPE::={mgmt 5}\n::={z -1}\n", 20)},
    {"long_identifier_with_children",
     "big OBJECT IDENTIFIER ::= {" + Repeat(" 1", 500) +
         " -1 }\na OBJECT-TYPE ::= { big 1 }\nb OBJECT-TYPE ::= { big 2 }\nc OBJECT-TYPE ::= { b 3 -1 }\n"},
};

const Seed kConfigSeeds[] = {
    {"empty", ""},
    {"one_word", "config"},
    {"line_end_only", "\r\n"},
    {"ends_at_once", "\x1A<forwardingPort>9</forwardingPort>"},
    {"word_true", "<forwardingEnabled>true</forwardingEnabled>"},
    {"unix_line_ends",
     "<config>\n<forwardingEnabled>1</forwardingEnabled>\n<forwardingIp>10.1.2.3</forwardingIp>\n"
     "<forwardingPort>9162</forwardingPort>\n</config>\n"},
    {"closing_marker_first", "</forwardingIp><forwardingIp>10.1.2.3</forwardingIp>"},
    {"markers_nested",
     "<forwardingIp><forwardingPort>7</forwardingIp></forwardingPort><forwardingEnabled>1</"
     "forwardingEnabled>"},
    {"missing_end", "<forwardingIp>10.1.2.3"},
    {"blank_port", "<forwardingPort>  8162abc</forwardingPort>"},
    {"port_0", "<forwardingPort>0</forwardingPort>"},
    {"port_negative", "<forwardingPort>-5</forwardingPort>"},
    {"port_too_large", "<forwardingPort>70000</forwardingPort>"},
    {"port_beyond_32_bits", "<forwardingPort>4294968296</forwardingPort>"},
    {"every_kind_of_octet",
     "<forwardingIp>\xFF\x80\t\r\x7F</forwardingIp><forwardingEnabled>1\n</forwardingEnabled>"},
    {"empty_address", "<forwardingIp></forwardingIp><forwardingEnabled>1</forwardingEnabled>"},
};

const Seed kFileTextSeeds[] = {
    {"empty", ""},
    {"log_line", "2026-03-07 09:05:02.047  Config saved.\r\r\n"},
    {"cut_line", "2026-03-07 09:05:02.047  caf\xE9 2026-03-07 09:05:02.048  Config saved.\r\r\n"},
    {"record",
     "2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\r\n---> [1] 1.3.6.1.2.1.1.3.0  TimeTicks = "
     "1\r\r\n\r\r\n"},
    {"line_ends", "\r\n\n\r\r\r\n\n\r"},
    {"ends_early", "a\r\x1A\nb"},
    {"utf_8", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBB\xBF"},
    {"utf_8_cut", "caf\xC3\xA9 \xE2\x82"},
    {"utf_8_overlong", "\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80"},
    {"utf_8_surrogates", "\xED\xA0\x80\xED\xB0\x80"},
    {"utf_8_limits",
     "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {"ansi", "\x80\x81\x8D\x8F\x90\x9D\x9F\xA0\xFF"},
    {"long_ascii", "The quick brown fox jumps over the lazy dog, and once more over the lazy dog.\xE9"},
    {"wide_text", "\0a\0\r\0\n\0\xFF\1\0\0b"s},
};

template <size_t Count>
bool WriteSeeds(std::string_view target, const Seed (&seeds)[Count]) {
    bool written = true;
    for (const Seed& seed : seeds) {
        written = WriteSeed(target, seed.name, seed.octets) && written;
    }
    return written;
}

bool WriteMessages() {
    bool written = true;
    for (const SampleMessage& sample : SampleMessages()) {
        written =
            WriteSeed("snmp_message", sample.name, std::string(sample.octets.begin(), sample.octets.end())) &&
            written;
    }
    return written;
}

bool WriteSavedConfig() {
    std::string octets;
    EncodeFileText(BuildConfigText(true, L"192.168.1.20", 162), octets);
    return WriteSeed("config_file", "as_saved", octets);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "Usage: quillmont_make_seeds CORPUS_FOLDER\n");
        return 2;
    }
    DecodeUtf8OrAnsi(arguments[1], corpusFolder);
    const bool written = WriteMessages() && WriteSavedConfig() && WriteSeeds("config_file", kConfigSeeds) &&
                         WriteSeeds("mib_text", kMibSeeds) && WriteSeeds("file_text", kFileTextSeeds);
    return written ? 0 : 1;
}
