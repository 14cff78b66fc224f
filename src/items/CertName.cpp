#include "items/CertName.h"

#include "asn1/CharString.h"
#include "asn1/Name.h"
#include "values/EncodeValue.h"
#include "values/Exceptions.h"
#include "values/ObjectIdentifierText.h"

#include <algorithm>
#include <array>

namespace norvane {
namespace {

/// How the string type of an attribute's value is told: from the tag of the raw bytes, or from the
/// alternative of the decoded choice.
enum class StringTypeFrom { raw_tag, choice };

struct NormalisedAttribute {
    const char* oid;
    StringTypeFrom string_type;
};

constexpr std::array normalised_attributes{
    NormalisedAttribute{"2.5.4.6", StringTypeFrom::raw_tag},              // countryName
    NormalisedAttribute{"1.2.840.113549.1.9.1", StringTypeFrom::raw_tag}, // emailAddress
    NormalisedAttribute{"2.5.4.8", StringTypeFrom::choice},               // stateOrProvinceName
    NormalisedAttribute{"2.5.4.7", StringTypeFrom::choice},               // localityName
    NormalisedAttribute{"2.5.4.10", StringTypeFrom::choice},              // organizationName
    NormalisedAttribute{"2.5.4.11", StringTypeFrom::choice},              // organizationalUnitName
    NormalisedAttribute{"2.5.4.12", StringTypeFrom::choice},              // title
    NormalisedAttribute{"2.5.4.42", StringTypeFrom::choice},              // givenName
    NormalisedAttribute{"2.5.4.43", StringTypeFrom::choice},              // initials
    NormalisedAttribute{"2.5.4.4", StringTypeFrom::choice},               // surname
    NormalisedAttribute{"2.5.4.3", StringTypeFrom::choice},               // commonName
};

/// The table's identifiers as arcs. They are converted when the module is loaded: a static of a
/// function would be under construction for ever in a child of fork, if another thread made it.
const auto normalised_oids = [] {
    std::array<ASN1OBJID, normalised_attributes.size()> converted;
    std::ranges::transform(normalised_attributes, converted.begin(),
                           [](const auto& row) { return str_to_oid(row.oid); });
    return converted;
}();

const NormalisedAttribute* find_attribute(const ASN1TObjId& type) {
    const auto found =
        std::ranges::find_if(normalised_oids, [&](const auto& oid) { return type == oid; });
    return found == normalised_oids.end()
               ? nullptr
               : &normalised_attributes[static_cast<std::size_t>(found - normalised_oids.begin())];
}

Tag raw_tag(ByteView raw_value) {
    ASN1CTXT ctxt;
    Tag tag{};
    std::uint32_t length = 0;
    if (rtInitContext(ctxt) < 0 ||
        xd_setp(ctxt, raw_value.data, raw_value.length, &tag, &length) < 0) {
        throw Asn1Exception(rtErrGetText(ctxt), source_module::chain_base, __LINE__);
    }
    return static_cast<Tag>(octet(tag) & ~constructed_bit);
}

bool is_printable_string(const ASN1T_AttributeTypeAndValue& attribute,
                         const NormalisedAttribute& row) {
    return row.string_type == StringTypeFrom::raw_tag
               ? raw_tag(attribute.rawValue) == Tag::printable_string
               : attribute.value.t == ASN1T_AttributeString::printableString;
}

std::uint8_t to_lower(std::uint8_t byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<std::uint8_t>(byte - 'A' + 'a') : byte;
}

/// The normalised text in the memory of the arena. Only 0x20 counts as a space.
ByteView normalise(ByteView text, Arena& memory) {
    constexpr std::uint8_t space = ' ';
    auto* const out = static_cast<std::uint8_t*>(memory.allocate(text.length));
    std::uint32_t length = 0;
    bool after_space = true; // Leading spaces go the way of repeated ones.
    for (const std::uint8_t byte : text) {
        if (byte != space || !after_space) {
            out[length++] = to_lower(byte);
        }
        after_space = byte == space;
    }
    if (length != 0 && out[length - 1] == space) {
        --length;
    }
    return {out, length};
}

} // namespace

CACMPT_BLOB canonical_name(const CACMPT_BLOB& encoded_name) {
    ASN1T_Name name;
    decode_value({encoded_name.data, encoded_name.length}, name, source_module::chain_base,
                 __LINE__);
    if (name.t != ASN1T_Name::rdnSequence_chosen) {
        throw Asn1DecodeException("Invalid name format", source_module::chain_base, __LINE__);
    }
    Arena& memory = name.context.get()->getCtxt().memory;
    for (const ASN1T_RelativeDistinguishedName& rdn : name.rdnSequence) {
        for (ASN1T_AttributeTypeAndValue& attribute : rdn) {
            const NormalisedAttribute* const row = find_attribute(attribute.type);
            if (row != nullptr && attribute.valueDecoded && is_printable_string(attribute, *row)) {
                replace_text(attribute, normalise(attribute.value.text, memory), memory);
            }
        }
    }
    return encode_value(name, source_module::chain_base, __LINE__);
}

const CACMPT_BLOB& CACMPT_CERT_NAME::canonical() const {
    if (!canonical_) {
        canonical_ = canonical_name(encoded);
    }
    return *canonical_;
}

bool names_equal(const CACMPT_CERT_NAME& a, const CACMPT_CERT_NAME& b) {
    return a.canonical() == b.canonical();
}

} // namespace norvane
