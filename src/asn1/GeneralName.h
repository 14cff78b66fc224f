#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "asn1/Name.h"
#include "asn1/Reader.h"
#include "asn1/SeqOfList.h"

namespace norvane {

/// GeneralName ::= CHOICE of nine context tags (RFC 5280 4.2.1.6); `t` is the alternative, which is
/// the number of its tag plus one.
struct ASN1T_GeneralName {
    enum Alternative : std::uint8_t {
        otherName = 1,
        rfc822Name = 2,
        dNSName = 3,
        x400Address = 4,
        directoryName = 5,
        ediPartyName = 6,
        uniformResourceIdentifier = 7,
        iPAddress = 8,
        registeredID = 9,
    };

    Alternative t{};
    /// The content octets; for directoryName the whole element of the Name.
    ByteView value;
    /// The decoded Name of a directoryName, in the memory of the context; null for all others.
    const ASN1T_Name* name = nullptr;
};

/// GeneralNames ::= SEQUENCE OF GeneralName
struct ASN1T_GeneralNames {
    ASN1TSeqOfList<ASN1T_GeneralName> elements;
    ByteView content; ///< The encoded elements without the header, which may bear another tag.
    ASN1ContextPtr context;
};

/// DistributionPointName ::= CHOICE { fullName [0] GeneralNames,
///                                    nameRelativeToCRLIssuer [1] RelativeDistinguishedName }
struct ASN1T_DistributionPointName {
    static constexpr int fullName_chosen = 1;
    static constexpr int nameRelativeToCRLIssuer_chosen = 2;

    int t = 0;
    ASN1T_GeneralNames fullName;
    ASN1T_RelativeDistinguishedName nameRelativeToCRLIssuer;
    ByteView encoding; ///< The element as it was decoded.
    ASN1ContextPtr context;
};

void decode(Reader& in, ASN1T_GeneralName& out, const char* element);
/// GeneralNames under the tag that an implicit tagging gives them.
void decode(Reader& in, ASN1T_GeneralNames& out, Tag tag, const char* element);
void decode(Reader& in, ASN1T_GeneralNames& out, const char* element = "GeneralNames");
void decode(Reader& in, ASN1T_DistributionPointName& out,
            const char* element = "DistributionPointName");

} // namespace norvane
