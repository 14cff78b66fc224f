#include "items/CertificateItem.h"

#include "Material.h"

#include <tuple>

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace norvane {
namespace {

using namespace testing;

TEST(CertificateItem, SelfSignedGoesByTheSignatureAloneAndIsKept) {
    const std::tuple<Key, const char*, bool> cases[] = {
        {Key::ec(0), "Issuer", true},
        {Key::ec(0), "Subject", true}, // the names do not matter
        {Key::ec(1), "Issuer", false},
        {Key::rsa(0), "Issuer", false},
    };
    for (const auto& [signer, name, self_signed] : cases) {
        const Bytes subject = common_name(name);
        const Bytes der = CertificateBuilder{.subject = subject}.sign(signer);
        const CertificateItem item(blob(der));
        EXPECT_EQ(item.is_self_signed(), self_signed);
        const CertificateItem copy(item);
        EXPECT_EQ(copy.is_self_signed(), self_signed);
        EXPECT_FALSE(copy.is_decoded()) << "the answer was not kept";
        // What is signed and what names are compared by is encoded again, as DER.
        const CertificateItem ber(blob(to_indefinite(der)));
        EXPECT_EQ(ber.is_self_signed(), self_signed);
        EXPECT_EQ(bytes_of(ber.subject_name().encoded), subject);
    }
}

TEST(CertificateItem, DistributionPointsAreListedWithEncodingsOfTheirOwn) {
    const Bytes issuer = directory_name(common_name("I"));
    const std::vector<testing::DistributionPoint> points = {
        {.full_name = {url("http://a"), url("ldap://b")}, .crl_issuer = {issuer, url("x:y")}},
        {.relative_name = {{"2.5.4.3", printable("R")}}, .reasons = Bits{}},
        {.reasons = Bits{{0xff}, 7}}, // unused bits that are not zero
        {.reasons = Bits{{0xff, 0xff, 0xff}, 7}}};
    Bytes relative = rdn({{"2.5.4.3", printable("R")}});
    relative[0] = 0xa1;
    // Copies, which outlive the items.
    const DistributionPointList lists[] = {
        *certificate({crl_distribution_points(points)}).crl_distribution_points(),
        *certificate({freshest_crl(points)}).freshest_crl(),
        *crl({freshest_crl(points)}).freshest_crl()};
    for (const DistributionPointList& list : lists) {
        ASSERT_EQ(list.size(), points.size());
        // GeneralNames under the tag of a SEQUENCE, not under the [2] of the field.
        EXPECT_EQ(bytes_of(list[0].crl_issuer_names->encoded), sequence(issuer, url("x:y")));
        EXPECT_EQ(bytes_of(*list[0].distribution_point),
                  context(0, url("http://a"), url("ldap://b")));
        EXPECT_EQ(list[0].reasons, std::nullopt);
        EXPECT_EQ(bytes_of(*list[1].distribution_point), relative);
        EXPECT_FALSE(list[1].crl_issuer_names);
        EXPECT_EQ(list[1].reasons, 0x00);
        EXPECT_FALSE(list[2].distribution_point);
        EXPECT_EQ(list[2].reasons, 0x80);
        EXPECT_EQ(list[3].reasons, 0xff);
    }
}

bool has_usages(const CertificateItem& item, DWORD type, std::vector<std::string> requested) {
    std::vector<char*> texts;
    for (std::string& text : requested)
        texts.push_back(text.data());
    CERT_USAGE_MATCH match{};
    match.dwType = type;
    match.Usage = {static_cast<DWORD>(texts.size()), texts.data()};
    return item.has_ext_key_usages(match);
}

TEST(CertificateItem, RequestedUsagesAreAllNeededOrAny) {
    const CertificateItem with = certificate({ext_key_usage({"1.2.3", "1.2.4"})});
    const CertificateItem with_none = certificate({ext_key_usage({})});
    const CertificateItem without = certificate({});
    const struct {
        const CertificateItem& item;
        std::vector<std::string> requested;
        bool all;
        bool any;
    } cases[] = {{with, {}, true, false},
                 {with, {"1.2.4", "1.2.3", "1.2.4"}, true, true},
                 {with, {"1.2.5", "1.2.3"}, false, true},
                 {with, {"1.2.03"}, false, false}, // compared as texts
                 {with_none, {}, true, false},
                 {without, {}, false, false}};
    for (const auto& test : cases) {
        EXPECT_EQ(has_usages(test.item, USAGE_MATCH_TYPE_AND, test.requested), test.all);
        EXPECT_EQ(has_usages(test.item, USAGE_MATCH_TYPE_OR, test.requested), test.any);
        EXPECT_EQ(has_usages(test.item, 2, test.requested), test.any);
    }
}

TEST(CertificateItem, UsagesWithATextOf64CharactersThrowWhereTheyAreCompared) {
    const std::string text_of_63 =
        "1.2.840.1234567890.1234567890.1234567890.1234567890.12345678.90";
    const CertificateItem item = certificate({ext_key_usage({text_of_63, text_of_63 + "1"})});
    EXPECT_TRUE(has_usages(item, USAGE_MATCH_TYPE_AND, {text_of_63}));
    EXPECT_EQ(error_of([&] { return has_usages(item, USAGE_MATCH_TYPE_AND, {"1.2.3"}); }),
              (Error{"Asn1DecodeException", "", "ASN1Util"}));
}

} // namespace
} // namespace norvane
