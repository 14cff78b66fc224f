#include "platform/crypto/OidTable.h"

#include "platform/crypto/AllowedHashes.h"
#include "platform/crypto/ProviderTable.h"

#include <array>
#include <cstddef>

namespace norvane {
namespace {

constexpr DWORD hash = CRYPT_HASH_ALG_OID_GROUP_ID;
constexpr DWORD public_key = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
constexpr DWORD signature = CRYPT_SIGN_ALG_OID_GROUP_ID;

constexpr DWORD no_parameters = CRYPT_OID_NO_NULL_ALGORITHM_PARA_FLAG;
constexpr DWORD any_provider = 0;

struct Row {
    DWORD group;
    std::string_view oid;
    LPCWSTR name;
    ALG_ID algorithm;
    // Of signatures only.
    ALG_ID key_algorithm = 0;
    DWORD flags = 0;
    DWORD provider_type = any_provider;
};

/// A look-up without a group finds a hash before the signatures that use it, and an RSA key as one
/// for key exchange first, as on the platform. A new algorithm is a row here.
// clang-format off
constexpr Row rows[] = {
    {hash,       "1.3.14.3.2.26",          NORVANE_W("sha1"),        CALG_SHA1},
    {hash,       "2.16.840.1.101.3.4.2.1", NORVANE_W("sha256"),      CALG_SHA_256},
    {hash,       "2.16.840.1.101.3.4.2.2", NORVANE_W("sha384"),      CALG_SHA_384},
    {hash,       "2.16.840.1.101.3.4.2.3", NORVANE_W("sha512"),      CALG_SHA_512},
    {hash,       "1.2.643.2.2.9",          NORVANE_W("GOST R 34.11-94"),           CALG_NORVANE_GOST_R3411_94},
    {hash,       "1.2.643.7.1.1.2.2",      NORVANE_W("GOST R 34.11-2012 256 bit"), CALG_NORVANE_GOST_R3411_2012_256},
    {hash,       "1.2.643.7.1.1.2.3",      NORVANE_W("GOST R 34.11-2012 512 bit"), CALG_NORVANE_GOST_R3411_2012_512},

    {public_key, "1.2.840.113549.1.1.1",   NORVANE_W("RSA"),         CALG_RSA_KEYX},
    {public_key, "1.2.840.113549.1.1.1",   NORVANE_W("RSA_SIGN"),    CALG_RSA_SIGN},
    {public_key, "1.2.840.10040.4.1",      NORVANE_W("DSA"),         CALG_DSS_SIGN},
    {public_key, "1.2.840.10045.2.1",      NORVANE_W("ECC"),         CALG_ECDSA},
    {public_key, "1.2.643.2.2.20",         NORVANE_W("GOST R 34.10-94"),           CALG_NORVANE_GOST_R3410_94},
    {public_key, "1.2.643.2.2.19",         NORVANE_W("GOST R 34.10-2001"),         CALG_NORVANE_GOST_R3410_2001},
    {public_key, "1.2.643.7.1.1.1.1",      NORVANE_W("GOST R 34.10-2012 256 bit"), CALG_NORVANE_GOST_R3410_2012_256},
    {public_key, "1.2.643.7.1.1.1.2",      NORVANE_W("GOST R 34.10-2012 512 bit"), CALG_NORVANE_GOST_R3410_2012_512},

    {signature,  "1.2.840.113549.1.1.5",   NORVANE_W("sha1RSA"),     CALG_SHA1,    CALG_RSA_SIGN},
    {signature,  "1.2.840.113549.1.1.11",  NORVANE_W("sha256RSA"),   CALG_SHA_256, CALG_RSA_SIGN, 0, PROV_RSA_AES},
    {signature,  "1.2.840.113549.1.1.12",  NORVANE_W("sha384RSA"),   CALG_SHA_384, CALG_RSA_SIGN, 0, PROV_RSA_AES},
    {signature,  "1.2.840.113549.1.1.13",  NORVANE_W("sha512RSA"),   CALG_SHA_512, CALG_RSA_SIGN, 0, PROV_RSA_AES},
    {signature,  "1.2.840.10040.4.3",      NORVANE_W("sha1DSA"),     CALG_SHA1,    CALG_DSS_SIGN, no_parameters},
    {signature,  "2.16.840.1.101.3.4.3.2", NORVANE_W("sha256DSA"),   CALG_SHA_256, CALG_DSS_SIGN, no_parameters},
    {signature,  "2.16.840.1.101.3.4.3.3", NORVANE_W("sha384DSA"),   CALG_SHA_384, CALG_DSS_SIGN, no_parameters},
    {signature,  "2.16.840.1.101.3.4.3.4", NORVANE_W("sha512DSA"),   CALG_SHA_512, CALG_DSS_SIGN, no_parameters},
    {signature,  "1.2.840.10045.4.1",      NORVANE_W("sha1ECDSA"),   CALG_SHA1,    CALG_ECDSA,    no_parameters},
    {signature,  "1.2.840.10045.4.3.2",    NORVANE_W("sha256ECDSA"), CALG_SHA_256, CALG_ECDSA,    no_parameters},
    {signature,  "1.2.840.10045.4.3.3",    NORVANE_W("sha384ECDSA"), CALG_SHA_384, CALG_ECDSA,    no_parameters},
    {signature,  "1.2.840.10045.4.3.4",    NORVANE_W("sha512ECDSA"), CALG_SHA_512, CALG_ECDSA,    no_parameters},
    {signature,  "1.2.643.2.2.4",          NORVANE_W("GOST R 34.11-94 with GOST R 34.10-94"),
     CALG_NORVANE_GOST_R3411_94,       CALG_NORVANE_GOST_R3410_94,       no_parameters, PROV_NORVANE_GOST},
    {signature,  "1.2.643.2.2.3",          NORVANE_W("GOST R 34.11-94 with GOST R 34.10-2001"),
     CALG_NORVANE_GOST_R3411_94,       CALG_NORVANE_GOST_R3410_2001,     no_parameters, PROV_NORVANE_GOST},
    {signature,  "1.2.643.7.1.1.3.2",      NORVANE_W("GOST R 34.11-2012 with GOST R 34.10-2012 256 bit"),
     CALG_NORVANE_GOST_R3411_2012_256, CALG_NORVANE_GOST_R3410_2012_256, no_parameters, PROV_NORVANE_GOST},
    {signature,  "1.2.643.7.1.1.3.3",      NORVANE_W("GOST R 34.11-2012 with GOST R 34.10-2012 512 bit"),
     CALG_NORVANE_GOST_R3411_2012_512, CALG_NORVANE_GOST_R3410_2012_512, no_parameters, PROV_NORVANE_GOST},
};
// clang-format on
constexpr std::size_t count = std::size(rows);

using ExtraWords = std::array<DWORD, 3>;
using ExtraBytes = std::array<BYTE, sizeof(ExtraWords)>;

/// The words of ExtraInfo, least significant byte first. Trailing zeros are left out.
constexpr ExtraWords extra_words(const Row& row) {
    return {row.key_algorithm, row.flags, row.provider_type};
}

constexpr DWORD extra_size(const Row& row) {
    DWORD words = 0;
    for (DWORD i = 0; i < std::tuple_size_v<ExtraWords>; ++i) {
        words = extra_words(row)[i] != 0 ? i + 1 : words;
    }
    return words * static_cast<DWORD>(sizeof(DWORD));
}

constexpr auto all_extra_bytes() {
    std::array<ExtraBytes, count> all{};
    for (std::size_t row = 0; row < count; ++row) {
        const ExtraWords words = extra_words(rows[row]);
        for (std::size_t i = 0; i < std::tuple_size_v<ExtraBytes>; ++i) {
            all[row][i] = static_cast<BYTE>(words[i / sizeof(DWORD)] >> i % sizeof(DWORD) * 8);
        }
    }
    return all;
}

// The platform's structure wants a pointer to bytes that could be written to.
constinit std::array<ExtraBytes, count> extra_bytes = all_extra_bytes();

constexpr auto make_infos() {
    std::array<CRYPT_OID_INFO, count> all{};
    for (std::size_t i = 0; i < count; ++i) {
        const DWORD extra = extra_size(rows[i]);
        all[i].cbSize = sizeof(CRYPT_OID_INFO);
        all[i].pszOID = rows[i].oid.data();
        all[i].pwszName = rows[i].name;
        all[i].dwGroupId = rows[i].group;
        all[i].Algid = rows[i].algorithm;
        all[i].ExtraInfo = {extra, extra == 0 ? nullptr : extra_bytes[i].data()};
    }
    return all;
}

constinit const std::array<CRYPT_OID_INFO, count> infos = make_infos();

constexpr auto make_entries() {
    std::array<OidEntry, count> all{};
    for (std::size_t i = 0; i < count; ++i) {
        all[i] = {rows[i].oid, rows[i].key_algorithm, &infos[i]};
    }
    return all;
}

constinit const std::array<OidEntry, count> entries = make_entries();

} // namespace

std::span<const OidEntry> oid_table() noexcept { return entries; }

bool is_usable(const OidEntry& entry) {
    return is_hash_allowed(entry.algorithm()) && is_offered(entry.algorithm());
}

} // namespace norvane
