#pragma once

#include "asn1/ByteView.h"
#include "asn1/Reader.h"

#include <cstdint>
#include <string_view>

namespace norvane {

/// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime } (RFC 5280 4.1.2.5)
///
/// The text is a view of what was decoded and has not been looked into: Time.h reads it.
struct ASN1T_Time {
    static constexpr int utcTime_chosen = 1;
    static constexpr int generalTime_chosen = 2;

    int t = 0;
    std::string_view text;
};

/// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
struct ASN1T_AlgorithmIdentifier {
    ASN1TObjId algorithm;
    ByteView parameters; ///< The whole element, empty if absent.
};

/// SubjectPublicKeyInfo (RFC 5280 4.1)
struct ASN1T_SubjectPublicKeyInfo {
    ASN1T_AlgorithmIdentifier algorithm;
    ASN1TBitStr subjectPublicKey;
};

void decode(Reader& in, ASN1T_Time& out, const char* element);
void decode(Reader& in, ASN1T_AlgorithmIdentifier& out, const char* element);
void decode(Reader& in, ASN1T_SubjectPublicKeyInfo& out, const char* element);

/// Decodes SIGNED (X.509 6.2): SEQUENCE { `tbs`, signatureAlgorithm, signature }, the form that
/// certificates and CRLs have in common, with the encoding of the whole.
template <class Signed, class Tbs>
void decode_signed(Reader& in, Signed& out, const char* element, Tbs Signed::*tbs,
                   const char* tbs_element) {
    const std::uint8_t* const start = in.position();
    Reader fields = in.enter(Tag::sequence, element);
    decode(fields, out.*tbs, tbs_element);
    decode(fields, out.signatureAlgorithm, "signatureAlgorithm");
    out.signature = fields.bit_string(Tag::bit_string, "signature");
    fields.finish();
    out.encoding = in.since(start);
}

} // namespace norvane
