#include "asn1/Name.h"

#include "asn1/BerHeader.h"

#include <array>
#include <cstring>

namespace norvane {
namespace {

enum class ValueSyntax : std::uint8_t { directory_string, single_string };

struct AttributeSyntax {
    std::array<std::uint8_t, 9> oid;
    std::uint8_t oid_length;
    ValueSyntax syntax;
};

/// The attributes of X.520 and PKCS #9 whose values are decoded.
constexpr std::array attribute_syntaxes{
    AttributeSyntax{{0x55, 4, 3}, 3, ValueSyntax::directory_string},  // commonName
    AttributeSyntax{{0x55, 4, 10}, 3, ValueSyntax::directory_string}, // organizationName
    AttributeSyntax{{0x55, 4, 11}, 3, ValueSyntax::directory_string}, // organizationalUnitName
    AttributeSyntax{{0x55, 4, 6}, 3, ValueSyntax::single_string},     // countryName
    AttributeSyntax{{0x55, 4, 8}, 3, ValueSyntax::directory_string},  // stateOrProvinceName
    AttributeSyntax{{0x55, 4, 7}, 3, ValueSyntax::directory_string},  // localityName
    AttributeSyntax{{0x55, 4, 12}, 3, ValueSyntax::directory_string}, // title
    AttributeSyntax{{0x55, 4, 42}, 3, ValueSyntax::directory_string}, // givenName
    AttributeSyntax{{0x55, 4, 43}, 3, ValueSyntax::directory_string}, // initials
    AttributeSyntax{{0x55, 4, 4}, 3, ValueSyntax::directory_string},  // surname
    AttributeSyntax{{0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 1, 9, 1},
                    9,
                    ValueSyntax::single_string}, // emailAddress
};

const AttributeSyntax* find_syntax(ByteView oid) {
    for (const AttributeSyntax& row : attribute_syntaxes) {
        if (oid == ByteView{row.oid.data(), row.oid_length}) {
            return &row;
        }
    }
    return nullptr;
}

using Alternative = ASN1T_AttributeString::Alternative;

Alternative directory_string_alternative(Tag tag) {
    switch (tag) {
    case Tag::teletex_string:
        return Alternative::teletexString;
    case Tag::printable_string:
        return Alternative::printableString;
    case Tag::universal_string:
        return Alternative::universalString;
    case Tag::utf8_string:
        return Alternative::utf8String;
    case Tag::bmp_string:
        return Alternative::bmpString;
    default:
        return Alternative::none;
    }
}

Tag without_constructed_bit(std::uint8_t identifier) {
    return static_cast<Tag>(identifier & ~constructed_bit);
}

/// Whether the element is a string of one of the types that an attribute can have.
bool is_string_tag(Tag tag) {
    return tag == Tag::ia5_string || directory_string_alternative(tag) != Alternative::none;
}

/// Types the value where it has the syntax of its attribute; any other stays raw, and the name
/// decodes all the same.
void decode_value(Reader& in, ASN1T_AttributeTypeAndValue& out) {
    const AttributeSyntax* row = find_syntax(out.type.content());
    if (row == nullptr || out.rawValue.empty()) {
        return;
    }
    const Tag tag = without_constructed_bit(out.rawValue.data[0]);
    const Alternative alternative = row->syntax == ValueSyntax::directory_string
                                        ? directory_string_alternative(tag)
                                        : Alternative::none;
    if (!is_string_tag(tag) ||
        (row->syntax == ValueSyntax::directory_string && alternative == Alternative::none)) {
        return;
    }
    DecodeAttempt attempt{in.attempt().ctxt, out.rawValue, DecodeReport::silent};
    const ByteView text = Reader(attempt, out.rawValue, nullptr).string(tag, nullptr);
    if (!attempt.failed()) {
        out.value = {alternative, text};
        out.valueDecoded = true;
    }
}

std::uint32_t element_length(std::uint32_t content) { return 1 + length_octets(content) + content; }

std::uint32_t content_length(const ASN1T_AttributeTypeAndValue& attribute) {
    return element_length(attribute.type.content().length) + attribute.rawValue.length;
}

std::uint32_t content_length(const ASN1T_RelativeDistinguishedName& rdn) {
    std::uint32_t length = 0;
    for (const ASN1T_AttributeTypeAndValue& attribute : rdn) {
        length += element_length(content_length(attribute));
    }
    return length;
}

std::uint32_t content_length(const ASN1T_Name& name) {
    std::uint32_t length = 0;
    for (const ASN1T_RelativeDistinguishedName& rdn : name.rdnSequence) {
        length += element_length(content_length(rdn));
    }
    return length;
}

std::uint8_t* write_header(std::uint8_t* out, Tag tag, std::uint32_t length) {
    *out++ = octet(tag);
    return write_length(out, length);
}

std::uint8_t* write_octets(std::uint8_t* out, ByteView octets) {
    if (!octets.empty()) {
        std::memcpy(out, octets.data, octets.length);
    }
    return out + octets.length;
}

} // namespace

void decode(Reader& in, ASN1T_RelativeDistinguishedName& out, Tag tag, const char* element) {
    Reader rdn = in.enter(tag, element);
    while (!rdn.at_end()) {
        Reader fields = rdn.enter(Tag::sequence, "attribute");
        ASN1T_AttributeTypeAndValue& attribute = out.append(in.memory());
        attribute.type = fields.object_identifier(Tag::object_identifier, "type");
        attribute.rawValue = fields.any("value");
        fields.finish();
        decode_value(fields, attribute);
    }
}

void decode(Reader& in, ASN1T_Name& out, const char* element) {
    Reader rdns = in.enter(Tag::sequence, element);
    while (!rdns.at_end()) {
        decode(rdns, out.rdnSequence.append(in.memory()), Tag::set, "rdnSequence");
    }
    out.t = ASN1T_Name::rdnSequence_chosen;
}

void replace_text(ASN1T_AttributeTypeAndValue& attribute, ByteView text, Arena& memory) {
    const Tag tag = without_constructed_bit(attribute.rawValue.data[0]);
    const std::uint32_t length = element_length(text.length);
    auto* const element = static_cast<std::uint8_t*>(memory.allocate(length));
    std::uint8_t* const content = write_header(element, tag, text.length);
    write_octets(content, text);
    attribute.rawValue = {element, length};
    attribute.value.text = {content, text.length};
}

std::uint32_t encoded_length(const ASN1T_Name& name) {
    return element_length(content_length(name));
}

std::uint8_t* encode(const ASN1T_Name& name, std::uint8_t* out) {
    out = write_header(out, Tag::sequence, content_length(name));
    for (const ASN1T_RelativeDistinguishedName& rdn : name.rdnSequence) {
        out = write_header(out, Tag::set, content_length(rdn));
        for (const ASN1T_AttributeTypeAndValue& attribute : rdn) {
            out = write_header(out, Tag::sequence, content_length(attribute));
            out = write_header(out, Tag::object_identifier, attribute.type.content().length);
            out = write_octets(out, attribute.type.content());
            out = write_octets(out, attribute.rawValue);
        }
    }
    return out;
}

} // namespace norvane
