// Walking the octets of a message in the Basic Encoding Rules: headers, integers, object identifiers.
// Forgiving in some places and strict in others; both are relied on by trap/snmp_message.h. No state, single
// forward passes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// What is left to read of a message, or of the content of an element.
struct OctetRange {
    const uint8_t* position = nullptr;
    const uint8_t* end = nullptr;

    size_t size() const { return static_cast<size_t>(end - position); }
};

// One element: its whole tag octet and its content.
struct TlvHeader {
    uint8_t tag = 0;
    const uint8_t* content = nullptr;
    const uint8_t* contentEnd = nullptr;  // also where the next element begins

    size_t size() const { return static_cast<size_t>(contentEnd - content); }
    OctetRange elements() const { return {content, contentEnd}; }
};

// Reads past `count` octets. True: *octets is the first of them. False, nothing changed: fewer are left.
// The one place that compares wanted with remaining; it never adds to a pointer a length that a sender chose.
inline bool ReadOctets(OctetRange& left, uint64_t count, const uint8_t** octets) {
    if (count > left.size()) {
        return false;
    }
    *octets = left.position;
    left.position += count;
    return true;
}

// Reads a length in the long form; the lower bits of `lengthOctet` say how many octets it has. False: none,
// more than four, or cut off.
bool ReadLongLength(OctetRange& left, uint8_t lengthOctet, uint64_t* length);

// Reads the header at `position` inside [position, end).
// True: *header is filled and its whole content lies inside the range; content that ends exactly at `end`
//   is fine.
// False, *header untouched: fewer than two octets left, an indefinite length (0x80), a long form of more than
//   four length octets, length octets cut off, or content running past `end`.
// Never looks at `end` or beyond.
// Intentional: lengths longer than necessary are accepted, since agents in the field send them.
inline bool ReadTlvHeader(const uint8_t* position, const uint8_t* end, TlvHeader* header) {
    OctetRange left = {position, end};
    const uint8_t* start = nullptr;
    if (!ReadOctets(left, 2, &start)) {
        return false;
    }
    uint64_t length = start[1];
    if (length >= 0x80 && !ReadLongLength(left, start[1], &length)) {
        return false;
    }
    const uint8_t* content = nullptr;
    if (!ReadOctets(left, length, &content)) {
        return false;
    }
    *header = {start[0], content, left.position};
    return true;
}

// The same for the element at the front of `left`, which then begins after it. False: both are untouched.
inline bool ReadElement(OctetRange& left, TlvHeader* element) {
    if (!ReadTlvHeader(left.position, left.end, element)) {
        return false;
    }
    left.position = element->contentEnd;
    return true;
}

// The octets as a big-endian two's complement number; no octets give 0. Callers print it signed or unsigned.
// Intentional: every multiple of eight octets is sign-extended by a shift of 0, so that a negative
//   number of eight octets is always -1; of more than eight octets only the last eight count; and an
//   unsigned value that an agent sent without its leading zero octet is sign-extended too and prints
//   near 18446744073709551615.
uint64_t DecodeBerInteger(const uint8_t* octets, size_t count);

// The identifier in dotted decimal; no octets give empty text.
// Intentional: the first octet alone gives the first two arcs as v / 40 and v mod 40, whatever it is; arcs
//   wrap in 64 bits; octets of an unfinished last arc are dropped.
std::wstring DecodeOidText(const uint8_t* octets, size_t count);
