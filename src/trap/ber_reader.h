// Reads the Basic Encoding Rules: element headers, integers and object identifiers. All functions work on
// octets in memory in one forward pass and have no state. trap/snmp_message.h relies on exactly what they
// accept and reject.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The unread part of a message or of an element's content.
struct OctetRange {
    const uint8_t* position = nullptr;
    const uint8_t* end = nullptr;

    size_t size() const { return static_cast<size_t>(end - position); }
};

// One element: its tag octet and its content, which points into the message.
struct TlvHeader {
    uint8_t tag = 0;
    const uint8_t* content = nullptr;
    const uint8_t* contentEnd = nullptr;  // also where the next element begins

    size_t size() const { return static_cast<size_t>(contentEnd - content); }
    OctetRange elements() const { return {content, contentEnd}; }
};

// Skips `count` octets. True: *octets points to the first of them. False: fewer are left, and nothing has
// changed. This is the only bounds check: no length from a message is added to a pointer before it is checked
// here.
inline bool ReadOctets(OctetRange& left, uint64_t count, const uint8_t** octets) {
    if (count > left.size()) {
        return false;
    }
    *octets = left.position;
    left.position += count;
    return true;
}

// Reads a length in the long form. The low seven bits of `lengthOctet` are the number of length octets in
// `left`. False: that number is 0 or above 4, or `left` has fewer octets.
bool ReadLongLength(OctetRange& left, uint8_t lengthOctet, uint64_t* length);

// Reads the header at `position` inside [position, end).
// True: *header is filled and its whole content lies inside the range; content that ends exactly at `end`
//   is valid.
// False, *header unchanged: fewer than two octets left, an indefinite length (0x80), a long form of more than
//   four length octets, length octets cut off, or content running past `end`.
// Never reads at `end` or beyond.
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

// Reads the element at the start of `left` and moves `left` past it. False: both are unchanged.
inline bool ReadElement(OctetRange& left, TlvHeader* element) {
    if (!ReadTlvHeader(left.position, left.end, element)) {
        return false;
    }
    left.position = element->contentEnd;
    return true;
}

// Returns the octets as a big-endian two's complement number, 0 if there are none. Callers print it signed or
// unsigned.
//
// Intentional, because trap records show these values: the sign is extended from bit (8 * count) mod 64 on,
// so a negative number of exactly eight octets is -1; octets before the last eight are lost; an unsigned
// value sent without its leading zero octet is sign-extended too and prints near 18446744073709551615.
uint64_t DecodeBerInteger(const uint8_t* octets, size_t count);

// Returns the identifier in dotted decimal, empty if there are no octets.
//
// Intentional, to stay simple: the first octet v always gives the first two arcs as v / 40 and v mod 40,
// without a special case for arc 2; arcs wrap in 64 bits; an unfinished last arc is dropped.
std::wstring DecodeOidText(const uint8_t* octets, size_t count);
