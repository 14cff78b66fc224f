#pragma once

#include "asn1/CommonTypes.h"
#include "asn1/Extension.h"
#include "asn1/Name.h"
#include "asn1/Reader.h"

#include <cstdint>

namespace norvane {

/// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
struct ASN1T_Validity {
    ASN1T_Time notBefore;
    ASN1T_Time notAfter;
};

/// TBSCertificate (RFC 5280 4.1). A bit of `m` is set if the optional field is there.
struct ASN1T_TBSCertificate {
    struct {
        std::uint32_t versionPresent : 1;
        std::uint32_t issuerUniqueIDPresent : 1;
        std::uint32_t subjectUniqueIDPresent : 1;
        std::uint32_t extensionsPresent : 1;
    } m{};
    std::int32_t version = 0; ///< 0 for v1, 2 for v3.
    ASN1TInteger serialNumber;
    ASN1T_AlgorithmIdentifier signature;
    ASN1T_Name issuer;
    ASN1T_Validity validity;
    ASN1T_Name subject;
    ASN1T_SubjectPublicKeyInfo subjectPublicKeyInfo;
    ASN1TBitStr issuerUniqueID;
    ASN1TBitStr subjectUniqueID;
    ASN1T_Extensions extensions;
    ByteView encoding; ///< The element as it was decoded, all lengths minimal.
    ASN1ContextPtr context;
};

/// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signature } (RFC 5280 4.1)
///
/// Strings, integers, identifiers and bit strings view the bytes that were decoded, lists lie in
/// the memory of `context`; a copy is shallow and shares both.
struct ASN1T_Certificate {
    ASN1T_TBSCertificate tbsCertificate;
    ASN1T_AlgorithmIdentifier signatureAlgorithm;
    ASN1TBitStr signature;
    ByteView encoding; ///< The element as it was decoded, all lengths minimal.
    ASN1ContextPtr context;
};

void decode(Reader& in, ASN1T_TBSCertificate& out, const char* element = "TBSCertificate");
void decode(Reader& in, ASN1T_Certificate& out);

/// Gives the structure and its member structures a reference each, so that a copy of any of them
/// keeps the memory of its lists alive.
void bind_context(ASN1T_TBSCertificate& value, const ASN1ContextPtr& context);
void bind_context(ASN1T_Certificate& value, const ASN1ContextPtr& context);

} // namespace norvane
