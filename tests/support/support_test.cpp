// The judge is libcrypto: what the makers build must be the DER that it would write itself, and
// mean what was asked for.
#include "support/AllocationCounter.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <new>
#include <set>

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
constexpr auto read_octets = read<ASN1_OCTET_STRING, d2i_ASN1_OCTET_STRING, ASN1_OCTET_STRING_free>;

// What libcrypto writes for an object.
Bytes written(auto* object, auto encode) {
    std::uint8_t* out = nullptr;
    const int size = encode(object, &out);
    const std::shared_ptr<void> owner(out, [](void* block) { OPENSSL_free(block); });
    return size > 0 ? Bytes(out, out + size) : Bytes();
}

Bytes content(const ASN1_STRING* string) {
    const std::uint8_t* data = ASN1_STRING_get0_data(string);
    return {data, data + ASN1_STRING_length(string)};
}

Bytes odd_name() {
    return sequence(
        rdn({{"2.5.4.6", printable("RU")}}),
        rdn({{"2.5.4.3", bmp(u"\u0416")}, {"2.5.4.10", utf8("o")}, {"2.5.4.11", teletex("t")}}));
}

TEST(Der, IntegersIdentifiersAndLengthsAreMinimal) {
    EXPECT_EQ(cat(integer(0), integer(127), integer(128), integer(-128), integer(-129)),
              hex("020100 02017f 02020080 020180 0202ff7f"));
    EXPECT_EQ(integer(INT64_MIN), hex("0208 8000000000000000"));
    EXPECT_EQ(oid("2.999.127.128.16384"), hex("0608 8837 7f 8100 818000"));
    EXPECT_EQ(oid("1.2.18446744073709551615"), hex("060b 2a 81ffffffffffffffff7f"));
    for (const auto& [size, header] : {std::pair(0x7f, "047f"), std::pair(0x80, "048180"),
                                       std::pair(0xff, "0481ff"), std::pair(0x100, "04820100")}) {
        const Bytes zeros(static_cast<std::size_t>(size));
        EXPECT_EQ(octet_string(zeros), cat(hex(header), zeros));
    }
}

TEST(Der, FormsOfBerMeanTheSame) {
    const Bytes der = odd_name();
    const Bytes inner(der.begin() + 2, der.end());
    const auto expected = read_name(der);
    ASSERT_NE(expected, nullptr);
    for (const Bytes& ber :
         {to_indefinite(der), ber_long_length(0x30, inner, 9), ber_indefinite(0x30, inner)}) {
        const auto found = read_name(ber);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(X509_NAME_cmp(found.get(), expected.get()), 0);
    }
    const auto joined = read_octets(ber_segments(4, {octet_string({1, 2}), octet_string({3})}));
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(content(joined.get()), (Bytes{1, 2, 3}));
}

