#include "items/CertName.h"
#include "items/RememberedNames.h"

#include "Material.h"

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace norvane {
namespace {

using namespace testing;
using namespace std::string_literals;

constexpr const char* common = "2.5.4.3";
constexpr const char* country = "2.5.4.6";
constexpr const char* email = "1.2.840.113549.1.9.1";
constexpr const char* organisation = "2.5.4.10";
constexpr const char* serial_number = "2.5.4.5";

Bytes canonical(const Bytes& name) { return bytes_of(canonical_name(blob(name))); }
Bytes one(const char* type, const Bytes& value) { return name({{type, value}}); }

TEST(CanonicalName, PrintableStringsOfTheTableAreFoldedAndAllElseStays) {
    for (const char* type : {country, email, "2.5.4.8", "2.5.4.7", organisation, "2.5.4.11",
                             "2.5.4.12", "2.5.4.42", "2.5.4.43", "2.5.4.4", common}) {
        EXPECT_EQ(canonical(one(type, printable("  AcmE   Z "))), one(type, printable("acme z")));
        for (const Bytes& value : {utf8("  AcmE "), ia5(" E "), teletex(" T "), bmp(u" Ab")})
            EXPECT_EQ(canonical(one(type, value)), one(type, value)) << type;
    }
    for (const char* type : {serial_number, "0.9.2342.19200300.100.1.25", "2.5.4.65", "2.5.4.9",
                             "1.2.643.3.131.1.1", "2.5.4.4.1", "2.5.4.259"}) {
        EXPECT_EQ(canonical(one(type, printable(" A "))), one(type, printable(" A "))) << type;
    }
}

TEST(CanonicalName, FoldsOnlySpacesAndLettersOfAscii) {
    const std::pair<std::string, std::string> cases[] = {
        {"aZ@[`{", "az@[`{"},
        {"\tA\xa0\xc0 ", "\ta\xa0\xc0"},
        {"A\0 B"s, "a\0 b"s},
        {"   ", ""},
        {std::string(200, 'Q'), std::string(200, 'q')}};
    for (const auto& [text, folded] : cases) {
        const Attribute kept{serial_number, printable(text)};
        const Bytes original = sequence(rdn({{common, printable(text)}, kept}), rdn({kept}));
        const Bytes expected = sequence(rdn({{common, printable(folded)}, kept}), rdn({kept}));
        for (const Bytes& form : {original, expected, to_indefinite(original)})
            EXPECT_EQ(canonical(form), expected) << text;
    }
    const Bytes segments = ber_segments(0x13, {octet_string({' ', 'R'}), octet_string({'U'})});
    EXPECT_EQ(canonical(one(country, segments)), one(country, printable("ru")));
}

TEST(CanonicalName, WhatIsNoNameThrowsAsn1ExceptionEachTime) {
    const Bytes name = common_name("A");
    for (const Bytes& garbage : {Bytes{}, null(), sequence(sequence()), cat(name, null()),
                                 Bytes(name.begin(), name.end() - 1), hex("3080")}) {
        const CACMPT_CERT_NAME garbage_name(blob(garbage));
        for (int read = 0; read < 2; ++read) {
            const Error error =
                error_of([&] { return names_equal(CACMPT_CERT_NAME(blob(name)), garbage_name); });
            EXPECT_EQ(error.type + error.module, "Asn1ExceptionChainBase");
        }
    }
}

TEST(NamesEqual, GoesByTheCanonicalFormsAndKeepsThem) {
    const Attribute ru{country, printable("RU")};
    const Attribute a{common, printable("A")};
    const struct {
        const char* what;
        Bytes left;
        Bytes right;
        bool equal;
    } cases[] = {
        {"case and spaces", one(organisation, printable("  Acme   Corp ")),
         one(organisation, printable("acme corp")), true},
        {"string types", one(common, printable("abc")), one(common, utf8("abc")), false},
        {"order of RDNs", name({ru, a}), name({a, ru}), false},
        {"order in an RDN", sequence(rdn({ru, a})), sequence(rdn({a, ru})), false},
        {"a prefix", name({ru, a}), name({ru}), false},
        {"spaces and nothing", one(common, printable("  ")), one(common, printable("")), true}};
    for (const auto& test : cases) {
        const CACMPT_CERT_NAME left(blob(test.left));
        const CACMPT_CERT_NAME right(blob(test.right));
        EXPECT_EQ(names_equal(left, right), test.equal) << test.what;
        const auto* const kept = left.canonical().data;
        EXPECT_EQ(left.canonical().data, kept) << test.what;
    }
}

TEST(RememberedNames, AreTheFormsThatWouldBeMade) {
    const RememberedNames outermost;
    const auto form = [](const Bytes& encoded) {
        const CACMPT_BLOB name = blob(encoded);
        CACMPT_BLOB own;
        return bytes_of(RememberedNames::form_of({name.data, name.length}, own));
    };
    for (int pass = 0; pass < 2; ++pass) {
        const RememberedNames nested;
        // Long enough that not all find a place.
        for (char letter = 'A'; letter <= 'Z'; ++letter) {
            const std::string text(RememberedNames::max_octets / 32, letter);
            const Bytes encoded = one("2.5.4.3", printable(text));
            EXPECT_EQ(form(encoded), canonical(encoded));
        }
        EXPECT_THROW(static_cast<void>(form(sequence(null()))), Asn1Exception);
    }
}

} // namespace
} // namespace norvane
