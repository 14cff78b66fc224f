#include "asn1/CertificateList.h"

namespace norvane {

void decode(Reader& in, ASN1T_TBSCertList& out, const char* element) {
    const std::uint8_t* const start = in.position();
    Reader fields = in.enter(Tag::sequence, element);
    if (fields.next_is(Tag::integer)) {
        out.version = fields.int32(Tag::integer, "version");
        out.m.versionPresent = 1;
    }
    decode(fields, out.signature, "signature");
    decode(fields, out.issuer, "issuer");
    decode(fields, out.thisUpdate, "thisUpdate");
    if (fields.next_is_string(Tag::utc_time) || fields.next_is_string(Tag::generalized_time)) {
        decode(fields, out.nextUpdate, "nextUpdate");
        out.m.nextUpdatePresent = 1;
    }
    if (fields.next_is(Tag::sequence)) {
        decode(fields, out.revokedCertificates);
        out.m.revokedCertificatesPresent = 1;
    }
    out.m.crlExtensionsPresent =
        decode_optional(fields, constructed(context(0)), out.crlExtensions, "crlExtensions") ? 1
                                                                                             : 0;
    fields.finish();
    out.encoding = in.since(start);
}

void decode(Reader& in, ASN1T_CertificateList& out) {
    decode_signed(in, out, "CertificateList", &ASN1T_CertificateList::tbsCertList, "tbsCertList");
}

void bind_context(ASN1T_TBSCertList& value, const ASN1ContextPtr& context) {
    value.context = context;
    value.issuer.context = context;
}

void bind_context(ASN1T_CertificateList& value, const ASN1ContextPtr& context) {
    value.context = context;
    bind_context(value.tbsCertList, context);
}

} // namespace norvane
