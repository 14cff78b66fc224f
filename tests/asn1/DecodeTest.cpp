// Bytes that are no certificate: what is refused, and how that is told.
#include "asn1/Decoded.h"
#include "support/Name.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

TEST(BadInput, ErrorTextsTellPlaceExpectationAndFinding) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "Name at offset 0: expected SEQUENCE, found the end of the data"},
        // Cut off inside a value whose content nobody looks at, with octets enough behind it.
        {"3010 310e 300c 0603550403 30 01 04 017fffff",
         "Name.rdnSequence.attribute.value at offset 14: expected a length, found the end of the "
         "data"},
        // Another element of a wrong type behind the one that failed.
        {"3009 3102 0500 020100 0500",
         "Name.rdnSequence.attribute at offset 4: expected SEQUENCE, found NULL"},
        // Lengths that have to be rewritten before anything can fail, or cannot be.
        {"3080 31820002 0500 0000",
         "Name.rdnSequence.attribute at offset 6: expected SEQUENCE, found NULL"},
        {"3080 3100 00", "BER element at offset 4: expected an element, found "
                         "end-of-contents octets without an indefinite length"},
    };
    for (const auto& [name, text] : cases) {
        Decoded<ASN1T_Name> decoded(hex(name));
        EXPECT_LT(decoded.status, 0);
        EXPECT_EQ(decoded.error(), text);
        EXPECT_EQ(decoded.value.rdnSequence.count, 0);
    }
}

// A Name whose one attribute has this value.
Bytes name_around(const Bytes& value) { return name({{"2.5.4.3", value}}); }

TEST(BadInput, LengthsAndTagsAreBounded) {
    const std::pair<const char*, bool> cases[] = {
        {"04 84 7fffffff 00", false},
        {"04 84 ffffffff 00", false},
        {"04 88 ffffffffffffffff 00", false},
        {"04 89 010000000000000001 00", false},
        {"30 03 0484ff 00000000", false},
        {"1f1f 00", true},
        {"bf81ffff7f 02 0500", true},
        {"1f1e 00", false},
        {"00 00", false},
    };
    for (const auto& [value, good] : cases) {
        const Bytes der = name_around(hex(value));
        const Bytes ber = ber_long_length(0x30, {der.begin() + 2, der.end()}, 2);
        EXPECT_EQ(Decoded<ASN1T_Name>(der).status == 0, good) << value;
        EXPECT_EQ(Decoded<ASN1T_Name>(ber).status == 0, good) << value;
    }
}

TEST(BadInput, NestingHasALimit) {
    constexpr unsigned levels_of_the_name = 3;
    Bytes deepest = null();
    for (unsigned level = levels_of_the_name; level < max_nesting; ++level) {
        deepest = sequence(deepest);
    }
    EXPECT_EQ(Decoded<ASN1T_Name>(name_around(deepest)).status, 0);
    EXPECT_EQ(Decoded<ASN1T_Name>(to_indefinite(name_around(deepest))).status, 0);
    Bytes endless;
    for (unsigned level = 0; level < 1000; ++level) {
        append(endless, {0x30, 0x80});
    }
    const Bytes too_deep = name_around(sequence(deepest));
    for (const Bytes& bytes : {too_deep, to_indefinite(too_deep), endless}) {
        EXPECT_EQ(Decoded<ASN1T_Name>(bytes).status, code(ASN1Status::nested_too_deeply));
    }
}

} // namespace
} // namespace norvane::testing
