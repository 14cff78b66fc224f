#include "values/NameText.h"

#include "asn1/SeqOfList.h"
#include "values/EncodeValue.h"
#include "values/Exceptions.h"
#include "values/ObjectIdentifierText.h"

#include <norvane/wincrypt.h>

#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {
namespace {

struct AttributeName {
    std::string_view oid;
    std::string_view long_name;
    std::string_view short_name;
};

constexpr AttributeName attribute_names[] = {
    {"2.5.4.3", "CN", ""},
    {"2.5.4.6", "C", ""},
    {"2.5.4.7", "L", ""},
    {"2.5.4.8", "ST", "S"},
    {"1.2.840.113549.1.9.1", "Email", "E"},
    {"2.5.4.10", "O", ""},
    {"2.5.4.11", "OU", ""},
    {"2.5.4.12", "Title", "T"},
    {"2.5.4.42", "GivenName", "G"},
    {"2.5.4.43", "Initials", "I"},
    {"2.5.4.4", "SN", ""},
    {"2.5.4.65", "PS", ""},
    {"0.9.2342.19200300.100.1.25", "DC", ""},
    {"2.5.4.9", "STREET", ""},
    {"2.5.4.24", "", ""}, // x121Address: the sign and the value alone
};

struct NameAttribute {
    std::string oid;
    CACMPT_BLOB value;
};
using NameAttributeList = std::list<std::vector<NameAttribute>>;

NameAttributeList list_attributes(const CACMPT_BLOB& encoded_name) {
    ASN1T_Name name;
    decode_value({encoded_name.data, encoded_name.length}, name, source_module::asn1_traits,
                 __LINE__);
    NameAttributeList rdns;
    auto rdn_iterator = ASN1CSeqOfList(name.rdnSequence).iterator();
    while (const auto* rdn = rdn_iterator.next()) {
        auto& attributes = rdns.emplace_back();
        auto attribute_iterator = ASN1CSeqOfList(*rdn).iterator();
        while (const auto* attribute = attribute_iterator.next()) {
            attributes.push_back({oid_to_string(attribute->type),
                                  {attribute->rawValue.data, attribute->rawValue.length}});
        }
    }
    return rdns;
}

WideString widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

const AttributeName* find_attribute(std::string_view oid) {
    for (const AttributeName& row : attribute_names) {
        if (row.oid == oid) {
            return &row;
        }
    }
    return nullptr;
}

WideString hexadecimal(const CACMPT_BLOB& bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "#";
    for (std::uint32_t i = 0; i < bytes.length; ++i) {
        text += digits[bytes.data[i] >> 4];
        text += digits[bytes.data[i] & 0x0f];
    }
    return widen(text);
}

WideString attribute_text(const NameAttribute& attribute) {
    const AttributeName* const row = find_attribute(attribute.oid);
    return widen(row == nullptr ? attribute.oid : row->long_name) + widen("=") +
           (row == nullptr ? hexadecimal(attribute.value)
                           : attribute_value_to_text(attribute.value));
}

WideString code_page_text(std::string_view bytes) {
    const int length = static_cast<int>(bytes.size());
    WideString wide(bytes.size(), 0);
    if (length != 0) {
        const int written =
            MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, wide.data(), length);
        wide.resize(static_cast<std::size_t>(written));
    }
    return wide;
}

/// Reads the string that was set in the context. Negative if its octets are not of its type.
int read_string(ASN1CTXT& ctxt, Tag tag, WideString& wide) {
    std::string_view octets;
    std::u16string_view units;
    std::u32string_view characters;
    int status = 0;
    switch (tag) {
    case Tag::utf8_string:
        status = xd_charstr(ctxt, tag, octets);
        return status < 0 ? status : rtUTF8ToWCS(ctxt, octets, wide);
    case Tag::printable_string:
    case Tag::teletex_string:
    case Tag::ia5_string:
        status = xd_charstr(ctxt, tag, octets);
        wide = code_page_text(octets);
        return status;
    case Tag::universal_string:
        status = xd_32BitCharStr(ctxt, characters);
        return status < 0 ? status : rtUCSToWCSString(ctxt, characters, wide);
    case Tag::bmp_string:
        status = xd_16BitCharStr(ctxt, units);
        wide.assign(units.begin(), units.end());
        return status;
    default:
        throw CAException("Unsupported string type", source_module::asn1_types, __LINE__);
    }
}

} // namespace

WideString name_blob_to_text(const CACMPT_BLOB& encoded_name) {
    WideString text;
    const NameAttributeList rdns = list_attributes(encoded_name);
    for (const auto& rdn : rdns) {
        if (&rdn != &rdns.front()) {
            text += widen(", ");
        }
        for (const NameAttribute& attribute : rdn) {
            if (&attribute != &rdn.front()) {
                text += widen(" + ");
            }
            text += attribute_text(attribute);
        }
    }
    return text;
}

WideString attribute_value_to_text(const CACMPT_BLOB& value_blob) {
    ASN1CTXT ctxt;
    if (rtInitContext(ctxt) < 0) {
        throw CAException("Cannot initialize context.", source_module::asn1_types, __LINE__);
    }
    Tag tag{};
    std::uint32_t length = 0;
    if (xd_setp(ctxt, value_blob.data, value_blob.length) < 0 ||
        xd_tag_len(ctxt, tag, length) < 0) {
        throw Asn1Exception(rtErrGetText(ctxt), source_module::asn1_types, __LINE__);
    }
    WideString text;
    const Tag type = static_cast<Tag>(octet(tag) & ~constructed_bit);
    if (read_string(ctxt, type, text) < 0) {
        throw Asn1Exception(rtErrGetText(ctxt), source_module::asn1_types, __LINE__);
    }
    return text;
}

} // namespace norvane
