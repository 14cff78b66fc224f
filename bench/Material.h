#pragma once

#include "asn1/ByteView.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <openssl/evp.h>

#include <array>
#include <cstdint>
#include <stdexcept>

namespace norvane::bench {

using testing::Bytes;

inline constexpr std::uint32_t large_crl_entries = 1'000'000;

/// A CRL of a million entries with serial numbers of 16 octets and reason codes, about 49 MB.
inline const Bytes& large_crl() {
    static const Bytes crl = testing::large_crl(large_crl_entries, testing::Key::rsa(0));
    return crl;
}

inline ByteView view(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

/// One SHA-256 pass of libcrypto.
inline void sha256(const Bytes& bytes) {
    std::array<unsigned char, 32> digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) !=
        1) {
        throw std::runtime_error("SHA-256 failed");
    }
}

inline Bytes five_rdn_name() {
    using namespace testing;
    return name({{"2.5.4.6", printable("RU")},
                 {"2.5.4.8", printable("Moscow Oblast")},
                 {"2.5.4.10", printable("Example Organisation Ltd.")},
                 {"2.5.4.11", printable("Certification Authority")},
                 {"2.5.4.3", printable("Example Root CA  2026")}});
}

/// A server certificate with all that such certificates usually carry, about 1.5 KB.
inline Bytes typical_certificate() {
    using namespace testing;
    const Bytes key_id(20, 0x5a);
    return CertificateBuilder{
        .serial = Bytes(16, 0x42),
        .issuer = five_rdn_name(),
        .subject = name({{"2.5.4.6", printable("RU")},
                         {"2.5.4.7", utf8("Example Town")},
                         {"2.5.4.10", utf8("Example Organisation")},
                         {"2.5.4.3", utf8("www.example.org")}}),
        .spki = Key::rsa(0).spki(),
        .extensions =
            {
                key_usage(named_bits({0, 2})),
                ext_key_usage({"1.3.6.1.5.5.7.3.1", "1.3.6.1.5.5.7.3.2"}),
                basic_constraints(Holder::end_entity),
                subject_key_identifier(key_id),
                authority_key_identifier(key_id),
                crl_distribution_points(
                    {{.full_name = {url("http://crl.example.org/authority/issuing-ca-1.crl")}},
                     {.full_name = {url("http://crl2.example.org/authority/issuing-ca-1.crl")}}}),
                authority_info_access({"http://ca.example.org/authority/issuing-ca-1.cer",
                                       "http://ca2.example.org/authority/issuing-ca-1.cer"}),
                extension("2.5.29.32", Critical::no,
                          sequence(sequence(oid("2.23.140.1.2.2")),
                                   sequence(oid("1.3.6.1.4.1.99999.1.2.3")))),
                extension("2.5.29.17", Critical::no,
                          sequence(context_primitive(2, text_bytes("www.example.org")),
                                   context_primitive(2, text_bytes("example.org")),
                                   context_primitive(2, text_bytes("mail.example.org")))),
                extension("1.3.6.1.4.1.11129.2.4.2", Critical::no, octet_string(Bytes(242, 0x17))),
            },
    }
        .sign(Key::rsa(0));
}

} // namespace norvane::bench
