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
    const Bytes other = common_name("some names");
    const Bytes utf8_name = name({{"2.5.4.3", utf8("some name")}});
    const struct {
        Bytes name;
        CACMPT_BLOB serial;
        bool matches;
    } cases[] = {
        {{}, {}, true},
        {same, {}, true},
        {other, {}, false},
        {utf8_name, {}, false},
        {same, blob(hex("01 90 00")), true},
        {{}, blob(hex("01 90")), false},
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

TEST(CrlFindByIssuer, KeepsEveryCrlIfTheNameIsEmpty) {
    const CrlContext list = crl_context(crl("Issuer"));
    for (const auto& [issuer, matches] : {std::pair(Bytes{}, true),
                                          {common_name(" ISSUER"), true},
                                          {common_name("other"), false}}) {
        const CACMPT_BLOB sought = blob(issuer);
        EXPECT_EQ(CrlFindByIssuer(sought).match(list.get()), matches);
        const CACMPT_BLOB no_key;
        EXPECT_EQ(CrlFindByIssuerKeyId(sought, no_key).match(list.get()), matches);
    }
}

TEST(CrlFindByIssuerKeyId, RefusesOnlyCrlsThatNameAnotherKey) {
    const auto with = [](const std::vector<Bytes>& extensions) {
        return CrlBuilder{.extensions = extensions}.sign(Key::ec(0));
    };
    const Bytes right = authority_key_identifier(hex("0102"));
    const Bytes wrong = authority_key_identifier(hex("01"));
    const struct {
        Bytes crl;
        bool matches;
    } cases[] = {
        {with({}), true},
        {with({right}), true},
        {with({wrong}), false},
        {with({wrong, right}), false},
        {with({right, wrong}), true},
        {with({authority_key_identifier({})}), false}, // decodes, and has none
        {with({extension("2.5.29.35", Critical::no, hex("0500"))}), true},
    };
    const CACMPT_BLOB key = blob(hex("0102"));
    const CACMPT_BLOB any_issuer;
    for (const auto& item : cases) {
        const CrlContext list = crl_context(item.crl);
        EXPECT_EQ(CrlFindByIssuerKeyId(any_issuer, key).match(list.get()), item.matches);
    }
}

} // namespace
} // namespace norvane::testing
