// The walk over the entries of a CRL, with libcrypto as the judge.
#include "asn1/AgainstLibcrypto.h"
#include "asn1/Decoded.h"
#include "asn1/Material.h"

#include <algorithm>
#include <chrono>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

Bytes list_of(const Bytes& entries) {
    return with_signature(CrlBuilder{.encoded_entries = entries}.tbs());
}

std::vector<Bytes> repeated(const Bytes& part, std::size_t times) {
    return std::vector(times, part);
}

void expect_the_entries_of_libcrypto(const Bytes& crl, std::size_t count) {
    EXPECT_TRUE(both_accept_list(view(crl)));
    EXPECT_EQ(Decoded<ASN1T_CertificateList>(crl).value.tbsCertList.revokedCertificates.count,
              count);
}

// Time and values in segments.
Bytes segmented_entry(std::uint8_t serial) {
    return sequence(
        integer(serial),
        ber_segments(0x17,
                     {octet_string(text_bytes("260101000")), octet_string(text_bytes("000Z"))}),
        sequence(sequence(oid("2.5.29.21"), ber_segments(0x04, {octet_string(enumerated(3))})),
                 sequence(oid("1.2.3"), ber_segments(0x04, {octet_string({serial})}))));
}

TEST(RevokedCertificates, EntriesOfAllShapesAreThoseOfLibcrypto) {
    std::vector<Bytes> shapes;
    for (const CrlEntry& entry : varied_entries()) {
        shapes.push_back(entry.encode());
    }
    shapes.push_back(segmented_entry(1));
    const Bytes plain = CrlEntry{.serial = {0x11}, .extensions = {reason_code(1)}}.encode();
    for (const Bytes& shape : shapes) {
        // At every distance from the end at which the pass over the entries may go from looking
        // for the usual shape to reading field by field.
        for (std::size_t behind = 0; behind < 8; ++behind) {
            expect_the_entries_of_libcrypto(list_of(cat(plain, shape, repeated(plain, behind))),
                                            2 + behind);
        }
    }
    const Bytes all = list_of(cat(shapes, repeated(plain, 1000), shapes));
    expect_the_entries_of_libcrypto(all, 1000 + 2 * shapes.size());
    expect_the_entries_of_libcrypto(to_indefinite(all), 1000 + 2 * shapes.size());
}

TEST(RevokedCertificates, SegmentsAreWalkedInLinearTime) {
    // A walk that looked for each segmented string from the first one on would take minutes.
    constexpr std::size_t count = 300000;
    const Bytes extension = sequence(oid("1.2"), ber_segments(0x04, {octet_string({7})}));
    const auto entry = [](const Bytes& extensions) {
        return sequence(integer(1), utc_time("260101000000Z"), sequence(extensions));
    };
    Decoded<ASN1T_CertificateList> list(
        list_of(cat(repeated(entry(extension), count), entry(cat(repeated(extension, count))))));
    ASSERT_EQ(list.status, 0) << list.error();
    const auto started = std::chrono::steady_clock::now();
    std::size_t octets = 0;
    for (const ASN1T_RevokedCertificate& revoked : list.value.tbsCertList.revokedCertificates) {
        for (const ASN1T_Extension& read : revoked.crlEntryExtensions) {
            octets += read.extnValue.length;
        }
    }
    EXPECT_EQ(octets, 2 * count);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
}

TEST(RevokedCertificates, BadEntriesAreRefusedAmongGoodOnes) {
    const Bytes plain =
        CrlEntry{.serial = Bytes(16, 0x11), .extensions = {reason_code(1)}}.encode();
    const Bytes reason = sequence(reason_code(1));
    const Bytes date = utc_time("260101000000Z");
    for (const Bytes& bad :
         {sequence(integer_octets({}), date), sequence(integer(77)), sequence(integer(1), utf8("")),
          sequence(integer(1), date, reason, reason),
          sequence(integer(1), utc_time("2601010000Z"), null()),
          sequence(integer(1), date, sequence(sequence(oid("1.2")))),
          sequence(integer(1), date, hex("300c 300b 0603551d15 0403 0a0101")),
          set(integer(1), date, reason)}) {
        for (const std::size_t behind : {0U, 2U, 20U}) {
            Decoded<ASN1T_CertificateList> list(
                list_of(cat(repeated(plain, 20), bad, repeated(plain, behind))));
            EXPECT_LT(list.status, 0);
            const auto place =
                std::search(list.input.begin(), list.input.end(), bad.begin(), bad.end());
            const auto end = place + static_cast<std::ptrdiff_t>(bad.size());
            const auto failed =
                list.input.begin() + std::ptrdiff_t{list.buffer.getCtxt().failure.offset};
            EXPECT_TRUE(failed >= place && failed <= end) << list.error();
        }
    }
}

} // namespace
} // namespace norvane::testing
