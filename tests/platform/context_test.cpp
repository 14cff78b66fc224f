#include "platform/StoreMaterial.h"

namespace norvane::testing {
namespace {

// A moment in units of 100 ns, without the fraction of its day.
ULONGLONG day_of(const FILETIME& time) {
    return (ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime) / 864'000'000'000;
}
constexpr ULONGLONG first_of_1950 = 127'469; // days since 1601
constexpr ULONGLONG last_of_9999 = 3'067'670;

TEST(CertificateContext, ShowsTheFieldsOfDerAndOfBer) {
    const CertificateBuilder builder{
        .serial = hex("00 80 01"),
        .signature_algorithm = sequence(oid("1.2.840.113549.1.1.11"), null()),
        .not_before = utc_time("500101000000Z"),
        .not_after = generalized_time("99991231230000Z"),
        .subject = common_name("Subject"),
        .extensions = {key_usage(named_bits({5})),
                       sequence(tlv(0x06, hex("6983f09da7ebcfdee0c7a1a7b2c0948cc8f9d776")),
                                ber_segments(0x04, {octet_string({5}), octet_string({0})})),
                       // An arc of 2^133.
                       sequence(tlv(0x06, hex("2a c0 80808080808080808080808080808080 8080 00")),
                                octet_string(null()))}};
    const Bytes der = builder.sign(Key::ec(0));
    for (const Bytes& encoded : {der, to_indefinite(der)}) {
        const CertificateContext context = certificate_context(encoded);
        ASSERT_NE(context, nullptr) << GetLastError();
        const CERT_INFO& info = *context->pCertInfo;
        EXPECT_EQ(bytes_of(info.SerialNumber), hex("01 80 00"));
        EXPECT_STREQ(info.SignatureAlgorithm.pszObjId, "1.2.840.113549.1.1.11");
        EXPECT_EQ(bytes_of(info.Subject), builder.subject);
        EXPECT_EQ(day_of(info.NotBefore), first_of_1950);
        EXPECT_EQ(day_of(info.NotAfter), last_of_9999);
        ASSERT_EQ(info.cExtension, 3);
        EXPECT_TRUE(info.rgExtension[0].fCritical);
        EXPECT_STREQ(info.rgExtension[1].pszObjId, "2.25.329800735698586629295641978511506172918");
        EXPECT_EQ(bytes_of(info.rgExtension[1].Value), null());
        EXPECT_STREQ(info.rgExtension[2].pszObjId, "");
    }
}

TEST(CertificateContext, IsNotMadeOverAnAlgorithmWithoutTextForThoseWhoLookItUp) {
    const auto with_key_algorithm = [](const Bytes& arcs) {
        const Bytes spki = sequence(sequence(tlv(0x06, cat(hex("2a"), arcs))), bit_string({}));
        return certificate_context(CertificateBuilder{.spki = spki}.sign(Key::ec(0)));
    };
    EXPECT_NE(with_key_algorithm(Bytes(63, 127)), nullptr) << "255 characters";
    for (const Bytes& arcs : {Bytes(64, 127), hex("90 80 80 80 00")}) {
        EXPECT_EQ(with_key_algorithm(arcs), nullptr);
        EXPECT_EQ(GetLastError(), CRYPT_E_ASN1_CORRUPT);
    }
}

TEST(CertificateContext, IsOneForEqualBytesAsLongAsItLives) {
    const Bytes encoded = certificate("A");
    const CertificateContext first = certificate_context(encoded);
    EXPECT_EQ(certificate_context(Bytes(encoded)).get(), first.get());
    const OpenStore store = OpenStore::memory();
    store.add(encoded);
    const CertificateContext stored(CertEnumCertificatesInStore(store.get(), nullptr));
    EXPECT_NE(stored.get(), first.get());
    EXPECT_EQ(stored->pCertInfo, first->pCertInfo);
    EXPECT_EQ(stored->hCertStore, store.get());
}

TEST(CrlContext, FindsEntriesBySerialNumberAndKeepsThem) {
    const CrlContext crl = crl_context(CrlBuilder{
        .next_update = std::nullopt,
        .entries = {
            {.serial = hex("00 90"), .extensions = {reason_code(1)}},
            {.serial = hex("07"), .date = utc_time("nonsense")},
            {.serial = hex("07"), .extensions = {reason_code(2)}},
            {.serial = hex("ff ff 80")}}}.sign(Key::ec(0)));
    EXPECT_EQ(day_of(crl->pCrlInfo->NextUpdate), 0);
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
    ASSERT_EQ(entry->cExtension, 1);
    EXPECT_EQ(bytes_of(entry->rgExtension[0].Value), enumerated(1));
    EXPECT_EQ(find(hex("00 00 90")), entry); // octets that only repeat the sign
    EXPECT_EQ(find(hex("90")), nullptr);     // a negative number
    EXPECT_NE(find(hex("80")), nullptr);
    EXPECT_EQ(find(hex("00 80")), nullptr);

    const CRL_ENTRY* const undated = find(hex("07"));
    ASSERT_NE(undated, nullptr);
    EXPECT_EQ(undated->cExtension, 0); // the first of two
    EXPECT_EQ(day_of(undated->RevocationDate), 0);
}

} // namespace
} // namespace norvane::testing
