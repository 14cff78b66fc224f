#include "asn1/Extension.h"

#include "asn1/Decode.h"

#include <array>

namespace norvane {
namespace {

/// Decodes the content into an object of the arena and keeps it in `value` if that succeeds.
template <class T>
void decode_value(ASN1CTXT& ctxt, ByteView content, ASN1T_ExtensionValue& value) {
    T* const object = ctxt.memory.make<T>();
    if (decode_element(ctxt, content, *object, DecodeReport::silent) == code(ASN1Status::ok)) {
        value = static_cast<const T*>(object);
    }
}

struct ExtensionSyntax {
    std::array<std::uint8_t, 8> oid;
    std::uint8_t oid_length;
    void (*decode_value)(ASN1CTXT& ctxt, ByteView content, ASN1T_ExtensionValue& value);
};

/// The extensions whose value is decoded; the order is that of how often certificates have them.
constexpr std::array extension_syntaxes{
    ExtensionSyntax{{0x55, 0x1d, 14}, 3, decode_value<ASN1T_SubjectKeyIdentifier>},
    ExtensionSyntax{{0x55, 0x1d, 35}, 3, decode_value<ASN1T_AuthorityKeyIdentifier>},
    ExtensionSyntax{{0x55, 0x1d, 15}, 3, decode_value<ASN1T_KeyUsage>},
    ExtensionSyntax{{0x55, 0x1d, 37}, 3, decode_value<ASN1T_ExtKeyUsageSyntax>},
    ExtensionSyntax{{0x55, 0x1d, 19}, 3, decode_value<ASN1T_BasicConstraints>},
    ExtensionSyntax{{0x55, 0x1d, 31}, 3, decode_value<ASN1T_CRLDistributionPoints>},
    ExtensionSyntax{{0x2b, 0x06, 0x01, 0x05, 0x05, 0x07, 0x01, 0x01},
                    8,
                    decode_value<ASN1T_AuthorityInfoAccessSyntax>},
    ExtensionSyntax{{0x55, 0x1d, 20}, 3, decode_value<ASN1T_CRLNumber>},
    ExtensionSyntax{{0x55, 0x1d, 28}, 3, decode_value<ASN1T_IssuingDistributionPoint>},
    ExtensionSyntax{{0x55, 0x1d, 27}, 3, decode_value<ASN1T_CRLNumber>},
    ExtensionSyntax{{0x55, 0x1d, 46}, 3, decode_value<ASN1T_CRLDistributionPoints>},
};

} // namespace

void decode(Reader& in, ASN1T_Extension& out) {
    Reader fields = in.enter(Tag::sequence, "Extension");
    out.extnID = fields.object_identifier(Tag::object_identifier, "extnID");
    out.critical = fields.next_is(Tag::boolean) && fields.boolean(Tag::boolean, "critical");
    out.extnValue = fields.string(Tag::octet_string, "extnValue");
    fields.finish();
}

void decode(Reader& in, ASN1T_Extensions& out, const char* element) {
    Reader extensions = in.enter(Tag::sequence, element);
    while (!extensions.at_end()) {
        ASN1T_Extension& extension = out.append(in.memory());
        decode(extensions, extension);
        for (const ExtensionSyntax& row : extension_syntaxes) {
            if (extension.extnID.content() == ByteView{row.oid.data(), row.oid_length}) {
                row.decode_value(in.attempt().ctxt, extension.extnValue, extension.value);
                break;
            }
        }
    }
}

bool decode_optional(Reader& in, Tag tag, ASN1T_Extensions& out, const char* element) {
    if (!in.next_is(tag)) {
        return false;
    }
    Reader wrapper = in.enter(tag, element);
    decode(wrapper, out, nullptr);
    wrapper.finish();
    return true;
}

} // namespace norvane
