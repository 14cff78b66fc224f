#include "asn1/Certificate.h"

namespace norvane {
namespace {

void decode(Reader& in, ASN1T_Validity& out, const char* element) {
    Reader fields = in.enter(Tag::sequence, element);
    decode(fields, out.notBefore, "notBefore");
    decode(fields, out.notAfter, "notAfter");
    fields.finish();
}

} // namespace

void decode(Reader& in, ASN1T_TBSCertificate& out, const char* element) {
    const std::uint8_t* const start = in.position();
    Reader fields = in.enter(Tag::sequence, element);
    if (fields.next_is(constructed(context(0)))) {
        Reader version = fields.enter(constructed(context(0)), "version");
        out.version = version.int32(Tag::integer, nullptr);
        version.finish();
        out.m.versionPresent = 1;
    }
    out.serialNumber = fields.integer(Tag::integer, "serialNumber");
    decode(fields, out.signature, "signature");
    decode(fields, out.issuer, "issuer");
    decode(fields, out.validity, "validity");
    decode(fields, out.subject, "subject");
    decode(fields, out.subjectPublicKeyInfo, "subjectPublicKeyInfo");
    if (fields.next_is_string(context(1))) {
        out.issuerUniqueID = fields.bit_string(context(1), "issuerUniqueID");
        out.m.issuerUniqueIDPresent = 1;
    }
    if (fields.next_is_string(context(2))) {
        out.subjectUniqueID = fields.bit_string(context(2), "subjectUniqueID");
        out.m.subjectUniqueIDPresent = 1;
    }
    out.m.extensionsPresent =
        decode_optional(fields, constructed(context(3)), out.extensions, "extensions") ? 1 : 0;
    fields.finish();
    out.encoding = in.since(start);
}

void decode(Reader& in, ASN1T_Certificate& out) {
    decode_signed(in, out, "Certificate", &ASN1T_Certificate::tbsCertificate, "tbsCertificate");
}

void bind_context(ASN1T_TBSCertificate& value, const ASN1ContextPtr& context) {
    value.context = context;
    value.issuer.context = context;
    value.subject.context = context;
}

void bind_context(ASN1T_Certificate& value, const ASN1ContextPtr& context) {
    value.context = context;
    bind_context(value.tbsCertificate, context);
}

} // namespace norvane
