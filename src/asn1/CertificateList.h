#pragma once

#include "asn1/CommonTypes.h"
#include "asn1/Extension.h"
#include "asn1/Name.h"
#include "asn1/Reader.h"
#include "asn1/RevokedCertificates.h"

#include <cstdint>

namespace norvane {

/// TBSCertList (RFC 5280 5.1). A bit of `m` is set if the optional field is there.
struct ASN1T_TBSCertList {
    struct {
        std::uint32_t versionPresent : 1;
        std::uint32_t nextUpdatePresent : 1;
        std::uint32_t revokedCertificatesPresent : 1;
        std::uint32_t crlExtensionsPresent : 1;
    } m{};
    std::int32_t version = 0; ///< 1 for v2.
    ASN1T_AlgorithmIdentifier signature;
    ASN1T_Name issuer;
    ASN1T_Time thisUpdate;
    ASN1T_Time nextUpdate;
    ASN1T_RevokedCertificates revokedCertificates;
    ASN1T_Extensions crlExtensions;
    ByteView encoding; ///< The element as it was decoded, all lengths minimal.
    ASN1ContextPtr context;
};

/// CertificateList ::= SEQUENCE { tbsCertList, signatureAlgorithm, signature } (RFC 5280 5.1)
///
/// Memory as in ASN1T_Certificate; the revoked entries are not built at all, but read from the
/// bytes when somebody walks over them.
struct ASN1T_CertificateList {
    ASN1T_TBSCertList tbsCertList;
    ASN1T_AlgorithmIdentifier signatureAlgorithm;
    ASN1TBitStr signature;
    ByteView encoding; ///< The element as it was decoded, all lengths minimal.
    ASN1ContextPtr context;
};

void decode(Reader& in, ASN1T_TBSCertList& out, const char* element = "TBSCertList");
void decode(Reader& in, ASN1T_CertificateList& out);

/// Gives the structure and its member structures a reference each, so that a copy of any of them
/// keeps the memory of its lists alive.
void bind_context(ASN1T_TBSCertList& value, const ASN1ContextPtr& context);
void bind_context(ASN1T_CertificateList& value, const ASN1ContextPtr& context);

} // namespace norvane