TEST(Extensions, AreReadByLibcryptoAndWrittenAlike) {
    const std::vector<Bytes> urls = {url("http://a/1"), url("ldap://b/2")};
    const std::vector<Bytes> issuer = {directory_name(common_name("I"))};
    const std::vector<DistributionPoint> points = {
        {.full_name = urls, .reasons = named_bits({1, 8}), .crl_issuer = issuer},
        {.relative_name = {{"2.5.4.3", printable("R")}}}};
    const struct {
        Bytes extension;
        std::vector<const char*> texts; // what libcrypto's rendering must hold
    } cases[] = {
        {basic_constraints(Holder::ca, 300), {"CA:TRUE, pathlen:300"}},
        {basic_constraints(Holder::end_entity), {"CA:FALSE"}},
        {key_usage(named_bits({digital_signature, key_cert_sign, crl_sign, 8})),
         {"Digital Signature, Certificate Sign, CRL Sign, Decipher Only"}},
        {ext_key_usage({"1.3.6.1.5.5.7.3.1", "1.2.3"}), {"TLS Web Server", "1.2.3"}},
        {subject_key_identifier({0xab, 0x01}), {"AB:01"}},
        {authority_key_identifier(Bytes{0xab, 2}, issuer, Bytes{3}), {"AB:02", "DirName:", ":03"}},
        {authority_info_access({"http://c"}), {"CA Issuers - URI:http://c"}},
        {crl_distribution_points(points),
         {"URI:http://a/1", "URI:ldap://b/2", "Key Compromise, AA", "DirName:", "Relative Name"}},
        {freshest_crl(points), {"URI:http://a/1"}},
        {issuing_distribution_point({.full_name = urls,
                                     .only_user_certificates = true,
                                     .only_some_reasons = named_bits({2}),
                                     .indirect = true}),
         {"URI:ldap://b/2", "Only User", "CA Compromise", "Indirect"}},
        {issuing_distribution_point({.only_ca_certificates = true}), {"Only CA"}},
        {issuing_distribution_point({.only_attribute_certificates = true}), {"Only Attribute"}},
        {crl_number(integer(128)), {"128"}},
        {delta_crl_indicator(integer_octets({0x00, 0x80})), {"128"}},
        {reason_code(8), {"Remove From CRL"}},
        {certificate_issuer(issuer), {"DirName:"}},
    };
    for (const auto& [bytes, texts] : cases) {
        const auto found = read_extension(bytes);
        ASSERT_NE(found, nullptr) << texts.front();
        const X509V3_EXT_METHOD* method = X509V3_EXT_get(found.get());
        const std::shared_ptr<void> value(X509V3_EXT_d2i(found.get()), [&](void* held) {
            ASN1_item_free(static_cast<ASN1_VALUE*>(held), ASN1_ITEM_ptr(method->it));
        });
        ASSERT_NE(value, nullptr) << texts.front();
        const std::shared_ptr<X509_EXTENSION> again(
            X509V3_EXT_i2d(method->ext_nid, X509_EXTENSION_get_critical(found.get()), value.get()),
            X509_EXTENSION_free);
        EXPECT_EQ(written(again.get(), i2d_X509_EXTENSION), bytes) << texts.front();

        const std::shared_ptr<BIO> sink(BIO_new(BIO_s_mem()), BIO_free);
        X509V3_EXT_print(sink.get(), found.get(), 0, 0);
        std::string rendering(1000, ' ');
        rendering.resize(static_cast<std::size_t>(BIO_read(sink.get(), rendering.data(), 1000)));
        for (const char* text : texts)
            EXPECT_NE(rendering.find(text), std::string::npos) << text << " in " << rendering;
    }
    // Two that libcrypto does not know.
    EXPECT_EQ(ca_version(integer(2)), hex("3010 0609 2b0601040182371501 0403 020102"));
    EXPECT_EQ(crl_kind(1), hex("300e 0607 2a850302023101 0403 0a0101"));
}

TEST(CertificateBuilder, CertificatesAreReadAndVerifiedByLibcrypto) {
    for (const Key& key : {Key::rsa(0), Key::ec(1)}) {
        const Bytes der = CertificateBuilder{.serial = {0x00, 0x80},
                                             .not_before = utc_time("260102030405Z"),
                                             .not_after = generalized_time("20500101000000Z"),
                                             .subject = odd_name(),
                                             .spki = Key::ec(2).spki(),
                                             .extensions = {crl_kind(0), key_usage({{0x80}, 7})}}
                              .sign(key);
        const auto found = read_certificate(der);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(X509_verify(found.get(), key.pair()), 1);
        EXPECT_EQ(EVP_PKEY_eq(X509_get0_pubkey(found.get()), Key::ec(2).pair()), 1);
        EXPECT_EQ(X509_get_version(found.get()), X509_VERSION_3);
        EXPECT_EQ(content(X509_get0_serialNumber(found.get())), Bytes{0x80});
        EXPECT_EQ(content(X509_get0_notBefore(found.get())), text_bytes("260102030405Z"));
        EXPECT_EQ(content(X509_get0_notAfter(found.get())), text_bytes("20500101000000Z"));
        EXPECT_EQ(written(X509_get_subject_name(found.get()), i2d_X509_NAME), odd_name());
        EXPECT_EQ(X509_get_ext_count(found.get()), 2);
        // Encoded anew, not as libcrypto has kept it from reading.
        const Bytes tbs = written(found.get(), i2d_re_X509_tbs);
        EXPECT_TRUE(std::equal(tbs.begin(), tbs.end(), der.begin() + 4));

        const auto indefinite = read_certificate(to_indefinite(der));
        ASSERT_NE(indefinite, nullptr);
        EXPECT_EQ(X509_NAME_cmp(X509_get_subject_name(indefinite.get()),
                                X509_get_subject_name(found.get())),
                  0);
        EXPECT_EQ(X509_get_ext_count(indefinite.get()), 2);
    }
    const auto first = read_certificate(CertificateBuilder{.version = 0}.sign(Key::ec(0)));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(X509_get_version(first.get()), X509_VERSION_1);
}

