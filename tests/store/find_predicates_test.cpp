#include "platform/StoreMaterial.h"
#include "store/FindPredicates.h"
#include "values/Exceptions.h"

namespace norvane::testing {
namespace {

ByteView view(const Bytes& bytes) { return {bytes.data(), size_of(bytes)}; }
CACMPT_BLOB blob(const Bytes& bytes) { return {bytes.data(), size_of(bytes)}; }

TEST(CertFindBySubjectAndSerial, WantsEqualCanonicalNamesAndEqualSerialBytes) {
    const CertificateContext subject = certificate_context(
        CertificateBuilder{.serial = hex("00 90 01"), .subject = common_name("Some  NAME ")}.sign(
            Key::ec(0)));
    const Bytes same = common_name("some name");
    const Bytes utf8_name = name({{"2.5.4.3", utf8("some name")}});
    const struct {
        Bytes name;
        CACMPT_BLOB serial;
        bool matches;
    } cases[] = {
        {{}, {}, true},
        {same, {}, true},
        {utf8_name, {}, false},
        {same, blob(hex("01 90 00")), true},
        {{}, blob(hex("00 90 01")), false},
    };
    for (const auto& item : cases) {
        CertFindBySubjectAndSerial predicate;
        predicate.name = view(item.name);
        predicate.serial = item.serial;
        EXPECT_EQ(predicate.match(subject.get()), item.matches);
    }
    const Bytes no_name = hex("0500");
    CertFindBySubjectAndSerial predicate;
    predicate.name = view(no_name);
    EXPECT_THROW(static_cast<void>(predicate.match(subject.get())), Asn1Exception);
}

TEST(CertFindByIssuerSubStrAndSerial, LooksIntoTheRenderedIssuerCaseCounting) {
    const CertificateContext subject = certificate_context(CertificateBuilder{
        .serial = hex("05"),
        .issuer = name({{"2.5.4.10", utf8("\xD0\x9F Org")},
                        {"2.5.4.3", utf8("my ca")}})}.sign(Key::ec(0)));
    const CACMPT_BLOB empty;
    const CACMPT_BLOB right = blob(hex("05"));
    const CACMPT_BLOB wrong = blob(hex("0500"));
    const struct {
        LPCWSTR substring;
        const CACMPT_BLOB* serial;
        bool matches;
    } cases[] = {
        {nullptr, &empty, true},          {NORVANE_W("my ca"), &empty, true},
        {NORVANE_W("CA"), &empty, false}, {NORVANE_W("\u041F Org, CN="), &right, true},
        {NORVANE_W(""), &wrong, false},   {NORVANE_W("CA"), &right, false},
    };
    for (const auto& item : cases) {
        CertFindByIssuerSubStrAndSerial predicate;
        predicate.substring = item.substring;
        predicate.serial = item.serial;
        EXPECT_EQ(predicate.match(subject.get()), item.matches);
    }
}

TEST(CrlFindByIssuerKeyId, RefusesOnlyOtherIssuersAndCrlsThatNameAnotherKey) {
    const Bytes right = authority_key_identifier(hex("0102"));
    const Bytes wrong = authority_key_identifier(hex("01"));
    const Bytes other = common_name("other");
    const struct {
        Bytes issuer;
        std::vector<Bytes> extensions;
        bool matches;
    } cases[] = {
        {{}, {}, true},
        {common_name(" ISSUER"), {right}, true},
        {other, {right}, false},
        {{}, {wrong, right}, false},
        {{}, {right, wrong}, true},
        {{}, {authority_key_identifier({})}, false}, // decodes, and has none
        {{}, {extension("2.5.29.35", Critical::no, hex("0500"))}, true},
    };
    const CACMPT_BLOB key = blob(hex("0102"));
    for (const auto& item : cases) {
        const CrlContext list =
            crl_context(CrlBuilder{.extensions = item.extensions}.sign(Key::ec(0)));
        const CACMPT_BLOB issuer = blob(item.issuer);
        EXPECT_EQ(CrlFindByIssuerKeyId(issuer, key).match(list.get()), item.matches);
        EXPECT_EQ(CrlFindByIssuer(issuer).match(list.get()), item.issuer != other);
    }
}

} // namespace
} // namespace norvane::testing
