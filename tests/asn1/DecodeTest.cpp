// Bytes that are no certificate: what is refused, and how that is told.
#include "asn1/Decoded.h"
#include "asn1/Material.h"
#include "asn1/TreeText.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

template <class T>
void expect_failure(const Bytes& bytes, const std::string& text) {
    Decoded<T> decoded(bytes);
    EXPECT_LT(decoded.status, 0);
    EXPECT_EQ(decoded.error(), text);
    EXPECT_EQ(tree_text(decoded.value), tree_text(T{}));
}

TEST(BadInput, ErrorTextsTellPlaceExpectationAndFinding) {
    const struct {
        const char* name;
        const char* text;
    } cases[] = {
        {"", "Name at offset 0: expected SEQUENCE, found the end of the data"},
        {"30", "Name at offset 1: expected a length, found the end of the data"},
        {"30 82 01", "Name at offset 1: expected a length, found the end of the data"},
        {"30 ff 00", "Name at offset 1: expected a length, found the reserved octet 0xff"},
        {"30 01", "Name at offset 1: expected 0 octets of content at most, found a length of 1"},
        {"3000 00", "input at offset 2: expected its end, found 1 octet more"},
        {"3003 020100", "Name.rdnSequence at offset 2: expected SET, found INTEGER"},
        {"3004 c402 0500", "Name.rdnSequence at offset 2: expected SET, found tag 0xc4"},
        {"3010 310e 300c 0603550403 130141 0500 0500",
         "Name.rdnSequence.attribute at offset 14: expected its end, found 4 octets more"},
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
        {"3080 3102 3005 0000",
         "BER element at offset 5: expected 0 octets of content at most, found a length of 5"},
        {"3080 0480 0000", "BER element at offset 3: expected a definite length, found an "
                           "indefinite one on a primitive element"},
        {"3080 3100 00", "BER element at offset 4: expected an element, found "
                         "end-of-contents octets without an indefinite length"},
        {"3080 0000 0000",
         "BER element at offset 4: expected the end of the data, found 2 more octets"},
    };
    for (const auto& [name, text] : cases) {
        expect_failure<ASN1T_Name>(hex(name), text);
    }
}

TEST(BadInput, ErrorTextsNameTheFieldOfACertificate) {
    const std::string bits =
        "expected a BIT STRING that begins with its count of unused bits, found ";
    const auto with_key = [](const char* key) {
        return CertificateBuilder{.spki = sequence(sequence(oid("1.2.4")), hex(key))}.tbs();
    };
    const struct {
        Bytes tbs;
        const char* place; // octets that stand once, where the fault is
        const char* element;
        std::string text;
    } cases[] = {
        {CertificateBuilder{.serial = {}}.tbs(), "0200 30", "serialNumber",
         "expected at least one octet, found no content"},
        {CertificateBuilder{}.tbs(sequence(hex("0604 2a800103"))), "0604 2a800103",
         "signature.algorithm",
         "expected arcs in their shortest form, found an arc that is padded or cut off"},
        {CertificateBuilder{.not_before = utf8("now")}.tbs(), "0c03", "validity.notBefore",
         "expected UTCTime or GeneralizedTime, found UTF8String"},
        {with_key("030208ff"), "030208ff", "subjectPublicKeyInfo.subjectPublicKey",
         bits + "the count 8 before 1 octet"},
        {with_key("0300"), "0300", "subjectPublicKeyInfo.subjectPublicKey", bits + "no content"},
        {CertificateBuilder{.extensions = {sequence(oid("1.2.3"), hex("0102abcd"))}}.tbs(),
         "0102abcd", "extensions.Extension.critical",
         "expected a BOOLEAN of one octet, found 2 octets"},
    };
    for (const auto& [tbs, place, element, text] : cases) {
        for (const Bytes& form : {with_signature(tbs), to_indefinite(with_signature(tbs))}) {
            const auto offset = std::ranges::search(form, hex(place)).begin() - form.begin();
            expect_failure<ASN1T_Certificate>(form, std::string("Certificate.tbsCertificate.") +
                                                        element + " at offset " +
                                                        std::to_string(offset) + ": " + text);
        }
    }
}

// A Name whose one attribute has this value.
Bytes name_around(const Bytes& value) { return name({{"2.5.4.3", value}}); }

TEST(BadInput, LengthsAndTagsAreBounded) {
    const struct {
        const char* value;
        bool good;
    } cases[] = {
        {"04 7f 00", false},
        {"04 84 7fffffff 00", false},
        {"04 84 80000000 00", false},
        {"04 84 ffffffff 00", false},
        {"04 85 0100000001", false},
        {"04 88 ffffffffffffffff 00", false},
        {"04 ff 00", false},
        {"04 89 010000000000000001 00", false},
        {"30 02 0401 00", false},
        {"30 03 0484ff 00000000", false},
        {"1f1f 00", true},
        {"9f8f7f 01aa", true},
        {"bf81ffff7f 02 0500", true},
        {"1f1e 00", false},
        {"1f801f 00", false},
        {"1f81818181818101 00", false},
        {"1f81", false},
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
    Bytes segments = octet_string({1});
    for (unsigned level = 0; level < 1000; ++level) {
        append(endless, {0x30, 0x80});
        segments = tlv(0x24, segments);
    }
    const Bytes too_deep = name_around(sequence(deepest));
    for (const Bytes& bytes : {too_deep, to_indefinite(too_deep), endless}) {
        EXPECT_EQ(Decoded<ASN1T_Name>(bytes).status, code(ASN1Status::nested_too_deeply));
    }
    ASN1CTXT ctxt;
    ASN1T_SubjectKeyIdentifier value;
    EXPECT_EQ(decode_element(ctxt, view(segments), value), code(ASN1Status::nested_too_deeply));
}

} // namespace
} // namespace norvane::testing
