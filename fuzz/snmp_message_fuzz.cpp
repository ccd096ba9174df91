// Promises about a datagram: it decodes exactly if there is a record; the same octets give the same records;
// octets after the message change nothing; there are no more records than fit into the octets; and the record
// text has the shape that docs/file-formats.md states and a length in proportion to the datagram.
#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

#include "fuzz/fuzz_targets.h"
#include "fuzz/promise.h"
#include "tests/support/mib_tables.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

constexpr std::wstring_view kNamedOid = L"1.3.6.1.2.1.1.3.0";
constexpr std::wstring_view kName = L"sysUpTimeInstance";
constexpr std::wstring_view kHeaderLine = L"2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\n";

// A binding that contains only an empty identifier.
constexpr size_t kSmallestBinding = 4;

// The smallest binding has a line of up to 30 characters, and a counter of one octet can print 20 digits.
constexpr size_t kMaxCharactersPerOctet = 16;

void StoreOneName() {
    const std::lock_guard lock(MibStoreLock);
    if (OidNameMap.size() != 1) {
        ClearNameStore();
        StoreNamedOid(kName, kNamedOid);
    }
}

bool AreEqual(const VarbindRecord& first, const VarbindRecord& second) {
    return first.oid == second.oid && first.name == second.name && first.type == second.type &&
           first.value == second.value;
}

bool AreEqual(const std::vector<VarbindRecord>& first, const std::vector<VarbindRecord>& second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](const auto& one, const auto& other) { return AreEqual(one, other); });
}

// The end of the message by its outer length, or the whole size if that is unusable. Does not use the reader
// under test.
size_t FindMessageEnd(const uint8_t* octets, size_t size) {
    if (size < 2 || octets[1] < 0x80) {
        return size < 2 ? size : std::min<size_t>(size, 2U + octets[1]);
    }
    const size_t lengthOctets = octets[1] & 0x7FU;
    if (lengthOctets < 1 || lengthOctets > 4 || size < 2 + lengthOctets) {
        return size;
    }
    uint64_t length = 0;
    for (size_t index = 2; index < 2 + lengthOctets; ++index) {
        length = length * 256 + octets[index];
    }
    return static_cast<size_t>(std::min<uint64_t>(size, 2 + lengthOctets + length));
}

void CheckTrailingOctets(const uint8_t* octets, size_t size, const std::vector<VarbindRecord>& records) {
    const size_t end = FindMessageEnd(octets, size);
    std::vector<VarbindRecord> again;
    const std::vector<uint8_t> cut(octets, octets + end);
    DecodeSnmpMessage(cut.data(), cut.size(), again);
    Promise(AreEqual(again, records), "octets after the message change nothing (without them)");
    if (records.empty()) {
        return;  // a truncated message may become valid with more octets
    }
    std::vector<uint8_t> longer(octets, octets + size);
    longer.insert(longer.end(), {0x30, 0x06, 0x06, 0x01, 0x2B, 0x02, 0x01, 0x01});
    DecodeSnmpMessage(longer.data(), longer.size(), again);
    Promise(AreEqual(again, records), "octets after the message change nothing (with more of them)");
}

bool IsDottedDecimal(std::wstring_view text) {
    bool digitBefore = false;
    for (const wchar_t character : text) {
        const bool digit = character >= L'0' && character <= L'9';
        if (!digit && (character != L'.' || !digitBefore)) {
            return false;
        }
        digitBefore = digit;
    }
    return text.empty() || (digitBefore && text.find(L'.') != std::wstring_view::npos);
}

bool IsKnownType(std::wstring_view type) {
    for (const std::wstring_view known :
         {L"INTEGER", L"OCTET STRING", L"NULL", L"OID", L"IpAddress", L"Counter32", L"Gauge32", L"TimeTicks",
          L"Counter64", L"(no value)"}) {
        if (type == known) {
            return true;
        }
    }
    return type.size() == 8 && type.starts_with(L"TAG 0x");
}

void CheckRecord(const VarbindRecord& record) {
    Promise(IsDottedDecimal(record.oid), "an identifier is dotted decimal or empty");
    Promise(record.name == (record.oid == kNamedOid ? kName : L""),
            "exactly the named identifier has a name");
    Promise(IsKnownType(record.type), "a type is one of the labels");
    for (const wchar_t character : record.value) {
        Promise(character >= 32 && character <= 126, "a value is printable");
    }
}

// The expected line of the text, built differently from the code under test.
std::wstring BuildLine(size_t number, const VarbindRecord& record) {
    std::wstring line = L"---> [" + std::to_wstring(number) + L"] " + record.oid;
    line += record.name.empty() ? L"" : L" (" + record.name + L")";
    return line + L"  " + record.type + L" = " + record.value + L"\r\n";
}

void CheckRecordText(const std::vector<VarbindRecord>& records, size_t size) {
    const std::wstring text = ComposeTrapRecord({2026, 3, 7, 9, 5, 2, 47}, L"10.1.2.3", records);
    std::wstring expected(kHeaderLine);
    for (size_t index = 0; index < records.size(); ++index) {
        expected += BuildLine(index + 1, records[index]);
    }
    expected += records.empty() ? L"DECODED VARBINDS: (not decoded)\r\n\r\n" : L"\r\n";
    Promise(text == expected, "a record has a header line, a line for each binding and an empty line");
    Promise(text.size() <= 128 + size * kMaxCharactersPerOctet, "a record is in proportion to its datagram");
}

}  // namespace

void CheckSnmpMessage(const uint8_t* octets, size_t size) {
    StoreOneName();
    std::vector<VarbindRecord> records;
    const bool decoded = DecodeSnmpMessage(octets, size, records);
    Promise(decoded == !records.empty(), "true exactly when a record exists");
    Promise(records.size() <= size / kSmallestBinding, "no more records than fit into the octets");
    std::vector<VarbindRecord> reused = records;
    Promise(DecodeSnmpMessage(octets, size, reused) == decoded, "the same octets give the same result");
    Promise(AreEqual(reused, records), "the same octets give the same records");
    for (const VarbindRecord& record : records) {
        CheckRecord(record);
    }
    CheckTrailingOctets(octets, size, records);
    CheckRecordText(records, size);
}