TEST(CrlBuilder, ListsAreReadAndVerifiedByLibcrypto) {
    const Bytes der = CrlBuilder{.issuer = odd_name(),
                                 .entries = {{.serial = {0x05}},
                                             {.serial = {0x00, 0x80},
                                              .date = generalized_time("20260102030405Z"),
                                              .extensions = {reason_code(1)}}},
                                 .extensions = {crl_number(integer(7)), crl_kind(1)}}
                          .sign(Key::rsa(0));
    const auto found = read_crl(der);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(X509_CRL_verify(found.get(), Key::rsa(0).pair()), 1);
    EXPECT_EQ(X509_CRL_get_version(found.get()), X509_CRL_VERSION_2);
    EXPECT_EQ(content(X509_CRL_get0_lastUpdate(found.get())), text_bytes("260301000000Z"));
    EXPECT_EQ(content(X509_CRL_get0_nextUpdate(found.get())), text_bytes("351231235959Z"));
    EXPECT_EQ(X509_CRL_get_ext_count(found.get()), 2);
    const STACK_OF(X509_REVOKED)* entries = X509_CRL_get_REVOKED(found.get());
    ASSERT_EQ(sk_X509_REVOKED_num(entries), 2);
    const X509_REVOKED* second = sk_X509_REVOKED_value(entries, 1);
    EXPECT_EQ(content(X509_REVOKED_get0_serialNumber(second)), Bytes{0x80});
    EXPECT_EQ(content(X509_REVOKED_get0_revocationDate(second)), text_bytes("20260102030405Z"));
    EXPECT_EQ(X509_REVOKED_get_ext_count(second), 1);
    const Bytes tbs = written(found.get(), i2d_re_X509_CRL_tbs);
    EXPECT_TRUE(std::equal(tbs.begin(), tbs.end(), der.begin() + 4));

    const auto bare = read_crl(CrlBuilder{.version = 0, .next_update = {}}.sign(Key::ec(0)));
    ASSERT_NE(bare, nullptr);
    EXPECT_EQ(X509_CRL_get_version(bare.get()), X509_CRL_VERSION_1);
    EXPECT_EQ(X509_CRL_get0_nextUpdate(bare.get()), nullptr);
}

TEST(CrlBuilder, LargeListsAreSignedAndListTheirSerialsOnce) {
    constexpr std::uint32_t size = 3000;
    const auto found = read_crl(large_crl(size, Key::ec(0)));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(X509_CRL_verify(found.get(), Key::ec(0).pair()), 1);
    const STACK_OF(X509_REVOKED)* entries = X509_CRL_get_REVOKED(found.get());
    ASSERT_EQ(sk_X509_REVOKED_num(entries), static_cast<int>(size));
    std::set<std::string> serials;
    for (std::uint32_t index = 0; index < size; ++index) {
        const ASN1_INTEGER* serial =
            X509_REVOKED_get0_serialNumber(sk_X509_REVOKED_value(entries, static_cast<int>(index)));
        ASSERT_EQ(ASN1_STRING_type(serial), V_ASN1_INTEGER); // a negative one has another type
        const Bytes octets = content(serial);
        ASSERT_EQ(octets, large_crl_serial(index));
        serials.emplace(octets.begin(), octets.end());
    }
    EXPECT_EQ(serials.size(), size);
}

TEST(AllocationCounter, CountsCallsBytesAndThePeak) {
    constexpr std::size_t size = 1 << 20;
    constexpr std::align_val_t page{4096};
    const AllocationCounter counter;
    ::operator delete(::operator new(size));
    void* second = ::operator new[](size, page, std::nothrow);
    void* third = ::operator new(0);
    EXPECT_EQ(counter.count(), 3);
    EXPECT_EQ(counter.bytes(), 2 * size);
    EXPECT_GE(counter.peak(), size);
    EXPECT_LT(counter.peak(), size + size / 16);
    const AllocationCounter younger;
    ::operator delete[](second, page, std::nothrow);
    ::operator delete(third);
    EXPECT_EQ(younger.count(), 0);
    EXPECT_EQ(younger.peak(), 0);
}

} // namespace
} // namespace norvane::testing
