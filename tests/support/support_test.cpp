// The judge is libcrypto: what the makers build must be the DER that it would write itself, and
// mean what was asked for.
#include "support/AllocationCounter.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <algorithm>
#include <new>

#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/x509v3.h>

namespace norvane::testing {
namespace {

// A libcrypto object read from bytes that it must use up; null when it does not.
template <typename T, auto decode, auto release>
std::shared_ptr<T> read(const Bytes& der) {
    const std::uint8_t* at = der.data();
    std::shared_ptr<T> object(decode(nullptr, &at, static_cast<long>(der.size())), release);
    return at == der.data() + der.size() ? object : nullptr;
}
constexpr auto read_certificate = read<X509, d2i_X509, X509_free>;
constexpr auto read_crl = read<X509_CRL, d2i_X509_CRL, X509_CRL_free>;
constexpr auto read_extension = read<X509_EXTENSION, d2i_X509_EXTENSION, X509_EXTENSION_free>;
constexpr auto read_name = read<X509_NAME, d2i_X509_NAME, X509_NAME_free>;

// What libcrypto writes for an object.
Bytes written(auto* object, auto encode) {
    std::uint8_t* out = nullptr;
    const int size = encode(object, &out);
    const std::shared_ptr<void> owner(out, [](void* block) { OPENSSL_free(block); });
    return size > 0 ? Bytes(out, out + size) : Bytes();
}

bool contains(const Bytes& whole, const Bytes& part) {
    return !part.empty() &&
           std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
}

Bytes odd_name() {
    return sequence(
        rdn({{"2.5.4.6", printable("RU")}}),
        rdn({{"2.5.4.3", bmp(u"\u0416")}, {"2.5.4.10", utf8("o")}, {"2.5.4.11", teletex("t")}}));
}

TEST(Der, IntegersIdentifiersAndLengthsAreMinimal) {
    EXPECT_EQ(cat(integer(0), integer(127), integer(128), integer(-128), integer(-129)),
              hex("020100 02017f 02020080 020180 0202ff7f"));
    EXPECT_EQ(oid("2.999.127.128.16384"), hex("0608 8837 7f 8100 818000"));
    EXPECT_EQ(oid("1.2.18446744073709551615"), hex("060b 2a 81ffffffffffffffff7f"));
    EXPECT_EQ(octet_string(Bytes(0x7f)), cat(hex("047f"), Bytes(0x7f)));
    EXPECT_EQ(octet_string(Bytes(0x80)), cat(hex("048180"), Bytes(0x80)));
    EXPECT_EQ(octet_string(Bytes(0x100)), cat(hex("04820100"), Bytes(0x100)));
}

TEST(Der, FormsOfBerMeanTheSame) {
    const Bytes der = odd_name();
    const Bytes inner(der.begin() + 2, der.end());
    for (const Bytes& ber :
         {to_indefinite(der), ber_long_length(0x30, inner, 9), ber_indefinite(0x30, inner)}) {
        const auto found = read_name(ber);
        ASSERT_NE(found, nullptr);
        EXPECT_NE(ber, der);
        EXPECT_EQ(X509_NAME_cmp(found.get(), read_name(der).get()), 0);
    }
}

TEST(Extensions, AreReadByLibcryptoAndWrittenAlike) {
    const std::vector<Bytes> urls = {url("http://a/1"), url("ldap://b/2")};
    const std::vector<Bytes> issuer = {directory_name(common_name("I"))};
    const std::vector<DistributionPoint> points = {
        {.full_name = urls, .reasons = named_bits({1, 8}), .crl_issuer = issuer},
        {.relative_name = {{"2.5.4.3", printable("R")}}}};
    // With what libcrypto's rendering must hold.
    const std::pair<Bytes, const char*> cases[] = {
        {basic_constraints(Holder::ca, 300), "CA:TRUE, pathlen:300"},
        {basic_constraints(Holder::end_entity), "CA:FALSE"},
        {key_usage(named_bits({digital_signature, key_cert_sign, crl_sign, 8})),
         "Digital Signature, Certificate Sign, CRL Sign, Decipher Only"},
        {ext_key_usage({"1.3.6.1.5.5.7.3.1", "1.2.3"}), "TLS Web Server Authentication, 1.2.3"},
        {subject_key_identifier({0xab, 0x01}), "AB:01"},
        {authority_key_identifier(Bytes{0xab, 2}, issuer, Bytes{3}), "AB:02"},
        {authority_info_access({"http://c"}), "CA Issuers - URI:http://c"},
        {crl_distribution_points(points), "Key Compromise, AA"},
        {freshest_crl(points), "Relative Name"},
        {issuing_distribution_point({.full_name = urls, .only_some_reasons = named_bits({2})}),
         "CA Compromise"},
        {issuing_distribution_point({.indirect = true}), "Indirect"},
        {issuing_distribution_point({.only_ca_certificates = true}), "Only CA"},
        {crl_number(integer(128)), "128"},
        {delta_crl_indicator(integer_octets({0x00, 0x80})), "128"},
        {reason_code(8), "Remove From CRL"},
        {certificate_issuer(issuer), "DirName:"},
    };
    for (const auto& [bytes, text] : cases) {
        const auto found = read_extension(bytes);
        ASSERT_NE(found, nullptr) << text;
        const X509V3_EXT_METHOD* method = X509V3_EXT_get(found.get());
        const std::shared_ptr<void> value(X509V3_EXT_d2i(found.get()), [&](void* held) {
            ASN1_item_free(static_cast<ASN1_VALUE*>(held), ASN1_ITEM_ptr(method->it));
        });
        ASSERT_NE(value, nullptr) << text;
        const std::shared_ptr<X509_EXTENSION> again(
            X509V3_EXT_i2d(method->ext_nid, X509_EXTENSION_get_critical(found.get()), value.get()),
            X509_EXTENSION_free);
        EXPECT_EQ(written(again.get(), i2d_X509_EXTENSION), bytes) << text;

        const std::shared_ptr<BIO> sink(BIO_new(BIO_s_mem()), BIO_free);
        X509V3_EXT_print(sink.get(), found.get(), 0, 0);
        std::string rendering(1000, ' ');
        rendering.resize(static_cast<std::size_t>(BIO_read(sink.get(), rendering.data(), 1000)));
        EXPECT_NE(rendering.find(text), std::string::npos) << text << " in " << rendering;
    }
}

TEST(Builders, WhatTheySignIsVerifiedAndWrittenAlikeByLibcrypto) {
    const std::vector<Bytes> extensions = {crl_number(integer(7)), crl_kind(1)};
    for (const Key& key : {Key::rsa(0), Key::ec(1)}) {
        const Bytes certificate_der = CertificateBuilder{.serial = {0x00, 0x80},
                                                         .subject = odd_name(),
                                                         .spki = Key::ec(2).spki(),
                                                         .extensions = extensions}
                                          .sign(key);
        const auto certificate = read_certificate(certificate_der);
        ASSERT_NE(certificate, nullptr);
        EXPECT_EQ(X509_verify(certificate.get(), key.pair()), 1);
        EXPECT_EQ(EVP_PKEY_eq(X509_get0_pubkey(certificate.get()), Key::ec(2).pair()), 1);
        EXPECT_EQ(X509_get_ext_count(certificate.get()), 2);
        // Encoded anew, not as libcrypto has kept it from reading.
        EXPECT_TRUE(contains(certificate_der, written(certificate.get(), i2d_re_X509_tbs)));

        const CrlEntry entry{.serial = {0x00, 0x80}, .extensions = {reason_code(1)}};
        const Bytes list_der = CrlBuilder{.entries = {entry}, .extensions = extensions}.sign(key);
        const auto list = read_crl(list_der);
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(X509_CRL_verify(list.get(), key.pair()), 1);
        EXPECT_EQ(sk_X509_REVOKED_num(X509_CRL_get_REVOKED(list.get())), 1);
        EXPECT_TRUE(contains(list_der, written(list.get(), i2d_re_X509_CRL_tbs)));
    }
}

TEST(AllocationCounter, CountsCallsBytesAndThePeak) {
    constexpr std::size_t size = 1 << 20;
    const AllocationCounter counter;
    ::operator delete(::operator new(size));
    void* second = ::operator new[](size, std::nothrow);
    EXPECT_EQ(counter.count(), 2);
    EXPECT_EQ(counter.bytes(), 2 * size);
    EXPECT_LT(counter.peak(), size + size / 16);
    ::operator delete[](second, std::nothrow);
}

} // namespace
} // namespace norvane::testing
