#pragma once

#include "asn1/BitString.h"
#include "asn1/GeneralName.h"
#include "asn1/ObjectIdentifier.h"
#include "asn1/Reader.h"
#include "asn1/SeqOfList.h"

#include <cstdint>

namespace norvane {

// The values of the extensions that the runtime decodes, RFC 5280 4.2 and 5.2. A bit of `m` is set
// if the optional field is there.

/// 2.5.29.14
struct ASN1T_SubjectKeyIdentifier {
    ByteView octets;
};

/// 2.5.29.15
struct ASN1T_KeyUsage {
    ASN1TBitStr bits;
};

/// 2.5.29.19
struct ASN1T_BasicConstraints {
    struct {
        std::uint32_t pathLenConstraintPresent : 1;
    } m{};
    bool cA = false;
    std::uint32_t pathLenConstraint = 0; ///< 0xFFFFFFFF for any greater one.
};

/// 2.5.29.20 and 2.5.29.27, CRLNumber and BaseCRLNumber. One that does not fit 32 bits reads as
/// 0xFFFFFFFF; up to 20 octets are usual (RFC 5280 5.2.3).
struct ASN1T_CRLNumber {
    std::uint32_t value = 0;
};

/// 2.5.29.21, in the extensions of a revoked entry. Codes are octets: a negative one or one above
/// 255 does not decode. RFC 5280 5.3.1 knows those up to 10.
struct ASN1T_CRLReason {
    std::int32_t value = 0;
};

/// An element of 2.5.29.31 and 2.5.29.46.
struct ASN1T_DistributionPoint {
    struct {
        std::uint32_t distributionPointPresent : 1;
        std::uint32_t reasonsPresent : 1;
        std::uint32_t cRLIssuerPresent : 1;
    } m{};
    ASN1T_DistributionPointName distributionPoint;
    ASN1TBitStr reasons;
    ASN1T_GeneralNames cRLIssuer;
};

/// 2.5.29.31 and 2.5.29.46
struct ASN1T_CRLDistributionPoints {
    ASN1TSeqOfList<ASN1T_DistributionPoint> elements;
};

/// 2.5.29.28
struct ASN1T_IssuingDistributionPoint {
    struct {
        std::uint32_t distributionPointPresent : 1;
        std::uint32_t onlySomeReasonsPresent : 1;
    } m{};
    ASN1T_DistributionPointName distributionPoint;
    bool onlyContainsUserCerts = false;
    bool onlyContainsCACerts = false;
    ASN1TBitStr onlySomeReasons;
    bool indirectCRL = false;
    bool onlyContainsAttributeCerts = false;
};

/// 2.5.29.35
struct ASN1T_AuthorityKeyIdentifier {
    struct {
        std::uint32_t keyIdentifierPresent : 1;
        std::uint32_t authorityCertIssuerPresent : 1;
        std::uint32_t authorityCertSerialNumberPresent : 1;
    } m{};
    ByteView keyIdentifier;
    ASN1T_GeneralNames authorityCertIssuer;
    ASN1TInteger authorityCertSerialNumber;
};

/// 2.5.29.37
struct ASN1T_ExtKeyUsageSyntax {
    ASN1TSeqOfList<ASN1TObjId> elements;
};

/// An element of 1.3.6.1.5.5.7.1.1.
struct ASN1T_AccessDescription {
    ASN1TObjId accessMethod;
    ASN1T_GeneralName accessLocation;
};

/// 1.3.6.1.5.5.7.1.1
struct ASN1T_AuthorityInfoAccessSyntax {
    ASN1TSeqOfList<ASN1T_AccessDescription> elements;
    ByteView encoding; ///< The element as it was decoded.
    ASN1ContextPtr context;
};

void decode(Reader& in, ASN1T_SubjectKeyIdentifier& out);
void decode(Reader& in, ASN1T_KeyUsage& out);
void decode(Reader& in, ASN1T_BasicConstraints& out);
void decode(Reader& in, ASN1T_CRLNumber& out);
void decode(Reader& in, ASN1T_CRLReason& out);
void decode(Reader& in, ASN1T_CRLDistributionPoints& out);
void decode(Reader& in, ASN1T_IssuingDistributionPoint& out);
void decode(Reader& in, ASN1T_AuthorityKeyIdentifier& out);
void decode(Reader& in, ASN1T_ExtKeyUsageSyntax& out);
void decode(Reader& in, ASN1T_AuthorityInfoAccessSyntax& out);

} // namespace norvane
