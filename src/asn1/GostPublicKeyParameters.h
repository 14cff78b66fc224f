#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "asn1/Reader.h"

#include <array>
#include <cstdint>

namespace norvane {

/// The parameters of a GOST R 34.10-94 key (RFC 4491 2.3.1):
///
///     GostR3410-94-PublicKeyParameters ::= SEQUENCE {
///         publicKeyParamSet    OBJECT IDENTIFIER,
///         digestParamSet       OBJECT IDENTIFIER,
///         encryptionParamSet   OBJECT IDENTIFIER OPTIONAL }
struct ASN1T_GostR3410_94_PublicKeyParameters {
    struct {
        std::uint32_t encryptionParamSetPresent : 1;
    } m{};
    ASN1TObjId publicKeyParamSet;
    ASN1TObjId digestParamSet;
    ASN1TObjId encryptionParamSet;
    ByteView encoding; ///< The element as it was decoded, all lengths minimal.
    ASN1ContextPtr context;

    /// The name of the type in its definition, which is also that of its element in XER.
    static constexpr const char* type_name = "GostR3410-94-PublicKeyParameters";

    struct Field {
        const char* name;
        ASN1TObjId ASN1T_GostR3410_94_PublicKeyParameters::*member;
    };
    static const std::array<Field, 3> fields; ///< In the order of the definition.
    static constexpr std::size_t required_fields = 2;
};

void decode(Reader& in, ASN1T_GostR3410_94_PublicKeyParameters& out);

} // namespace norvane
