#pragma once

#include "asn1/ExtensionValues.h"
#include "asn1/ObjectIdentifier.h"
#include "asn1/Reader.h"
#include "asn1/SeqOfList.h"

#include <variant>

namespace norvane {

/// The decoded content of an extension: a pointer into the memory of the context, or the reason of
/// a revoked entry itself. Nothing for an extension that the runtime does not know, and for one
/// whose content is not what its type says.
using ASN1T_ExtensionValue =
    std::variant<std::monostate, ASN1T_CRLReason, const ASN1T_SubjectKeyIdentifier*,
                 const ASN1T_KeyUsage*, const ASN1T_BasicConstraints*, const ASN1T_CRLNumber*,
                 const ASN1T_CRLDistributionPoints*, const ASN1T_IssuingDistributionPoint*,
                 const ASN1T_AuthorityKeyIdentifier*, const ASN1T_ExtKeyUsageSyntax*,
                 const ASN1T_AuthorityInfoAccessSyntax*>;

/// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE,
///                          extnValue OCTET STRING } (RFC 5280 4.1)
struct ASN1T_Extension {
    ASN1TObjId extnID;
    bool critical = false;
    ByteView extnValue; ///< The content octets: the encoded value of the extension.
    ASN1T_ExtensionValue value;

    /// The decoded value, or null if there is none or it is of another type.
    template <class T>
    [[nodiscard]] const T* value_as() const {
        const T* const* pointer = std::get_if<const T*>(&value);
        return pointer == nullptr ? nullptr : *pointer;
    }
};

using ASN1T_Extensions = ASN1TSeqOfList<ASN1T_Extension>;

/// Decodes the three fields, and the value of an extension of a certificate or CRL. A value that
/// does not decode is left out and is no failure of the extension.
void decode(Reader& in, ASN1T_Extension& out);
void decode(Reader& in, ASN1T_Extensions& out, const char* element);

/// Decodes an optional list of extensions inside an explicit `tag`. Whether it is there.
[[nodiscard]] bool decode_optional(Reader& in, Tag tag, ASN1T_Extensions& out, const char* element);

} // namespace norvane
