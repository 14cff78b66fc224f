#include "platform/StructureBuffer.h"
#include "platform/decode_authority_key_id.h"
#include "platform/failure.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

using Bytes = std::span<const BYTE>;
using norvane::StructureBuffer;

constexpr DWORD known_flags = CRYPT_DECODE_NOCOPY_FLAG | CRYPT_DECODE_SHARE_OID_STRING_FLAG;

struct Content {
    DWORD error;
    Bytes octets;
};

/// The content octets of a value with nothing behind it, of which `encoded` holds all but the tag.
/// Only the definite length is taken, in short or long form (X.690, 8.1.3).
Content definite_content(Bytes encoded) noexcept {
    constexpr BYTE long_form = 0x80;
    constexpr BYTE indefinite = 0x80;
    constexpr BYTE reserved = 0xFF;
    if (encoded.empty()) {
        return {CRYPT_E_ASN1_EOD, {}};
    }
    const BYTE first = encoded.front();
    Bytes rest = encoded.subspan(1);
    if (first == indefinite || first == reserved) {
        return {CRYPT_E_ASN1_CORRUPT, {}};
    }
    std::size_t length = first;
    if ((first & long_form) != 0) {
        const auto count = static_cast<std::size_t>(first - long_form);
        if (count > rest.size()) {
            return {CRYPT_E_ASN1_EOD, {}};
        }
        length = 0;
        for (const BYTE octet : rest.first(count)) {
            length = length << 8 | octet;
            if (length > rest.size()) {
                return {CRYPT_E_ASN1_EOD, {}};
            }
        }
        rest = rest.subspan(count);
    }
    if (length > rest.size()) {
        return {CRYPT_E_ASN1_EOD, {}};
    }
    if (length < rest.size()) {
        return {CRYPT_E_ASN1_NOEOD, {}};
    }
    return {ERROR_SUCCESS, rest};
}

/// ENUMERATED (X.690, 8.4), as a signed number of at most 32 bits.
DWORD decode_enumerated(Bytes encoded, const StructureBuffer& out) noexcept {
    constexpr BYTE enumerated_tag = 0x0A;
    if (encoded.empty()) {
        return CRYPT_E_ASN1_EOD;
    }
    if (encoded.front() != enumerated_tag) {
        return CRYPT_E_ASN1_BADTAG;
    }
    const auto [error, octets] = definite_content(encoded.subspan(1));
    if (error != ERROR_SUCCESS) {
        return error;
    }
    if (octets.empty()) {
        return CRYPT_E_ASN1_CORRUPT;
    }
    if (octets.size() > sizeof(int)) {
        return CRYPT_E_ASN1_LARGE;
    }
    const bool negative = (octets.front() & 0x80) != 0;
    DWORD bits = negative ? ~DWORD{0} : 0;
    for (const BYTE octet : octets) {
        bits = bits << 8 | octet;
    }
    const auto value = static_cast<int>(bits);
    return out.put(&value, sizeof value);
}

struct StructureType {
    LPCSTR name;
    DWORD (*decode)(Bytes encoded, const StructureBuffer& out) noexcept;
};

const StructureType structure_types[] = {
    {X509_ENUMERATED, decode_enumerated},
    {X509_AUTHORITY_KEY_ID2, norvane::decode_authority_key_id},
    {szOID_AUTHORITY_KEY_IDENTIFIER2, norvane::decode_authority_key_id},
};

/// Types are numbers of 16 bits or texts.
bool same_type(LPCSTR a, LPCSTR b) noexcept {
    constexpr std::uintptr_t largest_number = 0xFFFF;
    const auto is_text = [](LPCSTR type) {
        return reinterpret_cast<std::uintptr_t>(type) > largest_number;
    };
    return a == b || (is_text(a) && is_text(b) && std::string_view(a) == b);
}

/// The low half of an encoding type decides; only if it is empty does the high half.
bool is_known_encoding(DWORD encoding_type) noexcept {
    constexpr DWORD certificate_mask = 0x0000FFFF;
    const DWORD certificate_encoding = encoding_type & certificate_mask;
    return certificate_encoding == X509_ASN_ENCODING || encoding_type == PKCS_7_ASN_ENCODING;
}

} // namespace

BOOL CryptDecodeObject(DWORD dwCertEncodingType, LPCSTR lpszStructType, const BYTE* pbEncoded,
                       DWORD cbEncoded, DWORD dwFlags, void* pvStructInfo,
                       DWORD* pcbStructInfo) noexcept {
    if (pcbStructInfo == nullptr || (pbEncoded == nullptr && cbEncoded != 0) ||
        (dwFlags & ~known_flags) != 0) {
        return norvane::fail(E_INVALIDARG);
    }
    const auto* type = std::ranges::find_if(structure_types, [=](const StructureType& row) {
        return same_type(row.name, lpszStructType);
    });
    if (type == std::end(structure_types) || !is_known_encoding(dwCertEncodingType)) {
        return norvane::fail(ERROR_FILE_NOT_FOUND);
    }
    const DWORD error =
        type->decode(Bytes{pbEncoded, cbEncoded}, {.info = pvStructInfo, .size = pcbStructInfo});
    if (error != ERROR_SUCCESS) {
        return norvane::fail(error);
    }
    return TRUE;
}
