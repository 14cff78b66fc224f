#include "values/ObjectIdentifierText.h"

#include "values/Exceptions.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace norvane {
namespace {

/// Reads one arc and the white space behind it, and leaves `text` at what follows.
bool read_arc(const char*& text, ASN1OBJID& oid) {
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 0);
    if (oid.numids == ASN1OBJID::max_arcs || value > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    oid.subid[oid.numids++] = static_cast<std::uint32_t>(value);
    while (std::isspace(static_cast<unsigned char>(*end)) != 0) {
        ++end;
    }
    text = end;
    return true;
}

} // namespace

bool str_to_oid(const char* text, ASN1OBJID& oid) {
    oid.numids = 0;
    while (std::strchr(text, '.') != nullptr) {
        if (!read_arc(text, oid) || *text != '.') {
            return false;
        }
        ++text;
    }
    return read_arc(text, oid) && *text == '\0';
}

ASN1OBJID str_to_oid(const char* text) {
    ASN1OBJID oid;
    if (!str_to_oid(text, oid)) {
        throw CAException("Can't convert str to oid.", source_module::asn1_util, __LINE__);
    }
    return oid;
}

void oid_to_text(char* buffer, const ASN1OBJID& oid, std::size_t capacity, const char* message) {
    *buffer = '\0';
    std::size_t room = capacity;
    for (std::uint32_t i = 0; i < oid.numids; ++i) {
        std::array<char, 12> arc{}; // ".4294967295"
        const auto length = static_cast<std::size_t>(
            std::snprintf(arc.data(), arc.size(), i == 0 ? "%u" : ".%u", oid.subid[i]));
        if (length >= room) {
            throw Asn1DecodeException(message, source_module::asn1_util, __LINE__);
        }
        std::memcpy(buffer, arc.data(), length + 1);
        buffer += length;
        room -= length;
    }
}

void oid_to_text(char* buffer, const ASN1TObjId& oid, std::size_t capacity, const char* message) {
    ASN1OBJID arcs;
    if (!oid.get_arcs(arcs)) {
        throw Asn1DecodeException(message, source_module::asn1_util, __LINE__);
    }
    oid_to_text(buffer, arcs, capacity, message);
}

std::string oid_to_string(const ASN1TObjId& oid) {
    std::array<char, 512> text{};
    ASN1OBJID arcs;
    const std::size_t length = oid.get_arcs(arcs) ? rtOidToStr(arcs, text.data(), text.size()) : 0;
    if (length == 0) {
        throw CAException("Can't convert oid to str.", source_module::asn1_traits, __LINE__);
    }
    return {text.data(), length};
}

} // namespace norvane
