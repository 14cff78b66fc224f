#include "platform/StoreMaterial.h"

namespace norvane::testing {
namespace {

ULONGLONG ticks(const FILETIME& time) {
    return ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

ULONGLONG ticks_of(WORD year, WORD month, WORD day, WORD hour = 0) {
    const SYSTEMTIME fields{.wYear = year,
                            .wMonth = month,
                            .wDayOfWeek = 0,
                            .wDay = day,
                            .wHour = hour,
                            .wMinute = 0,
                            .wSecond = 0,
                            .wMilliseconds = 0};
    FILETIME time{};
    EXPECT_TRUE(SystemTimeToFileTime(&fields, &time));
    return ticks(time);
}

const Bytes rsa_algorithm = sequence(oid("1.2.840.113549.1.1.11"), null());

CertificateBuilder rich_certificate() {
    return {
        .serial = hex("00 80 01"),
        .signature_algorithm = rsa_algorithm,
        .issuer = name({{"2.5.4.6", printable("RU")}, {"2.5.4.3", utf8("Issuer")}}),
        .not_before = utc_time("500101000000Z"),
        .not_after = generalized_time("99991231230000Z"),
        .subject = common_name("Subject"),
        .extensions = {key_usage(named_bits({5})),
                       sequence(tlv(0x06, hex("6983f09da7ebcfdee0c7a1a7b2c0948cc8f9d776")),
                                octet_string(null())),
                       // An arc of 2^133.
                       sequence(tlv(0x06, hex("2a c0 80808080808080808080808080808080 8080 00")),
                                octet_string(null()))}};
}

void expect_rich_certificate(const CERT_CONTEXT& context, const Bytes& encoded) {
    EXPECT_EQ(context.dwCertEncodingType, X509_ASN_ENCODING);
    EXPECT_EQ(bytes_of({context.cbCertEncoded, context.pbCertEncoded}), encoded);
    EXPECT_EQ(context.hCertStore, nullptr);
    const CERT_INFO& info = *context.pCertInfo;
    const CertificateBuilder builder = rich_certificate();
    EXPECT_EQ(info.dwVersion, CERT_V3);
    EXPECT_EQ(bytes_of(info.SerialNumber), hex("01 80 00"));
    EXPECT_STREQ(info.SignatureAlgorithm.pszObjId, "1.2.840.113549.1.1.11");
    EXPECT_EQ(bytes_of(info.SignatureAlgorithm.Parameters), null());
    EXPECT_EQ(bytes_of(info.Issuer), builder.issuer);
    EXPECT_EQ(bytes_of(info.Subject), builder.subject);
    EXPECT_EQ(ticks(info.NotBefore), ticks_of(1950, 1, 1));
    EXPECT_EQ(ticks(info.NotAfter), ticks_of(9999, 12, 31, 23));
    const CERT_PUBLIC_KEY_INFO& key = info.SubjectPublicKeyInfo;
    EXPECT_STREQ(key.Algorithm.pszObjId, "1.2.840.10045.2.1");
    EXPECT_EQ(bytes_of(key.Algorithm.Parameters), oid("1.2.840.10045.3.1.7"));
    EXPECT_EQ(key.PublicKey.cUnusedBits, 0);
    EXPECT_EQ(key.PublicKey.cbData, 65);
    ASSERT_EQ(info.cExtension, 3);
    EXPECT_STREQ(info.rgExtension[0].pszObjId, "2.5.29.15");
    EXPECT_TRUE(info.rgExtension[0].fCritical);
    EXPECT_EQ(bytes_of(info.rgExtension[0].Value), hex("03 02 02 04"));
    EXPECT_STREQ(info.rgExtension[1].pszObjId, "2.25.329800735698586629295641978511506172918");
    EXPECT_FALSE(info.rgExtension[1].fCritical);
    EXPECT_STREQ(info.rgExtension[2].pszObjId, "");
    EXPECT_EQ(bytes_of(info.rgExtension[2].Value), null());
}

TEST(CertificateContext, ShowsTheFieldsOfDerAndOfBer) {
    const Bytes der = rich_certificate().sign(Key::ec(0));
    for (const Bytes& encoded : {der, to_indefinite(der)}) {
        const CertificateContext context = certificate_context(encoded);
        ASSERT_NE(context, nullptr) << GetLastError();
        expect_rich_certificate(*context, encoded);
    }
}

TEST(CertificateContext, KeepsStringsThatComeInSegments) {
    const Bytes value = ber_segments(0x04, {octet_string(hex("30")), octet_string(hex("00"))});
    const Bytes encoded =
        CertificateBuilder{.extensions = {sequence(oid("1.2.3"), value)}}.sign(Key::ec(0));
    const CertificateContext context = certificate_context(encoded);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(bytes_of(context->pCertInfo->rgExtension[0].Value), hex("30 00"));
}

TEST(CertificateContext, RefusesWhatIsNoCertificate) {
    const Bytes good = certificate("A");
    Bytes cut = good;
    cut.pop_back();
    Bytes deep = null();
    for (int level = 0; level < 70; ++level)
        deep = sequence(deep);
    const auto signed_with = [](const CertificateBuilder& builder) {
        return builder.sign(Key::ec(0));
    };
    const struct {
        Bytes encoded;
        DWORD error;
    } cases[] = {
        {{}, CRYPT_E_ASN1_EOD},
        {cut, CRYPT_E_ASN1_EOD},
        {cat(good, hex("00")), CRYPT_E_ASN1_NOEOD},
        {crl("A"), CRYPT_E_ASN1_BADTAG},
        {hex("30 84 ff ff ff ff"), CRYPT_E_ASN1_EOD},
        {signed_with({.signature_algorithm = sequence(oid("1.2.3"), deep)}), CRYPT_E_ASN1_LARGE},
        {signed_with({.not_before = utc_time("269901000000Z")}), CRYPT_E_ASN1_CORRUPT},
        {signed_with({.not_after = generalized_time("20260101000000")}), CRYPT_E_ASN1_CORRUPT},
    };
    for (const auto& item : cases) {
        SetLastError(0);
        EXPECT_EQ(certificate_context(item.encoded), nullptr);
        EXPECT_EQ(GetLastError(), item.error) << std::hex << GetLastError();
    }
    EXPECT_EQ(CertCreateCertificateContext(PKCS_7_ASN_ENCODING, good.data(), size_of(good)),
              nullptr);
    EXPECT_EQ(GetLastError(), E_INVALIDARG);
    EXPECT_EQ(CertCreateCRLContext(X509_ASN_ENCODING, nullptr, 1), nullptr);
    EXPECT_EQ(GetLastError(), E_INVALIDARG);
}

TEST(CertificateContext, ReadsMomentsBefore1601AsZero) {
    const CertificateContext context = certificate_context(
        CertificateBuilder{.not_before = generalized_time("00010101000000Z")}.sign(Key::ec(0)));
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(ticks(context->pCertInfo->NotBefore), 0);
}

TEST(CertificateContext, IsOneForEqualBytesAsLongAsItLives) {
    const Bytes encoded = certificate("A");
    const Bytes copy = encoded;
    const CertificateContext first = certificate_context(encoded);
    const CertificateContext second = certificate_context(copy);
    const CertificateContext third(CertDuplicateCertificateContext(first.get()));
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(first.get(), third.get());
    EXPECT_NE(first.get(), certificate_context(certificate("B")).get());

    const OpenStore store = OpenStore::memory();
    store.add(encoded);
    store.add(encoded);
    const CertificateContext stored(CertEnumCertificatesInStore(store.get(), nullptr));
    ASSERT_NE(stored, nullptr);
    EXPECT_NE(stored.get(), first.get());
    EXPECT_EQ(stored->pCertInfo, first->pCertInfo);
    EXPECT_EQ(stored->hCertStore, store.get());

    EXPECT_TRUE(CertFreeCertificateContext(nullptr));
    EXPECT_TRUE(CertFreeCRLContext(nullptr));
    EXPECT_EQ(CertDuplicateCertificateContext(nullptr), nullptr);
    EXPECT_EQ(CertDuplicateCRLContext(nullptr), nullptr);
}

TEST(CrlContext, ShowsFieldsAndCountsEntriesWithoutLayingThemOut) {
    CrlBuilder builder{.issuer = common_name("Issuer"),
                       .this_update = utc_time("260301000000Z"),
                       .next_update = std::nullopt,
                       .entries = {{.serial = hex("05")}, {.serial = hex("06")}},
                       .extensions = {crl_number(integer(7))}};
    const Bytes der = builder.sign(Key::ec(0));
    for (const Bytes& encoded : {der, to_indefinite(der)}) {
        const CrlContext context = crl_context(encoded);
        ASSERT_NE(context, nullptr);
        EXPECT_EQ(bytes_of({context->cbCrlEncoded, context->pbCrlEncoded}), encoded);
        const CRL_INFO& info = *context->pCrlInfo;
        EXPECT_EQ(info.dwVersion, CRL_V2);
        EXPECT_STREQ(info.SignatureAlgorithm.pszObjId, "1.2.840.10045.4.3.2");
        EXPECT_EQ(bytes_of(info.Issuer), builder.issuer);
        EXPECT_EQ(ticks(info.ThisUpdate), ticks_of(2026, 3, 1));
        EXPECT_EQ(ticks(info.NextUpdate), 0);
        EXPECT_EQ(info.cCRLEntry, 2);
        EXPECT_EQ(info.rgCRLEntry, nullptr);
        ASSERT_EQ(info.cExtension, 1);
        EXPECT_STREQ(info.rgExtension[0].pszObjId, "2.5.29.20");
    }
    builder.next_update = utc_time("26");
    EXPECT_EQ(crl_context(builder.sign(Key::ec(0))), nullptr);
    EXPECT_EQ(GetLastError(), CRYPT_E_ASN1_CORRUPT);
}

TEST(CrlContext, FindsEntriesBySerialNumberAndKeepsThem) {
    const CrlContext crl = crl_context(CrlBuilder{
        .entries = {
            {.serial = hex("00 90"), .extensions = {reason_code(1)}},
            {.serial = hex("07"), .date = utc_time("nonsense")},
            {.serial = hex("07"), .extensions = {reason_code(2)}},
            {.serial = hex("ff ff 80")}}}.sign(Key::ec(0)));
    const auto find = [&crl](const Bytes& serial) {
        const CertificateContext subject =
            certificate_context(CertificateBuilder{.serial = serial}.sign(Key::ec(0)));
        CRL_ENTRY* entry = nullptr;
        EXPECT_TRUE(CertFindCertificateInCRL(subject.get(), crl.get(), 0, nullptr, &entry));
        return entry;
    };
    const CRL_ENTRY* const entry = find(hex("00 90"));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(bytes_of(entry->SerialNumber), hex("90 00"));
    EXPECT_EQ(ticks(entry->RevocationDate), ticks_of(2026, 2, 1));
    ASSERT_EQ(entry->cExtension, 1);
    EXPECT_STREQ(entry->rgExtension[0].pszObjId, "2.5.29.21");
    EXPECT_EQ(bytes_of(entry->rgExtension[0].Value), enumerated(1));
    EXPECT_EQ(find(hex("00 00 90")), entry); // octets that only repeat the sign
    EXPECT_EQ(find(hex("90")), nullptr);     // a negative number
    EXPECT_NE(find(hex("80")), nullptr);
    EXPECT_EQ(find(hex("00 80")), nullptr);

    const CRL_ENTRY* const undated = find(hex("07"));
    ASSERT_NE(undated, nullptr);
    EXPECT_EQ(undated->cExtension, 0); // the first of two
    EXPECT_EQ(ticks(undated->RevocationDate), 0);
}

TEST(CrlContext, ChecksTheArgumentsOfASearch) {
    const CertificateContext subject = certificate_context(certificate("A"));
    const CrlContext list = crl_context(crl("A"));
    CERT_CONTEXT bare = *subject;
    bare.pCertInfo = nullptr;
    CRL_ENTRY stale{};
    const struct {
        PCCERT_CONTEXT certificate;
        PCCRL_CONTEXT crl;
        DWORD flags;
        void* reserved;
    } cases[] = {{nullptr, list.get(), 0, nullptr},
                 {&bare, list.get(), 0, nullptr},
                 {subject.get(), nullptr, 0, nullptr},
                 {subject.get(), list.get(), 1, nullptr},
                 {subject.get(), list.get(), 0, &stale}};
    for (const auto& item : cases) {
        CRL_ENTRY* entry = &stale;
        SetLastError(0);
        EXPECT_FALSE(CertFindCertificateInCRL(item.certificate, item.crl, item.flags, item.reserved,
                                              &entry));
        EXPECT_EQ(GetLastError(), E_INVALIDARG);
        EXPECT_EQ(entry, nullptr);
    }
    EXPECT_FALSE(CertFindCertificateInCRL(subject.get(), list.get(), 0, nullptr, nullptr));
}

} // namespace
} // namespace norvane::testing
