#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "asn1/ObjectIdentifier.h"
#include "asn1/Reader.h"
#include "asn1/SeqOfList.h"

#include <cstdint>

namespace norvane {

/// The decoded value of an attribute whose type the runtime knows.
///
///     DirectoryString ::= CHOICE { teletexString, printableString, universalString, utf8String,
///                                  bmpString }
///
/// countryName and emailAddress are single strings and not a choice; `t` is 0 for them.
struct ASN1T_AttributeString {
    enum Alternative : std::uint8_t {
        none = 0,
        teletexString = 1,
        printableString = 2,
        universalString = 3,
        utf8String = 4,
        bmpString = 5,
    };

    Alternative t = none;
    ByteView text; ///< The octets of the string, without conversion.
};

/// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }
struct ASN1T_AttributeTypeAndValue {
    ASN1TObjId type;
    ByteView rawValue;         ///< The whole element of the value, which is what is encoded again.
    bool valueDecoded = false; ///< The type is known and the value is a string of that type.
    ASN1T_AttributeString value;
};

using ASN1T_RelativeDistinguishedName = ASN1TSeqOfList<ASN1T_AttributeTypeAndValue>;

/// Name ::= CHOICE { rdnSequence SEQUENCE OF RelativeDistinguishedName } (RFC 5280 4.1.2.4)
///
/// Views the bytes that it was decoded from; the lists lie in the memory of `context`. A copy is
/// shallow: it shares both. A Name is encoded from its attributes' types and raw values, so that
/// one whose values were replaced is encoded with the new ones.
struct ASN1T_Name {
    static constexpr int rdnSequence_chosen = 1;

    int t = 0;
    ASN1TSeqOfList<ASN1T_RelativeDistinguishedName> rdnSequence;
    ASN1ContextPtr context;
};

/// A RelativeDistinguishedName under the tag that an implicit tagging gives it, or under its own.
void decode(Reader& in, ASN1T_RelativeDistinguishedName& out, Tag tag, const char* element);
void decode(Reader& in, ASN1T_Name& out, const char* element = "Name");

/// Gives the string attribute a new text of the same string type, in one piece. The text is copied
/// into `memory`, which must live as long as the name.
void replace_text(ASN1T_AttributeTypeAndValue& attribute, ByteView text, Arena& memory);

/// The length of the encoded name, and its encoding written to `out`. Returns the end.
[[nodiscard]] std::uint32_t encoded_length(const ASN1T_Name& name);
std::uint8_t* encode(const ASN1T_Name& name, std::uint8_t* out);

} // namespace norvane
